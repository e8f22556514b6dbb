#include "finish/SheetParter.h"

#include "core/cancel.h"
#include "finish/FinRemoval.h"
#include "finish/SeamPairing.h"
#include "finish/WrapRemoval.h"
#include "geometry/isFinite.h"
#include "geometry/tools.h"
#include "parallel/sortMT2.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
// Of a pair's weight, what its own flatness counts; the rest is the mean of its two patches, which keeps a
// chain of pairs from zigzagging.
constexpr double OWN_FLATNESS = 0.4;
// How far the border of a cut goes back from the sheet that it hung on, as a share of the way to the middle of
// its neighbours.
constexpr double DRAW_BACK = 0.2;
// How far the middle of a split edge goes towards its own triangles, so that it does not lie on its twin.
constexpr double SPLIT_ASIDE = 0.15;

Point3 moveTowards(const Point3& p, const Point3& target, double share)
{
    return p + (target - p) * share;
}
} // namespace

SheetParter::SheetParter(FlatMesh& mesh_, PartReport& report_, double cellSize_)
    : mesh(mesh_)
    , report(report_)
    , cellSize(cellSize_)
{
}

void SheetParter::run()
{
    dropUnusable();
    dropDuplicates();
    checkCancelled();
    SeamTable seams(mesh);
    checkCancelled();
    WrapRemoval wraps(mesh, seams, cellSize);
    report.numWrapT += wraps.run();
    checkCancelled();
    report.numFinT += FinRemoval(mesh, seams).run();
    pairTriangles(seams);
    checkCancelled();
    giveFansVertices();
    checkCancelled();
    splitTwinEdges();
    checkCancelled();
    report.numTurnedT += faceOutward(mesh, vMates);
    vIsParted.resize(mesh.vPoints.size(), 0);
    for (std::size_t v = 0; v < wraps.getTouched().size(); ++v)
        vIsParted[v] |= wraps.getTouched()[v];
}

void SheetParter::keep(const std::vector<std::uint8_t>& vKeep, std::size_t& counter)
{
    const std::size_t before = mesh.getNumT();
    mesh.keepTriangles(vKeep);
    counter += before - mesh.getNumT();
}

void SheetParter::dropUnusable()
{
    std::vector<std::uint8_t> vKeep(mesh.getNumT());
    for (std::size_t t = 0; t < vKeep.size(); ++t)
    {
        const Index a = mesh.vCorners[3 * t];
        const Index b = mesh.vCorners[3 * t + 1];
        const Index c = mesh.vCorners[3 * t + 2];
        vKeep[t] = a != b && b != c && c != a && isFinite(mesh.vPoints[a]) && isFinite(mesh.vPoints[b]) &&
                   isFinite(mesh.vPoints[c]);
    }
    keep(vKeep, report.numUnusableT);
    vKeep.assign(mesh.getNumT(), 1);
    for (std::size_t t = 0; t < vKeep.size(); ++t)
    {
        const Index* pCorner = &mesh.vCorners[3 * t];
        bool bHasArea = false;
        (void)getNormalVector(&mesh.vPoints[pCorner[0]], &mesh.vPoints[pCorner[1]], &mesh.vPoints[pCorner[2]],
                              bHasArea);
        vKeep[t] = bHasArea;
    }
    keep(vKeep, report.numFlatT);
}

void SheetParter::dropDuplicates()
{
    struct Entry
    {
        std::array<Index, 3> corners;
        Index t;
    };
    std::vector<Entry> vEntries(mesh.getNumT());
    for (Index t = 0; t < vEntries.size(); ++t)
    {
        std::array<Index, 3> corners = {mesh.vCorners[3 * t], mesh.vCorners[3 * t + 1],
                                        mesh.vCorners[3 * t + 2]};
        std::sort(corners.begin(), corners.end());
        vEntries[t] = {corners, t};
    }
    sortMT(vEntries.begin(), vEntries.end(),
           [](const Entry& a, const Entry& b)
           { return a.corners != b.corners ? a.corners < b.corners : a.t < b.t; });
    std::vector<std::uint8_t> vKeep(mesh.getNumT(), 1);
    for (std::size_t i = 1; i < vEntries.size(); ++i)
        vKeep[vEntries[i].t] = vEntries[i].corners != vEntries[i - 1].corners;
    keep(vKeep, report.numDuplicateT);
}

void SheetParter::pairTriangles(SeamTable& seams)
{
    if (seams.getNumSeams() == 0)
    {
        vMates = seams.getMates();
        return;
    }
    const PatchTable patches(mesh, seams.getMates());
    const PatchFacing facing(mesh, seams, patches);
    faceAlike(patches, facing, seams);
    vMates = seams.getMates();
    for (Index seam = 0; seam < seams.getNumSeams(); ++seam)
        pairAtSeam(seams.getSides(seam), patches, facing);
}

void SheetParter::faceAlike(const PatchTable& patches, const PatchFacing& facing, SeamTable& seams)
{
    std::vector<std::uint8_t> vTurn(mesh.getNumT());
    for (std::size_t t = 0; t < vTurn.size(); ++t)
        vTurn[t] = facing.isTurned(patches.vPatchOfT[t]) ? 1 : 0;
    turnTriangles(mesh, vTurn);
    seams.turnTriangles(vTurn);
    report.numTurnedT += static_cast<std::size_t>(std::count(vTurn.begin(), vTurn.end(), 1));
}

void SheetParter::pairAtSeam(std::span<const Index> sides, const PatchTable& patches,
                             const PatchFacing& facing)
{
    vSeamSides.insert(vSeamSides.end(), sides.begin(), sides.end());
    if (sides.size() == 2 && mesh.from(sides[0]) != mesh.from(sides[1]))
        mate(sides[0], sides[1]);
    if (sides.size() <= 2 || sides.size() > SeamPairing::maxTriangles)
        return;
    const SeamPairing pairing(mesh, {sides.begin(), sides.end()});
    const auto weight = [&](int a, int b)
    {
        const Index g = pairing.getHalfEdge(a);
        const Index h = pairing.getHalfEdge(b);
        if (mesh.from(g) == mesh.from(h))
            return -1.0;
        return OWN_FLATNESS * pairing.getFlatness(a, b) +
               (1.0 - OWN_FLATNESS) *
                   facing.getMeanFlatness(patches.vPatchOfT[g / 3], patches.vPatchOfT[h / 3]);
    };
    const auto vPairs = pairing.choose(weight);
    for (const auto& [a, b] : vPairs)
        mate(pairing.getHalfEdge(a), pairing.getHalfEdge(b));
    report.numCutEdges += pairing.size() - 2 * vPairs.size();
}

void SheetParter::mate(Index g, Index h)
{
    vMates[g] = h;
    vMates[h] = g;
}

void SheetParter::giveFansVertices()
{
    const std::size_t firstCopy = mesh.vPoints.size();
    std::vector<Index> vOriginals;
    report.numDoubledVtx += doubleVertices(mesh, vMates, &vOriginals);
    drawBack(firstCopy, vOriginals);
    firstAdded = firstCopy;
    vSources = std::move(vOriginals);
}

// Vertices with copies whose fan is open go towards the middle of their neighbours.
void SheetParter::drawBack(std::size_t firstCopy, const std::vector<Index>& vOriginals)
{
    vIsParted.assign(mesh.vPoints.size(), 0);
    for (std::size_t i = 0; i < vOriginals.size(); ++i)
        vIsParted[firstCopy + i] = vIsParted[vOriginals[i]] = 1;
    struct Sum
    {
        Vector3 v;
        double num = 0.0;
        bool bOpen = false;
    };
    std::vector<Sum> vSums(mesh.vPoints.size());
    for (Index h = 0; h < mesh.vCorners.size(); ++h)
    {
        for (const auto& [own, other] :
             {std::pair(mesh.from(h), mesh.to(h)), std::pair(mesh.to(h), mesh.from(h))})
        {
            if (vIsParted[own] == 0)
                continue;
            vSums[own].v.add(mesh.vPoints[other] - mesh.vPoints[own]);
            vSums[own].num += 1.0;
            vSums[own].bOpen |= vMates[h] == FlatMesh::NONE;
        }
    }
    for (std::size_t i = 0; i < vSums.size(); ++i)
        if (vSums[i].bOpen)
            mesh.vPoints[i] = mesh.vPoints[i] + vSums[i].v * (DRAW_BACK / vSums[i].num);
}

// Two sheets can still share both ends of an edge, where a slit closes at either end. All but the first then get a
// vertex in the middle. A triangle is split once a round. Only what was a seam can have a twin.
void SheetParter::splitTwinEdges()
{
    const auto ends = [this](Index h) { return std::minmax({mesh.from(h), mesh.to(h)}); };
    const auto rank = [&](Index h) { return std::pair(ends(h), h); };
    for (bool bAgain = true; bAgain;)
    {
        bAgain = false;
        std::vector<std::uint8_t> vTouched(mesh.getNumT(), 0);
        std::sort(vSeamSides.begin(), vSeamSides.end(), [&](Index g, Index h) { return rank(g) < rank(h); });
        vSeamSides.erase(std::unique(vSeamSides.begin(), vSeamSides.end()), vSeamSides.end());
        std::vector<std::vector<Index>> vTwins;
        for (auto it = vSeamSides.begin(); it != vSeamSides.end();)
        {
            const auto end =
                std::find_if(it, vSeamSides.end(), [&](Index h) { return ends(h) != ends(*it); });
            if (end - it > 1)
                vTwins.emplace_back(it, end);
            it = end;
        }
        for (const std::vector<Index>& twins : vTwins)
            bAgain |= splitTwins(twins, vTouched);
    }
}

bool SheetParter::splitTwins(std::span<const Index> twins, std::vector<std::uint8_t>& vTouched)
{
    const Index first = twins.front();
    bool bSplit = false;
    for (const Index h : twins.subspan(1))
        if (h != vMates[first] && (vMates[h] == FlatMesh::NONE || h < vMates[h]))
            bSplit |= splitAt(h, vTouched);
    return bSplit;
}

bool SheetParter::splitAt(Index h, std::vector<std::uint8_t>& vTouched)
{
    const Index g = vMates[h];
    // What was added in this round counts as touched.
    const auto isTouched = [&](Index t) { return t >= vTouched.size() || vTouched[t] != 0; };
    if (isTouched(h / 3) || (g != FlatMesh::NONE && isTouched(g / 3)))
        return true;
    const Point3 ends[2] = {mesh.at(h), mesh.vPoints[mesh.to(h)]};
    Point3 middle = moveTowards(ends[0], ends[1], 0.5);
    Point3 aside = mesh.vPoints[mesh.opposite(h)];
    if (g != FlatMesh::NONE)
        aside = moveTowards(aside, mesh.vPoints[mesh.opposite(g)], 0.5);
    middle = moveTowards(middle, aside, SPLIT_ASIDE);
    const auto vertex = static_cast<Index>(mesh.vPoints.size());
    vSources.push_back(getSource(mesh.from(h)));
    mesh.vPoints.push_back(middle);
    ++report.numSplitEdges;
    const auto addedH = static_cast<Index>(mesh.vCorners.size());
    splitSide(h, vertex);
    vTouched[h / 3] = 1;
    if (g == FlatMesh::NONE)
        return true;
    const auto addedG = static_cast<Index>(mesh.vCorners.size());
    splitSide(g, vertex);
    vTouched[g / 3] = 1;
    mate(h, addedG);
    mate(g, addedH);
    return true;
}

// The second half of a side gets a triangle of its own: middle, end, tip.
void SheetParter::splitSide(Index side, Index vertex)
{
    const auto added = static_cast<Index>(mesh.vCorners.size());
    const Index outer = vMates[FlatMesh::next(side)];
    mesh.vCorners.insert(mesh.vCorners.end(), {vertex, mesh.to(side), mesh.opposite(side)});
    mesh.vCorners[FlatMesh::next(side)] = vertex;
    vMates.insert(vMates.end(), {FlatMesh::NONE, FlatMesh::NONE, FlatMesh::NONE});
    if (outer != FlatMesh::NONE)
        mate(added + 1, outer);
    mate(added + 2, FlatMesh::next(side));
    // Where the outer edge has twins, its half-edge has another number now.
    vSeamSides.push_back(added + 1);
}

namespace
{
// Six times the volume of the tetrahedra over the triangles; the base is a corner of the piece, for precision.
double getVolume(const FlatMesh& mesh, const std::vector<FlatMesh::Index>& vPiece)
{
    const Point3& base = mesh.vPoints[mesh.vCorners[3 * std::size_t{vPiece.front()}]];
    double sum = 0.0;
    for (const FlatMesh::Index t : vPiece)
        sum += (mesh.at(3 * t) - base) * crossProduct(mesh.at(3 * t + 1) - base, mesh.at(3 * t + 2) - base);
    return sum;
}
} // namespace

std::size_t faceOutward(FlatMesh& mesh, Mates& vMates)
{
    std::vector<std::uint8_t> vReached(mesh.getNumT(), 0);
    std::vector<std::uint8_t> vTurn(mesh.getNumT(), 0);
    std::vector<FlatMesh::Index> vPiece;
    std::size_t numTurned = 0;
    for (FlatMesh::Index first = 0; first < mesh.getNumT(); ++first)
    {
        if (vReached[first] != 0)
            continue;
        vPiece.assign(1, first);
        vReached[first] = 1;
        bool bClosed = true;
        for (std::size_t i = 0; i < vPiece.size(); ++i)
        {
            for (FlatMesh::Index h = 3 * vPiece[i]; h < 3 * vPiece[i] + 3; ++h)
            {
                if (vMates[h] == FlatMesh::NONE)
                    bClosed = false;
                else if (vReached[vMates[h] / 3] == 0)
                {
                    vReached[vMates[h] / 3] = 1;
                    vPiece.push_back(vMates[h] / 3);
                }
            }
        }
        if (!bClosed || !(getVolume(mesh, vPiece) < 0.0))
            continue;
        for (const FlatMesh::Index t : vPiece)
            vTurn[t] = 1;
        numTurned += vPiece.size();
    }
    if (numTurned == 0)
        return 0;
    turnTriangles(mesh, vTurn);
    turnMates(vMates, vTurn);
    return numTurned;
}

} // namespace TARN_ZEF

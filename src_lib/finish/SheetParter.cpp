#include "finish/SheetParter.h"

#include "finish/SeamPairing.h"
#include "geometry/tools.h"
#include "parallel/sortMT2.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
// Largest patch that counts as a fin or as one of two layers; the rounds start with the smallest.
constexpr std::array<std::size_t, 7> FIN_SIZES = {1, 2, 4, 8, 16, 32, 64};
constexpr int FIN_ROUNDS = 8;
// Triangles that may go for each side at a seam that finds a partner then; each border side that goes adds one.
constexpr std::size_t FIN_WIDTH = 3;
// Of a pair's weight, what its own flatness counts; the rest is the mean of its two patches, which keeps a
// chain of pairs from zigzagging.
constexpr double OWN_FLATNESS = 0.4;
// How far the border of a cut goes back from the sheet that it hung on, as a share of the way to the middle of
// its neighbours.
constexpr double DRAW_BACK = 0.2;
// How far the middle of a split edge goes towards its own triangles, so that it does not lie on its twin.
constexpr double SPLIT_ASIDE = 0.15;

bool isFinite(const Point3& p)
{
    return std::isfinite(p.x()) && std::isfinite(p.y()) && std::isfinite(p.z());
}

Point3 moveTowards(const Point3& p, const Point3& target, double share)
{
    return p + (target - p) * share;
}
} // namespace

SheetParter::SheetParter(FlatMesh& mesh_, PartReport& report_)
    : mesh(mesh_)
    , report(report_)
{
}

void SheetParter::run()
{
    dropUnusable();
    dropDuplicates();
    dropFins();
    pairTriangles();
    giveFansVertices();
    splitTwinEdges();
    report.numDroppedT += dropToManifold(mesh);
    report.numTurnedT += faceOutward(mesh);
    vIsParted.resize(mesh.vPoints.size(), 0);
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

void SheetParter::dropFins()
{
    for (const std::size_t maxT : FIN_SIZES)
        for (int round = 0; round < FIN_ROUNDS && dropFinsUpTo(maxT); ++round)
        {
        }
}

// A patch goes if fewer borders are left without it than with it: its own ones, and those at seams with an odd number
// of triangles, where one finds no partner. It must be small beside that gain, as a wall is something else than a
// fin. Patches that meet do not go in the same round.
bool SheetParter::dropFinsUpTo(std::size_t maxT)
{
    const EdgeTable edges(mesh);
    const PatchTable patches(mesh, edges);
    const std::size_t num = patches.vPatches.size();
    std::vector<std::ptrdiff_t> vGain(num, 0);
    std::vector<std::pair<Index, Index>> vMeetings;
    edges.forEach(
        [&](HalfEdges halfEdges)
        {
            if (halfEdges.size() > 2)
                addGain(halfEdges, patches.vPatchOfT, vGain, vMeetings);
        });
    std::sort(vMeetings.begin(), vMeetings.end());
    std::vector<Index> vCandidates;
    for (Index i = 0; i < num; ++i)
    {
        const PatchTable::Patch& patch = patches.vPatches[i];
        const bool bSaves = vGain[i] + static_cast<std::ptrdiff_t>(patch.numBorder) > 0;
        const auto seamGain = static_cast<std::size_t>(std::max<std::ptrdiff_t>(0, vGain[i]));
        const bool bIsSmall = patch.numT <= maxT && patch.numT <= FIN_WIDTH * seamGain + patch.numBorder;
        if (patch.numSeam > 0 && bSaves && bIsSmall)
            vCandidates.push_back(i);
    }
    std::stable_sort(vCandidates.begin(), vCandidates.end(),
                     [&](Index a, Index b) { return patches.vPatches[a].numT < patches.vPatches[b].numT; });
    std::vector<std::uint8_t> vStays(num, 0);
    std::vector<std::uint8_t> vDrop(num, 0);
    for (const Index i : vCandidates)
    {
        if (vStays[i] != 0)
            continue;
        vDrop[i] = 1;
        for (auto it = std::lower_bound(vMeetings.begin(), vMeetings.end(), std::pair<Index, Index>(i, 0));
             it != vMeetings.end() && it->first == i; ++it)
            vStays[it->second] = 1;
    }
    std::vector<std::uint8_t> vKeep(mesh.getNumT());
    for (std::size_t t = 0; t < vKeep.size(); ++t)
        vKeep[t] = vDrop[patches.vPatchOfT[t]] == 0;
    keep(vKeep, report.numFinT);
    return !vCandidates.empty();
}

// What each patch at a seam would save there by going.
void SheetParter::addGain(HalfEdges halfEdges, const std::vector<Index>& vPatchOfT,
                          std::vector<std::ptrdiff_t>& vGain, std::vector<std::pair<Index, Index>>& vMeetings)
{
    std::vector<Index> vHere;
    for (const auto& [ends, h] : halfEdges)
        vHere.push_back(vPatchOfT[h / 3]);
    std::sort(vHere.begin(), vHere.end());
    for (std::size_t i = 0; i < vHere.size(); ++i)
    {
        if (i > 0 && vHere[i] == vHere[i - 1])
            continue;
        const auto own = static_cast<std::size_t>(std::count(vHere.begin(), vHere.end(), vHere[i]));
        const auto oddBefore = static_cast<std::ptrdiff_t>(vHere.size() % 2);
        const auto oddAfter = static_cast<std::ptrdiff_t>((vHere.size() - own) % 2);
        vGain[vHere[i]] += oddBefore - oddAfter;
        for (const Index other : vHere)
            if (other != vHere[i])
                vMeetings.emplace_back(vHere[i], other);
    }
}

void SheetParter::pairTriangles()
{
    const EdgeTable edges(mesh);
    const PatchTable patches(mesh, edges);
    const PatchFacing facing(mesh, edges, patches);
    turnTriangles(patches, facing);
    vMates.assign(mesh.vCorners.size(), FlatMesh::NONE);
    const EdgeTable turnedEdges(mesh);
    turnedEdges.forEach([&](HalfEdges halfEdges) { pairAtEdge(halfEdges, patches.vPatchOfT, facing); });
}

void SheetParter::turnTriangles(const PatchTable& patches, const PatchFacing& facing)
{
    for (std::size_t t = 0; t < mesh.getNumT(); ++t)
    {
        if (!facing.isTurned(patches.vPatchOfT[t]))
            continue;
        std::swap(mesh.vCorners[3 * t + 1], mesh.vCorners[3 * t + 2]);
        ++report.numTurnedT;
    }
}

void SheetParter::pairAtEdge(HalfEdges halfEdges, const std::vector<Index>& vPatchOfT,
                             const PatchFacing& facing)
{
    if (halfEdges.size() == 2 && mesh.from(halfEdges[0].second) != mesh.from(halfEdges[1].second))
        mate(halfEdges[0].second, halfEdges[1].second);
    if (halfEdges.size() <= 2 || halfEdges.size() > SeamPairing::maxTriangles)
        return;
    std::vector<Index> vHalfEdges;
    for (const auto& [ends, h] : halfEdges)
        vHalfEdges.push_back(h);
    pairAtSeam(std::move(vHalfEdges), vPatchOfT, facing);
}

void SheetParter::pairAtSeam(std::vector<Index> vHalfEdges, const std::vector<Index>& vPatchOfT,
                             const PatchFacing& facing)
{
    const SeamPairing pairing(mesh, std::move(vHalfEdges));
    const auto weight = [&](int a, int b)
    {
        const Index g = pairing.getHalfEdge(a);
        const Index h = pairing.getHalfEdge(b);
        if (mesh.from(g) == mesh.from(h))
            return -1.0;
        return OWN_FLATNESS * pairing.getFlatness(a, b) +
               (1.0 - OWN_FLATNESS) * facing.getMeanFlatness(vPatchOfT[g / 3], vPatchOfT[h / 3]);
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
// vertex in the middle. A triangle is split once a round.
void SheetParter::splitTwinEdges()
{
    for (bool bAgain = true; bAgain;)
    {
        bAgain = false;
        std::vector<std::uint8_t> vTouched(mesh.getNumT(), 0);
        const EdgeTable edges(mesh);
        edges.forEach(
            [&](HalfEdges halfEdges)
            {
                const Index first = halfEdges[0].second;
                if (halfEdges.size() < 2 ||
                    (halfEdges.size() == 2 && mesh.from(first) != mesh.from(halfEdges[1].second)))
                    return;
                for (const auto& [ends, h] : halfEdges.subspan(1))
                    if (h != vMates[first] && (vMates[h] == FlatMesh::NONE || h < vMates[h]))
                        bAgain |= splitAt(h, vTouched);
            });
    }
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
    mesh.vPoints.push_back(middle);
    ++report.numSplitEdges;
    // The second half of a side gets a triangle of its own: middle, end, tip.
    const auto splitSide = [&](Index side)
    {
        vTouched[side / 3] = 1;
        const auto added = static_cast<Index>(mesh.vCorners.size());
        const Index outer = vMates[FlatMesh::next(side)];
        mesh.vCorners.insert(mesh.vCorners.end(), {vertex, mesh.to(side), mesh.opposite(side)});
        mesh.vCorners[FlatMesh::next(side)] = vertex;
        vMates.insert(vMates.end(), {FlatMesh::NONE, FlatMesh::NONE, FlatMesh::NONE});
        if (outer != FlatMesh::NONE)
            mate(added + 1, outer);
        mate(added + 2, FlatMesh::next(side));
        return added;
    };
    const Index addedH = splitSide(h);
    if (g == FlatMesh::NONE)
        return true;
    const Index addedG = splitSide(g);
    mate(h, addedG);
    mate(g, addedH);
    return true;
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

std::size_t faceOutward(FlatMesh& mesh)
{
    const Mates vMates = findMates(mesh);
    std::vector<std::uint8_t> vReached(mesh.getNumT(), 0);
    std::size_t numTurned = 0;
    for (FlatMesh::Index first = 0; first < mesh.getNumT(); ++first)
    {
        if (vReached[first] != 0)
            continue;
        std::vector<FlatMesh::Index> vPiece = {first};
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
            std::swap(mesh.vCorners[3 * t + 1], mesh.vCorners[3 * t + 2]);
        numTurned += vPiece.size();
    }
    return numTurned;
}

} // namespace TARN_ZEF

// The passes of Top for what the others leave at edges of more than two triangles.
#include "Top.h"

#include "CMesh.h"
#include "CPatch.h"
#include "PatchSolver.h"
#include "choosePatches.h"
#include "tools.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <map>
#include <memory>
#include <numeric>
#include <unordered_map>
#include <vector>

namespace TARN_ZEF
{
namespace
{
// Between two triangles at an edge, a wedge narrower than this, or not narrower than a plane, is not flipped.
const double MIN_WEDGE = 1.0;
const double MAX_WEDGE = 180.0;
const double MAX_BEND = 150.0; // between the two triangles that a flip makes
const double MAX_TURN = 90.0;  // of a triangle whose corner a collapse moves

const std::size_t MAX_SCRAP = 20;  // triangles
const double MAX_AREA_RATIO = 0.1; // of the mesh, that a decision over patches may take away in one place

const double DEGREES = 180.0 / 3.14159265358979323846;

const std::size_t NUM_SHEETS = 4; // at an edge where a surface touches itself

// A triangle at an edge, and where it stands around it.
struct Sheet
{
    CTriangle* pCT;
    u64 oppCCD;
    double angle; // degrees from the first one, 0 to 360
};
using Sheets = std::array<Sheet, NUM_SHEETS>;

// Sorted around the edge; false if one of them is flat.
bool getSheets(const CMesh& mesh, const CEdge& edge, Sheets& sheets)
{
    const Point3& p0 = *mesh.getVtx(edge.v0);
    const Vector3 axis = *mesh.getVtx(edge.v1) - p0;
    if (axis.isDegenerate())
        return false;
    const Vector3 along = normalizeInline(axis);
    Vector3 right;
    for (std::size_t i = 0; i < NUM_SHEETS; ++i)
    {
        CTriangle* pCT = edge.vCT[static_cast<std::uint32_t>(i)];
        const u64 oppCCD = pCT->getThirdCCD(edge.v0, edge.v1);
        const Vector3 across = crossProduct(crossProduct(along, *mesh.getVtx(oppCCD) - p0), along);
        if (across.isDegenerate())
            return false;
        if (i == 0)
            right = normalizeInline(across);
        const double angle = std::atan2(across * crossProduct(along, right), across * right) * DEGREES;
        sheets[i] = {pCT, oppCCD, i == 0 ? 0.0 : angle < 0.0 ? angle + 360.0 : angle};
    }
    std::sort(sheets.begin(), sheets.end(),
              [](const Sheet& a, const Sheet& b)
              { return a.angle != b.angle ? a.angle < b.angle : ByCreationCT()(a.pCT, b.pCT); });
    return true;
}

bool runAlike(const CEdge& edge, const Sheet& a, const Sheet& b)
{
    return a.pCT->getHEDirection2(edge.v0, edge.v1) == b.pCT->getHEDirection2(edge.v0, edge.v1);
}

// Whether the edge between the opposite corners can take the place of this one between the two triangles.
bool canFlipInto(const CMesh& mesh, const CEdge& edge, const Sheet& a, const Sheet& b)
{
    if (a.oppCCD == b.oppCCD || runAlike(edge, a, b) || mesh.hasEdge(a.oppCCD, b.oppCCD))
        return false;
    const Point3* pA = mesh.getVtx(a.oppCCD);
    const Point3* pB = mesh.getVtx(b.oppCCD);
    bool bOK0 = false;
    bool bOK1 = false;
    const Vector3 nnv0 = getNormalVector(pA, pB, mesh.getVtx(edge.v0), bOK0);
    const Vector3 nnv1 = getNormalVector(pB, pA, mesh.getVtx(edge.v1), bOK1);
    return bOK0 && bOK1 && !(getAngleDegree(nnv0, nnv1) > MAX_BEND);
}

// Whether the triangles at one end of the edge lead from corner a to b, without those at the edge.
bool areJoinedAround(const CMesh& mesh, u64 end, u64 otherEnd, u64 a, u64 b)
{
    std::vector<CTriangle*> vIncT;
    mesh.getIncT(end, vIncT);
    std::vector<u64> vReached{a};
    for (std::size_t i = 0; i < vReached.size(); ++i)
        for (const CTriangle* pCT : vIncT)
        {
            if (pCT->hasCorner(otherEnd) || !pCT->hasCorner(vReached[i]))
                continue;
            const u64 next = pCT->getThirdCCD(end, vReached[i]);
            if (std::find(vReached.begin(), vReached.end(), next) == vReached.end())
                vReached.push_back(next);
        }
    return std::find(vReached.begin(), vReached.end(), b) != vReached.end();
}

bool areJoinedAt(const CMesh& mesh, const CEdge& edge, bool bAtV0, u64 a, u64 b)
{
    return bAtV0 ? areJoinedAround(mesh, edge.v0, edge.v1, a, b)
                 : areJoinedAround(mesh, edge.v1, edge.v0, a, b);
}

// Flips two neighbours around the edge that both its ends need as neighbours, so that the triangles around each
// of them make one fan again. Of two ways the wider wedge.
bool flipApart(CMesh& mesh, CEdge& edge, const Sheets& sheets)
{
    const Sheet* pA = nullptr;
    const Sheet* pB = nullptr;
    double bestWedge = 0.0;
    for (std::size_t i = 0; i < NUM_SHEETS; ++i)
    {
        const Sheet& a = sheets[i];
        const Sheet& b = sheets[(i + 1) % NUM_SHEETS];
        const double wedge = b.angle - a.angle + (i + 1 == NUM_SHEETS ? 360.0 : 0.0);
        if (wedge < MIN_WEDGE || !(wedge < MAX_WEDGE) || !(wedge > bestWedge) ||
            runAlike(edge, sheets[(i + 2) % NUM_SHEETS], sheets[(i + 3) % NUM_SHEETS]) ||
            !canFlipInto(mesh, edge, a, b) || areJoinedAt(mesh, edge, true, a.oppCCD, b.oppCCD) ||
            areJoinedAt(mesh, edge, false, a.oppCCD, b.oppCCD))
            continue;
        pA = &a;
        pB = &b;
        bestWedge = wedge;
    }
    return pA != nullptr && edge.flipEdge(&mesh, pA->pCT, pB->pCT) != nullptr;
}

void getNeighbours(const CMesh& mesh, u64 ccd, std::vector<u64>& vNeigs)
{
    std::vector<CEdge*> vIncCE;
    mesh.getIncCE(ccd, vIncCE);
    for (const CEdge* pCE : vIncCE)
        vNeigs.push_back(pCE->getOtherVCD(ccd));
    std::sort(vNeigs.begin(), vNeigs.end());
}

// Whether the triangles at the end that leave the edge alone keep facing the same side if the end moves.
bool canMove(const CMesh& mesh, u64 end, u64 otherEnd, const Point3& pos)
{
    std::vector<CTriangle*> vIncT;
    mesh.getIncT(end, vIncT);
    return std::all_of(vIncT.begin(), vIncT.end(),
                       [&](const CTriangle* pCT) {
                           return pCT->hasCorner(otherEnd) ||
                                  !(pCT->getDevAngle(&mesh, pCT->getICI(end), pos) > MAX_TURN);
                       });
}

// Collapses an edge whose ends need different neighbours: the fans around them then join to one.
bool collapseApart(CMesh& mesh, CEdge& edge, const Sheets& sheets)
{
    std::vector<u64> vNeigs0, vNeigs1, vCommon;
    getNeighbours(mesh, edge.v0, vNeigs0);
    getNeighbours(mesh, edge.v1, vNeigs1);
    std::set_intersection(vNeigs0.begin(), vNeigs0.end(), vNeigs1.begin(), vNeigs1.end(),
                          std::back_inserter(vCommon));
    if (vCommon.size() != NUM_SHEETS)
        return false;
    const u64 first = sheets[0].oppCCD;
    for (std::size_t i = 1; i < NUM_SHEETS; ++i)
        if (areJoinedAt(mesh, edge, true, first, sheets[i].oppCCD) &&
            areJoinedAt(mesh, edge, false, first, sheets[i].oppCCD))
            return false;
    const Point3 mid = edge.getMidPoint(&mesh);
    if (!canMove(mesh, edge.v0, edge.v1, mid) || !canMove(mesh, edge.v1, edge.v0, mid))
        return false;
    mesh.collapseEdgeToMidpoint(&edge);
    return true;
}

// The edges of more than two triangles, those with the same patches together.
std::vector<Seam> findSeams(const CMesh& mesh, const std::vector<std::unique_ptr<CPatch>>& vPatches)
{
    std::unordered_map<const CPatch*, std::size_t> mIndex;
    for (std::size_t i = 0; i < vPatches.size(); ++i)
        mIndex[vPatches[i].get()] = i;
    std::map<std::vector<std::size_t>, double> mNumEdges;
    std::vector<CEdge*> vSeamCE;
    mesh.getDegN(-1, vSeamCE);
    for (const CEdge* pCE : vSeamCE)
    {
        std::vector<std::size_t> vAtEdge;
        for (const CTriangle* pCT : pCE->vCT)
            vAtEdge.push_back(mIndex.at(pCT->getPatch()));
        std::sort(vAtEdge.begin(), vAtEdge.end());
        mNumEdges[vAtEdge] += 1.0;
    }
    std::vector<Seam> vSeams;
    for (const auto& [vAtEdge, numEdges] : mNumEdges)
        vSeams.push_back({vAtEdge, numEdges});
    return vSeams;
}

// Whether an edge has an odd number of triangles above two.
bool hasFork(const CMesh& mesh)
{
    bool bFork = false;
    mesh.forEachEdge([&bFork](const CEdge* pCE)
                     { bFork = bFork || (pCE->getDegree() > 2 && pCE->getDegree() % 2 == 1); });
    return bFork;
}

// On an open surface three sheets may meet for good, as at a window in a wall; not over such a small one.
bool isEnclosedScrap(const CPatch& patch)
{
    if (patch.getSize() > MAX_SCRAP)
        return false;
    std::vector<CEdge*> vBorderCE;
    patch.getCEByDegree(1, vBorderCE);
    return vBorderCE.empty();
}
} // namespace

void Top::cleanSeams()
{
    decideSeams();
    killBorderEars(); // they would also break the rings around holes
    killTinyBorderPatches(MAX_TINY_AT_END);
}

// Where no two patches have the same boundary, several patches together decide.
void Top::decideSeams()
{
    if (!hasFork(*pCMesh))
        return; // sheets that touch
    const bool bClosed = !pCMesh->hasDegree(1);
    bool bKilled = false;
    {
        const std::vector<std::unique_ptr<CPatch>> vPatches = PatchSolver(pCMesh, pCalc).makeAllPatches();
        std::vector<SeamPatch> vChoice;
        double sumArea = 0.0;
        for (const std::unique_ptr<CPatch>& pPatch : vPatches)
        {
            vChoice.push_back({pPatch->getArea(), !bClosed && !isEnclosedScrap(*pPatch)});
            sumArea += vChoice.back().area;
        }
        const std::vector<bool> vStays =
            choosePatches(vChoice, findSeams(*pCMesh, vPatches), MAX_AREA_RATIO * sumArea);
        for (std::size_t i = 0; i < vPatches.size(); ++i)
        {
            if (vStays[i])
                continue;
            vPatches[i]->kill();
            bKilled = true;
        }
    }
    if (bKilled)
        solveAllPatches(false, nullptr);
}

void Top::partTouchingSheets()
{
    std::vector<CEdge*> vDeg4;
    pCMesh->getDegN(static_cast<int>(NUM_SHEETS), vDeg4);
    Sheets sheets;
    for (CEdge* pCE : vDeg4)
        if (pCE->getDegree() == static_cast<int>(NUM_SHEETS) && getSheets(*pCMesh, *pCE, sheets) &&
            !flipApart(*pCMesh, *pCE, sheets))
            collapseApart(*pCMesh, *pCE, sheets);
}

} // namespace TARN_ZEF

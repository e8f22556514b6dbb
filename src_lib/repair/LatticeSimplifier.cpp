#include "repair/LatticeSimplifier.h"

#include "cmesh/CMesh.h"
#include "geometry/tools.h"

#include <algorithm>
#include <string>
#include <tuple>

namespace TARN_ZEF
{
namespace
{
const double MAX_TURN_ANGLE = 5.0;       // of a triangle beside a collapse, in degrees
const double MIN_CROSS_PER_CELL = 1e-10; // of a cross product that still gives a normal, in squared cells
const int MIN_KILLED_FOR_PASS = 11;      // fewer collapses make another pass a waste

double getSqLength(const CMesh& mesh, const CEdge& edge)
{
    return sqDistance(*mesh.getVtx(edge.v0), *mesh.getVtx(edge.v1));
}

// The corners of all border edges, ascending.
std::vector<u64> getBorderVCDs(const CMesh& mesh)
{
    std::vector<CEdge*> vBorders;
    mesh.getDegN(DEG_BORDER, vBorders);
    std::vector<u64> vBorderVCD;
    for (const CEdge* pCE : vBorders)
    {
        vBorderVCD.push_back(pCE->v0);
        vBorderVCD.push_back(pCE->v1);
    }
    std::sort(vBorderVCD.begin(), vBorderVCD.end());
    vBorderVCD.erase(std::unique(vBorderVCD.begin(), vBorderVCD.end()), vBorderVCD.end());
    return vBorderVCD;
}

bool touches(const std::vector<u64>& vBorderVCD, const CEdge& edge)
{
    return std::binary_search(vBorderVCD.begin(), vBorderVCD.end(), edge.v0) ||
           std::binary_search(vBorderVCD.begin(), vBorderVCD.end(), edge.v1);
}

LatticeSimplifier::EdgeQueue makeQueue(const CMesh& mesh, const std::vector<u64>& vBorderVCD, double sqMaxLen)
{
    std::vector<std::pair<double, CEdge*>> vSqLenEdge;
    mesh.forEachEdge(
        [&](CEdge* pCE)
        {
            if (pCE->isOrphan() || touches(vBorderVCD, *pCE))
                return;
            const double sqLen = getSqLength(mesh, *pCE);
            if (sqLen < sqMaxLen)
                vSqLenEdge.emplace_back(sqLen, pCE);
        });
    std::sort(vSqLenEdge.begin(), vSqLenEdge.end(),
              [](const auto& a, const auto& b)
              {
                  return std::make_tuple(a.first, a.second->getNumber()) <
                         std::make_tuple(b.first, b.second->getNumber());
              });
    LatticeSimplifier::EdgeQueue mmSq2Edge;
    for (const auto& entry : vSqLenEdge)
        mmSq2Edge.emplace_hint(mmSq2Edge.end(), entry);
    return mmSq2Edge;
}
} // namespace

LatticeSimplifier::LatticeSimplifier(CMesh* pCMesh_)
    : pCMesh(pCMesh_)
{
}

bool LatticeSimplifier::run(int passNo, double maxLen, SimplifyMode mode)
{
    const std::vector<u64> vBorderVCD = getBorderVCDs(*pCMesh);
    const double sqMaxLen = maxLen == DBL_MAX ? DBL_MAX : maxLen * maxLen;
    EdgeQueue mmSq2Edge = makeQueue(*pCMesh, vBorderVCD, sqMaxLen);
    int numKilled = 0;
    while (!mmSq2Edge.empty())
    {
        const auto [storedSqLen, pCE] = *mmSq2Edge.begin();
        mmSq2Edge.erase(mmSq2Edge.begin());
        if (pCE->isOrphan() || touches(vBorderVCD, *pCE))
            continue;
        const double sqLen = getSqLength(*pCMesh, *pCE);
        if (sqLen > storedSqLen)
        {
            if (sqLen < sqMaxLen)
                mmSq2Edge.emplace(sqLen, pCE);
            continue;
        }
        if (tryCollapse(pCE, mode, sqMaxLen, mmSq2Edge))
            ++numKilled;
    }
    printText("passNo: " + std::to_string(passNo) + ", numKilled: " + std::to_string(numKilled) + "\n");
    printText("killDups has killed " + std::to_string(pCMesh->killDuplicates()) + "\n");
    const int num2 = pCMesh->killDuplicates();
    printText("killDups has killed " + std::to_string(num2) + "\n");
    ASSEX(num2 == 0);
    return numKilled >= MIN_KILLED_FOR_PASS || (numKilled >= 1 && passNo == 0);
}

bool LatticeSimplifier::tryCollapse(CEdge* pCE, SimplifyMode mode, double sqMaxLen, EdgeQueue& mm)
{
    if (mode != SM_ENDS && killMid(pCE, pCE->getMidPoint(pCMesh), sqMaxLen, mm))
        return true;
    return mode != SM_MID && (killSingle(pCE, 0, sqMaxLen, mm) || killSingle(pCE, 1, sqMaxLen, mm));
}

bool LatticeSimplifier::killMid(CEdge* pCE, const Point3& mid, double sqMaxLen, EdgeQueue& mm)
{
    if (!staysFlat(pCE->v0, pCE->v1, mid) || !staysFlat(pCE->v1, pCE->v0, mid))
        return false;
    if (pCE->isOrphan())
        return false;
    enqueueEdgesAt(pCMesh->collapseEdgeToMidpoint(pCE), sqMaxLen, mm);
    return true;
}

bool LatticeSimplifier::killSingle(CEdge* pCE, int end, double sqMaxLen, EdgeQueue& mm)
{
    ASSEX(end == 0 || end == 1);
    const u64 killCCD = end == 0 ? pCE->v0 : pCE->v1;
    const u64 trgCCD = pCE->getOtherVCD(killCCD);
    const Point3 trgPoint = *pCMesh->getVtx(trgCCD);
    if (!staysFlat(killCCD, trgCCD, trgPoint) || !pCMesh->collapseEdgeToEndpoint(pCE, killCCD, trgCCD))
        return false;
    enqueueEdgesAt(trgCCD, sqMaxLen, mm);
    return true;
}

bool LatticeSimplifier::staysFlat(u64 killCCD, u64 trgCCD, const Point3& trgPos) const
{
    const Point3 killPoint = *pCMesh->getVtx(killCCD);
    std::vector<CTriangle*> vIncT;
    pCMesh->getIncT(killCCD, vIncT);
    ASSEX(!vIncT.empty());
    const double minCross = MIN_CROSS_PER_CELL * pCMesh->getAvgSpacing() * pCMesh->getAvgSpacing();
    for (const CTriangle* pCT : vIncT)
    {
        if (pCT->hasCorner(trgCCD))
            continue;
        const int ici = pCT->getICI(killCCD);
        const Point3& p1 = *pCT->getVtx(pCMesh, CTriangle::getNext(ici));
        const Point3& p2 = *pCT->getVtx(pCMesh, CTriangle::getPrev(ici));
        const Vector3 vec12 = p2 - p1;
        const Vector3 cross = crossProduct(vec12, killPoint - p2);
        if (!(cross.sqLength() > 0.0))
            continue;
        const Vector3 altCross = crossProduct(vec12, trgPos - p2);
        if (altCross.length() < minCross)
            return false;
        if (getAngleDegree(normalizeInline(cross), normalizeInline(altCross)) > MAX_TURN_ANGLE)
            return false;
    }
    return true;
}

void LatticeSimplifier::enqueueEdgesAt(u64 ccd, double sqMaxLen, EdgeQueue& mm) const
{
    std::vector<CEdge*> vIncCE;
    pCMesh->getIncCE(ccd, vIncCE);
    for (CEdge* pCE : vIncCE)
    {
        const double sqLen = getSqLength(*pCMesh, *pCE);
        if (sqLen < sqMaxLen)
            mm.emplace(sqLen, pCE);
    }
}

} // namespace TARN_ZEF

#include "holes/HoleFiller.h"

#include "cmesh/CEdge.h"
#include "cmesh/CMesh.h"
#include "cmesh/CTriangle.h"
#include "geometry/tools.h"
#include "holes/Loop.h"
#include "holes/VcdEdgeMap.h"

#include <algorithm>
#include <string>
#include <utility>

namespace TARN_ZEF
{
namespace
{
const int MAX_IDLE_PASSES = 2;
const double MIN_CROSS_DIFFERENCE = 20.0; // degrees by which both pairs must be nearer crosswise

// Splits the triangles at a corner into the fan of the last one and the rest.
void splitFans(const std::vector<CTriangle*>& vIncT, std::vector<CTriangle*>& vGroup0,
               std::vector<CTriangle*>& vGroup1)
{
    if (vIncT.empty())
        return;
    vGroup1.assign(vIncT.begin(), vIncT.end() - 1);
    std::vector<CTriangle*> vWorkspace{vIncT.back()};
    while (!vWorkspace.empty())
    {
        CTriangle* pCT = vWorkspace.back();
        vWorkspace.pop_back();
        vGroup0.push_back(pCT);
        for (int ici = 0; ici < 3; ++ici)
            for (CTriangle* pNeigT : pCT->getCEdge(ici)->vCT)
            {
                const auto it = std::find(vGroup1.begin(), vGroup1.end(), pNeigT);
                if (it == vGroup1.end())
                    continue;
                vGroup1.erase(it);
                vWorkspace.push_back(pNeigT);
            }
    }
}

bool hasTriangleAt(const std::vector<CTriangle*>& vGroup, const CEdge* pCE)
{
    return std::any_of(vGroup.begin(), vGroup.end(),
                       [pCE](const CTriangle* pCT)
                       { return pCT->hasCorner(pCE->v0) && pCT->hasCorner(pCE->v1); });
}
} // namespace

HoleFiller::HoleFiller(CMesh* pCMesh_)
    : pCMesh(pCMesh_)
{
}

HoleFiller::~HoleFiller() = default;

void HoleFiller::run()
{
    std::vector<CEdge*> vBorderEdges;
    pCMesh->getDegN(DEG_BORDER, vBorderEdges);
    int numIdle = 0;
    while (numIdle < MAX_IDLE_PASSES)
    {
        ++numIdle;
        createLoopsStrategy(vBorderEdges);
        for (const auto& pLoop : vLoops)
        {
            if (!pLoop->isClosed())
                warningMessage(ZEF_HERE, "Open loop, impossible");
            else if (pLoop->solve() && pLoop->getNumNewT() != 0)
                numIdle = 0;
        }
        vBorderEdges.clear();
        while (!vLoops.empty())
        {
            vLoops.back()->getBorderCE(vBorderEdges);
            vLoops.pop_back();
        }
    }
}

void HoleFiller::createLoopsStrategy(const std::vector<CEdge*>& vBorderEdges)
{
    for (const CEdge* pCE : vBorderEdges)
        ASSEX(pCE->getDegree() == 1);
    VcdEdgeMap mmVCD2CE(vBorderEdges);
    std::vector<u64> vMultiVCD;
    mmVCD2CE.getJunctions(vMultiVCD);
    for (const u64 vcd : vMultiVCD)
        solveMultiVCD(vcd, mmVCD2CE);

    std::vector<CEdge*> vLeft;
    mmVCD2CE.getAllEdges(vLeft);
    for (const CEdge* pCE : vLeft)
        ASSEX(pCE->getDegree() == 1);
    while (!mmVCD2CE.empty())
        vLoops.push_back(std::make_unique<Loop>(mmVCD2CE, pCMesh));
}

void HoleFiller::solveMultiVCD(u64 vcd, VcdEdgeMap& mmVCD2CE)
{
    std::vector<CTriangle*> vIncT;
    pCMesh->getIncT(vcd, vIncT);
    u64 va[2];
    u64 vb[2];
    if (!splitEdges(vcd, mmVCD2CE, vIncT, va, vb) || !arePaired(vcd, va, vb))
        return;

    pCMesh->createT(vcd, va[0], vb[0], vIncT.front()->getGeneratingVCD(), 0);
    const CEdge* pKillCE0 = pCMesh->getCE(vcd, va[0]);
    const CEdge* pKillCE1 = pCMesh->getCE(vcd, vb[0]);
    ASSEX(pKillCE0->getDegree() == 2);
    ASSEX(pKillCE1->getDegree() == 2);
    mmVCD2CE.eraseEdge(pKillCE0);
    mmVCD2CE.eraseEdge(pKillCE1);
    CEdge* pNewCE = pCMesh->getCE(va[0], vb[0]);
    if (pNewCE->isBorder())
        mmVCD2CE.addEdge(pNewCE);
    else
        mmVCD2CE.eraseEdge(pNewCE); // it was a border: the triangle closed a gap of three edges
}

// The other ends of the border edges at the corner, va of one fan and vb of the other. False, with a warning,
// if there are not two of each.
bool HoleFiller::splitEdges(u64 vcd, const VcdEdgeMap& mmVCD2CE, const std::vector<CTriangle*>& vIncT,
                            u64 va[2], u64 vb[2]) const
{
    std::vector<CTriangle*> vGroup0;
    std::vector<CTriangle*> vGroup1;
    splitFans(vIncT, vGroup0, vGroup1);
    if (vGroup0.empty() || vGroup1.empty())
    {
        warningMessage(ZEF_HERE, "empty groups");
        printText("vGroup0=" + std::to_string(vGroup0.size()) +
                  ", vGroup1=" + std::to_string(vGroup1.size()) + "\n");
    }

    std::vector<CEdge*> vCE;
    mmVCD2CE.getEdges(vcd, vCE);
    if (vCE.size() != 4)
    {
        warningMessage(ZEF_HERE, "Distance is " + std::to_string(vCE.size()));
        return false;
    }
    std::vector<CEdge*> vCE0;
    std::vector<CEdge*> vCE1;
    for (CEdge* pCE : vCE)
    {
        const bool bGroup0 = hasTriangleAt(vGroup0, pCE);
        const bool bGroup1 = hasTriangleAt(vGroup1, pCE);
        ASSEX((bGroup0 == true && bGroup1 == false) || (bGroup0 == false && bGroup1 == true));
        (bGroup0 ? vCE0 : vCE1).push_back(pCE);
    }
    if (vCE0.size() != 2 || vCE1.size() != 2)
    {
        warningMessage(ZEF_HERE, "vCE0.size()=" + std::to_string(vCE0.size()) +
                                     ", vCE1.size()=" + std::to_string(vCE1.size()));
        return false;
    }
    for (int i = 0; i < 2; ++i)
    {
        va[i] = vCE0[static_cast<std::size_t>(i)]->getOtherVCD(vcd);
        vb[i] = vCE1[static_cast<std::size_t>(i)]->getOtherVCD(vcd);
    }
    return true;
}

// Whether the ends can be paired, each of va with one of vb; puts the pairs at the same index. False if the
// fans cross, or if an edge has no direction.
bool HoleFiller::arePaired(u64 vcd, u64 va[2], const u64 vb[2]) const
{
    const Point3 corner = pCMesh->getAvgPoint(vcd);
    Vector3 aVec[4];
    for (int i = 0; i < 4; ++i)
    {
        const Vector3 vec = pCMesh->getAvgPoint(i < 2 ? va[i] : vb[i - 2]) - corner;
        if (vec.isDegenerate())
            return false;
        aVec[i] = normalizeInline(vec);
    }
    const Vector3& vecA = aVec[0];
    const Vector3& vecB = aVec[1];
    const Vector3& vecAlpha = aVec[2];
    const Vector3& vecBeta = aVec[3];
    const double diff0 = getAngleDegree(vecA, vecAlpha) - getAngleDegree(vecA, vecBeta);
    const double diff1 = getAngleDegree(vecB, vecBeta) - getAngleDegree(vecB, vecAlpha);
    if ((diff0 > 0.0 && 0.0 > diff1) || (diff1 > 0.0 && 0.0 > diff0))
        return false;
    if (diff0 > MIN_CROSS_DIFFERENCE && diff1 > MIN_CROSS_DIFFERENCE)
        std::swap(va[0], va[1]);
    return true;
}

} // namespace TARN_ZEF

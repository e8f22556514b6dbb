#include "repair/VolSolver.h"

#include "cmesh/CMesh.h"
#include "core/appendNew.h"
#include "geometry/tools.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <tuple>

namespace TARN_ZEF
{
namespace
{
// Sorted input, by creation.
bool holds(const std::vector<CEdge*>& vSorted, CEdge* pCE)
{
    return std::binary_search(vSorted.begin(), vSorted.end(), pCE, ByCreationCE());
}

// The share of the edges for which isGood(pCE) is true.
template <typename IsGood>
double getRate(const std::vector<CEdge*>& vCE, IsGood isGood)
{
    return static_cast<double>(std::count_if(vCE.begin(), vCE.end(), isGood)) /
           static_cast<double>(vCE.size());
}

void sortUnique(std::vector<CEdge*>& vCE)
{
    std::sort(vCE.begin(), vCE.end(), ByCreationCE());
    vCE.erase(std::unique(vCE.begin(), vCE.end()), vCE.end());
}

// Patches beside the boundary of a patch, by id.
std::vector<CPatch*> getAdjPatches(const CPatch* pPatch)
{
    std::vector<CPatch*> vAdjPatches;
    for (const CEdge* pCE : pPatch->getPatchBoundary())
        pCE->getPatches(vAdjPatches);
    std::erase_if(vAdjPatches, [pPatch](const CPatch* pAdj) { return pAdj == nullptr || pAdj == pPatch; });
    std::sort(vAdjPatches.begin(), vAdjPatches.end(), ByIdPatch());
    vAdjPatches.erase(std::unique(vAdjPatches.begin(), vAdjPatches.end()), vAdjPatches.end());
    return vAdjPatches;
}

double getDistanceToSegment(const Point3& p0, const Point3& p1, const Point3& q)
{
    const Vector3 dir = p1 - p0;
    const double sqLen = dir.sqLength();
    const double t = sqLen > 0.0 ? std::clamp(dir * (q - p0) / sqLen, 0.0, 1.0) : 0.0;
    return std::sqrt(sqDistance(p0 + dir * t, q));
}
} // namespace

VolSolver::VolSolver(CMesh* pCMesh_, Calc* pCalc_)
    : pCMesh(pCMesh_)
    , pCalc(pCalc_)
{
}

VolSolver::~VolSolver()
{
    deletePatches();
}

void VolSolver::deletePatches()
{
    for (CPatch* pPatch : vPatches)
        delete pPatch;
    vPatches.clear();
    sStrongPatches.clear();
    vWeakPatches.clear();
    vKillList.clear();
}

// --- Cut into patches --------------------------------------------------------------------------------------

void VolSolver::createPatches(const EdgeSet& sWalls, const std::vector<CTriangle*>& vT,
                              std::map<u64, CPatch*>& mOppVCD2Patch, std::vector<CEdge*>& vBorderME)
{
    deletePatches();
    pCMesh->deletePatches();
    pCMesh->clearVisited();
    // A mark says that the triangle waits for its patch.
    for (CTriangle* pCT : vT)
        pCT->bVisited = pCT->isAlive();
    for (CTriangle* pSeed : vT)
    {
        if (!pSeed->bVisited)
            continue;
        CPatch* const pPatch = appendNew(vPatches, pCMesh, pCalc);
        fillPatch(pPatch, pSeed, sWalls, mOppVCD2Patch, vBorderME);
    }
    sortUnique(vBorderME);
}

void VolSolver::fillPatch(CPatch* pPatch, CTriangle* pSeed, const EdgeSet& sWalls,
                          std::map<u64, CPatch*>& mOppVCD2Patch, std::vector<CEdge*>& vBorderME) const
{
    std::vector<CTriangle*> vWorkspace{pSeed};
    pSeed->bVisited = false;
    while (!vWorkspace.empty())
    {
        CTriangle* pCurrentCT = vWorkspace.back();
        vWorkspace.pop_back();
        pPatch->addT(pCurrentCT);
        for (int ici = 0; ici < 3; ++ici)
        {
            CEdge* pCE = pCurrentCT->getCEdge(ici);
            ASSEX(pCE != 0);
            if (pCE->isNonManifold())
            {
                vBorderME.push_back(pCE);
                pPatch->vBorderME.push_back(pCE);
                mOppVCD2Patch[pCurrentCT->getCorner(ici)] = pPatch;
            }
            if (!pCE->isInner() || sWalls.count(pCE) != 0)
                continue;
            CTriangle* pNeigT = pCE->vCT[pCE->vCT[0] == pCurrentCT ? 1 : 0];
            if (!pNeigT->bVisited)
                continue;
            pNeigT->bVisited = false;
            vWorkspace.push_back(pNeigT);
        }
    }
    sortUnique(pPatch->vBorderME);
}

void VolSolver::classifyPatches()
{
    for (CPatch* pPatch : vPatches)
    {
        pPatch->setOuterBoundary();
        pPatch->setNumInnerVtx();
    }
    std::sort(vPatches.begin(), vPatches.end(),
              [](const CPatch* pA, const CPatch* pB)
              {
                  return std::make_tuple(pA->getNumInnerVtx(), pB->getSize(), pA->getId()) <
                         std::make_tuple(pB->getNumInnerVtx(), pA->getSize(), pB->getId());
              });
    for (CPatch* pPatch : vPatches)
    {
        if (pPatch->getNumInnerVtx() > 0)
            sStrongPatches.insert(pPatch);
        else
            vWeakPatches.push_back(pPatch);
    }
}

// --- Weak patches ------------------------------------------------------------------------------------------

void VolSolver::presolveBubbles()
{
    printText("PreSolve Bubbles...\n");
    std::vector<CTriangle*> vAliveT;
    pCMesh->getAliveT(vAliveT);
    std::map<u64, CPatch*> mOppVCD2Patch;
    std::vector<CEdge*> vBorderME;
    createPatches({}, vAliveT, mOppVCD2Patch, vBorderME);
    classifyPatches();
    printText("NumPatches: " + std::to_string(vPatches.size()) +
              "\nsStrongPatches: " + std::to_string(sStrongPatches.size()) +
              "\nvWeakPatches: " + std::to_string(vWeakPatches.size()) + "\n");
    vIndivBorders.clear();
    if (sStrongPatches.empty())
    {
        printText("VolSolver::solveBubbles(), sStrongPatches.size()=0, returning\n");
        return;
    }
    const std::vector<CEdge*> vCurrentBorders = collectStrongBorders();
    printText("sCurrentBorders.size()=" + std::to_string(vCurrentBorders.size()) + "\n");
    collectKillList(rateWeakPatches(vWeakPatches, vCurrentBorders));
    for (const Victim& victim : vKillList)
        victim.pPatch->kill();
}

// By creation, each once.
std::vector<CEdge*> VolSolver::collectStrongBorders()
{
    std::vector<CEdge*> vCE;
    for (const CPatch* pPatch : sStrongPatches)
        pPatch->getPatchBoundaryCE(vCE);
    std::sort(vCE.begin(), vCE.end(), ByCreationCE());
    for (std::size_t i = 0; i < vCE.size();)
    {
        std::size_t end = i + 1;
        while (end < vCE.size() && vCE[end] == vCE[i])
            ++end;
        if (end - i == 1)
            vIndivBorders.push_back(vCE[i]);
        i = end;
    }
    vCE.erase(std::unique(vCE.begin(), vCE.end()), vCE.end());
    return vCE;
}

// By the share of the boundary that strong patches have too, then by id.
std::vector<VolSolver::RatedPatch> VolSolver::rateWeakPatches(const std::vector<CPatch*>& vWeak,
                                                              const std::vector<CEdge*>& vCurrentBorders)
{
    std::vector<RatedPatch> vMatchRate2Patch;
    for (CPatch* pCand : vWeak)
    {
        const std::vector<CEdge*>& vCE = pCand->getPatchBoundary();
        if (vCE.empty())
        {
            warningMessage(ZEF_HERE, "sCE.emtpy()");
            continue;
        }
        const double matchRate = getRate(vCE, [&](CEdge* pCE) { return holds(vCurrentBorders, pCE); });
        vMatchRate2Patch.emplace_back(matchRate, pCand);
    }
    std::sort(vMatchRate2Patch.begin(), vMatchRate2Patch.end(),
              [](const RatedPatch& a, const RatedPatch& b)
              { return a.first != b.first ? a.first < b.first : ByIdPatch()(a.second, b.second); });
    return vMatchRate2Patch;
}

void VolSolver::collectKillList(const std::vector<RatedPatch>& vMatchRate2Patch)
{
    std::vector<CEdge*> vCandidateCE; // an edge stands in it once for each candidate that it bounds
    for (const auto& [matchRate, pCand] : vMatchRate2Patch)
        pCand->getPatchBoundaryCE(vCandidateCE);
    std::sort(vCandidateCE.begin(), vCandidateCE.end(), ByCreationCE());
    const auto bordersOne = [&vCandidateCE](CEdge* pCE)
    {
        const auto [itBegin, itEnd] =
            std::equal_range(vCandidateCE.begin(), vCandidateCE.end(), pCE, ByCreationCE());
        return itEnd - itBegin == 1;
    };
    for (const auto& [matchRate, pCand] : vMatchRate2Patch)
    {
        const double matchRate2 = getRate(pCand->getPatchBoundary(), bordersOne);
        if (matchRate > matchRate2 && matchRate2 == 0.0)
            vKillList.push_back({pCand, getAdjPatches(pCand)});
    }
}

// --- Borders of the strong patches -------------------------------------------------------------------------

void VolSolver::integrateDanglingAndKill()
{
    sortBordersByDegree();
    printText("vBorderCE=" + std::to_string(vBorderCE.size()) + "\nvDeg3CE=" +
              std::to_string(vDeg3CE.size()) + "\nvDeg4CE=" + std::to_string(vDeg4CE.size()) + "\n");
    std::vector<u64> vCCD;
    for (const std::vector<CEdge*>* pvCE : {&vBorderCE, &vDeg3CE, &vDeg4CE})
        for (const CEdge* pCE : *pvCE)
            vCCD.insert(vCCD.end(), {pCE->v0, pCE->v1});
    std::sort(vCCD.begin(), vCCD.end());
    vCCD.erase(std::unique(vCCD.begin(), vCCD.end()), vCCD.end());
    killDanglingAt(vCCD);
}

void VolSolver::sortBordersByDegree()
{
    vBorderCE.clear();
    vDeg3CE.clear();
    vDeg4CE.clear();
    std::vector<CEdge*> vPatchBorderCE;
    for (const CPatch* pPatch : sStrongPatches)
        if (pPatch->isAlive())
            pPatch->getPatchBoundaryCE(vPatchBorderCE);
    sortUnique(vPatchBorderCE);
    for (CEdge* pCE : vPatchBorderCE)
    {
        switch (pCE->getDegree())
        {
        case 1:
            vBorderCE.push_back(pCE);
            break;
        case 3:
            vDeg3CE.push_back(pCE);
            break;
        case 4:
            vDeg4CE.push_back(pCE);
            break;
        default:
            warningMessage(ZEF_HERE, "Uh, degree is " + std::to_string(pCE->getDegree()));
            break;
        }
    }
}

void VolSolver::killDanglingAt(const std::vector<u64>& vVCD)
{
    std::vector<CTriangle*> vIncT;
    for (const u64 vcd : vVCD)
    {
        vIncT.clear();
        pCMesh->getIncT(vcd, vIncT);
        if (std::any_of(vIncT.begin(), vIncT.end(), [this](const CTriangle* pCT) { return isInStrong(pCT); }))
            continue;
        for (CTriangle* pCT : vIncT)
            pCT->kill(pCMesh);
    }
}

// --- Edges to work on --------------------------------------------------------------------------------------

CEdge* VolSolver::adaptCE(u64 ccd, CTriangle* pCT, int ici, double& dist) const
{
    const Point3 q = pCMesh->getAvgPoint(ccd);
    const auto getDistance = [&](const CEdge* pCE)
    { return getDistanceToSegment(pCMesh->getAvgPoint(pCE->v0), pCMesh->getAvgPoint(pCE->v1), q); };
    CEdge* pTaken = pCT->getCEdge(ici);
    if (const CTriangle* pNeigT = pTaken->getNeigT(pCT))
    {
        const int neigICI = pNeigT->getICI(pTaken->v0, pTaken->v1);
        CEdge* pAlt1 = pNeigT->getCEdge(CTriangle::getNext(neigICI));
        CEdge* pAlt2 = pNeigT->getCEdge(CTriangle::getPrev(neigICI));
        const bool bStrong1 = leadsToStrong(*pAlt1, pNeigT);
        const bool bStrong2 = leadsToStrong(*pAlt2, pNeigT);
        if (bStrong1 && bStrong2)
            pTaken = getDistance(pAlt2) < getDistance(pAlt1) ? pAlt2 : pAlt1;
        else if (bStrong1 || bStrong2)
            pTaken = bStrong1 ? pAlt1 : pAlt2;
    }
    dist = getDistance(pTaken);
    return pTaken;
}

bool VolSolver::leadsToStrong(const CEdge& edge, const CTriangle* pFromCT) const
{
    return std::any_of(edge.vCT.begin(), edge.vCT.end(),
                       [&](const CTriangle* pCT) { return pCT != pFromCT && isInStrong(pCT); });
}

} // namespace TARN_ZEF

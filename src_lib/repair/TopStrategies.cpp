// Strategies of Top that grow a consistent surface out of a non-manifold mesh: a spanning tree by bend, the
// growing of the outermost patch, and the removal of what closed chains of non-manifold edges cut out.
#include "repair/Top.h"

#include "cmesh/CMesh.h"
#include "cmesh/CPatch.h"
#include "geometry/tools.h"
#include "holes/Chain.h"
#include "holes/ChainMgr.h"
#include "lattice/cellCodes.h"
#include "repair/Inspector.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <iostream>
#include <iterator>
#include <limits>
#include <unordered_set>

namespace TARN_ZEF
{
namespace
{
// A triangle that faces up to this much along x cannot tell inwards from outwards.
const double MIN_FACING_X = 0.001;
// What a chain may cut out at most, as a multiple of the triangles along it.
const std::size_t MAX_CUT_FACTOR = 3;

u64 getLargestCCD(const std::vector<CPatch*>& vPatches)
{
    u64 maxCCD = 0;
    for (const CPatch* pPatch : vPatches)
        for (const CTriangle* pCT : pPatch->getMembers())
            if (pCT->isAlive())
                maxCCD = std::max({maxCCD, pCT->getC0(), pCT->getC1(), pCT->getC2()});
    return maxCCD;
}

// Other corners of the triangle in the same x layer of the lattice.
int countInLayer(const CTriangle& ct, u64 ccd)
{
    int sum = 0;
    for (const u64 other : {ct.getC0(), ct.getC1(), ct.getC2()})
        if (other != ccd && (other & SPARSE_X) == (ccd & SPARSE_X))
            ++sum;
    return sum;
}

// The triangles on the edges, each once, in order of the edges.
std::vector<CTriangle*> getTrianglesOn(const std::vector<CEdge*>& vCE)
{
    std::vector<CTriangle*> vT;
    std::unordered_set<const CTriangle*> sSeenT;
    for (const CEdge* pCE : vCE)
        for (CTriangle* pCT : pCE->vCT)
            if (sSeenT.insert(pCT).second)
                vT.push_back(pCT);
    return vT;
}

// The outer boundary of a growing patch while it is being worked off from its last edge.
class GrowingBoundary
{
public:
    explicit GrowingBoundary(const CPatch& patch) { patch.getPatchBoundaryCE(sCE); }

    [[nodiscard]] bool empty() const noexcept { return sCE.empty(); }
    CEdge* takeLast()
    {
        const auto itLast = std::prev(sCE.end());
        CEdge* pCE = *itLast;
        sCE.erase(itLast);
        return pCE;
    }
    // An edge that both have is inside from now on.
    void merge(const CPatch& other)
    {
        for (CEdge* pCE : other.getPatchBoundary())
            if (!sCE.insert(pCE).second)
                sCE.erase(pCE);
    }

private:
    std::set<CEdge*, ByCreationCE> sCE;
};
} // namespace

// --- Spanning tree -----------------------------------------------------------------------------------------

void Top::strategyMST(EdgeSet& sProblemCE)
{
    std::cout << "This is strategyMST" << std::endl;
    const std::vector<CTriangle*>& vAllT = pCMesh->getAllT();
    if (vAllT.empty())
        return;
    CTriangle* pStartT = nullptr;
    for (CTriangle* pCT : vAllT)
    {
        if (!pCT->isAlive())
            continue;
        pCT->setPatch(nullptr);
        if (pStartT == nullptr)
            pStartT = pCT;
    }
    ASSEX(pStartT != 0);
    mmEnqueued = {}; // an earlier run may have ended in an exception
    growTree(pStartT);

    pCMesh->forEachEdge(
        [&sProblemCE](CEdge* pCE)
        {
            if (pCE->vCT.size() == 2 && pCE->vCT[0]->needFlip(pCE->vCT[1]))
                sProblemCE.insert(sProblemCE.end(), pCE);
        });
    for (CTriangle* pCT : vAllT)
        pCT->setPatch(nullptr);
}

void Top::growTree(CTriangle* pStartT)
{
    CPatch patch(pCMesh, pCalc);
    const auto add = [&](CTriangle* pCT)
    {
        patch.addT(pCT);
        for (int ici = 0; ici < 3; ++ici)
            enqueue(pCT, ici);
    };
    add(pStartT);
    while (!mmEnqueued.empty())
    {
        const EnqueuedT entry = mmEnqueued.front();
        mmEnqueued.pop();
        if (entry.pNeigT->getPatch() != nullptr)
            continue;
        if (entry.pCT->needFlip(entry.pNeigT))
            entry.pNeigT->flipOrientation();
        add(entry.pNeigT);
    }
}

void Top::enqueue(CTriangle* pCT, int ici)
{
    ASSEX(pCT->isAlive());
    ASSEX(pCT->getPatch() != 0);
    CEdge* pCE = pCT->getCEdge(ici);
    ASSEX(pCE != 0);
    const std::size_t degree = pCE->vCT.size();
    if (degree == 1)
        return;
    if (degree == 2)
    {
        if (pCE->vCT[0] != pCT)
            std::swap(pCE->vCT[0], pCE->vCT[1]);
        ASSEX(pCE->vCT[0] == pCT);
    }
    else if (!rotx.sortStar(pCT, pCE))
    {
        errorMessage(ZEF_HERE, "Rotx failed!");
        throw ZefBugException();
    }
    CTriangle* pPosNeigT = pCE->vCT[1];
    CTriangle* pNegNeigT = degree > 2 ? pCE->vCT[pCE->vCT.size() - 1] : nullptr;

    Vector3 ownNNV;
    bool bOwnOK = false;
    pCT->getNNV(ownNNV, pCMesh, bOwnOK);
    ASSEX(bOwnOK);
    enqueueNeighbour(pCT, ownNNV, pPosNeigT, "NO NNV1");
    if (pNegNeigT != nullptr)
        enqueueNeighbour(pCT, ownNNV, pNegNeigT, "NO NNV1 (a)");
}

void Top::enqueueNeighbour(CTriangle* pCT, const Vector3& ownNNV, CTriangle* pNeigT, const char* textNoNormal)
{
    if (pNeigT->getPatch() != nullptr)
        return;
    Vector3 neigNNV;
    bool bNeigOK = false;
    pNeigT->getNNV(neigNNV, pCMesh, bNeigOK);
    if (!bNeigOK)
    {
        errorMessage(ZEF_HERE, textNoNormal);
        return;
    }
    if (pCT->needFlip(pNeigT))
        neigNNV = neigNNV * -1.0;
    mmEnqueued.add({pCT, pNeigT, static_cast<float>(getAngleDegree(ownNNV, neigNNV))});
}

// --- Growing of the outermost patch ------------------------------------------------------------------------

CTriangle* Top::findFacing(const std::vector<CTriangle*>& vIncT, u64 maxCCD, bool& bNeedFlip)
{
    std::vector<std::pair<int, CTriangle*>> vSumT;
    for (CTriangle* pCT : vIncT)
        vSumT.emplace_back(countInLayer(*pCT, maxCCD), pCT);
    std::stable_sort(vSumT.begin(), vSumT.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    for (const auto& [sum, pCT] : vSumT)
    {
        Vector3 coarseNNV;
        pCT->getCoarseNormal(coarseNNV);
        if (std::fabs(coarseNNV.x()) < MIN_FACING_X)
            continue;
        bNeedFlip = coarseNNV.x() < 0.0;
        return pCT;
    }
    return nullptr;
}

CTriangle* Top::getMaxT(const std::vector<CPatch*>& vPatches, bool& bNeedFlip) const
{
    const u64 maxCCD = getLargestCCD(vPatches);
    std::vector<CTriangle*> vIncT;
    pCMesh->getIncT(maxCCD, vIncT);
    ASSEX(!vIncT.empty());
    CTriangle* pMaxT = findFacing(vIncT, maxCCD, bNeedFlip);
    if (pMaxT != nullptr)
        return pMaxT;
    warningMessage(ZEF_HERE, "no usable pMaxT");
    throw ZefBugException();
}

CPatch* Top::patchGrowing(const std::vector<CPatch*>& vPatches)
{
    Inspector inspector(pCMesh, vPatches);
    std::cout << "Number of input patches: " << vPatches.size() << std::endl;
    bool bNeedFlip = false;
    CTriangle* pMaxT = getMaxT(vPatches, bNeedFlip);
    CPatch* pCurrentPatch = pMaxT->getPatch();
    ASSEX(pCurrentPatch != 0);
    if (bNeedFlip)
        pCurrentPatch->flipAll();
    inspector.keepGoodPartForKnownBorder(pCurrentPatch, pMaxT, sBorderCCD);
    pCurrentPatch->setOuterBoundary();

    bool bWarned = false;
    GrowingBoundary boundary(*pCurrentPatch);
    while (!boundary.empty())
    {
        CPatch* pForeignPatch = findForeignPatch(boundary.takeLast(), pCurrentPatch, bWarned);
        if (pForeignPatch == nullptr)
            continue;
        pForeignPatch->setOuterBoundary();
        boundary.merge(*pForeignPatch);
        pCurrentPatch->assimilate(pForeignPatch, false);
    }
    pCurrentPatch->setOuterBoundary();
    inspector.discardOthers(pCurrentPatch);
    return pCurrentPatch;
}

CPatch* Top::findForeignPatch(CEdge* pBoundaryCE, CPatch* pCurrentPatch, bool& bWarned) const
{
    CTriangle* pOwnPatchT = pBoundaryCE->getUniqueInPatch(pCurrentPatch);
    if (pOwnPatchT == nullptr || pBoundaryCE->vCT.size() < 2)
        return nullptr;
    if (!rotx.sortStar(pOwnPatchT, pBoundaryCE))
    {
        if (!bWarned)
            warningMessage(ZEF_HERE, "!bRotxOK, unique-wrn");
        bWarned = true;
        return nullptr;
    }
    ASSEX(pBoundaryCE->vCT[0] == pOwnPatchT);
    const CTriangle* pForeignT = pBoundaryCE->vCT[1];
    CPatch* pForeignPatch = pForeignT->getPatch();
    if (pForeignPatch == nullptr)
        return nullptr;
    ASSEX(pForeignPatch != pCurrentPatch);
    ASSEX(pForeignPatch->getSize() > 0);
    if (pOwnPatchT->needFlip(pForeignT))
        pForeignPatch->flipAll();
    ASSEX(!pOwnPatchT->needFlip(pForeignT));
    return pForeignPatch;
}

void Top::killBoundaryPatches(const std::vector<CPatch*>& vPatches)
{
    for (CPatch* pPatch : vPatches)
    {
        std::vector<CEdge*> lBorder;
        pPatch->getCEByDegree(DEG_BORDER, lBorder);
        if (lBorder.empty())
            continue;
        warningMessage(ZEF_HERE, "Killing a patch");
        pPatch->kill();
    }
}

// --- Chains of non-manifold edges --------------------------------------------------------------------------

void Top::closeChainsKillT()
{
    std::vector<CEdge*> vCE3;
    pCMesh->getDegN(3, vCE3);
    const ChainMgr chainMgr(pCMesh, VcdEdgeMap(vCE3), false);
    std::vector<CEdge*> vNewCE;
    for (std::size_t i = 0; i < chainMgr.getNumChains(); ++i)
    {
        const Chain* pChain = chainMgr.getChain(i);
        vNewCE.clear();
        if (pChain->size() > 0 && tryClose(pChain, vNewCE))
            tryKillT(pChain, vNewCE);
    }
}

bool Top::tryClose(const Chain* pChain, std::vector<CEdge*>& vNewCE) const
{
    if (pChain->isClosed())
        return true;
    const std::vector<CEdge*>& vChainCE = pChain->getEdges();
    if (std::any_of(vChainCE.begin(), vChainCE.end(),
                    [](const CEdge* pCE) { return pCE->isOrphan() || pCE->isInner(); }))
        return false;
    const auto isFree = [&vChainCE](const CEdge* pCE)
    { return !pCE->isOrphan() && std::find(vChainCE.begin(), vChainCE.end(), pCE) == vChainCE.end(); };
    return pChain->findConnectors(*pCMesh, isFree, vNewCE);
}

bool Top::tryKillT(const Chain* pChain, const std::vector<CEdge*>& vNewCE)
{
    std::vector<CEdge*> vLoopCE = pChain->getEdges();
    const std::size_t numChainT = getTrianglesOn(vLoopCE).size();
    vLoopCE.insert(vLoopCE.end(), vNewCE.begin(), vNewCE.end());
    const EdgeSet sChainCE(vLoopCE.begin(), vLoopCE.end());

    // A flood that was given up would be given up from any of its triangles.
    std::unordered_set<const CTriangle*> sLargePartT;
    std::vector<CTriangle*> vUsedT;
    for (CTriangle* pStartT : getTrianglesOn(vLoopCE))
    {
        if (sLargePartT.count(pStartT) != 0)
            continue;
        if (!bfs(pStartT, sChainCE, MAX_CUT_FACTOR * numChainT + 1, vUsedT))
        {
            sLargePartT.insert(vUsedT.begin(), vUsedT.end());
            continue;
        }
        if (vUsedT.size() > MAX_CUT_FACTOR * numChainT)
            return false;
        for (CTriangle* pCT : vUsedT)
            pCT->kill(pCMesh);
        return true;
    }
    return false;
}

bool Top::bfs(CTriangle* pStartT, const EdgeSet& sChainCE, std::size_t maxNumT,
              std::vector<CTriangle*>& vUsedT)
{
    std::unordered_set<const CTriangle*> sUsedT{pStartT};
    vUsedT.assign(1, pStartT);
    for (std::size_t i = 0; i < vUsedT.size() && vUsedT.size() <= maxNumT; ++i)
        for (int ici = 0; ici < 3; ++ici)
        {
            CEdge* pCE = vUsedT[i]->getCEdge(ici);
            if (sChainCE.count(pCE) != 0)
                continue;
            for (CTriangle* pNeigT : pCE->vCT)
                if (sUsedT.insert(pNeigT).second)
                    vUsedT.push_back(pNeigT);
        }
    return vUsedT.size() <= maxNumT;
}

} // namespace TARN_ZEF

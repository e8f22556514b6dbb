#include "repair/PatchGrowing.h"

#include "cmesh/CMesh.h"
#include "cmesh/CPatch.h"
#include "lattice/cellCodes.h"
#include "repair/Inspector.h"
#include "repair/RepairState.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <set>
#include <string>
#include <utility>

namespace TARN_ZEF
{
namespace
{
// A triangle that faces up to this much along x cannot tell inwards from outwards.
const double MIN_FACING_X = 0.001;

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

PatchGrowing::PatchGrowing(const RepairState& state_)
    : state(state_)
{
}

CPatch* PatchGrowing::grow(const std::vector<CPatch*>& vPatches)
{
    Inspector inspector(state.pCMesh, vPatches);
    printText("Number of input patches: " + std::to_string(vPatches.size()) + "\n");
    bool bNeedFlip = false;
    CTriangle* pMaxT = getMaxT(vPatches, bNeedFlip);
    CPatch* pCurrentPatch = pMaxT->getPatch();
    ASSEX(pCurrentPatch != 0);
    if (bNeedFlip)
        pCurrentPatch->flipAll();
    inspector.keepGoodPartForKnownBorder(pCurrentPatch, pMaxT, state.sBorderCCD);
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

CPatch* PatchGrowing::findForeignPatch(CEdge* pBoundaryCE, CPatch* pCurrentPatch, bool& bWarned) const
{
    CTriangle* pOwnPatchT = pBoundaryCE->getUniqueInPatch(pCurrentPatch);
    if (pOwnPatchT == nullptr || pBoundaryCE->vCT.size() < 2)
        return nullptr;
    if (!state.rotx.sortStar(pOwnPatchT, pBoundaryCE))
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

CTriangle* PatchGrowing::getMaxT(const std::vector<CPatch*>& vPatches, bool& bNeedFlip) const
{
    const u64 maxCCD = getLargestCCD(vPatches);
    std::vector<CTriangle*> vIncT;
    state.pCMesh->getIncT(maxCCD, vIncT);
    ASSEX(!vIncT.empty());
    CTriangle* pMaxT = findFacing(vIncT, maxCCD, bNeedFlip);
    if (pMaxT != nullptr)
        return pMaxT;
    warningMessage(ZEF_HERE, "no usable pMaxT");
    throw ZefBugException();
}

CTriangle* PatchGrowing::findFacing(const std::vector<CTriangle*>& vIncT, u64 maxCCD, bool& bNeedFlip)
{
    std::vector<std::pair<int, CTriangle*>> vSumT;
    vSumT.reserve(vIncT.size());
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

void PatchGrowing::killBoundaryPatches(const std::vector<CPatch*>& vPatches)
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

} // namespace TARN_ZEF

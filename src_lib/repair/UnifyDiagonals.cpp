#include "repair/UnifyDiagonals.h"

#include "cmesh/CMesh.h"
#include "repair/FlatTriangles.h"
#include "repair/RepairState.h"

#include <algorithm>
#include <array>
#include <vector>

namespace TARN_ZEF
{
UnifyDiagonals::UnifyDiagonals(RepairState& state_)
    : state(state_)
    , pCMesh(state_.pCMesh)
{
}

void UnifyDiagonals::run()
{
    const unsigned int numEdges = pCMesh->getNumEdges();
    std::vector<CEdge*> vCE;
    if (state.crossing.find(*pCMesh))
        vCE = state.crossing.get(); // a change concerns the diagonals of one square only
    else
        pCMesh->getAllCE(vCE);
    for (std::size_t i = 0; i < vCE.size(); ++i)
    {
        if (!unifyAt(vCE[i]))
            continue;
        // A split may give any edge a crossing one. The edges that it made are none of this pass.
        std::vector<CEdge*> vAllCE;
        pCMesh->getAllCE(vAllCE);
        std::erase_if(vAllCE, [&](CEdge* pCE)
                      { return pCE->getNumber() >= numEdges || !ByMapOrderCE()(vCE[i], pCE); });
        for (std::size_t k = 0; k < vAllCE.size(); ++k)
            unifyAt(vAllCE[k]);
        break;
    }
}

// Returns whether a flat triangle was split.
bool UnifyDiagonals::unifyAt(CEdge* pCE)
{
    const auto [pCT0, pCT1, pOtherCE, ccd0, ccd1] = findCrossedSquare(*pCMesh, *pCE);
    if (pOtherCE == nullptr)
        return false;
    pCT0->kill(pCMesh);
    pCT1->kill(pCMesh);
    const u64 generatingVCD = pCT0->getGeneratingVCD();
    std::array<CTriangle*, 2> vNewT = {};
    if (!pOtherCE->hasTriangle(ccd0, ccd1, pCE->v0))
        vNewT[0] = pCMesh->createT(ccd0, ccd1, pCE->v0, generatingVCD, 0);
    if (!pOtherCE->hasTriangle(ccd1, ccd0, pCE->v1))
        vNewT[1] = pCMesh->createT(ccd1, ccd0, pCE->v1, generatingVCD, 0);
    const std::size_t numT = pCMesh->getAllT().size();
    for (CTriangle* pNewT : vNewT)
        if (pNewT != nullptr && pNewT->isAlive() && pNewT->isDegenerate(pCMesh))
            splitNewFlat(pNewT);
    return pCMesh->getAllT().size() != numT;
}

// Its corner 2 lies on the edge of the other two, or nearly so.
void UnifyDiagonals::splitNewFlat(CTriangle* pNewT)
{
    ASSEX(pNewT->getCEdge(2)->getDegree() >= 2);
    if (FlatTriangles(pCMesh).splitOrMove(pNewT, 2))
        return;
    errorMessage(ZEF_HERE, "trySplitNeigsKillT() and laplacianForOne() did not succeed");
    throw ZefBugException();
}

} // namespace TARN_ZEF

#include "repair/SpanningTree.h"

#include "cmesh/CMesh.h"
#include "cmesh/CPatch.h"
#include "geometry/tools.h"
#include "repair/RepairState.h"

#include <utility>
#include <vector>

namespace TARN_ZEF
{
SpanningTree::SpanningTree(const RepairState& state_)
    : state(state_)
{
}

void SpanningTree::orient(EdgeSet& sProblemCE)
{
    printText("This is strategyMST\n");
    const std::vector<CTriangle*>& vAllT = state.pCMesh->getAllT();
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

    state.pCMesh->forEachEdge(
        [&sProblemCE](CEdge* pCE)
        {
            if (pCE->vCT.size() == 2 && pCE->vCT[0]->needFlip(pCE->vCT[1]))
                sProblemCE.insert(sProblemCE.end(), pCE);
        });
    for (CTriangle* pCT : vAllT)
        pCT->setPatch(nullptr);
}

void SpanningTree::growTree(CTriangle* pStartT)
{
    CPatch patch(state.pCMesh, state.pCalc);
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

void SpanningTree::enqueue(CTriangle* pCT, int ici)
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
    else if (!state.rotx.sortStar(pCT, pCE))
    {
        errorMessage(ZEF_HERE, "Rotx failed!");
        throw ZefBugException();
    }
    CTriangle* pPosNeigT = pCE->vCT[1];
    CTriangle* pNegNeigT = degree > 2 ? pCE->vCT[pCE->vCT.size() - 1] : nullptr;

    Vector3 ownNNV;
    bool bOwnOK = false;
    pCT->getNNV(ownNNV, state.pCMesh, bOwnOK);
    ASSEX(bOwnOK);
    enqueueNeighbour(pCT, ownNNV, pPosNeigT, "NO NNV1");
    if (pNegNeigT != nullptr)
        enqueueNeighbour(pCT, ownNNV, pNegNeigT, "NO NNV1 (a)");
}

void SpanningTree::enqueueNeighbour(CTriangle* pCT, const Vector3& ownNNV, CTriangle* pNeigT,
                                    const char* textNoNormal)
{
    if (pNeigT->getPatch() != nullptr)
        return;
    Vector3 neigNNV;
    bool bNeigOK = false;
    pNeigT->getNNV(neigNNV, state.pCMesh, bNeigOK);
    if (!bNeigOK)
    {
        errorMessage(ZEF_HERE, textNoNormal);
        return;
    }
    if (pCT->needFlip(pNeigT))
        neigNNV = neigNNV * -1.0;
    mmEnqueued.add({pCT, pNeigT, static_cast<float>(getAngleDegree(ownNNV, neigNNV))});
}

} // namespace TARN_ZEF

#include "repair/CellCompletion.h"

#include "cmesh/CMesh.h"
#include "core/Progress.h"
#include "extraction/Voro.h"
#include "lattice/Calc.h"
#include "repair/BorderRepair.h"
#include "repair/RepairState.h"
#include "repair/UnifyDiagonals.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace TARN_ZEF
{
namespace
{
// Appends the values that occur exactly num times; sorts the input.
void appendRepeated(u64* pBegin, u64* pEnd, std::ptrdiff_t num, std::vector<u64>& vResult)
{
    std::sort(pBegin, pEnd);
    while (pBegin != pEnd)
    {
        u64* pNext = std::upper_bound(pBegin, pEnd, *pBegin);
        if (pNext - pBegin == num)
            vResult.push_back(*pBegin);
        pBegin = pNext;
    }
}

// The cell corners that the unit cells of all three corners of the triangle share.
void appendSharedByTriangle(const Calc& calc, const CTriangle& ct, std::vector<u64>& vGeneratingVCDs)
{
    std::array<u64, 24> vVCD24;
    for (std::size_t i = 0; i < 3; ++i)
    {
        vVCD24[8 * i] = ct.getCorner(static_cast<int>(i));
        calc.completeArray8Up(&vVCD24[8 * i]);
    }
    appendRepeated(vVCD24.data(), vVCD24.data() + vVCD24.size(), 3, vGeneratingVCDs);
}

void appendSharedByEdge(const Calc& calc, const CEdge& edge, std::vector<u64>& vGeneratingVCDs)
{
    std::array<u64, 16> vTmpVCD;
    vTmpVCD[0] = edge.v0;
    calc.completeArray8Up(&vTmpVCD[0]);
    vTmpVCD[8] = edge.v1;
    calc.completeArray8Up(&vTmpVCD[8]);
    appendRepeated(vTmpVCD.data(), vTmpVCD.data() + vTmpVCD.size(), 2, vGeneratingVCDs);
}
} // namespace

CellCompletion::CellCompletion(RepairState& state_)
    : state(state_)
{
}

void CellCompletion::run(Voro* pVoro)
{
    Progress* pProgress = getRootProgress()->getChildProgressSetTodo("TP_cbcpl", 7);
    std::vector<u64> vGeneratingVCDs = collectCells(*pProgress);
    std::sort(vGeneratingVCDs.begin(), vGeneratingVCDs.end());
    vGeneratingVCDs.erase(std::unique(vGeneratingVCDs.begin(), vGeneratingVCDs.end()), vGeneratingVCDs.end());
    state.renew(pVoro->borderFix(vGeneratingVCDs));
    pProgress->increment();
    state.pCMesh->averageBundles();
    pProgress->increment();
    UnifyDiagonals(state).run();
    pProgress->increment();
    pProgress->setFinished(true);
}

// Those at borders and at edges of degree 4, in any order and some of them several times. Four steps.
std::vector<u64> CellCompletion::collectCells(Progress& progress)
{
    CMesh* pCMesh = state.pCMesh;
    std::vector<CEdge*> vBorders;
    BorderRepair(pCMesh).getBordersKillDeg1nn(vBorders);
    progress.increment();
    std::vector<u64> vGeneratingVCDs;
    for (const CEdge* pCE : vBorders)
    {
        ASSEX_TEXT(pCE->vCT.size() == 1, "vT.size()==1");
        appendSharedByTriangle(*state.pCalc, *pCE->vCT[0], vGeneratingVCDs);
    }
    progress.increment();
    std::vector<CEdge*> vDeg4;
    pCMesh->getDegN(4, vDeg4);
    progress.increment();
    for (const CEdge* pCE : vDeg4)
        appendSharedByEdge(*state.pCalc, *pCE, vGeneratingVCDs);
    progress.increment();
    return vGeneratingVCDs;
}

} // namespace TARN_ZEF

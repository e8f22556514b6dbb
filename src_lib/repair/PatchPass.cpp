#include "repair/PatchPass.h"

#include "cmesh/CPatch.h"
#include "cmesh/SurfacePieces.h"
#include "core/Progress.h"
#include "repair/PatchSolver.h"
#include "repair/RepairState.h"

#include <algorithm>

namespace TARN_ZEF
{
namespace
{
const u64 NUM_STEPS_PATCHES = 100; // of the progress node of one pass

bool runSolver(PatchSolver& solver, bool bStrict)
{
    Progress* pProgress = getRootProgress()->getChildProgressSetTodo("TP_pps", NUM_STEPS_PATCHES);
    const bool bChanged = solver.pass(bStrict, *pProgress);
    pProgress->setFinished(true);
    return bChanged;
}

// A few triangles that hang on nothing else.
bool isBubble(const CPatch& patch)
{
    if (patch.getSize() >= PatchSolver::MAX_BUBBLE)
        return false;
    std::vector<CEdge*> vCE;
    std::vector<CEdge*> vInnerCE;
    patch.getAllCE(vCE);
    patch.getCEByDegree(DEG_INNER, vInnerCE);
    return vCE.size() == vInnerCE.size();
}
} // namespace

PatchPass::PatchPass(RepairState& state_)
    : state(state_)
{
}

bool PatchPass::run(bool bStrict)
{
    PatchSolver solver(state.pCMesh, state.pCalc);
    return runSolver(solver, bStrict);
}

SurfacePieces PatchPass::runAll(bool bStrict, Progress* pProgress)
{
    PatchSolver solver(state.pCMesh, state.pCalc);
    while (runSolver(solver, bStrict))
        if (pProgress != nullptr)
            pProgress->increment();
    return solver.releasePieces();
}

void PatchPass::classifyPatches(std::vector<CPatch*>& vPatches, std::vector<PatchPair>& vPatchPairs,
                                std::vector<CPatch*>& vClosedPatches, std::vector<CPatch*>& vOpenPatches)
{
    for (CPatch* pPatch : vPatches)
        pPatch->setOuterBoundary();
    std::sort(vPatches.begin(), vPatches.end(),
              [](const CPatch* pA, const CPatch* pB)
              {
                  const std::vector<CEdge*>& vA = pA->getPatchBoundary();
                  const std::vector<CEdge*>& vB = pB->getPatchBoundary();
                  if (vA == vB)
                      return ByIdPatch()(pA, pB);
                  return std::lexicographical_compare(vA.begin(), vA.end(), vB.begin(), vB.end(),
                                                      ByCreationCE());
              });
    for (std::size_t i = 0; i < vPatches.size(); ++i)
    {
        CPatch* pPatch = vPatches[i];
        if (!pPatch->isAlive())
            continue;
        CPatch* pNext = i + 1 < vPatches.size() ? vPatches[i + 1] : nullptr;
        if (pPatch->getPatchBoundary().empty())
            vClosedPatches.push_back(pPatch);
        else if (pNext != nullptr && pNext->isAlive() &&
                 pNext->getPatchBoundary() == pPatch->getPatchBoundary())
            vPatchPairs.emplace_back(pPatch, pNext);
        else
            vOpenPatches.push_back(pPatch);
    }
}

bool PatchPass::solvePair(CPatch* p0, CPatch* p1, double sumArea)
{
    CPatch* pVictim = PatchSolver::chooseVictim(p0, p1, sumArea);
    if (pVictim == nullptr)
        return false;
    pVictim->kill();
    return true;
}

bool PatchPass::solveClosedPatches(std::vector<CPatch*>& vClosedPatches, bool bStrict)
{
    std::sort(vClosedPatches.begin(), vClosedPatches.end(),
              [](const CPatch* pA, const CPatch* pB) {
                  return pA->getSize() != pB->getSize() ? pA->getSize() < pB->getSize() : ByIdPatch()(pA, pB);
              });
    bool bSplit = false;
    for (CPatch* pPatch : vClosedPatches)
    {
        if (!pPatch->isAlive() || !pPatch->isClosed())
            continue;
        if (isBubble(*pPatch))
            pPatch->kill();
        else if (pPatch->canBeSplit() && pPatch->splitClosedPatchKill(bStrict))
            bSplit = true;
    }
    return bSplit;
}

} // namespace TARN_ZEF

#include "repair/SeamPass.h"

#include "cmesh/CMesh.h"
#include "cmesh/CPatch.h"
#include "core/CallRecorder.h"
#include "repair/PatchPass.h"
#include "repair/PatchSolver.h"
#include "repair/RepairState.h"
#include "repair/choosePatches.h"

#include <algorithm>
#include <map>
#include <memory>
#include <numeric>
#include <unordered_map>
#include <vector>

namespace TARN_ZEF
{
namespace
{
const std::size_t MAX_SCRAP = 20;  // triangles
const double MAX_AREA_RATIO = 0.1; // of the mesh, that a decision over patches may take away in one place

// The edges of more than two triangles, those with the same patches together.
std::vector<Seam> findSeams(const CMesh& mesh, const std::vector<std::unique_ptr<CPatch>>& vPatches)
{
    std::unordered_map<const CPatch*, std::size_t> mIndex;
    for (std::size_t i = 0; i < vPatches.size(); ++i)
        mIndex[vPatches[i].get()] = i;
    std::map<std::vector<std::size_t>, double> mNumEdges;
    std::vector<CEdge*> vSeamCE;
    mesh.getDegN(DEG_NON_MANIFOLD, vSeamCE);
    for (const CEdge* pCE : vSeamCE)
    {
        std::vector<std::size_t> vAtEdge;
        for (const CTriangle* pCT : pCE->vCT)
            vAtEdge.push_back(mIndex.at(pCT->getPatch()));
        std::sort(vAtEdge.begin(), vAtEdge.end());
        mNumEdges[vAtEdge] += 1.0;
    }
    std::vector<Seam> vSeams;
    vSeams.reserve(mNumEdges.size());
    for (const auto& [vAtEdge, numEdges] : mNumEdges)
        vSeams.push_back({vAtEdge, numEdges});
    return vSeams;
}

// Whether an edge has an odd number of triangles above two.
bool hasFork(const CMesh& mesh)
{
    std::vector<CEdge*> vSeamCE;
    mesh.getDegN(DEG_NON_MANIFOLD, vSeamCE);
    return std::any_of(vSeamCE.begin(), vSeamCE.end(),
                       [](const CEdge* pCE) { return pCE->getDegree() % 2 == 1; });
}

// On an open surface three sheets may meet for good, as at a window in a wall; not over such a small one.
bool isEnclosedScrap(const CPatch& patch)
{
    if (patch.getSize() > MAX_SCRAP)
        return false;
    std::vector<CEdge*> vBorderCE;
    patch.getCEByDegree(DEG_BORDER, vBorderCE);
    return vBorderCE.empty();
}
} // namespace

SeamPass::SeamPass(RepairState& state_)
    : state(state_)
    , pCMesh(state_.pCMesh)
{
}

void SeamPass::run()
{
    if (!hasFork(*pCMesh))
        return; // sheets that touch
    if (killWhatLoses())
        PatchPass(state).runAll(false, nullptr);
}

// The patches are gone when this returns, before the passes cut new ones. Says whether one died.
bool SeamPass::killWhatLoses()
{
    const bool bClosed = !pCMesh->hasDegree(DEG_BORDER);
    const std::vector<std::unique_ptr<CPatch>> vPatches = PatchSolver(pCMesh, state.pCalc).makeAllPatches();
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
        if (!vStays[i])
        {
            addToReport(&CallReport::numPiecesDropped);
            vPatches[i]->kill();
        }
    return std::find(vStays.begin(), vStays.end(), false) != vStays.end();
}

} // namespace TARN_ZEF

// The cut of a CMesh into patches.
#include "cmesh/CMesh.h"

#include "cmesh/CPatch.h"
#include "cmesh/PatchFlood.h"
#include "core/appendNew.h"

#include <algorithm>

namespace TARN_ZEF
{
namespace
{
// No patch, no mark.
void clearForFlood(CMesh& mesh)
{
    mesh.deletePatches();
    for (CTriangle* pCT : mesh.getAllT())
    {
        if (!pCT->isAlive())
            continue;
        pCT->setPatch(nullptr);
        pCT->bVisited = false;
    }
}

void sortUnique(std::vector<CEdge*>& vCE)
{
    std::sort(vCE.begin(), vCE.end(), ByCreationCE());
    vCE.erase(std::unique(vCE.begin(), vCE.end()), vCE.end());
}
} // namespace

void CMesh::createPatches(const std::set<CEdge*, ByCreationCE>* pCuts, std::vector<CPatch*>& vOut,
                          std::map<u64, CPatch*>& mBorderCCD2Patch, std::vector<CEdge*>& vBorderME)
{
    clearForFlood(*this);
    PatchFlood flood(PatchFlood::Stops::BORDERS_AND_NON_MANIFOLD, pCuts);
    std::vector<CEdge*> vOwnME;
    for (CTriangle* pSeed : getAllT())
    {
        if (!pSeed->isAlive() || pSeed->getPatch() != nullptr)
            continue;
        CPatch* const pPatch = appendNew(vPatches, this, getCalc());
        vOut.push_back(pPatch);
        vOwnME.clear();
        flood.fill(*pPatch, pSeed,
                   [&](const CTriangle* pCT, int i)
                   {
                       vOwnME.push_back(pCT->getCEdge(i));
                       mBorderCCD2Patch[pCT->getCorner(i)] = pPatch;
                   });
        sortUnique(vOwnME);
        pPatch->vBorderME.assign(vOwnME.begin(), vOwnME.end());
        vBorderME.insert(vBorderME.end(), vOwnME.begin(), vOwnME.end());
    }
    sortUnique(vBorderME);
}

void CMesh::createCCPatches()
{
    clearForFlood(*this);
    PatchFlood flood(PatchFlood::Stops::BORDERS, nullptr);
    for (CTriangle* pSeed : getAllT())
    {
        if (!pSeed->isAlive() || pSeed->getPatch() != nullptr)
            continue;
        CPatch* const pPatch = appendNew(vPatches, this, getCalc());
        flood.fill(*pPatch, pSeed);
    }
}

void CMesh::deletePatches()
{
    for (CPatch* pPatch : vPatches)
        delete pPatch;
    vPatches.clear();
}

} // namespace TARN_ZEF

#include "repair/orientedFlood.h"

#include "cmesh/CMesh.h"
#include "cmesh/CPatch.h"
#include "core/appendNew.h"

#include <cstddef>

namespace TARN_ZEF
{
void floodOriented(CTriangle* pSeed, std::vector<CTriangle*>& vFlood)
{
    std::vector<CTriangle*> vReserveT;
    pSeed->bVisited = true;
    vFlood.push_back(pSeed);
    for (std::size_t i = 0; i < vFlood.size(); ++i)
    {
        CTriangle* pCurrentCT = vFlood[i];
        for (int ici = 0; ici < 3; ++ici)
        {
            const CEdge& edge = *pCurrentCT->getCEdge(ici);
            if (!edge.isInner())
                continue;
            CTriangle* pNeigT = edge.vCT[edge.vCT[0] == pCurrentCT ? 1 : 0];
            if (pNeigT->bVisited)
                continue;
            pNeigT->bVisited = true;
            if (pCurrentCT->getStart(&edge) == pNeigT->getStart(&edge))
                pNeigT->flipOrientation();
            (pNeigT->allEdgesManifold() ? vFlood : vReserveT).push_back(pNeigT);
        }
        if (i + 1 == vFlood.size())
        {
            vFlood.insert(vFlood.end(), vReserveT.begin(), vReserveT.end());
            vReserveT.clear();
        }
    }
}

void createPatchesOrient(CMesh* pCMesh, Calc* pCalc, const std::vector<CTriangle*>& vT,
                         std::vector<CPatch*>& vPatches)
{
    ASSEX(vPatches.empty());
    for (CTriangle* pCT : vT)
        pCT->bVisited = false;
    std::vector<CTriangle*> vFlood;
    for (CTriangle* pSeed : vT)
    {
        if (!pSeed->isAlive() || pSeed->bVisited)
            continue;
        CPatch* const pPatch = appendNew(vPatches, pCMesh, pCalc);
        vFlood.clear();
        floodOriented(pSeed, vFlood);
        for (CTriangle* pCT : vFlood)
            pPatch->addT(pCT);
    }
}

} // namespace TARN_ZEF

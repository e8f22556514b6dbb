#include "repair/ChainCloser.h"

#include "cmesh/CMesh.h"
#include "holes/Chain.h"
#include "holes/ChainMgr.h"

#include <algorithm>
#include <unordered_set>

namespace TARN_ZEF
{
namespace
{
// What a chain may cut out at most, as a multiple of the triangles along it.
const std::size_t MAX_CUT_FACTOR = 3;

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
} // namespace

ChainCloser::ChainCloser(CMesh* pCMesh_)
    : pCMesh(pCMesh_)
{
}

void ChainCloser::run()
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

bool ChainCloser::tryClose(const Chain* pChain, std::vector<CEdge*>& vNewCE) const
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

bool ChainCloser::tryKillT(const Chain* pChain, const std::vector<CEdge*>& vNewCE)
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

bool ChainCloser::bfs(CTriangle* pStartT, const EdgeSet& sChainCE, std::size_t maxNumT,
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

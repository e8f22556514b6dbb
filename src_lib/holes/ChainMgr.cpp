#include "holes/ChainMgr.h"

#include "cmesh/CEdge.h"
#include "cmesh/CMesh.h"
#include "files/Visualizer3.h"
#include "holes/Chain.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace TARN_ZEF
{
namespace
{
const unsigned int SCENE_LINE_WIDTH = 3;

// Not in a chain, and no orphan. An edge of the chain itself carries a direction.
bool canConnect(const CEdge* pCE)
{
    return pCE->getDirection() == ED_NONE && !pCE->isOrphan();
}

void sortUnique(std::vector<CEdge*>& vCE)
{
    std::sort(vCE.begin(), vCE.end(), ByCreationCE());
    vCE.erase(std::unique(vCE.begin(), vCE.end()), vCE.end());
}
} // namespace

ChainMgr::ChainMgr(CMesh* pCMesh_, VcdEdgeMap mmVCD2CE_, bool bTryClose_)
    : pCMesh(pCMesh_)
    , mmVCD2CE(std::move(mmVCD2CE_))
    , bTryClose(bTryClose_)
{
    std::vector<CEdge*> vCE;
    mmVCD2CE.getAllEdges(vCE);
    for (CEdge* pCE : vCE)
        pCE->setDirection(ED_NONE);
    createChains();
}

ChainMgr::~ChainMgr() = default;

Chain* ChainMgr::getChain(std::size_t i) const
{
    ASSEX(i < vChains.size());
    return vChains[i].get();
}

void ChainMgr::createChains()
{
    bool bLastPass = false;
    while (!mmVCD2CE.empty())
    {
        const std::size_t numOld = vChains.size();
        std::vector<CEdge*> vBackup;
        takeJunctionsOut(vBackup);
        while (!mmVCD2CE.empty())
            vChains.push_back(std::make_unique<Chain>(pCMesh, mmVCD2CE));

        std::vector<CEdge*> vUsedEdges;
        const std::size_t numClosed = sortNewChains(numOld, bLastPass, vBackup, vUsedEdges);
        if (bLastPass)
            return;
        if (numClosed == 0)
            bLastPass = true;
        refill(vBackup, vUsedEdges);
    }
}

// An edge stays in the map at an end that is no junction: there it can still be part of a chain.
void ChainMgr::takeJunctionsOut(std::vector<CEdge*>& vBackup)
{
    std::vector<u64> vJunctions;
    mmVCD2CE.getJunctions(vJunctions);
    for (const u64 vcd : vJunctions)
        mmVCD2CE.getEdges(vcd, vBackup);
    for (const u64 vcd : vJunctions)
        mmVCD2CE.eraseVCD(vcd);
}

bool ChainMgr::closeChain(Chain* pChain) const
{
    std::vector<CEdge*> vConnectorCE;
    if (!tryCloseChain(pChain, vConnectorCE))
        return false;
    pChain->addEdges(vConnectorCE);
    return true;
}

// Tells the new chains that are done with, whose edges are used up, from those that give their edges back.
std::size_t ChainMgr::sortNewChains(std::size_t numOld, bool bLastPass, std::vector<CEdge*>& vBackup,
                                    std::vector<CEdge*>& vUsedEdges)
{
    std::size_t numClosed = 0;
    for (std::size_t i = numOld; i < vChains.size(); ++i)
    {
        Chain* pChain = vChains[i].get();
        const bool bClosed = pChain->isClosed() || (bTryClose && closeChain(pChain));
        if (bClosed)
            ++numClosed;
        // Without an attempt to close it, an open chain is as final as a closed one.
        if (bClosed || !bTryClose)
        {
            pChain->getEdges(vUsedEdges);
        }
        else if (!bLastPass)
        {
            pChain->getEdges(vBackup);
            pChain->clear();
        }
    }
    return numClosed;
}

void ChainMgr::refill(std::vector<CEdge*>& vBackup, std::vector<CEdge*>& vUsedEdges)
{
    ASSEX(mmVCD2CE.empty());
    if (vBackup.empty())
        return;
    sortUnique(vBackup); // an edge can come from a junction and from a chain that ended there
    sortUnique(vUsedEdges);
    std::vector<CEdge*> vRemaining;
    std::set_difference(vBackup.begin(), vBackup.end(), vUsedEdges.begin(), vUsedEdges.end(),
                        std::back_inserter(vRemaining), ByCreationCE());
    for (CEdge* pCE : vRemaining)
        pCE->setDirection(ED_NONE);
    mmVCD2CE.assign(vRemaining);
}

bool ChainMgr::tryCloseChain(const Chain* pChain, std::vector<CEdge*>& vConnectorCE) const
{
    return pChain->isClosed() || pChain->findConnectors(*pCMesh, canConnect, vConnectorCE);
}

void ChainMgr::writeScene(const std::string& name)
{
    const std::string aColour[3] = {CRED, CGREEN, CORANGE};
    std::vector<Point3> aEnds[3];
    for (const auto& pChain : vChains)
    {
        const int kind = !pChain->isClosed() ? 2 : pChain->hasMoebius() ? 0 : 1;
        for (const CEdge* pCE : pChain->getEdges())
        {
            aEnds[kind].push_back(pCMesh->getAvgPoint(pCE->v0));
            aEnds[kind].push_back(pCMesh->getAvgPoint(pCE->v1));
        }
    }
    Visualizer3 scene(name, pCMesh->getCalc(), DEBUG_SCENES);
    for (int kind = 0; kind < 3; ++kind)
        if (!aEnds[kind].empty())
            scene.writeSegments(aEnds[kind], SCENE_LINE_WIDTH, aColour[kind]);
}

} // namespace TARN_ZEF

#include "holes/HoleToCCD.h"

#include "cmesh/CEdge.h"
#include "cmesh/CTriangle.h"
#include "core/CallRecorder.h"
#include "files/Visualizer3.h"
#include "holes/Chain.h"
#include "holes/ChainMgr.h"
#include "holes/Loop.h"
#include "holes/VcdEdgeMap.h"

#include <algorithm>

namespace TARN_ZEF
{
namespace
{
const std::size_t MAX_EDGES = 50; // of a border that is filled
} // namespace

HoleToCCD::HoleToCCD(CMesh* pCMesh_, Calc* pCalc_)
    : pCMesh(pCMesh_)
    , pCalc(pCalc_)
{
}

HoleToCCD::~HoleToCCD() = default;

bool HoleToCCD::run(std::vector<Point3>& vPixels)
{
    // None may refer to a mesh that changes. The components before any hole closed are of no use here.
    pCMesh->deletePatches();
    fillAll();
    return !vPixels.empty();
}

void HoleToCCD::createChains()
{
    std::vector<CEdge*> vBorderCE;
    pCMesh->getDegN(DEG_BORDER, vBorderCE);
    pChainMgr = std::make_unique<ChainMgr>(pCMesh, VcdEdgeMap(vBorderCE), true);
}

void HoleToCCD::fillAll()
{
    createChains();
    bool bRepaired = false;
    for (std::size_t i = 0; i < pChainMgr->getNumChains(); ++i)
    {
        Chain* pChain = pChainMgr->getChain(i);
        if (!pChain->isClosed() || !pChain->hasMoebius())
            continue;
        pChain->fixMoebius();
        bRepaired = true;
    }
    if (bRepaired)
        createChains();
    if (DEBUG_SCENES)
        pChainMgr->writeScene("holeChains.list");

    for (std::size_t i = 0; i < pChainMgr->getNumChains(); ++i)
    {
        Chain* pChain = pChainMgr->getChain(i);
        if (!pChain->isClosed())
            continue;
        if (pChain->hasMoebius())
            pChain->fixMoebius();
        else if (fill(pChain))
            addToReport(&CallReport::numHolesClosed);
    }
}

bool HoleToCCD::fill(const Chain* pChain)
{
    ASSEX(pChain->isClosed());
    if (!pChain->isShorterThanRim(MAX_EDGES))
        return false;
    std::vector<CEdge*> vBorderCE;
    const std::unique_ptr<BorderMesh> pBorderMesh = createBorderMesh(pChain, vBorderCE);
    if (!pBorderMesh)
        return false;
    const std::unique_ptr<Loop> pLoop = createLoop(&pBorderMesh->mesh, vBorderCE);
    ASSEX(pLoop->isClosed());
    if (!pLoop->solve())
        return false;

    std::vector<CTriangle*> vNewT;
    pLoop->getNewT(vNewT);
    for (const CTriangle* pCT : vNewT)
    {
        // A ring that runs over an edge of more than one triangle may close an ear over one of these.
        const CEdge* pCE = pCMesh->getCE(pCT->getC0(), pCT->getC1());
        if (pCE != nullptr && pCE->hasTriangle(pCT->getC0(), pCT->getC1(), pCT->getC2()))
            continue;
        vFillT.push_back(pCMesh->createT(pCT->getC0(), pCT->getC1(), pCT->getC2(), 0, 0));
    }
    return !vNewT.empty();
}

std::unique_ptr<BorderMesh> HoleToCCD::createBorderMesh(const Chain* pChain,
                                                        std::vector<CEdge*>& vBorderCE) const
{
    std::vector<u64> vChainVCD;
    pChain->getVCDs(vChainVCD);
    std::vector<CTriangle*> vBorderT;
    for (const u64 vcd : vChainVCD)
        pCMesh->getIncT(vcd, vBorderT);
    std::sort(vBorderT.begin(), vBorderT.end(), ByCreationCT());
    vBorderT.erase(std::unique(vBorderT.begin(), vBorderT.end()), vBorderT.end());

    std::vector<u64> vVCD;
    vVCD.reserve(3 * vBorderT.size());
    for (const CTriangle* pCT : vBorderT)
        vVCD.insert(vVCD.end(), {pCT->getC0(), pCT->getC1(), pCT->getC2()});
    std::sort(vVCD.begin(), vVCD.end());
    vVCD.erase(std::unique(vVCD.begin(), vVCD.end()), vVCD.end());

    std::vector<BundleMap::Entry> vEntries;
    vEntries.reserve(vVCD.size());
    for (const u64 vcd : vVCD)
    {
        Bundle* pBundle = pCMesh->findBundle(vcd);
        ASSEX_TEXT(pBundle != nullptr, "q_it!=mCCDBundle.end()");
        vEntries.emplace_back(vcd, pBundle);
    }

    auto pBorderMesh = std::make_unique<BorderMesh>(pCalc);
    pBorderMesh->mCCDBundle.assignSorted(std::move(vEntries));
    pBorderMesh->mesh.prepareCorners(vVCD);
    for (const CTriangle* pCT : vBorderT)
        pBorderMesh->mesh.createT(pCT->getC0(), pCT->getC1(), pCT->getC2(), 0, 0);

    for (const CEdge* pCE : pChain->getEdges())
    {
        CEdge* pCE_new = pBorderMesh->mesh.getCE(pCE->v0, pCE->v1);
        if (pCE_new == nullptr)
            return nullptr;
        vBorderCE.push_back(pCE_new);
    }
    return pBorderMesh;
}

std::unique_ptr<Loop> HoleToCCD::createLoop(CMesh* pBorderMesh, std::vector<CEdge*>& vBorderCE)
{
    VcdEdgeMap mmVCD2CE(vBorderCE);
    auto pLoop = std::make_unique<Loop>(mmVCD2CE, pBorderMesh);
    ASSEX(mmVCD2CE.empty());
    return pLoop;
}

} // namespace TARN_ZEF

#include "api/Hal.h"

#include "cmesh/CMesh.h"
#include "core/CallRecorder.h"
#include "core/Progress.h"
#include "extraction/Voro.h"
#include "intake/CloudMgr.h"
#include "lattice/Bundle.h"
#include "lattice/Calc.h"
#include "repair/Top.h"
#include "rmesh/RMesh.h"
#include "rmesh/RTop.h"

#include <algorithm>

namespace TARN_ZEF
{
namespace
{
// Last to first.
template <typename T>
void deleteAll(std::vector<T*>& v)
{
    for (; !v.empty(); v.pop_back())
        delete v.back();
}
} // namespace

Hal::Hal(CloudMgr* pCloudMgr_)
    : pCloudMgr(pCloudMgr_)
{
}

Hal::~Hal()
{
    deleteAll(vExtraPoints);
    deleteAll(vExtraBundles);
    delete pCMesh;
}

CMesh* Hal::getCMesh() const
{
    ASSEX(pCMesh != 0);
    return pCMesh;
}

void Hal::createCCDBundle()
{
    const auto byCell = [](const Bundle* pA, const Bundle* pB) { return pA->ccd < pB->ccd; };
    if (!std::is_sorted(vBundles.begin(), vBundles.end(), byCell))
        std::sort(vBundles.begin(), vBundles.end(), byCell);
    std::vector<BundleMap::Entry> vEntries;
    vEntries.reserve(vBundles.size());
    for (Bundle* pBundle : vBundles)
        vEntries.emplace_back(pBundle->ccd, pBundle);
    mCCDBundle.assignSorted(std::move(vEntries));
}

std::shared_ptr<Mesh> Hal::reconstruct()
{
    Progress* pProgress = getRootProgress()->getChildProgressSetTodo("HL_st", 9);
    pCloudMgr->getBundles(vBundles, pCalc);
    if (vBundles.empty())
    {
        warningMessage("Reconstruct", "Nothing to do (bad input? wrong resolution?)");
        return {};
    }
    pProgress->increment();
    if (bOccupancyStage)
        thinOccupancy();
    createCCDBundle();
    pProgress->increment();
    pProgress->setFinished(true);

    extractAndRepair(Repair::SCAN);
    return refineMesh();
}

std::shared_ptr<Mesh> Hal::oneMelt()
{
    pCloudMgr->getBundles(vBundles, pCalc);
    if (vBundles.empty())
    {
        warningMessage("Melt", "MELT: Nothing to do");
        return {};
    }
    createCCDBundle();
    extractAndRepair(Repair::MELT);
    return refineMesh();
}

void Hal::toCloud(std::vector<Point3>& vResult)
{
    Progress* pProgress = getRootProgress()->getChildProgressSetTodo("hal-part", 2);
    pCloudMgr->getBundles(vBundles, pCalc);
    pProgress->increment();
    if (vBundles.empty())
        warningMessage("ToCloud", "toCloud: Nothing to do");
    vResult.reserve(vResult.size() + vBundles.size());
    addToReport(&CallReport::numCells, vBundles.size());
    for (const Bundle* pBundle : vBundles)
        vResult.push_back(pCloudMgr->getFrame().leave(*pBundle->pPoint));
    pProgress->increment();
    pProgress->setFinished(true);
}

void Hal::extractAndRepair(Repair repair)
{
    Voro voro(pCalc, &mCCDBundle, TM_FAT);
    {
        const StageScope stage("extraction");
        voro.fatExtractTriangles();
    }
    pCMesh = voro.takeMesh();
    addToReport(&CallReport::numCells, vBundles.size());
    addToReport(&CallReport::numRawT, pCMesh->getNumAliveT());
    const StageScope stage("repair");
    Top top(pCMesh, pCalc);
    if (repair == Repair::SCAN)
        top.run(&voro);
    else
        top.runMelt(&voro);
}

// The combinatorial mesh goes before the refined one is made, in its memory.
std::shared_ptr<Mesh> Hal::refineMesh()
{
    const StageScope stage("mesh");
    std::unique_ptr<RMesh> pRMesh;
    {
        const RMeshSource source(*pCMesh);
        std::vector<StorageBlock> vStorage = pCMesh->releaseStorage();
        delete pCMesh;
        pCMesh = nullptr;
        pRMesh = std::make_unique<RMesh>(source, std::move(vStorage));
    }
    RTop rtop(pRMesh.get());
    rtop.run();
    const NearFrame& frame = pCloudMgr->getFrame();
    if (frame.isShifted())
        pRMesh->placeVertices([&frame](const Point3& p) { return frame.leave(p); });
    auto pMesh = std::make_shared<Mesh>(pRMesh.get());
    static_cast<void>(pRMesh.release());
    return pMesh;
}

} // namespace TARN_ZEF

#include "cmesh/CMeshPositions.h"

#include "cmesh/PointSum.h"
#include "core/zefRand.h"
#include "lattice/Bundle.h"

#include <memory>

namespace TARN_ZEF
{
namespace
{
// The mean is overshot by this factor, as seen from one ring point, and x gets a jitter of up to MAX_JITTER cells:
// so no two corners end up in exactly the same place.
const double RING_OVERSHOOT = 1.003;
const double MAX_JITTER = 1e-05;
// Fewer real ring points do not stand for a ring: then the extra ones count like them.
const double MIN_REAL_RING = 3.0;
} // namespace

CMeshPositions::CMeshPositions(Calc* pCalc_, BundleMap* pCCDBundle_)
    : CMeshRecords(pCCDBundle_)
    , pCalc(pCalc_)
{
}

CMeshPositions::~CMeshPositions()
{
    for (Bundle* pBundle : vBundles)
    {
        delete pBundle->pPoint;
        delete pBundle;
    }
}

Bundle* CMeshPositions::findBundle(u64 ccd) const
{
    const CVertex* pVertex = findVertex(ccd);
    if (pVertex != nullptr && pVertex->pBundle != nullptr)
        return pVertex->pBundle;
    return getBundleMap()->find(ccd);
}

Point3* CMeshPositions::getVtx(u64 ccd) const
{
    const Bundle* pBundle = findBundle(ccd);
    ASSEX_TEXT(pBundle != nullptr, "q_it!=mCCDBundle.end()");
    return pBundle->pPoint;
}

Point3 CMeshPositions::getCoarsePoint(u64 ccd) const
{
    return pCalc->getMid(ccd);
}

double CMeshPositions::getAvgSpacing() const
{
    return pCalc->getCellSizeX();
}

// --- Extra bundles -----------------------------------------------------------------------------------------

void CMeshPositions::addBundle(u64 ccd)
{
    if (findBundle(ccd) != nullptr)
        return;
    auto pPoint = std::make_unique<Point3>(pCalc->getMid(ccd));
    auto pBundle = std::make_unique<Bundle>(pPoint.get());
    pBundle->ccd = ccd;
    vBundles.push_back(pBundle.get());
    Bundle* pOwned = pBundle.release();
    sExtraVtx.insert(pPoint.release());
    getBundleMap()->insert(ccd, pOwned);
    if (CVertex* pVertex = findVertex(ccd))
        pVertex->pBundle = pOwned;
    averageBundle(pOwned);
}

void CMeshPositions::eraseBundle(Bundle* pBundle)
{
    getBundleMap()->erase(pBundle->ccd);
    if (CVertex* pVertex = findVertex(pBundle->ccd))
        pVertex->pBundle = nullptr;
    sExtraVtx.erase(pBundle->pPoint);
    delete pBundle->pPoint;
    delete pBundle;
}

void CMeshPositions::averageBundle(Bundle* pBundle)
{
    std::vector<CEdge*> vIncCE;
    getIncCE(pBundle->ccd, vIncCE);
    if (vIncCE.size() < 2)
        return;
    PointSum real;
    PointSum extra;
    const Point3* pAnyRingVtx = nullptr;
    for (const CEdge* pCE : vIncCE)
    {
        ASSEX(pCE->getDegree() > 0);
        const Bundle* pOther = findBundle(pCE->getOtherVCD(pBundle->ccd));
        if (pOther == nullptr)
            continue;
        pAnyRingVtx = pOther->pPoint;
        (isExtraVtx(pAnyRingVtx) ? extra : real).add(*pAnyRingVtx);
    }
    if (real.count < MIN_REAL_RING)
        real.add(extra);
    if (real.count == 0.0)
    {
        pBundle->pPoint->set(pCalc->getMid(pBundle->ccd));
        return;
    }
    ASSEX(pAnyRingVtx != nullptr);
    const Vector3 d = real.getMean() - *pAnyRingVtx;
    const double eps = zefRand() * MAX_JITTER / ZEF_RAND_MAX * getAvgSpacing();
    const Point3 pos = *pAnyRingVtx + d * RING_OVERSHOOT;
    pBundle->pPoint->set(pos.x() + eps, pos.y(), pos.z());
}

void CMeshPositions::averageBundles()
{
    for (Bundle* pBundle : vBundles)
        averageBundle(pBundle);
}

} // namespace TARN_ZEF

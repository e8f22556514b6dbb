#include "intake/FeatureChain.h"

#include "geometry/tools.h"

namespace TARN_ZEF
{
namespace
{
// Above this bend, in degrees, a chain does not go on.
constexpr double MAX_BEND = 60.0;
// A little below the cosine of MAX_BEND: spares the arc cosine of most candidates.
constexpr double SURELY_TOO_BENT = 0.4999;

bool isBorder(const FeatureEdge& fe)
{
    return fe.maxDih > 360.0;
}

// Of the edges in the star of pPoint, the one that continues fe with the smallest bend; the first among
// equals, or null. A border and an inner edge do not continue each other.
//
// sign  1.0 if pPoint is the end of fe, -1.0 if it is the begin: candidates run out of it, or into it.
FeatureEdge* findContinuation(const FeatureEdge& fe, const Point3* pPoint, double sign, std::size_t star,
                              const FeatureStars& vStars)
{
    FeatureEdge* pBest = nullptr;
    double bestAngle = 361.0;
    const u64 point = vStars[star].first;
    for (std::size_t i = star; i < vStars.size() && vStars[i].first == point; ++i)
    {
        FeatureEdge* const pFE = vStars[i].second;
        if (pFE == &fe || isBorder(*pFE) != isBorder(fe))
            continue;
        const bool bStartsHere = pFE->pSrc == pPoint;
        const Vector3 candVec = pFE->dir * (bStartsHere ? sign : -sign);
        if (fe.dir * candVec < SURELY_TOO_BENT)
            continue;
        const double angle = getAngleDegree(fe.dir, candVec);
        if (angle > MAX_BEND || angle >= bestAngle)
            continue;
        bestAngle = angle;
        pBest = pFE;
    }
    return pBest;
}
} // namespace

FeatureChain::FeatureChain(FeatureEdge* pSeedFE, const FeatureStars& vStars)
    : pFront(pSeedFE)
    , pBack(pSeedFE)
{
    ASSEX(pSeedFE->pChain == nullptr);
    pSeedFE->pChain = this;
    while (growBack(vStars))
    {
    }
    while (growFront(vStars))
    {
    }
    avgDih = computeAvgDih();
}

bool FeatureChain::growBack(const FeatureStars& vStars)
{
    const Point3* const q = pBack->pTrg;
    FeatureEdge* const pNextFE = findContinuation(*pBack, q, 1.0, pBack->trgStar, vStars);
    if (pNextFE == nullptr || pNextFE->pChain != nullptr)
        return false;
    if (pNextFE->pSrc != q)
        pNextFE->turnAround();
    ASSEX(pNextFE->pSrc == q);
    pNextFE->pChain = this;
    pNextFE->pPrev = pBack;
    pBack->pNext = pNextFE;
    pBack = pNextFE;
    return pNextFE->pTrg != pFront->pSrc;
}

bool FeatureChain::growFront(const FeatureStars& vStars)
{
    const Point3* const q = pFront->pSrc;
    FeatureEdge* const pPrevFE = findContinuation(*pFront, q, -1.0, pFront->srcStar, vStars);
    if (pPrevFE == nullptr || pPrevFE->pChain != nullptr)
        return false;
    if (pPrevFE->pTrg != q)
        pPrevFE->turnAround();
    ASSEX(pPrevFE->pTrg == q);
    pPrevFE->pChain = this;
    pPrevFE->pNext = pFront;
    pFront->pPrev = pPrevFE;
    pFront = pPrevFE;
    return pPrevFE->pSrc != pBack->pTrg;
}

double FeatureChain::computeAvgDih() const noexcept
{
    double sum = 0.0;
    std::size_t num = 0;
    for (const FeatureEdge* pFE = pFront; pFE != nullptr; pFE = pFE->pNext, ++num)
        sum += pFE->maxDih;
    return sum / static_cast<double>(num);
}

} // namespace TARN_ZEF

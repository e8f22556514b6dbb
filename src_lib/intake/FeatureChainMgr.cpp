#include "intake/FeatureChainMgr.h"

#include <algorithm>
#include <functional>

#include "parallel/sortMT2.h"

namespace TARN_ZEF
{
FeatureChainMgr::FeatureChainMgr(FeatureList& list_)
    : list(list_)
{
    if (list.empty())
        return;
    makeEdges();
    makeStars();
    makeChains();
}

void FeatureChainMgr::reorder()
{
    std::vector<std::pair<double, const FeatureChain*>> vSorted;
    vSorted.reserve(vChains.size());
    for (const FeatureChain& chain : vChains)
        vSorted.emplace_back(chain.getAvgDih(), &chain);
    std::stable_sort(vSorted.begin(), vSorted.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    const std::size_t numEdges = list.size();
    list.clear();
    for (const auto& [avgDih, pChain] : vSorted)
        for (const FeatureEdge* pFE = pChain->getFront(); pFE != nullptr; pFE = pFE->pNext)
            list.emplace_back(pFE->maxDih, std::make_pair(pFE->pSrc, pFE->pTrg));
    ASSEX(list.size() == numEdges);
}

void FeatureChainMgr::makeEdges()
{
    vFE.reserve(list.size());
    for (const auto& [maxDih, ends] : list)
    {
        FeatureEdge fe;
        fe.pSrc = ends.first;
        fe.pTrg = ends.second;
        fe.maxDih = maxDih;
        fe.dir = normalize(*fe.pTrg - *fe.pSrc);
        vFE.push_back(fe);
    }
}

void FeatureChainMgr::makeStars()
{
    const Point3* pLowest = vFE.front().pSrc;
    for (const FeatureEdge& fe : vFE)
        pLowest = std::min<const Point3*>({pLowest, fe.pSrc, fe.pTrg}, std::less<const Point3*>());
    vStars.reserve(2 * vFE.size());
    for (FeatureEdge& fe : vFE)
    {
        vStars.emplace_back(static_cast<u64>(fe.pSrc - pLowest), &fe);
        vStars.emplace_back(static_cast<u64>(fe.pTrg - pLowest), &fe);
    }
    // Stable: within a point the order of the list stays.
    sortByFirstMT(vStars.begin(), vStars.end());
    std::size_t begin = 0;
    for (std::size_t i = 0; i < vStars.size(); ++i)
    {
        const auto& [point, pFE] = vStars[i];
        if (point != vStars[begin].first)
            begin = i;
        (pFE->pSrc - pLowest == static_cast<std::ptrdiff_t>(point) ? pFE->srcStar : pFE->trgStar) = begin;
    }
}

void FeatureChainMgr::makeChains()
{
    for (FeatureEdge& fe : vFE)
        if (fe.pChain == nullptr)
            vChains.emplace_back(&fe, vStars);
}

} // namespace TARN_ZEF

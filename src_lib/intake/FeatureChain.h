#ifndef ZEF_FEATURECHAIN_H
#define ZEF_FEATURECHAIN_H

#include "core/definitions.h"
#include "intake/FeatureEdge.h"

#include <utility>
#include <vector>

namespace TARN_ZEF
{
// The feature edges at each end point: runs of entries with the same point, in order of the edges' creation.
// The number stands for the point.
using FeatureStars = std::vector<std::pair<u64, FeatureEdge*>>;

// Feature edges that run on in about the same direction, joined end to end.
//
// Ownership:  links the manager's edges and owns nothing; it must not move while edges refer to it.
// Invariant:  an edge is in one chain at most; pTrg of an edge is pSrc of the next one.
// Cost:       a step looks at all edges that meet at the open end, without allocation.
class FeatureChain
{
public:
    // Grows from the seed to the back as far as possible, then to the front.
    FeatureChain(FeatureEdge* pSeedFE, const FeatureStars& vStars);
    FeatureChain(const FeatureChain&) = delete;
    FeatureChain& operator=(const FeatureChain&) = delete;

    // Mean maxDih of the edges.
    [[nodiscard]] double getAvgDih() const noexcept { return avgDih; }
    // The first edge; pNext leads on.
    [[nodiscard]] const FeatureEdge* getFront() const noexcept { return pFront; }

private:
    // One edge more. False at the end: nothing suits, the best one has a chain already, or the chain closed.
    [[nodiscard]] bool growBack(const FeatureStars& vStars);
    [[nodiscard]] bool growFront(const FeatureStars& vStars);
    [[nodiscard]] double computeAvgDih() const noexcept;

    FeatureEdge* pFront;
    FeatureEdge* pBack;
    double avgDih;
};

} // namespace TARN_ZEF

#endif

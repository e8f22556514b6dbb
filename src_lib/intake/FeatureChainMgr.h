#ifndef ZEF_FEATURECHAINMGR_H
#define ZEF_FEATURECHAINMGR_H

#include "intake/FeatureChain.h"

#include <deque>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// (maxDih, (source, target)) of a feature edge; all points stand in one array.
using FeatureList = std::vector<std::pair<double, std::pair<Point3*, Point3*>>>;

// Brings feature edges into the order of the chains that they form.
//
// Ownership:  owns edges and chains; refers to the caller's list and points.
// Threads:    the sorts use the pool.
// Cost:       n log n for the sorts; the growth visits the edges at each end point once or twice.
class FeatureChainMgr
{
public:
    // Makes the chains: in the order of the list, each edge that has no chain yet seeds one.
    explicit FeatureChainMgr(FeatureList& list_);
    FeatureChainMgr(const FeatureChainMgr&) = delete;
    FeatureChainMgr& operator=(const FeatureChainMgr&) = delete;

    // Writes the edges back to the list chain by chain, in rising mean angle and then in order of creation,
    // each edge in the direction of its chain.
    void reorder();

private:
    void makeEdges();
    void makeStars();
    void makeChains();

    FeatureList& list;
    std::vector<FeatureEdge> vFE; // in the order of the list; never grows after makeEdges()
    FeatureStars vStars;
    std::deque<FeatureChain> vChains; // a chain does not move when others follow
};

} // namespace TARN_ZEF

#endif

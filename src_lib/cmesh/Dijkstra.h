#ifndef ZEF_DIJKSTRA_H
#define ZEF_DIJKSTRA_H

#include "Point3.h"
#include "cmesh/CEdge.h"
#include "core/definitions.h"

#include <cfloat>
#include <map>
#include <memory>
#include <vector>

namespace TARN_ZEF
{
// A node of the search for the cheapest paths from one corner along the inner edges of a patch. A path
// prefers sharp edges and shuns flat ones: the cost of an edge is its length times a factor.
//
// Ownership:  the map of nodes owns all nodes of a search; the map of edges is the caller's.
// Invariant:  once update() returned, dist of each node in the map is the smallest sum of costs from the
//             source, and pIncomingCE the last edge of that path, null at the source.
// Cost:       O(n log n) in the edges that the source reaches.
// Source:     E. W. Dijkstra, A note on two problems in connexion with graphs, 1959.
struct Dijkstra
{
    using NodeMap = std::map<u64, std::unique_ptr<Dijkstra>>;
    using EdgeMap = std::map<u64, std::vector<CEdge*>>;

    Dijkstra(u64 vtx_, NodeMap* pmVCD2Dijkstra_, const EdgeMap* pmVCD2InnerCEVec_);

    // Enters this node at that distance, over pCE (null at the source), and spreads from it. Only a strictly
    // smaller distance replaces another. Every corner reached must have an entry in the map of edges.
    void update(CEdge* pCE, double newDist, const std::map<u64, Point3>& mPos);
    // Appends the edges from this node back to the source; ends at the first node of distance 0.0.
    void getBackPath(std::vector<CEdge*>& vPath) const;

    CEdge* pIncomingCE = nullptr;
    u64 vtx;
    double dist = DBL_MAX;
    NodeMap* pmVCD2Dijkstra;
    const EdgeMap* pmVCD2InnerCEVec;
};

} // namespace TARN_ZEF

#endif

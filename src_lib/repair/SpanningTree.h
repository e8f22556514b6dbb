#ifndef ZEF_SPANNINGTREE_H
#define ZEF_SPANNINGTREE_H

#include "Vector3.h"
#include "cmesh/CEdge.h"
#include "core/StableQueue.h"

#include <cstddef>
#include <set>

namespace TARN_ZEF
{
class CTriangle;
struct RepairState;

// Orients by a spanning tree over the triangles, from the first alive one on: of all ways on, the one that
// bends least goes first. At edges of more than two triangles it leads to the next ones in rotation.
//
// Leaves:  what the tree does not reach as it was; all triangles out of their patches.
// Errors:  a mesh of nothing but dead triangles, a triangle without a normal, and a star whose order is
//          unknown throw ZefBugException.
// Cost:    O(n log n).
class SpanningTree
{
public:
    using EdgeSet = std::set<CEdge*, ByCreationCE>;

    explicit SpanningTree(const RepairState& state_);

    // sProblemCE gets the edges of degree 2 in the whole mesh whose triangles disagree.
    void orient(EdgeSet& sProblemCE);
    // Queues the neighbours of a triangle with a patch over its edge ici, those that have no patch.
    void enqueue(CTriangle* pCT, int ici);
    [[nodiscard]] std::size_t getNumEnqueued() const noexcept { return mmEnqueued.size(); }

private:
    // A way on from a triangle that the tree has reached.
    struct EnqueuedT
    {
        CTriangle* pCT;
        CTriangle* pNeigT;
        float angle; // degrees; the bend between the two
    };
    struct AngleOf
    {
        double operator()(const EnqueuedT& entry) const noexcept { return entry.angle; }
    };

    void growTree(CTriangle* pStartT);
    void enqueueNeighbour(CTriangle* pCT, const Vector3& ownNNV, CTriangle* pNeigT, const char* textNoNormal);

    const RepairState& state;
    StableQueue<EnqueuedT, AngleOf> mmEnqueued; // the least bend first
};

} // namespace TARN_ZEF

#endif

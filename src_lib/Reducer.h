#ifndef ZEF_REDUCER_H
#define ZEF_REDUCER_H

#include "CollapseLimits.h"
#include "RECandidate.h"
#include "StableQueue.h"

#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
class Point3;
class Progress;
class REdge;
class RMesh;

// The loop of a reduction: collapses edges of a refined mesh, the cheapest first, until none is left that
// the limits allow.
//
// Candidates are evaluated in batches on the pool, collapses are made one by one. The queue is not kept in
// step: a candidate is evaluated again at its turn, and goes back if it has become much worse; places where
// something happened are evaluated anew when enough of them have come together.
//
// Ownership:  none; the mesh must outlive it. Needs a tree of progress.
// Threads:    the caller's; it is made for one run.
// Cost:       proportional to the number of edges for the first batch, then about 20 evaluations a collapse.
class Reducer
{
public:
    Reducer(RMesh* pRMesh_, const CollapseLimits& limits_);
    Reducer(const Reducer&) = delete;
    Reducer& operator=(const Reducer&) = delete;

    // The number of triangles that died with their collapsed edges. Flat triangles and such on the same
    // corners are left to RMesh::killDegenerate().
    int run();

private:
    struct Penalty
    {
        double operator()(const RECandidate& candidate) const noexcept { return candidate.penalty; }
    };

    void markBorder();
    void evaluate(const std::vector<REdge*>& vRE);
    void startProgress();
    [[nodiscard]] double getFreshPenalty(const RECandidate& candidate);
    // May collapse candidates that passed the tests of the loop; true if it did.
    bool tryCollapse(const RECandidate& candidate);
    [[nodiscard]] bool isBorder(const Point3* pVtx) const;
    [[nodiscard]] bool isBorderStraightAt(const Point3* pVtx) const;
    void noteChange(const Point3* pSrc, const Point3* pTrg);
    [[nodiscard]] bool isRefillDue() const;
    void refill();
    void collectRefillEdges(std::vector<REdge*>& vRefillRE);

    RMesh* pRMesh;
    CollapseLimits limits;
    StableQueue<RECandidate, Penalty> queue;
    std::vector<char> vIsBorder;        // by vertex number, as the mesh was at the start
    std::vector<Point3*> vRefillVtx;    // where collapses went to since the last refill
    std::vector<unsigned int> vChanged; // by vertex number: the last collapse that touched its triangles
    std::vector<REdge*> vScratch;
    Progress* pProgress = nullptr;
    unsigned int numCollapses = 0;
    int numRecomputes = 0;
    int numKilled = 0;
};

} // namespace TARN_ZEF

#endif

#ifndef ZEF_REDUCER_H
#define ZEF_REDUCER_H

#include "core/StableQueue.h"
#include "rmesh/CollapseFans.h"
#include "rmesh/CollapsePenalty.h"
#include "rmesh/RECandidate.h"

#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
class Progress;
class RMesh;
class RTriangle;

// The loop of a reduction: collapses edges of a refined mesh, the cheapest first, until none is left that
// the limits allow.
//
// Candidates are evaluated in batches on the pool, collapses are made one by one. The queue is not kept in
// step: a candidate is evaluated again at its turn, and goes back if it has become much worse; places where
// something happened are evaluated anew when enough of them have come together. A penalty depends on the
// triangles at both ends only, so one that is known stays good until a collapse touches these.
//
// Ownership:  none; the mesh must outlive it. Needs a tree of progress.
// Threads:    the caller's; it is made for one run.
// Cost:       proportional to the number of edges for the first batch, then about 20 evaluations a collapse.
//             Memory is what it waits for: what comes next is fetched ahead.
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

    // What was found out about an edge, each with the time. Time counts collapses from 1 on; 0 is before
    // everything.
    struct Known
    {
        // By the end that vanishes, without a look at the rings: good until triangles at that end change.
        double aTurnPenalty[2];
        unsigned int aTurnAt[2];
        unsigned int ringsAt; // good until triangles at one of the ends change
        bool bRingsMeet;
    };

    // What an evaluation needs for its time; kept to spare allocations.
    struct Buffers
    {
        CollapseFans fans;
        std::vector<const REdge*> vRE;        // of the vertex in hand
        std::vector<const Point3*> vFetchVtx; // whose fans are fetched ahead
        std::vector<const RTriangle*> vFetchT;
    };

    void markBorder();
    void prepareQueue();
    // Evaluates both directions of the edges at these vertices on the pool and queues what is allowed.
    void evaluateCandidates_MT(const std::vector<Point3*>& vVtx);
    void evaluateVertices(const std::vector<Point3*>& vVtx, std::size_t from, std::size_t to,
                          std::vector<RECandidate>& vFound);
    // Bring near the processor what is read next.
    void fetchAhead();
    [[nodiscard]] bool isKnownForbidden(const RECandidate& candidate) const;
    void fetchFansOf(const std::vector<Point3*>& vVtx, std::size_t from, std::size_t to,
                     Buffers& buffers) const;
    void fetchFarFans(const Point3* pVtx, Buffers& buffers) const;
    void collectEdgesAt(const Point3* pVtx, std::vector<const REdge*>& vRE) const;
    void evaluateEdge(unsigned int edge, Buffers& buffers, std::vector<RECandidate>& vFound);
    // Makes anew what is out of date and needed for the wanted directions; the penalties of others may be old.
    const Known& update(unsigned int edge, bool bWanted0, bool bWanted1, CollapseFans& fans);
    [[nodiscard]] static double penaltyOf(const Known& known, int iSrc);
    [[nodiscard]] double getFreshPenalty(const RECandidate& candidate);
    // Collapses the candidate unless the border forbids it; true if it did.
    bool tryCollapse(const RECandidate& candidate);
    [[nodiscard]] bool isBorderStraightAt(const Point3* pVtx) const;
    void collapse(Point3* pSrc, Point3* pTrg);
    [[nodiscard]] bool isRefillDue() const;
    void refill();

    RMesh* pRMesh;
    CollapseLimits limits;
    CollapsePenalty collapsePenalty;
    StableQueue<RECandidate, Penalty> queue;
    std::vector<char> vIsBorder;     // by vertex number, as the mesh was at the start
    std::vector<Point3*> vRefillVtx; // where collapses went to since the last refill

    unsigned int now = 1;
    std::vector<Known> vKnown;            // by edge number
    std::vector<unsigned int> vChangedAt; // by vertex number: when its triangles changed last
    std::vector<bool> vIsDead;            // by edge number: degree 0; bits, to stay in the cache

    std::vector<RECandidate> vAhead;
    std::vector<char> vIsInBatch;         // by vertex number: its edges are being evaluated
    std::vector<RTriangle*> vSrcT;        // at the vertex that vanishes
    std::vector<const REdge*> vTouchedRE; // theirs, with repetitions
    Buffers ownBuffers;                   // of this thread
    int numRecomputes = 0;
    int numKilled = 0;
};

} // namespace TARN_ZEF

#endif

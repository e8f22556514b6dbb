#include "rmesh/Reducer.h"

#include "core/Progress.h"
#include "core/cancel.h"
#include "core/prefetch.h"
#include "geometry/tools.h"
#include "parallel/JobGroup.h"
#include "parallel/sortMT2.h"
#include "rmesh/RMesh.h"

#include <algorithm>
#include <array>
#include <cfloat>

namespace TARN_ZEF
{
namespace
{
const double FORBIDDEN = DBL_MAX;
// A candidate goes back into the queue if its penalty has grown by more than the tolerance to above the bar.
const double WORSE_BAR = 2.0;
const double WORSE_TOLERANCE = 3.0;
const double MIN_BORDER_ANGLE = 170.0; // degrees

// A refill pays for its batch after many collapses, or after some when only dear candidates are left.
const std::size_t MANY_COLLAPSES = 5001;
const std::size_t SOME_COLLAPSES = 51;
const double DEAR = 6.0;
// When the queue runs low after few collapses, the whole mesh is evaluated again, but not too often.
const std::size_t MAX_FOR_RECOMPUTE = 1000;
const int MAX_RECOMPUTES = 5;

const std::size_t MIN_VERTICES_PER_JOB = 16; // of about six edges each
const std::size_t MAX_JOBS = 36;

// How far to look ahead for what is to be read next; some ten fans at a time fit into the first cache.
const std::size_t NUM_AHEAD = 64; // candidates, of which a quarter are alive
const std::size_t NUM_VERTICES_AHEAD = 8;

struct ByPenalty
{
    bool operator()(const RECandidate& a, const RECandidate& b) const noexcept
    {
        if (a.penalty < b.penalty)
            return true;
        if (b.penalty < a.penalty)
            return false;
        if (isNaN(a.penalty) != isNaN(b.penalty))
            return isNaN(b.penalty);
        return a.edge != b.edge ? a.edge < b.edge : a.iSrc < b.iSrc;
    }
};

unsigned int numberOf(const Point3* pVtx)
{
    return RVertex::of(pVtx)->number;
}
} // namespace

Reducer::Reducer(RMesh* pRMesh_, const CollapseLimits& limits_)
    : pRMesh(pRMesh_)
    , limits(limits_)
    , collapsePenalty(*pRMesh_, limits_)
{
}

int Reducer::run()
{
    markBorder();
    prepareQueue();
    const auto todo = static_cast<u64>(1.5 * static_cast<double>(queue.size()));
    Progress* pProgress = getRootProgress()->getChildProgressSetTodo("RM_redprocprioq", todo);
    while (!queue.empty())
    {
        checkCancelled(); // the mesh is whole between two collapses
        fetchAhead();
        RECandidate candidate = queue.front();
        queue.pop();
        const double freshPen = getFreshPenalty(candidate);
        const bool bAllowed = freshPen != FORBIDDEN;
        if (bAllowed && freshPen > WORSE_BAR && freshPen > candidate.penalty + WORSE_TOLERANCE)
        {
            candidate.penalty = freshPen;
            queue.add(candidate);
            continue;
        }
        pProgress->increment();
        if (bAllowed && tryCollapse(candidate) && isRefillDue())
        {
            refill();
            pProgress = getRootProgress()->getChildProgressSetTodo("RM_redprocprioq", queue.size());
        }
    }
    pProgress->setFinished(true);
    return numKilled;
}

// Candidates leave in an order that jumps over the whole mesh, so nearly everything that a collapse touches
// comes from memory. For several of them together these ways are much shorter than one after the other.
void Reducer::fetchAhead()
{
    const std::vector<REdge*>& vAllRE = pRMesh->getAllRE();
    vAhead.clear();
    const bool bNew = queue.lookAhead(NUM_AHEAD,
                                      [&](const RECandidate& candidate)
                                      {
                                          if (vIsDead[candidate.edge])
                                              return;
                                          vAhead.push_back(candidate);
                                          prefetch(&vAllRE[candidate.edge]);
                                          prefetch(&vKnown[candidate.edge]);
                                      });
    if (!bNew)
        return;
    for (const RECandidate& candidate : vAhead)
        prefetch(vAllRE[candidate.edge]);
    for (const RECandidate& candidate : vAhead)
        for (const int i : {0, 1})
            prefetch(RVertex::of(vAllRE[candidate.edge]->getVertex(i)));
    ownBuffers.vFetchVtx.clear();
    for (const RECandidate& candidate : vAhead)
        if (!isKnownForbidden(candidate))
            for (const int i : {0, 1})
                ownBuffers.vFetchVtx.push_back(vAllRE[candidate.edge]->getVertex(i));
    pRMesh->fetchFans(ownBuffers.vFetchVtx, ownBuffers.vFetchT);
}

// A refill has found it out, most often.
bool Reducer::isKnownForbidden(const RECandidate& candidate) const
{
    const Known& known = vKnown[candidate.edge];
    return known.aTurnPenalty[candidate.iSrc] == FORBIDDEN &&
           known.aTurnAt[candidate.iSrc] >=
               vChangedAt[numberOf(pRMesh->getAllRE()[candidate.edge]->getVertex(candidate.iSrc))];
}

void Reducer::markBorder()
{
    Progress* pProgress = getRootProgress()->getChildProgressSetTodo("RM_redborder", 2);
    std::vector<REdge*> vBoundaryRE;
    pRMesh->getDegN(DEG_BORDER, vBoundaryRE);
    pProgress->increment();
    vIsBorder.assign(pRMesh->getNumVertices(), 0);
    for (const REdge* pRE : vBoundaryRE)
        for (const Point3* pVtx : {pRE->getVtx0(), pRE->getVtx1()})
            vIsBorder[numberOf(pVtx)] = 1;
    pProgress->setFinished(true);
}

void Reducer::prepareQueue()
{
    Progress* pProgress = getRootProgress()->getChildProgressSetTodo("RM_redprioq", 2);
    const std::vector<REdge*>& vAllRE = pRMesh->getAllRE();
    vChangedAt.assign(pRMesh->getNumVertices(), now);
    vKnown.assign(vAllRE.size(), Known{});
    vIsInBatch.assign(pRMesh->getNumVertices(), 0);
    vIsDead.resize(vAllRE.size());
    std::transform(vAllRE.begin(), vAllRE.end(), vIsDead.begin(),
                   [](const REdge* pRE) { return !pRE->isAlive(); });
    pProgress->increment();
    std::vector<Point3*> vVtx;
    pRMesh->getPoints(vVtx);
    evaluateCandidates_MT(vVtx);
    pProgress->setFinished(true);
}

void Reducer::evaluateCandidates_MT(const std::vector<Point3*>& vVtx)
{
    for (const Point3* pVtx : vVtx)
        vIsInBatch[numberOf(pVtx)] = 1;
    const std::size_t chunk = std::max(MIN_VERTICES_PER_JOB, vVtx.size() / MAX_JOBS);
    std::vector<std::vector<RECandidate>> vvFound((vVtx.size() + chunk - 1) / chunk);
    JobGroup jobs;
    for (std::size_t k = 0; k < vvFound.size(); ++k)
        jobs.push([this, &vVtx, &vvFound, chunk, k]
                  { evaluateVertices(vVtx, k * chunk, std::min((k + 1) * chunk, vVtx.size()), vvFound[k]); });
    jobs.finish();
    for (const Point3* pVtx : vVtx)
        vIsInBatch[numberOf(pVtx)] = 0;

    std::vector<RECandidate> vPenaltyRE;
    std::size_t numFound = 0;
    for (const std::vector<RECandidate>& vFound : vvFound)
        numFound += vFound.size();
    vPenaltyRE.reserve(numFound);
    for (const std::vector<RECandidate>& vFound : vvFound)
        vPenaltyRE.insert(vPenaltyRE.end(), vFound.begin(), vFound.end());
    sortMT(vPenaltyRE.begin(), vPenaltyRE.end(), ByPenalty());
    queue.addSorted(std::move(vPenaltyRE));
}

void Reducer::evaluateVertices(const std::vector<Point3*>& vVtx, std::size_t from, std::size_t to,
                               std::vector<RECandidate>& vFound)
{
    Buffers buffers;
    for (std::size_t i = from; i < to; ++i)
    {
        checkCancelledAt(i);
        if ((i - from) % NUM_VERTICES_AHEAD == 0)
            fetchFansOf(vVtx, i, std::min(i + NUM_VERTICES_AHEAD, to), buffers);
        collectEdgesAt(vVtx[i], buffers.vRE);
        fetchFarFans(vVtx[i], buffers);
        for (const REdge* pRE : buffers.vRE)
            evaluateEdge(pRE->getNumber(), buffers, vFound);
    }
}

void Reducer::fetchFansOf(const std::vector<Point3*>& vVtx, std::size_t from, std::size_t to,
                          Buffers& buffers) const
{
    buffers.vFetchVtx.assign(vVtx.begin() + static_cast<std::ptrdiff_t>(from),
                             vVtx.begin() + static_cast<std::ptrdiff_t>(to));
    pRMesh->fetchFans(buffers.vFetchVtx, buffers.vFetchT);
}

// An edge between two vertices of the batch falls to the one made first.
void Reducer::collectEdgesAt(const Point3* pVtx, std::vector<const REdge*>& vRE) const
{
    vRE.clear();
    pRMesh->forEachIncidentT(pVtx,
                             [&](const RTriangle* pRT, int i)
                             {
                                 for (const int k : {RTriangle::getNext(i), RTriangle::getPrev(i)})
                                     if (std::find(vRE.begin(), vRE.end(), pRT->getRE(k)) == vRE.end())
                                         vRE.push_back(pRT->getRE(k));
                             });
    std::erase_if(vRE, [&](const REdge* pRE)
                  { return pRE->getVtx0() != pVtx && vIsInBatch[numberOf(pRE->getVtx0())] != 0; });
    for (const REdge* pRE : vRE)
        prefetch(&vKnown[pRE->getNumber()]);
}

// Most edges are too long, or known to turn a triangle at the other end too far.
void Reducer::fetchFarFans(const Point3* pVtx, Buffers& buffers) const
{
    buffers.vFetchVtx.clear();
    for (const REdge* pRE : buffers.vRE)
    {
        const int other = pRE->getVtx0() == pVtx ? 1 : 0;
        const Point3* pOther = pRE->getVertex(other);
        if (pRE->getSqLength() <= limits.maxSqLen &&
            vKnown[pRE->getNumber()].aTurnAt[other] < vChangedAt[numberOf(pOther)])
            buffers.vFetchVtx.push_back(pOther);
    }
    pRMesh->fetchFans(buffers.vFetchVtx, buffers.vFetchT);
}

// Only one job has the edge.
void Reducer::evaluateEdge(unsigned int edge, Buffers& buffers, std::vector<RECandidate>& vFound)
{
    const Known& known = update(edge, true, true, buffers.fans);
    for (const int iSrc : {0, 1})
        if (const double penalty = penaltyOf(known, iSrc); penalty != FORBIDDEN)
            vFound.push_back({penalty, edge, iSrc});
}

const Reducer::Known& Reducer::update(unsigned int edge, bool bWanted0, bool bWanted1, CollapseFans& fans)
{
    const REdge* pRE = pRMesh->getAllRE()[edge];
    const unsigned int aChangedAt[2] = {vChangedAt[numberOf(pRE->getVtx0())],
                                        vChangedAt[numberOf(pRE->getVtx1())]};
    Known& known = vKnown[edge];
    bool bAnyAllowed = false;
    for (const int i : {0, 1})
    {
        if (i == 0 ? !bWanted0 : !bWanted1)
            continue;
        if (known.aTurnAt[i] < aChangedAt[i])
        {
            known.aTurnPenalty[i] = collapsePenalty.getTurnPenalty(pRE, i, fans);
            known.aTurnAt[i] = now;
        }
        bAnyAllowed = bAnyAllowed || known.aTurnPenalty[i] != FORBIDDEN;
    }
    if (bAnyAllowed && known.ringsAt < std::max(aChangedAt[0], aChangedAt[1]))
    {
        known.bRingsMeet = collapsePenalty.doRingsMeet(pRE, fans);
        known.ringsAt = now;
    }
    return known;
}

double Reducer::penaltyOf(const Known& known, int iSrc)
{
    return known.bRingsMeet ? FORBIDDEN : known.aTurnPenalty[iSrc];
}

double Reducer::getFreshPenalty(const RECandidate& candidate)
{
    if (vIsDead[candidate.edge])
        return FORBIDDEN;
    return penaltyOf(update(candidate.edge, candidate.iSrc == 0, candidate.iSrc == 1, ownBuffers.fans),
                     candidate.iSrc);
}

// A border vertex moves only along a border that is nearly straight there.
bool Reducer::tryCollapse(const RECandidate& candidate)
{
    const REdge* pRE = pRMesh->getAllRE()[candidate.edge];
    Point3* pSrc = pRE->getVertex(candidate.iSrc);
    Point3* pTrg = pRE->getOtherPoint(pSrc);
    if (vIsBorder[numberOf(pSrc)] != 0 && (!pRE->isBorder() || !isBorderStraightAt(pSrc)))
        return false;
    numKilled += pRE->getDegree();
    collapse(pSrc, pTrg);
    vRefillVtx.push_back(pTrg);
    return true;
}

// A vertex where several borders touch counts as a corner.
bool Reducer::isBorderStraightAt(const Point3* pVtx) const
{
    std::vector<REdge*> vBorderRE;
    pRMesh->getIncidentRE(pVtx, vBorderRE);
    std::erase_if(vBorderRE, [](const REdge* pRE) { return !pRE->isBorder(); });
    if (vBorderRE.size() != 2)
        return false;
    std::array<Vector3, 2> vVecs;
    for (std::size_t i = 0; i < 2; ++i)
        vVecs[i] = normalize(*vBorderRE[i]->getOtherPoint(pVtx) - *pVtx);
    return !(MIN_BORDER_ANGLE > getAngleDegree(vVecs[0], vVecs[1]));
}

// Edges at the vanishing vertex die or change their ends; one that was dead may come to life in their place.
void Reducer::collapse(Point3* pSrc, Point3* pTrg)
{
    ++now;
    ownBuffers.fans.forget();
    vSrcT.clear();
    pRMesh->getIncidentT(pSrc, vSrcT);
    vTouchedRE.clear();
    for (const RTriangle* pRT : vSrcT)
        for (int i = 0; i < 3; ++i)
        {
            vChangedAt[numberOf(pRT->getCorner(i))] = now;
            vTouchedRE.push_back(pRT->getRE(i));
        }
    pRMesh->exchangeCorner(pSrc, pTrg);
    for (const REdge* pRE : vTouchedRE)
        vIsDead[pRE->getNumber()] = !pRE->isAlive();
    for (const RTriangle* pRT : vSrcT)
        for (int i = 0; pRT->isAlive() && i < 3; ++i)
            vIsDead[pRT->getRE(i)->getNumber()] = false;
}

bool Reducer::isRefillDue() const
{
    const std::size_t num = vRefillVtx.size();
    return queue.empty() || num >= MANY_COLLAPSES || (num >= SOME_COLLAPSES && queue.front().penalty > DEAR);
}

// After a full evaluation, what still stands in the queue is met again later and found stale.
void Reducer::refill()
{
    const std::size_t num = vRefillVtx.size();
    if (num > 2 && num < MAX_FOR_RECOMPUTE && ++numRecomputes < MAX_RECOMPUTES)
    {
        vRefillVtx.clear();
        pRMesh->getPoints(vRefillVtx);
    }
    std::sort(vRefillVtx.begin(), vRefillVtx.end(), ByCreationVtx());
    vRefillVtx.erase(std::unique(vRefillVtx.begin(), vRefillVtx.end()), vRefillVtx.end());
    evaluateCandidates_MT(vRefillVtx);
    vRefillVtx.clear();
}

} // namespace TARN_ZEF

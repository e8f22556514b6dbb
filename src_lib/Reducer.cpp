#include "Reducer.h"

#include "JobGroup.h"
#include "Progress.h"
#include "RMesh.h"
#include "sortMT2.h"
#include "tools.h"

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

const std::size_t MIN_EDGES_PER_JOB = 100;
const std::size_t MAX_JOBS = 36;

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

std::size_t slotOf(unsigned int edge, int iSrc)
{
    return 2 * static_cast<std::size_t>(edge) + static_cast<std::size_t>(iSrc);
}

unsigned int numberOf(const Point3* pVtx)
{
    return RVertex::of(pVtx)->number;
}
} // namespace

Reducer::Reducer(RMesh* pRMesh_, const CollapseLimits& limits_)
    : pRMesh(pRMesh_)
    , limits(limits_)
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
        RECandidate candidate = queue.front();
        queue.pop();
        const double freshPen = getPenalty(candidate.edge, candidate.iSrc, scratch);
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

void Reducer::markBorder()
{
    Progress* pProgress = getRootProgress()->getChildProgressSetTodo("RM_redborder", 2);
    std::vector<REdge*> vBoundaryRE;
    pRMesh->getDegN(1, vBoundaryRE);
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
    vKnown.assign(2 * vAllRE.size(), {FORBIDDEN, 0});
    vIsListed.resize(vAllRE.size());
    vIsDead.resize(vAllRE.size());
    std::transform(vAllRE.begin(), vAllRE.end(), vIsDead.begin(),
                   [](const REdge* pRE) { return !pRE->isAlive(); });
    pProgress->increment();
    std::vector<unsigned int> vEdges;
    collectAliveEdges(vEdges);
    queueEdges(vEdges);
    pProgress->setFinished(true);
}

void Reducer::queueEdges(const std::vector<unsigned int>& vEdges)
{
    std::vector<RECandidate> vPenaltyRE;
    evaluateCandidates_MT(vEdges, vPenaltyRE);
    sortMT(vPenaltyRE.begin(), vPenaltyRE.end(), ByPenalty());
    queue.addSorted(std::move(vPenaltyRE));
}

void Reducer::evaluateCandidates_MT(const std::vector<unsigned int>& vEdges,
                                    std::vector<RECandidate>& vPenaltyRE)
{
    ASSEX(vPenaltyRE.empty());
    const std::size_t n = vEdges.size();
    const std::size_t chunk = std::max(MIN_EDGES_PER_JOB, n / MAX_JOBS);
    JobGroup jobs;
    for (std::size_t from = 0; from < n; from += chunk)
        jobs.push(
            [&, from, to = std::min(from + chunk, n)]
            {
                CollapseScratch buffers;
                for (std::size_t i = from; i < to; ++i)
                    for (const int iSrc : {0, 1})
                        (void)getPenalty(vEdges[i], iSrc, buffers);
            });
    jobs.finish();
    for (const unsigned int edge : vEdges)
        for (const int iSrc : {0, 1})
        {
            const double penalty = vKnown[slotOf(edge, iSrc)].penalty;
            if (penalty != FORBIDDEN)
                vPenaltyRE.push_back({penalty, edge, iSrc});
        }
}

double Reducer::getPenalty(unsigned int edge, int iSrc, CollapseScratch& buffers)
{
    if (vIsDead[edge])
        return FORBIDDEN;
    const REdge* pRE = pRMesh->getAllRE()[edge];
    Known& known = vKnown[slotOf(edge, iSrc)];
    if (known.at < std::max(vChangedAt[numberOf(pRE->getVtx0())], vChangedAt[numberOf(pRE->getVtx1())]))
        known = {pRMesh->getCollapsePenalty(pRE, iSrc, limits, buffers), now};
    return known.penalty;
}

// A border vertex moves only along a border that is nearly straight there.
bool Reducer::tryCollapse(const RECandidate& candidate)
{
    const REdge* pRE = pRMesh->getAllRE()[candidate.edge];
    Point3* pSrc = pRE->getVertex(candidate.iSrc);
    Point3* pTrg = pRE->getOtherPoint(pSrc);
    if (vIsBorder[numberOf(pSrc)] != 0 && (pRE->getDegree() != 1 || !isBorderStraightAt(pSrc)))
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
    std::erase_if(vBorderRE, [](const REdge* pRE) { return pRE->getDegree() != 1; });
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
    std::vector<unsigned int> vEdges;
    if (num > 2 && num < MAX_FOR_RECOMPUTE && ++numRecomputes < MAX_RECOMPUTES)
        collectAliveEdges(vEdges);
    else
        collectRefillEdges(vEdges);
    vRefillVtx.clear();
    queueEdges(vEdges);
}

void Reducer::collectAliveEdges(std::vector<unsigned int>& vEdges) const
{
    for (unsigned int edge = 0; edge < vIsDead.size(); ++edge)
        if (!vIsDead[edge])
            vEdges.push_back(edge);
}

// The edges at all refill vertices, each once, neighbours near each other.
void Reducer::collectRefillEdges(std::vector<unsigned int>& vEdges)
{
    const auto list = [&](const REdge* pRE)
    {
        if (!vIsListed[pRE->getNumber()])
            vEdges.push_back(pRE->getNumber());
        vIsListed[pRE->getNumber()] = true;
    };
    std::sort(vRefillVtx.begin(), vRefillVtx.end(), ByCreationVtx());
    for (const Point3* pVtx : vRefillVtx)
        pRMesh->forEachIncidentT(pVtx,
                                 [&list](const RTriangle* pRT, int i)
                                 {
                                     list(pRT->getRE(RTriangle::getNext(i)));
                                     list(pRT->getRE(RTriangle::getPrev(i)));
                                 });
    for (const unsigned int edge : vEdges)
        vIsListed[edge] = false;
}

} // namespace TARN_ZEF

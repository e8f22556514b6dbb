#include "Reducer.h"

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
        const unsigned int numberA = a.pRE->getNumber();
        const unsigned int numberB = b.pRE->getNumber();
        return numberA != numberB ? numberA < numberB : a.iSrc < b.iSrc;
    }
};
} // namespace

Reducer::Reducer(RMesh* pRMesh_, const CollapseLimits& limits_)
    : pRMesh(pRMesh_)
    , limits(limits_)
{
}

int Reducer::run()
{
    markBorder();
    Progress* pPrepare = getRootProgress()->getChildProgressSetTodo("RM_redprioq", 2);
    vChanged.assign(pRMesh->getNumVertices(), 0);
    evaluate(pRMesh->getAllRE());
    pPrepare->setFinished(true);

    const auto todo = static_cast<u64>(1.5 * static_cast<double>(queue.size()));
    pProgress = getRootProgress()->getChildProgressSetTodo("RM_redprocprioq", todo);
    while (!queue.empty())
    {
        RECandidate candidate = queue.front();
        queue.pop();
        const double freshPen = getFreshPenalty(candidate);
        const bool bForbidden = freshPen == DBL_MAX;
        if (!bForbidden && freshPen > WORSE_BAR && freshPen > candidate.penalty + WORSE_TOLERANCE)
        {
            candidate.penalty = freshPen;
            candidate.epoch = numCollapses;
            queue.add(candidate);
            continue;
        }
        pProgress->increment();
        if (!bForbidden && tryCollapse(candidate) && isRefillDue())
            refill();
    }
    pProgress->setFinished(true);
    return numKilled;
}

void Reducer::markBorder()
{
    Progress* pBorder = getRootProgress()->getChildProgressSetTodo("RM_redborder", 2);
    std::vector<REdge*> vBoundaryRE;
    pRMesh->getDegN(1, vBoundaryRE);
    pBorder->increment();
    vIsBorder.assign(pRMesh->getNumVertices(), 0);
    for (const REdge* pRE : vBoundaryRE)
        for (const Point3* pVtx : {pRE->getVtx0(), pRE->getVtx1()})
            vIsBorder[RVertex::of(pVtx)->number] = 1;
    pBorder->setFinished(true);
}

void Reducer::evaluate(const std::vector<REdge*>& vRE)
{
    std::vector<RECandidate> vPenaltyRE(2 * vRE.size());
    pRMesh->evaluateCandidates_MT(limits, vRE, vPenaltyRE);
    for (RECandidate& candidate : vPenaltyRE)
        candidate.epoch = numCollapses;
    sortMT(vPenaltyRE.begin(), vPenaltyRE.end(), ByPenalty());
    queue.addSorted(std::move(vPenaltyRE));
}

void Reducer::startProgress()
{
    pProgress = getRootProgress()->getChildProgressSetTodo("RM_redprocprioq", queue.size());
}

// As long as no collapse has touched the triangles at both ends, the penalty is what it was.
double Reducer::getFreshPenalty(const RECandidate& candidate)
{
    const REdge* pRE = candidate.pRE;
    if (vChanged[RVertex::of(pRE->getVtx0())->number] <= candidate.epoch &&
        vChanged[RVertex::of(pRE->getVtx1())->number] <= candidate.epoch)
        return candidate.penalty;
    return pRMesh->getCollapsePenalty(pRE, candidate.iSrc, limits, vScratch);
}

// A border vertex moves only along a border that is nearly straight there.
bool Reducer::tryCollapse(const RECandidate& candidate)
{
    REdge* pRE = candidate.pRE;
    Point3* pSrc = pRE->getVertex(candidate.iSrc);
    Point3* pTrg = pRE->getOtherPoint(pSrc);
    if (isBorder(pSrc) && (pRE->getDegree() != 1 || !isBorderStraightAt(pSrc)))
        return false;
    numKilled += pRE->getDegree();
    noteChange(pSrc, pTrg);
    pRMesh->exchangeCorner(pSrc, pTrg);
    vRefillVtx.push_back(pTrg);
    return true;
}

bool Reducer::isBorder(const Point3* pVtx) const
{
    return vIsBorder[RVertex::of(pVtx)->number] != 0;
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

void Reducer::noteChange(const Point3* pSrc, const Point3* pTrg)
{
    ++numCollapses;
    vChanged[RVertex::of(pTrg)->number] = numCollapses;
    pRMesh->forEachIncidentT(pSrc,
                             [this](const RTriangle* pRT, int)
                             {
                                 for (int i = 0; i < 3; ++i)
                                     vChanged[RVertex::of(pRT->getCorner(i))->number] = numCollapses;
                             });
}

bool Reducer::isRefillDue() const
{
    const std::size_t num = vRefillVtx.size();
    return queue.empty() || num >= MANY_COLLAPSES || (num >= SOME_COLLAPSES && queue.front().penalty > DEAR);
}

void Reducer::refill()
{
    const std::size_t num = vRefillVtx.size();
    if (num > 2 && num < MAX_FOR_RECOMPUTE && ++numRecomputes < MAX_RECOMPUTES)
    {
        // What still stands in the queue is met again later and found stale.
        vRefillVtx.clear();
        evaluate(pRMesh->getAllRE());
    }
    else
    {
        std::vector<REdge*> vRefillRE;
        collectRefillEdges(vRefillRE);
        evaluate(vRefillRE);
    }
    startProgress();
}

// The edges at all refill vertices, by creation, each once.
void Reducer::collectRefillEdges(std::vector<REdge*>& vRefillRE)
{
    std::sort(vRefillVtx.begin(), vRefillVtx.end(), ByCreationVtx());
    vRefillVtx.erase(std::unique(vRefillVtx.begin(), vRefillVtx.end()), vRefillVtx.end());
    std::vector<unsigned int> vNumbers;
    for (const Point3* pVtx : vRefillVtx)
        pRMesh->forEachIncidentT(pVtx,
                                 [&vNumbers](const RTriangle* pRT, int i)
                                 {
                                     vNumbers.push_back(pRT->getRE(RTriangle::getNext(i))->getNumber());
                                     vNumbers.push_back(pRT->getRE(RTriangle::getPrev(i))->getNumber());
                                 });
    vRefillVtx.clear();
    sortMT(vNumbers.begin(), vNumbers.end());
    vNumbers.erase(std::unique(vNumbers.begin(), vNumbers.end()), vNumbers.end());
    for (const unsigned int number : vNumbers)
        vRefillRE.push_back(pRMesh->getAllRE()[number]);
}

} // namespace TARN_ZEF

// Members of RMesh that evaluate and run the reduction.
#include "RMesh.h"

#include "JobGroup.h"
#include "RECandidate.h"
#include "Reducer.h"
#include "tools.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <iostream>

namespace TARN_ZEF
{
namespace
{
const double FORBIDDEN = DBL_MAX;
const double MIN_CROSS_LENGTH = 1e-10; // a triangle below it would collapse
const double TURN_WEIGHT = 100.0;
const double RAD_PER_DEGREE = 0.01745329251;
const std::size_t MIN_EDGES_PER_JOB = 100;
const std::size_t MAX_JOBS = 36;

enum class Turn
{
    MEASURED,
    DEGENERATE, // no normal at present
    TOO_FAR
};

// By how many radians the triangle (src, p1, p2) turns if src moves to trg.
Turn measureTurn(const Point3& src, const Point3& p1, const Point3& p2, const Point3& trg, double maxAngle,
                 double& angle)
{
    const Vector3 vec12 = p1 - p2;
    const Vector3 cross = crossProduct(vec12, src - p2);
    if (cross.isDegenerate())
        return Turn::DEGENERATE;
    const Vector3 altCross = crossProduct(vec12, trg - p2);
    const double altLength = altCross.length();
    if (altLength < MIN_CROSS_LENGTH)
        return Turn::TOO_FAR;
    angle = getAngleRad(normalizeInline(cross), altCross / altLength);
    return angle > maxAngle ? Turn::TOO_FAR : Turn::MEASURED;
}
} // namespace

double RMesh::getCollapsePenalty(const REdge* pRE, int iSrc, const CollapseLimits& limits,
                                 std::vector<REdge*>& vSrcRing) const
{
    const double sqLen = pRE->getSqLength();
    // An edge without triangles is stale: its ends no longer share one.
    if (sqLen > limits.maxSqLen || !pRE->isAlive())
        return FORBIDDEN;
    const Point3* pSrc = pRE->getVertex(iSrc);
    const Point3* pTrg = pRE->getVertex(1 - iSrc);
    vSrcRing.clear();
    double sumAngle = 0.0;
    double numAngles = 0.0;
    for (const RTriangle* pRT = RVertex::of(pSrc)->pFirstT; pRT != nullptr;)
    {
        const int i = pRT->indexOf(pSrc);
        if (!pRT->has(pTrg))
        {
            vSrcRing.push_back(pRT->aRE[i]);
            double angle = 0.0;
            const Turn turn =
                measureTurn(*pSrc, *pRT->aCorner[RTriangle::getNext(i)], *pRT->aCorner[RTriangle::getPrev(i)],
                            *pTrg, limits.maxDevAngleRad, angle);
            if (turn == Turn::TOO_FAR)
                return FORBIDDEN;
            if (turn == Turn::MEASURED)
            {
                sumAngle += angle;
                numAngles += 1.0;
            }
            else
                std::cout << "current triangle is degenerate" << std::endl;
        }
        pRT = pRT->aNextInc[i];
    }
    if (hasRingEdgeIn(pTrg, vSrcRing) || (limits.bKeepTopology && hasStrangerInCommon(pSrc, pTrg)))
        return FORBIDDEN;
    return std::sqrt(std::sqrt(sqLen) / cellSize) + TURN_WEIGHT * sumAngle / numAngles;
}

// Such an edge would get two triangles on the same corners.
bool RMesh::hasRingEdgeIn(const Point3* pVtx, const std::vector<REdge*>& vRing) const
{
    for (const RTriangle* pRT = RVertex::of(pVtx)->pFirstT; pRT != nullptr;)
    {
        const int i = pRT->indexOf(pVtx);
        if (std::find(vRing.begin(), vRing.end(), pRT->aRE[i]) != vRing.end())
            return true;
        pRT = pRT->aNextInc[i];
    }
    return false;
}

// Whether a vertex is neighbour of both, but no corner of a triangle of both.
bool RMesh::hasStrangerInCommon(const Point3* pA, const Point3* pB) const
{
    const REdge* pCommonRE = getRE(pA, pB);
    const auto isCornerOfBoth = [&](const Point3* pVtx)
    {
        return std::any_of(pCommonRE->vRT.begin(), pCommonRE->vRT.end(),
                           [pVtx](const RTriangle* pRT) { return pRT->has(pVtx); });
    };
    for (const RTriangle* pRT = RVertex::of(pA)->pFirstT; pRT != nullptr;)
    {
        const int i = pRT->indexOf(pA);
        for (const int k : {RTriangle::getNext(i), RTriangle::getPrev(i)})
        {
            const Point3* pNeig = pRT->aCorner[k];
            if (pNeig != pB && !isCornerOfBoth(pNeig) && hasEdge(pNeig, pB))
                return true;
        }
        pRT = pRT->aNextInc[i];
    }
    return false;
}

RECandidate RMesh::makeCandidate(REdge* pRE, int iSrc, const CollapseLimits& limits,
                                 std::vector<REdge*>& vSrcRing) const
{
    const double penalty = getCollapsePenalty(pRE, iSrc, limits, vSrcRing);
    if (penalty == FORBIDDEN)
        return {};
    RECandidate candidate(pRE, iSrc);
    candidate.penalty = penalty;
    return candidate;
}

void RMesh::evaluateCandidates_MT(const CollapseLimits& limits, const std::vector<REdge*>& vRE,
                                  std::vector<RECandidate>& vPenaltyRE) const
{
    ASSEX(vPenaltyRE.size() == 2 * vRE.size());
    const std::size_t chunk = std::max(MIN_EDGES_PER_JOB, vRE.size() / MAX_JOBS);
    JobGroup jobs;
    for (std::size_t from = 0; from < vRE.size(); from += chunk)
        jobs.push(
            [&, from, to = std::min(from + chunk, vRE.size())]
            {
                std::vector<REdge*> vSrcRing;
                for (std::size_t i = from; i < to; ++i)
                {
                    vPenaltyRE[2 * i] = makeCandidate(vRE[i], 0, limits, vSrcRing);
                    vPenaltyRE[2 * i + 1] = makeCandidate(vRE[i], 1, limits, vSrcRing);
                }
            });
    jobs.finish();
    std::erase_if(vPenaltyRE, [](const RECandidate& candidate) { return candidate.pRE == nullptr; });
}

int RMesh::reduce(double maxSqLen, double maxDevAngle, bool bKeepTopology)
{
    Reducer reducer(this, CollapseLimits{maxSqLen, maxDevAngle * RAD_PER_DEGREE, bKeepTopology});
    return reducer.run();
}

} // namespace TARN_ZEF

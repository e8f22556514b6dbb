// Members of RMesh that evaluate and run the reduction.
#include "RMesh.h"

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

enum class Turn
{
    MEASURED,
    UNMEASURED, // no normal at present, or not asked for
    TOO_FAR
};

// By how many radians the triangle (src, p1, p2) turns if src moves to trg.
Turn measureTurn(const Point3& src, const Point3& p1, const Point3& p2, const Point3& trg,
                 const CollapseLimits& limits, double& angle)
{
    const Vector3 vec12 = p1 - p2;
    const Vector3 cross = crossProduct(vec12, src - p2);
    if (cross.isDegenerate())
    {
        std::cout << "current triangle is degenerate" << std::endl;
        return Turn::UNMEASURED;
    }
    const Vector3 altCross = crossProduct(vec12, trg - p2);
    const double altLength = altCross.length();
    if (altLength < MIN_CROSS_LENGTH)
        return Turn::TOO_FAR;
    const Vector3 nnv = normalizeInline(cross);
    const Vector3 altNNV = altCross / altLength;
    if (nnv * altNNV < limits.tooFarCosine)
        return Turn::TOO_FAR;
    angle = getAngleRad(nnv, altNNV);
    return angle > limits.maxDevAngleRad ? Turn::TOO_FAR : Turn::MEASURED;
}

// One of 64 bits for a vertex, to tell without a search that it is not in a ring.
u64 maskOf(const Point3* pVtx)
{
    return u64{1} << (RVertex::of(pVtx)->number * 0x9E3779B1u >> 26);
}

template <typename T>
bool holds(const std::vector<const T*>& v, const T* p)
{
    return std::find(v.begin(), v.end(), p) != v.end();
}
} // namespace

// Fills the fan of end i of the edge, and the common corners. With pLimits also measures by how much its
// triangles turn in the mean if that end vanishes, and gives up with false at one that turns too far.
bool RMesh::walkFan(const REdge* pRE, int i, const CollapseLimits* pLimits, CollapseScratch& scratch,
                    double& meanTurn) const
{
    const Point3* pSrc = pRE->getVertex(i);
    const Point3* pTrg = pRE->getVertex(1 - i);
    CollapseScratch::Fan& fan = scratch.aFan[i];
    fan.vRing.clear();
    fan.vRingVtx.clear();
    fan.ringMask = 0;
    fan.bComplete = false;
    scratch.vCommon.clear();
    double sumAngle = 0.0;
    double numAngles = 0.0;
    for (const RTriangle* pRT = RVertex::of(pSrc)->pFirstT; pRT != nullptr;)
    {
        const int ici = pRT->indexOf(pSrc);
        const Point3* p1 = pRT->aCorner[RTriangle::getNext(ici)];
        const Point3* p2 = pRT->aCorner[RTriangle::getPrev(ici)];
        if (p1 == pTrg || p2 == pTrg)
        {
            scratch.vCommon.push_back(p1 == pTrg ? p2 : p1);
        }
        else
        {
            fan.vRing.push_back(pRT->aRE[ici]);
            fan.vRingVtx.insert(fan.vRingVtx.end(), {p1, p2});
            fan.ringMask |= maskOf(p1) | maskOf(p2);
            double angle = 0.0;
            const Turn turn =
                pLimits == nullptr ? Turn::UNMEASURED : measureTurn(*pSrc, *p1, *p2, *pTrg, *pLimits, angle);
            if (turn == Turn::TOO_FAR)
                return false;
            if (turn == Turn::MEASURED)
            {
                sumAngle += angle;
                numAngles += 1.0;
            }
        }
        pRT = pRT->aNextInc[ici];
    }
    fan.bComplete = true;
    meanTurn = sumAngle / numAngles;
    return true;
}

double RMesh::getCollapsePenalty(const REdge* pRE, int iSrc, const CollapseLimits& limits,
                                 CollapseScratch& scratch) const
{
    scratch.forgetFans();
    const double penalty = getTurnPenalty(pRE, iSrc, limits, scratch);
    return penalty != FORBIDDEN && doRingsMeet(pRE, limits.bKeepTopology, scratch) ? FORBIDDEN : penalty;
}

double RMesh::getTurnPenalty(const REdge* pRE, int iSrc, const CollapseLimits& limits,
                             CollapseScratch& scratch) const
{
    const double sqLen = pRE->getSqLength();
    double turn = 0.0;
    // An edge without triangles is stale: its ends no longer share one.
    if (sqLen > limits.maxSqLen || !pRE->isAlive() || !walkFan(pRE, iSrc, &limits, scratch, turn))
        return FORBIDDEN;
    return std::sqrt(std::sqrt(sqLen) / cellSize) + TURN_WEIGHT * turn;
}

bool RMesh::doRingsMeet(const REdge* pRE, bool bKeepTopology, CollapseScratch& scratch) const
{
    double unused = 0.0;
    for (const int i : {0, 1})
        if (!scratch.aFan[i].bComplete)
            (void)walkFan(pRE, i, nullptr, scratch, unused);
    const CollapseScratch::Fan& fan0 = scratch.aFan[0];
    const CollapseScratch::Fan& fan1 = scratch.aFan[1];
    const auto isStranger = [&](const Point3* pVtx)
    { return !holds(scratch.vCommon, pVtx) && holds(fan0.vRingVtx, pVtx); };
    for (std::size_t i = 0; i < fan1.vRing.size(); ++i)
    {
        const Point3* p1 = fan1.vRingVtx[2 * i];
        const Point3* p2 = fan1.vRingVtx[2 * i + 1];
        const bool bMayHold1 = (fan0.ringMask & maskOf(p1)) != 0;
        const bool bMayHold2 = (fan0.ringMask & maskOf(p2)) != 0;
        if (bMayHold1 && bMayHold2 && holds(fan0.vRing, fan1.vRing[i]))
            return true;
        if (bKeepTopology && ((bMayHold1 && isStranger(p1)) || (bMayHold2 && isStranger(p2))))
            return true;
    }
    return false;
}

int RMesh::reduce(double maxSqLen, double maxDevAngle, bool bKeepTopology)
{
    Reducer reducer(this, CollapseLimits{maxSqLen, maxDevAngle * RAD_PER_DEGREE, bKeepTopology});
    return reducer.run();
}

} // namespace TARN_ZEF

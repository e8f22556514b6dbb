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
    {
        std::cout << "current triangle is degenerate" << std::endl;
        return Turn::DEGENERATE;
    }
    const Vector3 altCross = crossProduct(vec12, trg - p2);
    const double altLength = altCross.length();
    if (altLength < MIN_CROSS_LENGTH)
        return Turn::TOO_FAR;
    angle = getAngleRad(normalizeInline(cross), altCross / altLength);
    return angle > maxAngle ? Turn::TOO_FAR : Turn::MEASURED;
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

double RMesh::getCollapsePenalty(const REdge* pRE, int iSrc, const CollapseLimits& limits,
                                 CollapseScratch& scratch) const
{
    const double sqLen = pRE->getSqLength();
    // An edge without triangles is stale: its ends no longer share one.
    if (sqLen > limits.maxSqLen || !pRE->isAlive())
        return FORBIDDEN;
    const Point3* pSrc = pRE->getVertex(iSrc);
    const Point3* pTrg = pRE->getVertex(1 - iSrc);
    scratch.vSrcRing.clear();
    scratch.vSrcRingVtx.clear();
    scratch.vCommon.clear();
    scratch.ringMask = 0;
    double sumAngle = 0.0;
    double numAngles = 0.0;
    for (const RTriangle* pRT = RVertex::of(pSrc)->pFirstT; pRT != nullptr;)
    {
        const int i = pRT->indexOf(pSrc);
        const Point3* p1 = pRT->aCorner[RTriangle::getNext(i)];
        const Point3* p2 = pRT->aCorner[RTriangle::getPrev(i)];
        if (p1 == pTrg || p2 == pTrg)
        {
            scratch.vCommon.push_back(p1 == pTrg ? p2 : p1);
        }
        else
        {
            scratch.vSrcRing.push_back(pRT->aRE[i]);
            scratch.vSrcRingVtx.insert(scratch.vSrcRingVtx.end(), {p1, p2});
            scratch.ringMask |= maskOf(p1) | maskOf(p2);
            double angle = 0.0;
            const Turn turn = measureTurn(*pSrc, *p1, *p2, *pTrg, limits.maxDevAngleRad, angle);
            if (turn == Turn::TOO_FAR)
                return FORBIDDEN;
            if (turn == Turn::MEASURED)
            {
                sumAngle += angle;
                numAngles += 1.0;
            }
        }
        pRT = pRT->aNextInc[i];
    }
    if (meetsSrcRing(pTrg, limits.bKeepTopology, scratch))
        return FORBIDDEN;
    return std::sqrt(std::sqrt(sqLen) / cellSize) + TURN_WEIGHT * sumAngle / numAngles;
}

// Whether the ring of pTrg shares an edge with that of the vanishing vertex: the edge would get two triangles
// on the same corners. With bKeepTopology also whether it shares a vertex that is no corner of a vanishing
// triangle.
bool RMesh::meetsSrcRing(const Point3* pTrg, bool bKeepTopology, const CollapseScratch& scratch) const
{
    const auto isStranger = [&scratch](const Point3* pVtx)
    { return !holds(scratch.vCommon, pVtx) && holds(scratch.vSrcRingVtx, pVtx); };
    for (const RTriangle* pRT = RVertex::of(pTrg)->pFirstT; pRT != nullptr;)
    {
        const int i = pRT->indexOf(pTrg);
        const Point3* p1 = pRT->aCorner[RTriangle::getNext(i)];
        const Point3* p2 = pRT->aCorner[RTriangle::getPrev(i)];
        const bool bMayHold1 = (scratch.ringMask & maskOf(p1)) != 0;
        const bool bMayHold2 = (scratch.ringMask & maskOf(p2)) != 0;
        if (bMayHold1 && bMayHold2 && holds<REdge>(scratch.vSrcRing, pRT->aRE[i]))
            return true;
        if (bKeepTopology && ((bMayHold1 && isStranger(p1)) || (bMayHold2 && isStranger(p2))))
            return true;
        pRT = pRT->aNextInc[i];
    }
    return false;
}

int RMesh::reduce(double maxSqLen, double maxDevAngle, bool bKeepTopology)
{
    Reducer reducer(this, CollapseLimits{maxSqLen, maxDevAngle * RAD_PER_DEGREE, bKeepTopology});
    return reducer.run();
}

} // namespace TARN_ZEF

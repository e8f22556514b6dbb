#include "rmesh/CollapsePenalty.h"

#include "geometry/tools.h"
#include "rmesh/RMesh.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
const double FORBIDDEN = DBL_MAX;
const double MIN_CROSS_PER_CELL = 1e-10; // a triangle below it, in squared cells, would collapse
const double TURN_WEIGHT = 100.0;

enum class Turn
{
    MEASURED,
    UNMEASURED, // no normal at present
    TOO_FAR
};

void fillVectors(CollapseFan::Blade& blade, const Point3& src)
{
    blade.vec12 = *blade.p1 - *blade.p2;
    const Vector3 cross = crossProduct(blade.vec12, src - *blade.p2);
    if (cross.isDegenerate())
    {
        blade.state = CollapseFan::Blade::State::FLAT;
        return;
    }
    blade.nnv = normalizeInline(cross);
    blade.state = CollapseFan::Blade::State::READY;
}

// By how many radians the triangle turns if src moves to trg.
Turn measureTurn(CollapseFan::Blade& blade, const Point3& src, const Point3& trg,
                 const CollapseLimits& limits, double cellSize, double& angle)
{
    if (blade.state == CollapseFan::Blade::State::UNKNOWN)
        fillVectors(blade, src);
    if (blade.state == CollapseFan::Blade::State::FLAT)
    {
        printText("current triangle is degenerate\n");
        return Turn::UNMEASURED;
    }
    const Vector3 altCross = crossProduct(blade.vec12, trg - *blade.p2);
    const double altLength = altCross.length();
    if (altLength < MIN_CROSS_PER_CELL * cellSize * cellSize)
        return Turn::TOO_FAR;
    const Vector3 altNNV = altCross / altLength;
    if (blade.nnv * altNNV < limits.tooFarCosine)
        return Turn::TOO_FAR;
    angle = getAngleRad(blade.nnv, altNNV);
    return angle > limits.maxDevAngleRad ? Turn::TOO_FAR : Turn::MEASURED;
}

bool isInRing(const CollapseFan& fan, const Point3* pVtx)
{
    return std::any_of(fan.vBlades.begin(), fan.vBlades.end(),
                       [pVtx](const CollapseFan::Blade& blade) { return blade.has(pVtx); });
}

bool isInRing(const CollapseFan& fan, const REdge* pRE)
{
    return std::any_of(fan.vBlades.begin(), fan.vBlades.end(),
                       [pRE](const CollapseFan::Blade& blade) { return blade.pRingRE == pRE; });
}

// Whether the triangles of the fan that have pOther, the other end of an edge, have pVtx too.
bool isCornerBetween(const CollapseFan& fan, const Point3* pOther, const Point3* pVtx)
{
    return std::any_of(fan.vBlades.begin(), fan.vBlades.end(),
                       [=](const CollapseFan::Blade& blade) { return blade.has(pOther) && blade.has(pVtx); });
}
} // namespace

CollapsePenalty::CollapsePenalty(const RMesh& mesh_, const CollapseLimits& limits_) noexcept
    : mesh(mesh_)
    , limits(limits_)
{
}

CollapseFan& CollapsePenalty::getFan(const REdge* pRE, int i, CollapseFans& fans) const
{
    return fans.at(pRE->getVertex(i), pRE->getVertex(1 - i),
                   [this](const Point3* pVtx, CollapseFan& fan) { gatherFan(pVtx, fan); });
}

void CollapsePenalty::gatherFan(const Point3* pVtx, CollapseFan& fan) const
{
    fan.pVtx = pVtx;
    fan.vBlades.clear();
    fan.ringMask = 0;
    mesh.forEachIncidentT(pVtx,
                          [&fan](const RTriangle* pRT, int i)
                          {
                              const Point3* p1 = pRT->getCorner(RTriangle::getNext(i));
                              const Point3* p2 = pRT->getCorner(RTriangle::getPrev(i));
                              fan.vBlades.emplace_back(p1, p2, pRT->getRE(i));
                              fan.ringMask |= CollapseFan::maskOf(p1) | CollapseFan::maskOf(p2);
                          });
}

double CollapsePenalty::get(const REdge* pRE, int iSrc, CollapseFans& fans) const
{
    const double penalty = getTurnPenalty(pRE, iSrc, fans);
    return penalty != FORBIDDEN && doRingsMeet(pRE, fans) ? FORBIDDEN : penalty;
}

double CollapsePenalty::getTurnPenalty(const REdge* pRE, int iSrc, CollapseFans& fans) const
{
    const double sqLen = pRE->getSqLength();
    // An edge without triangles is stale: its ends no longer share one.
    if (sqLen > limits.maxSqLen || !pRE->isAlive())
        return FORBIDDEN;
    const Point3* pSrc = pRE->getVertex(iSrc);
    const Point3* pTrg = pRE->getVertex(1 - iSrc);
    double sumAngle = 0.0;
    double numAngles = 0.0;
    for (CollapseFan::Blade& blade : getFan(pRE, iSrc, fans).vBlades)
    {
        if (blade.has(pTrg))
            continue;
        double angle = 0.0;
        const Turn turn = measureTurn(blade, *pSrc, *pTrg, limits, mesh.getCellSize(), angle);
        if (turn == Turn::TOO_FAR)
            return FORBIDDEN;
        if (turn == Turn::MEASURED)
        {
            sumAngle += angle;
            numAngles += 1.0;
        }
    }
    return std::sqrt(std::sqrt(sqLen) / mesh.getCellSize()) + TURN_WEIGHT * (sumAngle / numAngles);
}

// An edge that vanishes with the triangles at pRE touches one of its ends: no ring of the other end has it.
bool CollapsePenalty::doRingsMeet(const REdge* pRE, CollapseFans& fans) const
{
    const Point3* pVtx0 = pRE->getVtx0();
    const Point3* pVtx1 = pRE->getVtx1();
    const CollapseFan& fan0 = getFan(pRE, 0, fans);
    const CollapseFan& fan1 = getFan(pRE, 1, fans);
    const auto isStranger = [&](const Point3* pVtx)
    { return !isCornerBetween(fan0, pVtx1, pVtx) && isInRing(fan0, pVtx); };
    for (const CollapseFan::Blade& blade : fan1.vBlades)
    {
        if (blade.has(pVtx0))
            continue;
        const bool bMayHave1 = fan0.mayHaveInRing(blade.p1);
        const bool bMayHave2 = fan0.mayHaveInRing(blade.p2);
        if (bMayHave1 && bMayHave2 && isInRing(fan0, blade.pRingRE))
            return true;
        if (limits.bKeepTopology &&
            ((bMayHave1 && isStranger(blade.p1)) || (bMayHave2 && isStranger(blade.p2))))
            return true;
    }
    return false;
}

} // namespace TARN_ZEF

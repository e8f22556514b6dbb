#include "rmesh/REdgeEnergy.h"

#include "geometry/tools.h"
#include "rmesh/RMesh.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
const double EXPONENT = 0.335;
// Cosines of 130 and 160 degrees, with the value of pi that the limits were tuned with.
const double COS_BAD_ANGLE = std::cos(130.0 * 3.14159 / 180.0);
const double COS_VERY_BAD_ANGLE = std::cos(160.0 * 3.14159 / 180.0);
const double PENALTY_BAD_ANGLE = 0.1;
const double PENALTY_VERY_BAD_ANGLE = 1.0;
// Below this gain, a bad angle counts another ten times.
const double MIN_GAIN_WITH_PENALTY = 0.1;
const double FOLD_OF_170_DEGREES = 1.984807753; // 1 - cos
const double SEPARATION_IN_CELLS = 0.1;

// What the single precision may be off by, with room: numbers of its range have a power that is right to 1e-5, and
// those below it a power below 1e-11.
const double ROUGH_RELATIVE_ERROR = 1e-4;
const double ROUGH_ERROR = 1e-10;

double getEnergy(const double* pBend, int num)
{
    double sum = 0.0;
    for (int i = 0; i < num; ++i)
        sum += std::pow(pBend[i], EXPONENT);
    return sum;
}

// Several times as quick.
double getRoughEnergy(const double* pBend, int num)
{
    float sum = 0.0f;
    for (int i = 0; i < num; ++i)
        sum += std::pow(static_cast<float>(pBend[i]), static_cast<float>(EXPONENT));
    return sum;
}

// False if a number is negative, infinite or none.
bool haveEnergy(const double* pBend, int num)
{
    return std::all_of(pBend, pBend + num, [](double bend) { return bend >= 0.0 && bend <= DBL_MAX; });
}

// Cosine between the directions u and v of the given lengths.
double getCosine(const Vector3& u, const Vector3& v, double lenU, double lenV)
{
    return lenU > 0.0 && lenV > 0.0 ? (u * v) / (lenU * lenV) : 0.0;
}
} // namespace

REdgeEnergy::REdgeEnergy(RMesh* pRMesh_, REdge* pRE_)
    : pRMesh(pRMesh_)
    , pRE(pRE_)
    , improvement(LOWEST_DBL)
{
    ASSEX_TEXT(pRMesh_ != nullptr, "pRMesh!=0");
    if (pRE != nullptr)
        compute();
}

double REdgeEnergy::getImprovement(REdge* pRE_)
{
    pRE = pRE_;
    compute();
    return improvement;
}

void REdgeEnergy::compute()
{
    improvement = LOWEST_DBL;
    Quad quad;
    if (prepare(quad))
        improvement = evaluate(quad, LOWEST_DBL);
}

bool REdgeEnergy::isPossible(REdge* pRE_)
{
    pRE = pRE_;
    Quad quad;
    Bends bends;
    if (!prepare(quad) || !getBends(quad, bends))
        return false;
    return (haveEnergy(bends.aCur, bends.num) && haveEnergy(bends.aAlt, bends.num)) ||
           evaluate(quad, LOWEST_DBL) != LOWEST_DBL;
}

// False if the edge has no other diagonal.
bool REdgeEnergy::prepare(Quad& quad)
{
    if (!findTriangles(quad))
        return false;
    if (quad.pRT0->needFlip(quad.pRT1))
        quad.pRT1->flipOrientation();
    findCorners(quad, pRE);
    if (isDiagonalTaken(quad))
        return false;
    if (*quad.p0 == *quad.px)
        separate(quad);
    return true;
}

bool REdgeEnergy::tryGetImprovement(REdge* pRE_, double& result, double bar)
{
    pRE = pRE_;
    improvement = LOWEST_DBL;
    Quad quad;
    if (findTriangles(quad))
    {
        if (quad.pRT0->needFlip(quad.pRT1))
            return false;
        findCorners(quad, pRE);
        if (!isDiagonalTaken(quad))
        {
            if (*quad.p0 == *quad.px)
                return false;
            improvement = evaluate(quad, bar);
        }
    }
    result = improvement;
    return true;
}

bool REdgeEnergy::findTriangles(Quad& quad) const
{
    return pRE->getTwoT(quad.pRT0, quad.pRT1, true);
}

void REdgeEnergy::findCorners(Quad& quad, const REdge* pEdge)
{
    quad.ici0 = quad.pRT0->getICI(pEdge->getVtx0(), pEdge->getVtx1());
    quad.ici1 = quad.pRT1->getICI(pEdge->getVtx0(), pEdge->getVtx1());
    quad.p0 = quad.pRT0->getCorner(quad.ici0);
    quad.p1 = quad.pRT0->getCorner(RTriangle::getNext(quad.ici0));
    quad.p2 = quad.pRT0->getCorner(RTriangle::getPrev(quad.ici0));
    quad.px = quad.pRT1->getCorner(quad.ici1);
}

bool REdgeEnergy::isDiagonalTaken(const Quad& quad) const
{
    if (pRMesh->hasEdge(quad.p0, quad.px))
        return true;
    ASSEX_TEXT(quad.p0 != quad.px, "pOppCorner0!=pOppCorner1");
    return false;
}

// The opposite corners stand on one place. If neither may move towards its neighbours, the first is pushed
// off; nobody looks it up by its coordinates.
void REdgeEnergy::separate(const Quad& quad)
{
    pRMesh->relocateVertex(quad.p0);
    pRMesh->relocateVertex(quad.px);
    if (*quad.p0 == *quad.px)
    {
        const double step = SEPARATION_IN_CELLS * pRMesh->getCellSize();
        bool bOK = false;
        const Vector3 nnv = quad.pRT0->getNNV(bOK);
        *quad.p0 = *quad.p0 + (bOK ? nnv * step : Vector3(step, 0.0, 0.0));
    }
    ASSEX_TEXT(*quad.p0 != *quad.px, "p0!=px");
}

double REdgeEnergy::getAnglePenalty(const Quad& quad)
{
    const double altMin =
        std::min(getMinCosPhi(quad.p0, quad.px, quad.p2), getMinCosPhi(quad.p0, quad.p1, quad.px));
    if (!(COS_BAD_ANGLE > altMin))
        return 0.0;
    const double curMin =
        std::min(getMinCosPhi(quad.p2, quad.p1, quad.px), getMinCosPhi(quad.p0, quad.p1, quad.p2));
    if (!(curMin > altMin))
        return 0.0;
    return COS_VERY_BAD_ANGLE > altMin ? PENALTY_VERY_BAD_ANGLE : PENALTY_BAD_ANGLE;
}

// In cells: the energy, which is measured against fixed limits, must not depend on the unit of the points.
double REdgeEnergy::getLength(const Point3& a, const Point3& b) const
{
    return std::sqrt(sqDistance(a, b)) / pRMesh->getCellSize();
}

// The penalty is no gain: what is below the bar without it may stay without it.
double REdgeEnergy::evaluate(const Quad& quad, double bar) const
{
    Bends bends;
    if (!getBends(quad, bends))
        return LOWEST_DBL;
    if (bar > LOWEST_DBL)
    {
        const double cur = getRoughEnergy(bends.aCur, bends.num);
        const double alt = getRoughEnergy(bends.aAlt, bends.num);
        if (const double most = cur - alt + ROUGH_RELATIVE_ERROR * (cur + alt) + ROUGH_ERROR; most < bar)
            return most;
    }
    const double gainOfEnergy = getEnergy(bends.aCur, bends.num) - getEnergy(bends.aAlt, bends.num);
    if (gainOfEnergy < bar)
        return gainOfEnergy;
    const double penalty = getAnglePenalty(quad);
    double gain = gainOfEnergy - penalty;
    if (MIN_GAIN_WITH_PENALTY > gain)
        gain -= 10.0 * penalty;
    return isNaN(gain) ? LOWEST_DBL : gain;
}

// False if the flip is impossible.
bool REdgeEnergy::getBends(const Quad& quad, Bends& bends) const
{
    bool bOK0 = false;
    bool bOK1 = false;
    const Vector3 altVec0 = getNormalVector(quad.p0, quad.p1, quad.px, bOK0);
    const Vector3 altVec1 = getNormalVector(quad.p0, quad.px, quad.p2, bOK1);
    if (!bOK0 || !bOK1)
        return false;
    ASSEX(altVec0.isNV() && altVec1.isNV());
    const double altDih = 1.0 - getCosPhi(altVec0, altVec1);
    bool bOKvec0 = false;
    bool bOKvec1 = false;
    const Vector3& vec0 = quad.pRT0->getNNV(bOKvec0);
    const Vector3& vec1 = quad.pRT1->getNNV(bOKvec1);
    ASSEX(bOKvec0 && bOKvec1);
    ASSEX(vec0.isNV() && vec1.isNV());
    const double curDih = 1.0 - getCosPhi(vec0, vec1);
    if (altDih > FOLD_OF_170_DEGREES && altDih > curDih)
        return false;

    bends.add(curDih * getLength(*quad.p1, *quad.p2), altDih * getLength(*quad.p0, *quad.px));
    const int next0 = RTriangle::getNext(quad.ici0);
    const int next1 = RTriangle::getNext(quad.ici1);
    addSide(quad.pRT0, next0, getLength(*quad.p2, *quad.p0), vec0, altVec1, bends);
    addSide(quad.pRT0, RTriangle::getNext(next0), getLength(*quad.p0, *quad.p1), vec0, altVec0, bends);
    addSide(quad.pRT1, next1, getLength(*quad.p1, *quad.px), vec1, altVec0, bends);
    addSide(quad.pRT1, RTriangle::getNext(next1), getLength(*quad.px, *quad.p2), vec1, altVec1, bends);
    return true;
}

// The side opposite corner ici of pT, whose normal is cur and would be alt. A side without exactly one other
// triangle, or one whose triangle has no normal, counts nothing.
void REdgeEnergy::addSide(const RTriangle* pT, int ici, double length, const Vector3& cur, const Vector3& alt,
                          Bends& bends)
{
    RTriangle* pNeigT = pT->getRE(ici)->getNeigT(pT);
    if (pNeigT == nullptr)
        return;
    bool bOK = false;
    Vector3 nnv = pNeigT->getNNV(bOK);
    if (!bOK)
        return;
    if (pT->needFlip(pNeigT))
        nnv.mul(-1.0);
    ASSEX(nnv.isNV());
    bends.add((1.0 - getCosPhi(nnv, cur)) * length, (1.0 - getCosPhi(nnv, alt)) * length);
}

double REdgeEnergy::getMinCosPhi(const Point3* p0, const Point3* p1, const Point3* p2)
{
    const Vector3 vec01 = *p1 - *p0;
    const Vector3 vec12 = *p2 - *p1;
    const Vector3 vec20 = *p0 - *p2;
    const double len01 = vec01.length();
    const double len12 = vec12.length();
    const double len20 = vec20.length();
    return std::min({-getCosine(vec01, vec20, len01, len20), -getCosine(vec12, vec01, len12, len01),
                     -getCosine(vec20, vec12, len20, len12)});
}

} // namespace TARN_ZEF

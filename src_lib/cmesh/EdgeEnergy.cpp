#include "cmesh/EdgeEnergy.h"

#include "cmesh/CMesh.h"
#include "geometry/tools.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace TARN_ZEF
{
namespace
{
// Cosines of 130 and 160 degrees: an angle beyond them is wide, or too wide.
const double minCosA = std::cos(2.268926111111111);
const double minCosB = std::cos(2.792524444444444);

const double EXPONENT = 0.3;
// 1 - cos of a bend of 2, 160 and 170 degrees.
const double BEND_OF_2_DEGREES = 0.000609173;
const double BEND_OF_160_DEGREES = 1.939692621;
const double BEND_OF_170_DEGREES = 1.984807753;
const double SEPARATION_IN_CELLS = 0.1;

double getEnergy(double bend, double length)
{
    return std::pow(bend * length, EXPONENT);
}

double getBend(const Vector3& a, const Vector3& b)
{
    return 1.0 - getCosPhi(a, b);
}

double distance(const Point3* pA, const Point3* pB)
{
    return std::sqrt(sqDistance(*pA, *pB));
}

// Without the warning of normalize() for a null vector: the caller looks at the length.
Vector3 toUnit(const Vector3& v)
{
    return v.isDegenerate() ? v : normalizeInline(v);
}
} // namespace

EdgeEnergy::EdgeEnergy(CMesh* pCMesh_, CEdge* pCE_)
    : pCMesh(pCMesh_)
    , pCE(pCE_)
    , improvement(LOWEST_DBL)
{
    compute();
}

void EdgeEnergy::compute()
{
    improvement = LOWEST_DBL;
    Quad quad;
    if (!findQuad(quad))
        return;
    if (*quad.pb == *quad.pa)
        separate(quad);
    improvement = evaluate(quad);
}

bool EdgeEnergy::findQuad(Quad& quad) const
{
    if (!pCE->getTwoTriangles(quad.pT0, quad.pT1, true))
        return false;
    if (quad.pT0->needFlip(quad.pT1))
        quad.pT1->flipOrientation();
    quad.ici0 = quad.pT0->getICI(pCE->v0, pCE->v1);
    quad.ici1 = quad.pT1->getICI(pCE->v0, pCE->v1);
    quad.a = quad.pT0->getCorner(quad.ici0);
    quad.b = quad.pT1->getCorner(quad.ici1);
    if (quad.a == quad.b || pCMesh->hasEdge(quad.a, quad.b))
        return false;
    quad.pa = quad.pT0->getVtx(pCMesh, quad.ici0);
    quad.pb = quad.pT1->getVtx(pCMesh, quad.ici1);
    quad.p1 = quad.pT0->getVtx(pCMesh, CTriangle::getNext(quad.ici0));
    quad.p2 = quad.pT0->getVtx(pCMesh, CTriangle::getPrev(quad.ici0));
    return true;
}

// The opposite corners stand on one place. If neither may move towards its neighbours, the first is pushed
// off.
void EdgeEnergy::separate(const Quad& quad) const
{
    pCMesh->laplacianForOne(quad.a);
    pCMesh->laplacianForOne(quad.b);
    if (*quad.pb == *quad.pa)
    {
        const double step = SEPARATION_IN_CELLS * pCMesh->getAvgSpacing();
        bool bOK = false;
        Vector3 nnv;
        quad.pT0->getNNV(nnv, pCMesh, bOK);
        quad.pa->set(*quad.pa + (bOK ? nnv * step : Vector3(step, 0.0, 0.0)));
    }
    ASSEX_TEXT(*quad.pa != *quad.pb, "*pa!=*pb");
}

bool EdgeEnergy::checkAngles(const Quad& quad, bool& bWide) const
{
    bWide = false;
    const double newMin =
        std::min(getMinCosPhi(quad.pa, quad.p1, quad.pb), getMinCosPhi(quad.pa, quad.pb, quad.p2));
    if (!(newMin < minCosA))
        return true;
    const double oldMin =
        std::min(getMinCosPhi(quad.pa, quad.p1, quad.p2), getMinCosPhi(quad.pb, quad.p2, quad.p1));
    if (!(newMin < oldMin))
        return true;
    bWide = true;
    return !(newMin < minCosB);
}

bool EdgeEnergy::getNormals(const Quad& quad, Normals& normals) const
{
    bool bOK[4];
    normals.new1 = getNormalVector(quad.pa, quad.p1, quad.pb, bOK[0]);
    normals.new2 = getNormalVector(quad.pa, quad.pb, quad.p2, bOK[1]);
    normals.old0 = getNormalVector(quad.pa, quad.p1, quad.p2, bOK[2]);
    normals.old1 = getNormalVector(quad.pb, quad.p2, quad.p1, bOK[3]);
    if (!(bOK[0] && bOK[1] && bOK[2] && bOK[3]))
        return false;
    ASSEX(normals.new1.isNV() && normals.new2.isNV());
    ASSEX(normals.old0.isNV() && normals.old1.isNV());
    return true;
}

double EdgeEnergy::evaluate(const Quad& quad) const
{
    bool bWide = false;
    Normals normals;
    if (!checkAngles(quad, bWide) || !getNormals(quad, normals))
        return LOWEST_DBL;
    const double bendNew = getBend(normals.new1, normals.new2);
    // Within a plane a wide angle does harm and no good.
    if (bWide && (bendNew < BEND_OF_2_DEGREES || bendNew > BEND_OF_160_DEGREES))
        return LOWEST_DBL;
    const double bendOld = getBend(normals.old0, normals.old1);
    if (bendNew > BEND_OF_170_DEGREES && bendOld < bendNew)
        return LOWEST_DBL;

    Energies energies{getEnergy(bendOld, distance(quad.p1, quad.p2)),
                      getEnergy(bendNew, distance(quad.pa, quad.pb))};
    const int next0 = CTriangle::getNext(quad.ici0);
    const int prev0 = CTriangle::getPrev(quad.ici0);
    const int next1 = CTriangle::getNext(quad.ici1);
    const int prev1 = CTriangle::getPrev(quad.ici1);
    addOuterEdge(quad.pT0, next0, distance(quad.p2, quad.pa), normals.old0, normals.new2, energies);
    addOuterEdge(quad.pT0, prev0, distance(quad.pa, quad.p1), normals.old0, normals.new1, energies);
    addOuterEdge(quad.pT1, next1, distance(quad.p1, quad.pb), normals.old1, normals.new1, energies);
    addOuterEdge(quad.pT1, prev1, distance(quad.pb, quad.p2), normals.old1, normals.new2, energies);
    const double gain = energies.oldEnergy - energies.newEnergy;
    return isNaN(gain) ? LOWEST_DBL : gain;
}

// The edge opposite corner ici of pCT. One that has not exactly one other triangle counts nothing.
void EdgeEnergy::addOuterEdge(const CTriangle* pCT, int ici, double outLen, const Vector3& oldNNV,
                              const Vector3& newNNV, Energies& energies) const
{
    const CTriangle* pNeigT = pCT->getCEdge(ici)->getNeigT(pCT);
    if (pNeigT == nullptr)
        return;
    bool bOK = false;
    Vector3 nnv;
    pNeigT->getNNV(nnv, pCMesh, bOK);
    ASSEX(bOK && nnv.isNV());
    if (pCT->needFlip(pNeigT))
        nnv.mul(-1.0);
    energies.oldEnergy += getEnergy(getBend(nnv, oldNNV), outLen);
    energies.newEnergy += getEnergy(getBend(nnv, newNNV), outLen);
}

double EdgeEnergy::getMinCosPhi(const Point3* p0, const Point3* p1, const Point3* p2) const
{
    const Vector3 vec01 = toUnit(*p1 - *p0);
    const Vector3 vec02 = toUnit(*p2 - *p0);
    const Vector3 vec12 = toUnit(*p2 - *p1);
    if (!vec01.isNV() || !vec02.isNV() || !vec12.isNV())
        failDegenerate(p0, p1, vec01, vec02, vec12);
    const double cos0 = getCosPhi(vec01, vec02);
    const double cos1 = getCosPhi(vec01 * -1.0, vec12);
    const double cos2 = getCosPhi(vec12 * -1.0, vec02 * -1.0);
    return std::min({cos0, cos1, cos2});
}

// Tells whether the mesh is bad or only this triangle.
void EdgeEnergy::failDegenerate(const Point3* p0, const Point3* p1, const Vector3& vec01,
                                const Vector3& vec02, const Vector3& vec12) const
{
    std::ostringstream os;
    if (p0 == p1)
        os << "p0=p1\n";
    else if (*p0 == *p1)
        os << "*p0==*p1\n";
    os << "vec01=" << vec01 << "\nvec02=" << vec02 << "\nvec12=" << vec12 << "\n";
    printText(os.str());
    const bool bNoDegenerate = pCMesh->checkNoDegenerate("EdgeEnergy");
    ASSEX_TEXT(bNoDegenerate, "pCMesh->checkNoDegenerate(\"EdgeEnergy\")");
    const bool bNoDups = pCMesh->checkNoDups("EdgeEnergy");
    ASSEX_TEXT(bNoDups, "pCMesh->checkNoDups(\"EdgeEnergy\")");
    ASSEX_TEXT(false, "false");
}

} // namespace TARN_ZEF

#include "rmesh/REdge.h"

#include "geometry/tools.h"
#include "rmesh/RMesh.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <sstream>
#include <string>

namespace TARN_ZEF
{
namespace
{
// Away from 0 and 180 degrees the cosine alone tells that an angle is not flat: cos(0.01 degrees) is
// 1 - 1.5e-8.
const double SURELY_NOT_FLAT_COSINE = 0.9999;

// Corner after the one opposite the edge, so that the edge runs from it in the direction of the triangle.
Point3* startOfEdge(const RTriangle* pRT, const Point3* pOpp)
{
    return pRT->getCorner(RTriangle::getNext(pRT->getICI(pOpp)));
}

// Puts two triangles in place of one, over a point that stands for its edge opposite pOpp.
std::array<RTriangle*, 2> splitTriangle(RTriangle* pRT, Point3* pOpp, const REdge& edge, Point3* pNew,
                                        RMesh* pMesh)
{
    ASSEX(pRT->isAlive());
    Point3* pFrom = startOfEdge(pRT, pOpp);
    Point3* pTo = edge.getOtherPoint(pFrom);
    pRT->kill(pMesh);
    RTriangle* pFirst = pMesh->createT(pOpp, pFrom, pNew);
    return {pFirst, pMesh->createT(pOpp, pNew, pTo)};
}
} // namespace

bool isFlat(const Point3* a, const Point3* b, const Point3* c)
{
    const Vector3 ab = *b - *a;
    const Vector3 ac = *c - *a;
    if (ab.isDegenerate() || ac.isDegenerate())
        return true;
    const Vector3 nvAB = normalize(ab);
    const Vector3 nvAC = normalize(ac);
    if (std::fabs(nvAB * nvAC) < SURELY_NOT_FLAT_COSINE)
        return false;
    const double angle = getAngleDegree(nvAB, nvAC);
    return angle < 0.01 || angle > 179.99;
}

REdge::REdge(Point3* p0_, Point3* p1_, unsigned int number_)
    : p0(p0_)
    , p1(p1_)
    , number(number_)
{
    ASSEX_TEXT(ByCreationVtx()(p0_, p1_), "p0_<p1_");
}

Point3* REdge::getVertex(int i) const
{
    ASSEX_TEXT(i == 0 || i == 1, "false");
    return i == 0 ? p0 : p1;
}

Point3* REdge::getOtherPoint(const Point3* pVtx) const
{
    ASSEX_TEXT(has(pVtx), "false");
    return pVtx == p0 ? p1 : p0;
}

double REdge::getSqLength() const noexcept
{
    return sqDistance(*p0, *p1);
}

void REdge::checkOut(RTriangle* pRT)
{
    if (vRT.eraseSwap(pRT))
        return;
    printText("REdge::checkOut, triangle live state: " + std::to_string(pRT->isAlive()) + "\n");
    ASSEX_TEXT(false, "false");
}

bool REdge::operator<(const REdge& other) const noexcept
{
    const ByCreationVtx before;
    if (p0 != other.p0)
        return before(p0, other.p0);
    return before(p1, other.p1);
}

REdge* REdge::tryFlipEdge(RMesh* pMesh, RTriangle* pRT0, RTriangle* pRT1)
{
    if (pRT0 == nullptr)
    {
        ASSEX(pRT1 == 0);
        if (!getTwoT(pRT0, pRT1, true))
            return nullptr;
    }
    if (!pRT0->isAlive() || !pRT1->isAlive())
        return nullptr;
    Point3* pOpp0 = pRT0->getThirdPoint(p0, p1);
    Point3* pOpp1 = pRT1->getThirdPoint(p0, p1);
    if (pOpp0 == pOpp1)
    {
        std::ostringstream os;
        os << "-----------------------------\nREdge::flipEdge(), BUG:\n"
           << pRT0 << " " << pRT1 << "\nv0=" << static_cast<const void*>(p0)
           << "\nv1=" << static_cast<const void*>(p1) << "\n";
        printText(os.str());
        ASSEX_TEXT(false, "false");
    }
    if (pMesh->hasEdge(pOpp0, pOpp1))
        return nullptr;
    if (isFlat(pOpp0, pOpp1, p0) || isFlat(pOpp0, pOpp1, p1))
        return nullptr;

    const Point3* pNextVtx = startOfEdge(pRT0, pOpp0);
    ASSEX_TEXT(pNextVtx == p0 || pNextVtx == p1, "pNextVtx==aEndpoints[1]");
    pRT0->kill(pMesh);
    pRT1->kill(pMesh);
    if (pNextVtx != p0)
        std::swap(pOpp0, pOpp1);
    const RTriangle* pNew = pMesh->createT(pOpp0, p0, pOpp1);
    pMesh->createT(pOpp1, p1, pOpp0);
    return pNew->getRE(1);
}

void REdge::split(Point3* pNew, RMesh* pMesh)
{
    std::vector<RTriangle*> vCopy(vRT.begin(), vRT.end());
    ASSEX(!vCopy.empty());
    for (RTriangle* pRT : vCopy)
        splitTriangle(pRT, pRT->getThirdPoint(p0, p1), *this, pNew, pMesh);
}

bool REdge::trySplitNeigsKillT(RMesh* pMesh, RTriangle* pKillRT, int ici, std::vector<RTriangle*>& vNewT)
{
    ASSEX(pKillRT->isAlive());
    Point3* pApex = pKillRT->getCorner(ici);
    std::vector<Point3*> vRing;
    pMesh->getRingVtx(pApex, vRing);
    const auto turnsTooFar =
        [pApex](const Vector3& orgNNV, const Point3* pA, const Point3* pB, const Point3* pC)
    {
        bool bOK1 = false;
        bool bOK2 = false;
        const Vector3 proxyNNV1 = getNormalVector(pA, pB, pApex, bOK1);
        const Vector3 proxyNNV2 = getNormalVector(pA, pApex, pC, bOK2);
        return !bOK1 || !bOK2 || getAngleDegree(orgNNV, proxyNNV1) > 90.0 ||
               getAngleDegree(orgNNV, proxyNNV2) > 90.0;
    };

    std::vector<RTriangle*> vCopy;
    for (RTriangle* pNeigT : vRT)
    {
        if (pNeigT == pKillRT)
            continue;
        bool bOK0 = false;
        const Vector3 orgNNV = pNeigT->getNNV(bOK0);
        if (!bOK0)
            return false;
        Point3* pA = pNeigT->getThirdPoint(p0, p1);
        const Point3* pB = startOfEdge(pNeigT, pA);
        if (std::find(vRing.begin(), vRing.end(), pA) != vRing.end() ||
            turnsTooFar(orgNNV, pA, pB, getOtherPoint(pB)))
            return false;
        vCopy.push_back(pNeigT);
    }

    pKillRT->kill(pMesh);
    for (RTriangle* pNeigT : vCopy)
        for (RTriangle* pNewT : splitTriangle(pNeigT, pNeigT->getThirdPoint(p0, p1), *this, pApex, pMesh))
            vNewT.push_back(pNewT);
    return true;
}

} // namespace TARN_ZEF

// Members of RTop that flip and collapse edges.
#include "rmesh/RTop.h"

#include "core/Progress.h"
#include "core/StableQueue.h"
#include "geometry/tools.h"
#include "rmesh/REdgeEnergy.h"
#include "rmesh/RMesh.h"
#include "rmesh/edgeFlips.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
const double FORBIDDEN = DBL_MAX;
const double MIN_CAP_ANGLE = 170.0; // degrees, like all angles here
const double MAX_WORSE_DIHEDRAL = 2.0;
const double MAX_CAP_BEND = 90.0;
const double NO_DIHEDRAL = 360.0;
const double MIN_CROSS_PER_CELL = 1e-10; // of a cross product, in squared cells

struct CapCandidate
{
    double penalty;
    REdge* pRE;
};
struct CapPenalty
{
    double operator()(const CapCandidate& candidate) const noexcept { return candidate.penalty; }
};

double getAngleAt(const Point3* pCenter, const Point3* pA, const Point3* pB)
{
    return getAngleDegree(normalize(*pA - *pCenter), normalize(*pB - *pCenter));
}

// The child of that tag counts as done: this pass has no share for it.
void finishTag(const std::string& tag)
{
    getRootProgress()->getChildProgressSetTodo(tag, 1)->setFinished(true);
}

// Whether a triangle vanishes, or turns by more than maxDevAngle, when pSrc moves to trg. A triangle without
// area may turn as it likes.
bool breaksTriangle(const RTriangle* pRT, const Point3* pSrc, const Point3& trg, double maxDevAngle,
                    double cellSize)
{
    const int i = pRT->getICI(pSrc);
    const Point3& p1 = *pRT->getCorner(RTriangle::getNext(i));
    const Point3& p2 = *pRT->getCorner(RTriangle::getPrev(i));
    const Vector3 vec12 = p1 - p2;
    const Vector3 cross = crossProduct(vec12, *pSrc - p2);
    if (cross.isDegenerate())
    {
        printText("current triangle is degenerate\n");
        return false;
    }
    const Vector3 altCross = crossProduct(vec12, trg - p2);
    if (altCross.length() < MIN_CROSS_PER_CELL * cellSize * cellSize)
        return true;
    return getAngleDegree(normalize(cross), normalize(altCross)) > maxDevAngle;
}
} // namespace

void RTop::edgeFlips()
{
    flipGreedily(pRMesh);
    finishTag("RM_gEfCandMT");
    finishTag("RM_kdeg");
}

void RTop::edgeFlipsSimA(double temperature)
{
    TARN_ZEF::edgeFlipsSimA(pRMesh, temperature);
    finishTag("RM_gEfCandMT");
    finishTag("RM_kdeg");
}

void RTop::optimizeAnnealed()
{
    edgeFlips();
    for (const double temperature : getAnnealingTemperatures())
        edgeFlipsSimA(temperature);
    edgeFlips();
}

bool RTop::canFlip(const Point3* p0, const Point3* p1, const Point3* pAlt0, const Point3* pAlt1,
                   double maxAngle) const
{
    const REdge* pRE = pRMesh->getRE(p0, p1);
    if (pRE == nullptr || !pRE->isInner() || pRMesh->hasEdge(pAlt0, pAlt1))
        return false;
    if (p0 == p1 || pAlt0 == pAlt1 || pAlt0 == p0 || pAlt0 == p1 || pAlt1 == p0 || pAlt1 == p1)
        return false;
    if (!ByCreationVtx()(p0, p1))
    {
        warningMessage(ZEF_HERE, "ccd0>=ccd1");
        return false;
    }
    bool bOK2 = false;
    bool bOK3 = false;
    const Vector3 nnv2 = getNormalVector(pAlt0, pAlt1, p1, bOK2);
    const Vector3 nnv3 = getNormalVector(pAlt1, pAlt0, p0, bOK3);
    return bOK2 && bOK3 && maxAngle > getAngleDegree(nnv2, nnv3);
}

double RTop::getFlipPenalty(const REdge* pRE, double& curLargestIntra, double& altLargestIntra,
                            double& curDih, double& altDih) const
{
    RTriangle* pRT0 = nullptr;
    RTriangle* pRT1 = nullptr;
    if (!pRE->getTwoT(pRT0, pRT1, true))
        return FORBIDDEN;
    ASSEX_TEXT(pRT0 != pRT1 && pRT0 != nullptr && pRT1 != nullptr, "pRT0!=pRT1 && pRT0!=0 && pRT1!=0");
    ASSEX(!pRT0->isCombDegenerate() && !pRT1->isCombDegenerate());
    const int ici = pRT0->getICI(pRE->getVtx0(), pRE->getVtx1());
    const Point3* pA0 = pRT0->getCorner(ici);
    const Point3* pA1 = pRT0->getCorner(RTriangle::getNext(ici));
    const Point3* pA2 = pRT0->getCorner(RTriangle::getPrev(ici));
    const Point3* pB0 = pRT1->getThirdPoint(pRE->getVtx0(), pRE->getVtx1());
    curLargestIntra = std::max(getAngleAt(pA0, pA1, pA2), getAngleAt(pB0, pA1, pA2));
    altLargestIntra = std::max(getAngleAt(pA2, pA0, pB0), getAngleAt(pA1, pA0, pB0));

    bool bOK0 = false;
    bool bOK1 = false;
    const Vector3& nnv0 = pRT0->getNNV(bOK0);
    const Vector3& nnv1 = pRT1->getNNV(bOK1);
    curDih = bOK0 && bOK1 ? getAngleDegree(nnv0, nnv1) : NO_DIHEDRAL;
    const Vector3 altVecA = getNormalVector(pA0, pB0, pA2, bOK0);
    const Vector3 altVecB = getNormalVector(pA0, pA1, pB0, bOK1);
    if (!bOK0 || !bOK1)
        return FORBIDDEN;
    altDih = getAngleDegree(altVecA, altVecB);

    const double worseIntra = altLargestIntra - curLargestIntra;
    const double worseDih = altDih - curDih;
    if (MIN_CAP_ANGLE > curLargestIntra || worseIntra > 0.0 || worseDih > MAX_WORSE_DIHEDRAL)
        return FORBIDDEN;
    return worseDih + worseIntra;
}

int RTop::flipExtremeCaps()
{
    StableQueue<CapCandidate, CapPenalty> queue;
    double curIntra = 0.0, altIntra = 0.0, curDih = 0.0, altDih = 0.0;
    for (REdge* pRE : pRMesh->getAllRE())
    {
        const double penalty = getFlipPenalty(pRE, curIntra, altIntra, curDih, altDih);
        if (penalty != FORBIDDEN)
            queue.add({penalty, pRE});
    }
    int numFlips = 0;
    while (!queue.empty())
    {
        const CapCandidate candidate = queue.front();
        queue.pop();
        const double freshPenalty = getFlipPenalty(candidate.pRE, curIntra, altIntra, curDih, altDih);
        if (freshPenalty == FORBIDDEN)
            continue;
        if (freshPenalty > candidate.penalty)
            queue.add({freshPenalty, candidate.pRE});
        else if (flipCap(candidate.pRE))
            ++numFlips;
    }
    return numFlips;
}

bool RTop::flipCap(REdge* pRE)
{
    RTriangle* pRT0 = nullptr;
    RTriangle* pRT1 = nullptr;
    if (!pRE->getTwoT(pRT0, pRT1, true))
        return false;
    Point3* pVtx0 = pRE->getVtx0();
    Point3* pVtx1 = pRE->getVtx1();
    Point3* pAltVtx0 = pRT0->getThirdPoint(pVtx0, pVtx1);
    Point3* pAltVtx1 = pRT1->getThirdPoint(pVtx0, pVtx1);
    if (!canFlip(pVtx0, pVtx1, pAltVtx0, pAltVtx1, MAX_CAP_BEND))
        return false;
    ASSEX(pAltVtx0 != pAltVtx1);
    ASSEX_TEXT(pAltVtx0 != pVtx0 && pAltVtx0 != pVtx1,
               "pAltVtx0!=pRE->getVtx0() && pAltVtx0!=pRE->getVtx1()");
    ASSEX_TEXT(pAltVtx1 != pVtx0 && pAltVtx1 != pVtx1,
               "pAltVtx1!=pRE->getVtx0() && pAltVtx1!=pRE->getVtx1()");
    ASSEX_TEXT(pVtx0 != pVtx1, "pRE->getVtx0()!=pRE->getVtx1()");
    Point3* pNextVtx = pRT0->getCorner(RTriangle::getNext(pRT0->getICI(pAltVtx0)));
    const bool bForward = pNextVtx == pVtx0;
    ASSEX_TEXT(bForward || pNextVtx == pVtx1, "pNextVtx==pRE->getVtx1()");
    pRT0->kill(pRMesh);
    pRT1->kill(pRMesh);
    pRMesh->createT(pAltVtx0, pAltVtx1, bForward ? pVtx1 : pVtx0);
    pRMesh->createT(pAltVtx1, pAltVtx0, bForward ? pVtx0 : pVtx1);
    return true;
}

void RTop::getEdgesForOptimization(double minDihedral, std::vector<REdge*>& vRE) const
{
    const double cosBar = std::cos(minDihedral / 180.0 * 3.14159);
    std::vector<REdge*> vAll;
    pRMesh->getDegN(DEG_INNER, vAll);
    for (REdge* pRE : vAll)
    {
        RTriangle* pRT0 = nullptr;
        RTriangle* pRT1 = nullptr;
        ASSEX(pRE->getTwoT(pRT0, pRT1, true));
        ASSEX(pRT0->isAlive() && pRT1->isAlive());
        bool bOK0 = false;
        bool bOK1 = false;
        const Vector3& nnv0 = pRT0->getNNV(bOK0);
        const Vector3& nnv1 = pRT1->getNNV(bOK1);
        if (!bOK0 || !bOK1)
        {
            warningMessage(ZEF_HERE, "No NNV, skipped edge");
            continue;
        }
        const double sign = pRT0->needFlip(pRT1) ? -1.0 : 1.0;
        if (!(getCosPhi(nnv0, nnv1 * sign) > cosBar))
            vRE.push_back(pRE);
    }
}

bool RTop::tryCollapseEnd(const REdge* pRE, int iEnd, double maxSqLen, double maxDevAngle,
                          std::multimap<double, REdge*>& mmPrioq)
{
    Point3* pSrc = pRE->getVertex(iEnd);
    Point3* pTrg = pRE->getOtherPoint(pSrc);
    std::vector<RTriangle*> vSrcT;
    std::vector<RTriangle*> vCurTrgT;
    pRMesh->getIncidentT(pSrc, vSrcT);
    pRMesh->getIncidentT(pTrg, vCurTrgT);
    ASSEX(!vSrcT.empty());
    ASSEX(!vCurTrgT.empty());
    const auto breaks = [&](const RTriangle* pRT)
    { return !pRT->has(pTrg) && breaksTriangle(pRT, pSrc, *pTrg, maxDevAngle, pRMesh->getCellSize()); };
    if (std::any_of(vSrcT.begin(), vSrcT.end(), breaks) || !pRMesh->hasDisjointRings(pSrc, pTrg))
        return false;
    pRMesh->exchangeCorner(pSrc, pTrg);
    queueEdgesAt(pTrg, maxSqLen, mmPrioq);
    return true;
}

bool RTop::tryCollapseMid(const REdge* pRE, const Point3& midPoint, double maxSqLen, double maxDevAngle,
                          std::multimap<double, REdge*>& mmPrioq)
{
    Point3* const ends[2] = {pRE->getVtx0(), pRE->getVtx1()};
    std::vector<const REdge*> vUniqueRingRE;
    for (const Point3* pKill : ends)
    {
        std::vector<RTriangle*> vIncT;
        pRMesh->getIncidentT(pKill, vIncT);
        for (const RTriangle* pRT : vIncT)
        {
            if (pRT->hasEdge(ends[0], ends[1]))
                continue;
            const REdge* pRingRE = pRT->getRE(pRT->getICI(pKill));
            if (breaksTriangle(pRT, pKill, midPoint, maxDevAngle, pRMesh->getCellSize()) ||
                std::find(vUniqueRingRE.begin(), vUniqueRingRE.end(), pRingRE) != vUniqueRingRE.end())
                return false;
            vUniqueRingRE.push_back(pRingRE);
        }
    }
    Point3* pMid = pRMesh->getVertexAt(midPoint, true);
    if (pMid == nullptr)
        return false;
    for (Point3* pKill : ends)
        pRMesh->exchangeCorner(pKill, pMid);
    queueEdgesAt(pMid, maxSqLen, mmPrioq);
    return true;
}

void RTop::queueEdgesAt(const Point3* pVtx, double maxSqLen, std::multimap<double, REdge*>& mmPrioq) const
{
    std::vector<REdge*> vRE;
    pRMesh->getIncidentRE(pVtx, vRE);
    for (REdge* pRE : vRE)
        if (maxSqLen > pRE->getSqLength())
            mmPrioq.emplace(pRE->getSqLength(), pRE);
}

} // namespace TARN_ZEF

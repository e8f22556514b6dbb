// The edge flips of Top on the lattice mesh.
#include "repair/Top.h"

#include "cmesh/CMesh.h"
#include "cmesh/EdgeEnergy.h"
#include "cmesh/toolsCMesh.h"
#include "geometry/tools.h"
#include "lattice/Calc.h"

#include <algorithm>
#include <cmath>
#include <iostream>

namespace TARN_ZEF
{
namespace
{
const double MIN_IMPROVEMENT = 0.01;
const int NUM_FLIP_TURNS = 3;
const double MAX_COLLINEAR_DEV = 0.2; // degrees off a straight line
const double MAX_FLIP_BEND = 120.0;
const double EXTREME_ANGLE = 170.0; // of a cap
const double MIN_CREASE_ANGLE = 150.0;
const double MIN_CREASE_GAIN = 5.0;

// Heap order: the largest improvement leaves first, equal ones by creation of the edge.
bool isLessImportant(const EdgeEnergy& a, const EdgeEnergy& b)
{
    if (a.getImprovement() != b.getImprovement())
        return a.getImprovement() < b.getImprovement();
    return a.getCEdge()->getNumber() > b.getCEdge()->getNumber();
}

bool isCoordinateNear(u64 a, u64 b)
{
    return (a > b ? a - b : b - a) <= 1;
}

bool areLatticeNeighbours(const Calc& calc, u64 ccd0, u64 ccd1)
{
    u64 x0, y0, z0, x1, y1, z1;
    calc.getXYZ(ccd0, x0, y0, z0);
    calc.getXYZ(ccd1, x1, y1, z1);
    return isCoordinateNear(x0, x1) && isCoordinateNear(y0, y1) && isCoordinateNear(z0, z1);
}

// Whether the angle at the apex over the edge is that of a cap.
bool isCap(const CMesh& mesh, const CEdge& edge, u64 apex)
{
    const Vector3 vec0 = *mesh.getVtx(edge.v0) - *mesh.getVtx(apex);
    const Vector3 vec1 = *mesh.getVtx(edge.v1) - *mesh.getVtx(apex);
    if (vec0.isDegenerate() || vec1.isDegenerate())
        return false;
    return getAngleDegree(normalizeInline(vec0), normalizeInline(vec1)) >= EXTREME_ANGLE;
}

// Descending bend, equal ones by creation: the last entry leaves a heap of these first.
using AngleEdge = std::pair<double, CEdge*>;
bool isBentMore(const AngleEdge& a, const AngleEdge& b)
{
    if (a.first != b.first)
        return a.first > b.first;
    return a.second->getNumber() < b.second->getNumber();
}
bool isBentLess(const AngleEdge& a, const AngleEdge& b)
{
    return isBentMore(b, a);
}
} // namespace

// --- Flips by energy ---------------------------------------------------------------------------------------

void Top::getEdgesForOptimization(double maxAngle, std::vector<CEdge*>& vOptimizable) const
{
    const double minCos = std::cos(maxAngle / 180.0 * 3.14159);
    std::vector<CEdge*> vDeg2;
    pCMesh->getDegN(DEG_INNER, vDeg2);
    for (CEdge* pCE : vDeg2)
    {
        const CTriangle* pCT0 = pCE->vCT[0];
        const CTriangle* pCT1 = pCE->vCT[1];
        ASSEX(pCT0->isAlive() && pCT1->isAlive());
        Vector3 nnv0;
        Vector3 nnv1;
        if (!pCT0->getNNVs(pCT1, pCMesh, nnv0, nnv1))
        {
            warningMessage(ZEF_HERE, "No NNV, skipped edge");
            continue;
        }
        if (!(getCosPhi(nnv0, nnv1) > minCos))
            vOptimizable.push_back(pCE);
    }
}

void Top::edgeFlips(double maxAngle)
{
    std::vector<CEdge*> vOptimizable;
    getEdgesForOptimization(maxAngle, vOptimizable);
    std::vector<EdgeEnergy> msPrioq; // a heap
    for (CEdge* pCE : vOptimizable)
    {
        const EdgeEnergy ee(pCMesh, pCE);
        if (ee.getImprovement() != LOWEST_DBL)
            msPrioq.push_back(ee);
    }
    std::make_heap(msPrioq.begin(), msPrioq.end(), isLessImportant);
    std::vector<CEdge*> vRejected;
    std::vector<CEdge*> vFlipped; // the new edges
    while (!msPrioq.empty())
    {
        std::pop_heap(msPrioq.begin(), msPrioq.end(), isLessImportant);
        EdgeEnergy ee = msPrioq.back();
        msPrioq.pop_back();
        CEdge* pFlipEdge = ee.getCEdge();
        const double storedImprovement = ee.getImprovement();
        ee.compute();
        if (ee.getImprovement() <= MIN_IMPROVEMENT) // the sentinel too
        {
            vRejected.push_back(pFlipEdge);
            continue;
        }
        if (ee.getImprovement() < storedImprovement)
        {
            msPrioq.push_back(ee);
            std::push_heap(msPrioq.begin(), msPrioq.end(), isLessImportant);
            continue;
        }
        ASSEX_TEXT(ee.getImprovement() > 0, "ee.improvement>0");
        ASSEX_TEXT(pFlipEdge->getDegree() == 2, "pFlipEdge->getDegree()==2");
        vFlipped.push_back(pFlipEdge->flipEdge(pCMesh, nullptr, nullptr));
    }
    std::cout << "edgeFlips(" << toText(maxAngle) << "): " << vFlipped.size() << " flipped, "
              << vRejected.size() << " rejected" << std::endl;
}

// --- Flips along features ----------------------------------------------------------------------------------

void Top::flipFeatures()
{
    for (int turn = 0; turn < NUM_FLIP_TURNS; ++turn)
    {
        std::cout << "NEW FLIP TURN " << turn << std::endl;
        for (const u64 ccd : sFeatureCCD)
            flipFeaturesAt(ccd);
    }
}

void Top::flipFeaturesAt(u64 ccd)
{
    std::vector<CTriangle*> vIncT;
    pCMesh->getIncT(ccd, vIncT);
    for (CTriangle* pCT : vIncT)
    {
        if (!pCT->isAlive()) // an earlier flip took it
            continue;
        CEdge* pCE = pCT->getCEdge(pCT->getICI(ccd));
        CTriangle* pCT1 = pCE->getNeigT(pCT);
        if (pCT1 == nullptr)
            continue;
        const u64 v0 = pCE->v0;
        const u64 v1 = pCE->v1;
        const u64 ccd1 = pCT1->getThirdCCD(v0, v1);
        if (ccd1 == ccd || !areLatticeNeighbours(*pCalc, ccd, ccd1))
            continue;
        if (sFeatureCCD.count(ccd1) == 0 || !canFlip(v0, v1, ccd, ccd1))
            continue;
        const bool bOldOnFeature = sFeatureCCD.count(v0) != 0 && sFeatureCCD.count(v1) != 0;
        if (bOldOnFeature && countCollinearConnectors(v0, v1) >= countCollinearConnectors(ccd, ccd1))
            continue;
        pCE->flipEdge(pCMesh, pCT, pCT1);
    }
}

int Top::countCollinearConnectors(u64 a, u64 b) const
{
    if (a == b || *pCMesh->getVtx(a) == *pCMesh->getVtx(b))
        return 0;
    int numConnectors = 0;
    const u64 aEnds[2] = {a, b};
    for (int i = 0; i < 2; ++i)
    {
        const u64 ownCCD = aEnds[i];
        const Point3& own = *pCMesh->getVtx(ownCCD);
        const Vector3 toOther = normalizeInline(*pCMesh->getVtx(aEnds[1 - i]) - own);
        std::vector<CEdge*> vIncCE;
        pCMesh->getIncCE(ownCCD, vIncCE);
        for (const CEdge* pCE : vIncCE)
        {
            const Vector3 dir = *pCMesh->getVtx(pCE->getOtherVCD(ownCCD)) - own;
            if (pCE->hasVCD(aEnds[1 - i]) || dir.isDegenerate())
                continue;
            if (180.0 - getAngleDegree(toOther, normalizeInline(dir)) < MAX_COLLINEAR_DEV)
                ++numConnectors;
        }
    }
    return numConnectors;
}

bool Top::canFlip(u64 v0, u64 v1, u64 ccd0, u64 ccd1) const
{
    if (ccd0 == ccd1 || pCMesh->hasEdge(ccd0, ccd1))
        return false;
    if (ccd0 == v0 || ccd0 == v1 || ccd1 == v0 || ccd1 == v1)
        return false;
    ASSEX_TEXT(v0 < v1, "v0<v1");
    if (sBorderCCD.count(ccd0) != 0 || sBorderCCD.count(ccd1) != 0)
        return false;
    bool bOK0 = false;
    bool bOK1 = false;
    const Vector3 nnv0 = getNormalVector(pCMesh, ccd0, ccd1, v1, bOK0);
    const Vector3 nnv1 = getNormalVector(pCMesh, ccd1, ccd0, v0, bOK1);
    return bOK0 && bOK1 && getAngleDegree(nnv0, nnv1) < MAX_FLIP_BEND;
}

// --- Caps and creases --------------------------------------------------------------------------------------

int Top::flipExtremeCaps(bool bFinal)
{
    std::vector<CEdge*> vDeg2;
    pCMesh->getDegN(DEG_INNER, vDeg2);
    int numChanges = 0;
    for (CEdge* pCE : vDeg2)
    {
        CTriangle* pCT0 = nullptr;
        CTriangle* pCT1 = nullptr;
        if (!pCE->getTwoTriangles(pCT0, pCT1, true))
            continue;
        ASSEX_TEXT(pCT0 != pCT1 && pCT0 != nullptr && pCT1 != nullptr, "pCT0!=pCT1 && pCT0!=0 && pCT1!=0");
        const u64 ccd0 = pCT0->getThirdCCD(pCE->v0, pCE->v1);
        const u64 ccd1 = pCT1->getThirdCCD(pCE->v0, pCE->v1);
        const bool bCap0 = isCap(*pCMesh, *pCE, ccd0);
        if (!bCap0 && !isCap(*pCMesh, *pCE, ccd1))
            continue;
        if (canFlip(pCE->v0, pCE->v1, ccd0, ccd1))
            pCE->flipEdge(pCMesh, pCT0, pCT1);
        else if (!bFinal || !removeCap(pCE, bCap0 ? ccd0 : ccd1))
            continue;
        ++numChanges;
    }
    return numChanges;
}

// Merges the apex of a cap into an end of its long edge, into the nearer one if it can be chosen.
bool Top::removeCap(CEdge* pCE, u64 apex)
{
    EdgeQueue mmDummy;
    const Point3& pos = *pCMesh->getVtx(apex);
    const bool bFirst0 =
        sqDistance(pos, *pCMesh->getVtx(pCE->v0)) <= sqDistance(pos, *pCMesh->getVtx(pCE->v1));
    for (const u64 trg : {bFirst0 ? pCE->v0 : pCE->v1, bFirst0 ? pCE->v1 : pCE->v0})
    {
        CEdge* pShortCE = pCMesh->getCE(apex, trg);
        if (killSingle(pShortCE, pShortCE->v0 == apex ? 0 : 1, 0.0, mmDummy))
            return true;
    }
    return false;
}

bool Top::getBend(const CEdge* pCE, double& angle) const
{
    const u64 ccd0 = pCE->vCT[0]->getThirdCCD(pCE->v0, pCE->v1);
    const u64 ccd1 = pCE->vCT[1]->getThirdCCD(pCE->v0, pCE->v1);
    bool bOK0 = false;
    bool bOK1 = false;
    const Vector3 nnv0 = getNormalVector(pCMesh, pCE->v0, pCE->v1, ccd0, bOK0);
    const Vector3 nnv1 = getNormalVector(pCMesh, pCE->v1, pCE->v0, ccd1, bOK1);
    if (!bOK0 || !bOK1)
        return false;
    angle = getAngleDegree(nnv0, nnv1);
    return true;
}

void Top::getAngles(double minAngle, std::vector<std::pair<double, CEdge*>>& vAngle) const
{
    const auto start = static_cast<std::ptrdiff_t>(vAngle.size());
    pCMesh->forEachEdge(
        [&](CEdge* pCE)
        {
            double angle = 0.0;
            if (pCE->isInner() && getBend(pCE, angle) && !(angle < minAngle))
                vAngle.emplace_back(angle, pCE);
        });
    std::sort(vAngle.begin() + start, vAngle.end(), isBentMore);
}

void Top::flipCreases()
{
    flipCreases(MIN_CREASE_ANGLE);
}

void Top::flipCreases(double minAngle)
{
    std::vector<AngleEdge> vAngle;
    getAngles(minAngle, vAngle);
    std::make_heap(vAngle.begin(), vAngle.end(), isBentLess);
    while (!vAngle.empty())
    {
        std::pop_heap(vAngle.begin(), vAngle.end(), isBentLess);
        const auto [key, pCE] = vAngle.back();
        vAngle.pop_back();
        double curAngle = 0.0;
        if (!pCE->isInner() || !getBend(pCE, curAngle) || curAngle < minAngle)
            continue;
        if (curAngle == key)
        {
            tryFlipCrease(pCE, curAngle);
            continue;
        }
        vAngle.emplace_back(curAngle, pCE);
        std::push_heap(vAngle.begin(), vAngle.end(), isBentLess);
    }
}

bool Top::tryFlipCrease(CEdge* pCE, double curAngle)
{
    CTriangle* pCT0 = pCE->vCT[0];
    CTriangle* pCT1 = pCE->vCT[1];
    if (pCT0->getHEDirection2(pCE->v0, pCE->v1) != HE_SAME)
        std::swap(pCT0, pCT1);
    const bool bReversed = pCT0->getHEDirection2(pCE->v0, pCE->v1) != HE_SAME; // both run from v1
    const u64 ccd0 = pCT0->getThirdCCD(pCE->v0, pCE->v1);
    const u64 ccd1 = pCT1->getThirdCCD(pCE->v0, pCE->v1);
    if (ccd0 == ccd1 || pCMesh->hasEdge(ccd0, ccd1))
        return false;
    const u64 v0 = bReversed ? pCE->v1 : pCE->v0;
    const u64 v1 = pCE->getOtherVCD(v0);
    bool bOK0 = false;
    bool bOK1 = false;
    const Vector3 newNNV0 = getNormalVector(pCMesh, ccd0, v0, ccd1, bOK0);
    const Vector3 newNNV1 = getNormalVector(pCMesh, ccd1, v1, ccd0, bOK1);
    if (!bOK0 || !bOK1 || getAngleDegree(newNNV0, newNNV1) > curAngle - MIN_CREASE_GAIN)
        return false;
    pCT0->kill(pCMesh);
    pCT1->kill(pCMesh);
    // In the orientation of pCT0, which runs from v0 to v1.
    pCMesh->createT(ccd0, v0, ccd1, pCT0->getGeneratingVCD(), 0);
    pCMesh->createT(ccd1, v1, ccd0, pCT0->getGeneratingVCD(), 0);
    return true;
}

} // namespace TARN_ZEF

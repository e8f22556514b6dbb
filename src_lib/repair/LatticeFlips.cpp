#include "repair/LatticeFlips.h"

#include "cmesh/CMesh.h"
#include "cmesh/toolsCMesh.h"
#include "geometry/tools.h"
#include "lattice/Calc.h"
#include "repair/LatticeSimplifier.h"
#include "repair/RepairState.h"

#include <string>
#include <vector>

namespace TARN_ZEF
{
namespace
{
const int NUM_FLIP_TURNS = 3;
const double MAX_COLLINEAR_DEV = 0.2; // degrees off a straight line
const double MAX_FLIP_BEND = 120.0;
const double EXTREME_ANGLE = 170.0; // of a cap

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
} // namespace

LatticeFlips::LatticeFlips(const RepairState& state_)
    : state(state_)
    , pCMesh(state_.pCMesh)
{
}

void LatticeFlips::flipFeatures()
{
    for (int turn = 0; turn < NUM_FLIP_TURNS; ++turn)
    {
        printText("NEW FLIP TURN " + std::to_string(turn) + "\n");
        for (const u64 ccd : state.sFeatureCCD)
            flipFeaturesAt(ccd);
    }
}

void LatticeFlips::flipFeaturesAt(u64 ccd)
{
    std::vector<CTriangle*> vIncT;
    pCMesh->getIncT(ccd, vIncT);
    for (CTriangle* pCT : vIncT)
    {
        CEdge* pCE = pCT->getCEdge(pCT->getICI(ccd));
        CTriangle* pCT1 = pCE->getNeigT(pCT);
        if (pCT1 == nullptr)
            continue;
        const u64 v0 = pCE->v0;
        const u64 v1 = pCE->v1;
        const u64 ccd1 = pCT1->getThirdCCD(v0, v1);
        if (ccd1 == ccd || !areLatticeNeighbours(*state.pCalc, ccd, ccd1))
            continue;
        if (state.sFeatureCCD.count(ccd1) == 0 || !canFlip(v0, v1, ccd, ccd1))
            continue;
        const bool bOldOnFeature = state.sFeatureCCD.count(v0) != 0 && state.sFeatureCCD.count(v1) != 0;
        if (bOldOnFeature && countCollinearConnectors(v0, v1) >= countCollinearConnectors(ccd, ccd1))
            continue;
        pCE->flipEdge(pCMesh, pCT, pCT1);
    }
}

int LatticeFlips::countCollinearConnectors(u64 a, u64 b) const
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

bool LatticeFlips::canFlip(u64 v0, u64 v1, u64 ccd0, u64 ccd1) const
{
    if (ccd0 == ccd1 || pCMesh->hasEdge(ccd0, ccd1))
        return false;
    if (ccd0 == v0 || ccd0 == v1 || ccd1 == v0 || ccd1 == v1)
        return false;
    ASSEX_TEXT(v0 < v1, "v0<v1");
    if (state.sBorderCCD.count(ccd0) != 0 || state.sBorderCCD.count(ccd1) != 0)
        return false;
    bool bOK0 = false;
    bool bOK1 = false;
    const Vector3 nnv0 = getNormalVector(pCMesh, ccd0, ccd1, v1, bOK0);
    const Vector3 nnv1 = getNormalVector(pCMesh, ccd1, ccd0, v0, bOK1);
    return bOK0 && bOK1 && getAngleDegree(nnv0, nnv1) < MAX_FLIP_BEND;
}

int LatticeFlips::flipExtremeCaps(bool bFinal)
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
bool LatticeFlips::removeCap(CEdge* pCE, u64 apex)
{
    LatticeSimplifier simplifier(pCMesh);
    LatticeSimplifier::EdgeQueue mmDummy;
    const Point3& pos = *pCMesh->getVtx(apex);
    const bool bFirst0 =
        sqDistance(pos, *pCMesh->getVtx(pCE->v0)) <= sqDistance(pos, *pCMesh->getVtx(pCE->v1));
    for (const u64 trg : {bFirst0 ? pCE->v0 : pCE->v1, bFirst0 ? pCE->v1 : pCE->v0})
    {
        CEdge* pShortCE = pCMesh->getCE(apex, trg);
        if (simplifier.killSingle(pShortCE, pShortCE->v0 == apex ? 0 : 1, 0.0, mmDummy))
            return true;
    }
    return false;
}

} // namespace TARN_ZEF

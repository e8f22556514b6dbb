// The edits of CEdge and its angles: the members that change the mesh or read positions.
#include "cmesh/CEdge.h"

#include "cmesh/CMesh.h"
#include "cmesh/CPatch.h"
#include "geometry/tools.h"

#include <string>

namespace TARN_ZEF
{
namespace
{
// A neighbour that would turn by more must not be split.
const double MAX_TURN_ANGLE = 90.0;

// Results of getDihedralAngle in place of an angle.
const double DIHEDRAL_NON_MANIFOLD = 362.0;
const double DIHEDRAL_TOO_FEW = 363.0;
const double DIHEDRAL_NO_NORMAL = 364.0;

bool hasThreeCorners(const CTriangle& ct)
{
    return ct.getC0() != ct.getC1() && ct.getC1() != ct.getC2() && ct.getC2() != ct.getC0();
}

void printFlipBug(const CEdge& edge, const CTriangle& ct0, const CTriangle& ct1, u64 ccd0, u64 ccd1)
{
    printText("CEdge::flipEdge(), BUG:\n");
    ct0.print();
    ct1.print();
    printText("v0=" + std::to_string(edge.v0) + ", v1=" + std::to_string(edge.v1) +
              ", ccd0=" + std::to_string(ccd0) + ", ccd1=" + std::to_string(ccd1) + "\n");
}

// Whether the neighbour may be split at splitPos, a point near its edge opposite corner ici: both kids have
// a normal and turn by no more than the limit.
bool canSplit(const CMesh* pMesh, const CTriangle& neig, int ici, const Point3* pSplitPos)
{
    bool bOK = false;
    Vector3 ownNNV;
    neig.getNNV(ownNNV, pMesh, bOK);
    if (!bOK)
        return false;
    const Point3* pA = neig.getVtx(pMesh, ici);
    const Point3* pB = neig.getVtx(pMesh, CTriangle::getNext(ici));
    const Point3* pC = neig.getVtx(pMesh, CTriangle::getPrev(ici));
    const Vector3 nextNNV = getNormalVector(pA, pB, pSplitPos, bOK);
    if (!bOK || getAngleDegree(ownNNV, nextNNV) > MAX_TURN_ANGLE)
        return false;
    const Vector3 prevNNV = getNormalVector(pA, pSplitPos, pC, bOK);
    return bOK && !(getAngleDegree(ownNNV, prevNNV) > MAX_TURN_ANGLE);
}

// Replaces the triangle by its two parts at splitCCD; they join its patch.
void splitOne(CMesh* pMesh, CTriangle* pCT, int ici, u64 splitCCD, std::vector<CTriangle*>& vKids)
{
    ASSEX_TEXT(pCT->isAlive(), "pNeigT->isAlive()");
    const u64 a = pCT->getCorner(ici);
    const u64 b = pCT->getCorner(CTriangle::getNext(ici));
    const u64 c = pCT->getCorner(CTriangle::getPrev(ici));
    CPatch* pPatch = pCT->getPatch();
    pCT->kill(pMesh);
    CTriangle* const aKids[2] = {pMesh->createT(a, b, splitCCD, 0, 0), pMesh->createT(a, splitCCD, c, 0, 0)};
    for (CTriangle* pKid : aKids)
    {
        if (pPatch != nullptr)
            pPatch->addT(pKid);
        vKids.push_back(pKid);
    }
}

double getDihedralAngleOf(const Point3& p0, const Point3& p1, const Point3& pa, const Point3& pb)
{
    bool bOK0 = false;
    bool bOK1 = false;
    const Vector3 nnv0 = getNormalVector(&p0, &p1, &pa, bOK0);
    const Vector3 nnv1 = getNormalVector(&p1, &p0, &pb, bOK1);
    if (!bOK0 || !bOK1)
        return DIHEDRAL_NO_NORMAL;
    return 180.0 - getAngleDegree(nnv0, nnv1);
}
} // namespace

CEdge* CEdge::flipEdge(CMesh* pMesh, CTriangle* pCT0, CTriangle* pCT1)
{
    if (pCT0 == nullptr)
    {
        ASSEX_TEXT(pCT1 == nullptr, "pCT1==0");
        if (!getTwoTriangles(pCT0, pCT1, true))
        {
            warningMessage(ZEF_HERE, "Edge not flipped, !getTwoTriangles()");
            return nullptr;
        }
    }
    if (pCT1 == nullptr || !pCT0->isAlive() || !pCT1->isAlive())
    {
        warningMessage(ZEF_HERE, "pCT0 or pCT1 not alive");
        return nullptr;
    }
    ASSEX(hasThreeCorners(*pCT0) && hasThreeCorners(*pCT1));

    const int ici0 = pCT0->getICI(v0, v1);
    const u64 ccd0 = pCT0->getCorner(ici0);
    const u64 ccd1 = pCT1->getThirdCCD(v0, v1);
    if (ccd0 == ccd1)
        printFlipBug(*this, *pCT0, *pCT1, ccd0, ccd1);
    ASSEX(ccd0 != ccd1);
    const u64 nextCCD = pCT0->getCorner(CTriangle::getNext(ici0));
    ASSEX(nextCCD == v0 || nextCCD == v1);
    const u64 prevCCD = getOtherVCD(nextCCD);

    pCT0->kill(pMesh);
    pCT1->kill(pMesh);
    const CTriangle* pFirst = pMesh->createT(ccd0, ccd1, prevCCD, 0, 0);
    pMesh->createT(ccd1, ccd0, nextCCD, 0, 0);
    return pFirst->getCEdge(2);
}

bool CEdge::trySplitNeigsKillT(CMesh* pMesh, CTriangle* pKillCT, int ici, std::vector<CTriangle*>& vKids)
{
    ASSEX(pKillCT->isAlive());
    const u64 splitCCD = pKillCT->getCorner(ici);
    const Point3* pSplitPos = pKillCT->getVtx(pMesh, ici);
    SmallVec<CTriangle*, 4> vNeigs;
    for (CTriangle* pNeigT : vCT)
    {
        if (pNeigT == pKillCT)
            continue;
        if (!canSplit(pMesh, *pNeigT, pNeigT->getICI(v0, v1), pSplitPos))
            return false;
        vNeigs.push_back(pNeigT);
    }
    pKillCT->kill(pMesh);
    for (CTriangle* pNeigT : vNeigs)
        splitOne(pMesh, pNeigT, pNeigT->getICI(v0, v1), splitCCD, vKids);
    return true;
}

double CEdge::getDihedralAngle(const std::map<u64, Point3>& mPos) const
{
    if (getDegree() != 2)
        return getDegree() > 2 ? DIHEDRAL_NON_MANIFOLD : DIHEDRAL_TOO_FEW;
    const u64 va = vCT[0]->getThirdCCD(v0, v1);
    const u64 vb = vCT[1]->getThirdCCD(v0, v1);
    const auto q_it0 = mPos.find(v0);
    const auto q_it1 = mPos.find(v1);
    const auto q_ita = mPos.find(va);
    const auto q_itb = mPos.find(vb);
    const bool bAllThere =
        q_it0 != mPos.end() && q_it1 != mPos.end() && q_ita != mPos.end() && q_itb != mPos.end();
    if (!bAllThere)
        printText("v0=" + std::to_string(v0) + ", v1=" + std::to_string(v1) + ", va=" + std::to_string(va) +
                  ", vb=" + std::to_string(vb) + "\n");
    ASSEX(bAllThere);
    return getDihedralAngleOf(q_it0->second, q_it1->second, q_ita->second, q_itb->second);
}

double CEdge::getDihedralAngle(const CMesh* pMesh) const
{
    if (getDegree() != 2)
        return getDegree() > 2 ? DIHEDRAL_NON_MANIFOLD : DIHEDRAL_TOO_FEW;
    const CTriangle* pCT = vCT[0];
    const int ici0 = pCT->getICI(v0);
    const int ici1 = pCT->getICI(v1);
    return getDihedralAngleOf(*pCT->getVtx(pMesh, ici0), *pCT->getVtx(pMesh, ici1),
                              *pCT->getVtx(pMesh, 3 - ici0 - ici1),
                              *vCT[1]->getVtx(pMesh, vCT[1]->getICI(v0, v1)));
}

} // namespace TARN_ZEF

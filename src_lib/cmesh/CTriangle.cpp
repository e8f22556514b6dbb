#include "cmesh/CTriangle.h"

#include "cmesh/CMesh.h"
#include "geometry/tools.h"
#include "lattice/Bundle.h"

#include <iomanip>
#include <ostream>
#include <sstream>

namespace TARN_ZEF
{
namespace
{
const u64 SPARSE_MASK_X = 0x4924924924924924ull;
const u64 SPARSE_MASK_Y = 0x2492492492492492ull;
const u64 SPARSE_MASK_Z = 0x1249249249249249ull;

int signOfDifference(u64 ccd, u64 reference, u64 mask)
{
    const u64 a = ccd & mask;
    const u64 b = reference & mask;
    return a > b ? 1 : a < b ? -1 : 0;
}
} // namespace

CTriangle::CTriangle(CVertex* pV0, CVertex* pV1, CVertex* pV2, u64 generatingVCD_, int cfg_,
                     unsigned int number_) noexcept
    : CTriangleCorners(pV0, pV1, pV2)
    , generatingVCD(generatingVCD_)
    , number(number_)
    , cfg(static_cast<short>(cfg_))
{
}

bool CTriangle::hasBorderEdge() const
{
    return aEdge[0]->isBorder() || aEdge[1]->isBorder() || aEdge[2]->isBorder();
}

bool CTriangle::allEdgesManifold() const
{
    return aEdge[0]->isInner() && aEdge[1]->isInner() && aEdge[2]->isInner();
}

void CTriangle::flipOrientation() noexcept
{
    std::swap(aVertex[1], aVertex[2]);
    std::swap(aNextInc[1], aNextInc[2]);
    std::swap(aEdge[1], aEdge[2]);
    bTurned = !bTurned;
}

Point3* CTriangle::getVtx(const CMesh* pMesh, int ici) const
{
    const Bundle* pBundle = aVertex[ici]->pBundle;
    return pBundle != nullptr ? pBundle->pPoint : pMesh->getVtx(aVertex[ici]->ccd);
}

bool CTriangle::isDegenerate(const CMesh* pMesh) const
{
    const Point3& p0 = *getVtx(pMesh, 0);
    const Point3& p1 = *getVtx(pMesh, 1);
    const Point3& p2 = *getVtx(pMesh, 2);
    if (p0 == p1 || p1 == p2 || p2 == p0)
        return true;
    const Vector3 vec01 = p1 - p0;
    const Vector3 vec02 = p2 - p0;
    if (vec01.isDegenerate() || vec02.isDegenerate())
        return true;
    return crossProduct(vec01, vec02).sqLength() == 0.0;
}

int CTriangle::getLargestEdgeICI(const CMesh* pMesh) const
{
    const Point3& p0 = *getVtx(pMesh, 0);
    const Point3& p1 = *getVtx(pMesh, 1);
    const Point3& p2 = *getVtx(pMesh, 2);
    const double d01 = sqDistance(p0, p1);
    const double d12 = sqDistance(p1, p2);
    const double d20 = sqDistance(p2, p0);
    if (d01 >= d12 && d01 >= d20)
        return 2;
    if (d12 >= d01 && d12 >= d20)
        return 0;
    ASSEX(d20 >= d01 && d20 >= d12);
    return 1;
}

double CTriangle::getArea(const CMesh* pMesh) const
{
    return TARN_ZEF::getArea(*getVtx(pMesh, 0), *getVtx(pMesh, 1), *getVtx(pMesh, 2));
}

void CTriangle::getNNV(Vector3& nnv, const CMesh* pMesh, bool& bOK) const
{
    nnv = getNormalVector(getVtx(pMesh, 0), getVtx(pMesh, 1), getVtx(pMesh, 2), bOK);
}

bool CTriangle::getNNVs(const CTriangle* pNeigT, const CMesh* pMesh, Vector3& own, Vector3& neig) const
{
    bool bOwnOK = false;
    bool bNeigOK = false;
    getNNV(own, pMesh, bOwnOK);
    pNeigT->getNNV(neig, pMesh, bNeigOK);
    if (!bOwnOK || !bNeigOK)
        return false;
    if (needFlip(pNeigT))
        neig.mul(-1.0);
    return true;
}

void CTriangle::getCoarseNormal(Vector3& nnv) const
{
    int d[2][3];
    for (int i = 0; i < 2; ++i)
    {
        const u64 ccd = aVertex[i + 1]->ccd;
        d[i][0] = signOfDifference(ccd, getC0(), SPARSE_MASK_X);
        d[i][1] = signOfDifference(ccd, getC0(), SPARSE_MASK_Y);
        d[i][2] = signOfDifference(ccd, getC0(), SPARSE_MASK_Z);
    }
    nnv = normalize(Vector3(d[0][1] * d[1][2] - d[0][2] * d[1][1], d[0][2] * d[1][0] - d[0][0] * d[1][2],
                            d[0][0] * d[1][1] - d[0][1] * d[1][0]));
}

double CTriangle::getDevAngle(const CMesh* pMesh, int ici, const Point3& pos) const
{
    ASSEX(ici >= 0 && ici < 3);
    const Point3* pNext = getVtx(pMesh, getNext(ici));
    const Point3* pPrev = getVtx(pMesh, getPrev(ici));
    bool bNewOK = false;
    const Vector3 newNNV = getNormalVector(&pos, pNext, pPrev, bNewOK);
    if (!bNewOK)
        return 360.0;
    bool bOldOK = false;
    const Vector3 oldNNV = getNormalVector(getVtx(pMesh, ici), pNext, pPrev, bOldOK);
    return bOldOK ? getAngleDegree(oldNNV, newNNV) : -1.0;
}

Point3 CTriangle::getCentroid(const CMesh* pMesh, VisType vt) const
{
    double x = 0.0, y = 0.0, z = 0.0;
    for (int i = 0; i < 3; ++i)
    {
        if (vt == VT_REAL)
        {
            getVtx(pMesh, i)->addOwnCoords(x, y, z);
            continue;
        }
        ASSEX(vt == VT_COARSE);
        pMesh->getCoarsePoint(aVertex[i]->ccd).addOwnCoords(x, y, z);
    }
    return {x / 3.0, y / 3.0, z / 3.0};
}

void CTriangle::kill(CMesh* pMesh)
{
    ASSEX(bAlive);
    for (CEdge* pCE : aEdge)
    {
        pCE->checkOut(this);
        pMesh->degrees.noteFallen(pCE);
    }
    pMesh->unregisterTriangle(this);
    bAlive = false;
    --pMesh->numAliveT;
    pMesh->extraction.noteKilled(this);
}

void CTriangle::print() const
{
    std::ostringstream os;
    os << "CTriangle (" << static_cast<const void*>(this)
       << "): " << (bAlive ? " bAlive=true, " : " bAlive=false, ");
    const bool bThree = getC0() != getC1() && getC1() != getC2() && getC2() != getC0();
    os << (bThree ? "3 different corners\n" : "combinatorially degenerate\n");
    for (int i = 0; i < 3; ++i)
    {
        os << i << ": vcd=" << aVertex[i]->ccd << ", ";
        const CEdge* pCE = aEdge[i];
        if (pCE->isInner())
            os << "degree 2, ";
        else
            os << "degree " << pCE->getDegree();
        for (const CTriangle* pNeigT : pCE->vCT)
            if (pNeigT != this)
                os << ", pNeigT: " << static_cast<const void*>(pNeigT);
        os << "\n";
    }
    printText(os.str());
}

} // namespace TARN_ZEF

#include "holes/AngleEntry.h"

#include "cmesh/CMesh.h"
#include "cmesh/CTriangle.h"
#include "cmesh/toolsCMesh.h"
#include "geometry/tools.h"

namespace TARN_ZEF
{
namespace
{
const double FLAT_ANGLE = 179.9; // corners from here on are not cut
} // namespace

AngleEntry::AngleEntry(CMesh* pCMesh_, u64 vcd_, bool bBorderPair_)
    : pCMesh(pCMesh_)
    , vcd(vcd_)
    , pVtx(pCMesh_->getVtx(vcd_))
    , bBorderPair(bBorderPair_)
{
}

void AngleEntry::setPrevAE(AngleEntry* pPrevAE_)
{
    ASSEX(pPrevAE_ != 0);
    pPrevAE = pPrevAE_;
}

void AngleEntry::setNextAE(AngleEntry* pNextAE_)
{
    ASSEX(pNextAE_ != 0);
    pNextAE = pNextAE_;
}

double AngleEntry::getAngle(bool bRecompute, int& aes_)
{
    if (pPrevAE == pNextAE)
    {
        aes = RING_OF_TWO;
        aes_ = aes;
        return NO_ANGLE;
    }
    if (!bRecompute)
    {
        aes_ = aes;
        return angle;
    }

    const Vector3 toNext = *pNextAE->pVtx - *pVtx;
    const Vector3 toPrev = *pPrevAE->pVtx - *pVtx;
    Vector3 vecToNext;
    Vector3 vecToPrev;
    Vector3 crossProd;
    if (!toNext.isDegenerate() && !toPrev.isDegenerate())
    {
        vecToNext = normalizeInline(toNext);
        vecToPrev = normalizeInline(toPrev);
        crossProd = crossProduct(vecToNext, vecToPrev);
    }
    if (crossProd.isDegenerate())
    {
        aes = FLAT;
        angle = NO_ANGLE;
    }
    else
    {
        crossNV = normalizeInline(crossProd);
        const double a = getAngleDegree(vecToNext, vecToPrev);
        angle = getNNV(true) * crossNV > 0.0 && bBorderPair ? a : 360.0 - a;
        aes = FLAT_ANGLE > angle ? CONVEX : FLAT;
    }
    aes_ = aes;
    return angle;
}

Vector3 AngleEntry::getNNV(bool bRecompute)
{
    if (!bRecompute)
        return nnv;
    vIncT.clear();
    pCMesh->getIncT(vcd, vIncT);
    Vector3 sum;
    for (const CTriangle* pCT : vIncT)
    {
        const int ici = pCT->getICI(vcd);
        bool bOK = false;
        const Vector3 normal = getNormalVector(pVtx, pCT->getVtx(pCMesh, CTriangle::getNext(ici)),
                                               pCT->getVtx(pCMesh, CTriangle::getPrev(ici)), bOK);
        if (bOK)
            sum.add(normal);
    }
    if (sum.isDegenerate())
        return {1.0, 0.0, 0.0};
    nnv = normalizeInline(sum);
    return nnv;
}

double AngleEntry::getPrevNextDihedral()
{
    ASSEX(this->isAlive());
    ASSEX(pNextAE->isAlive());
    ASSEX(pPrevAE->isAlive());
    ASSEX(this != pNextAE && this != pPrevAE && pPrevAE != pNextAE);
    const Vector3 nextNNV = pNextAE->getNNV(true);
    const Vector3 prevNNV = pPrevAE->getNNV(true);
    ASSEX(!nextNNV.isDegenerate());
    ASSEX(!prevNNV.isDegenerate());
    return getAngleDegree(prevNNV, nextNNV);
}

} // namespace TARN_ZEF

#include "rmesh/RTriangle.h"

#include "geometry/tools.h"
#include "rmesh/REdge.h"
#include "rmesh/RMesh.h"

#include <utility>

namespace TARN_ZEF
{
int RTriangle::getICI(const Point3* pVtx) const
{
    for (int i = 0; i < 3; ++i)
        if (aCorner[i] == pVtx)
            return i;
    ASSEX_TEXT(false, "false");
}

bool RTriangle::hasEdge(const Point3* pA, const Point3* pB) const noexcept
{
    int num = 0;
    for (const Point3* pCorner : aCorner)
        num += pCorner == pA || pCorner == pB ? 1 : 0;
    return num >= 2;
}

void RTriangle::getREs(std::vector<REdge*>& vOut) const
{
    vOut.insert(vOut.end(), {aRE[2], aRE[1], aRE[0]});
}

void RTriangle::getNeigs(int i, std::vector<RTriangle*>& vOut) const
{
    for (RTriangle* pRT : getRE(i)->getTriangles())
        if (pRT != this)
            vOut.push_back(pRT);
}

bool RTriangle::hasBorderEdge() const
{
    return aRE[0]->isBorder() || aRE[1]->isBorder() || aRE[2]->isBorder();
}

bool RTriangle::needFlip(const RTriangle* pOther) const
{
    for (int i = 0; i < 3; ++i)
    {
        const Point3* pFrom = aCorner[i];
        const Point3* pTo = aCorner[getNext(i)];
        for (int k = 0; k < 3; ++k)
        {
            const Point3* pOtherFrom = pOther->aCorner[k];
            const Point3* pOtherTo = pOther->aCorner[getNext(k)];
            if (pFrom == pOtherFrom && pTo == pOtherTo)
                return true;
            if (pFrom == pOtherTo && pTo == pOtherFrom)
                return false;
        }
    }
    ASSEX_TEXT(false, "false");
}

void RTriangle::flipOrientation() noexcept
{
    std::swap(aCorner[0], aCorner[1]);
    std::swap(aRE[0], aRE[1]);
    std::swap(aNextInc[0], aNextInc[1]);
    nnv.mul(-1.0);
}

const Vector3& RTriangle::getNNV(bool& bOK)
{
    bOK = true;
    if (nnv.isDegenerate())
    {
        const Vector3 fresh = getNormalVector(aCorner[0], aCorner[1], aCorner[2], bOK);
        // Parallel readers may ask for a normal that can't be had: write only what changes something.
        if (!fresh.isDegenerate())
            nnv = fresh;
    }
    return nnv;
}

int RTriangle::getLargestEdgeICI() const noexcept
{
    const double d01 = sqDistance(*aCorner[0], *aCorner[1]);
    const double d12 = sqDistance(*aCorner[1], *aCorner[2]);
    const double d20 = sqDistance(*aCorner[2], *aCorner[0]);
    if (d01 >= d12 && d01 >= d20)
        return 2;
    return d12 >= d20 ? 0 : 1;
}

bool RTriangle::isCombDegenerate() const noexcept
{
    return aCorner[0] == aCorner[1] || aCorner[1] == aCorner[2] || aCorner[2] == aCorner[0];
}

bool RTriangle::isZeroArea() const noexcept
{
    const Vector3 vec01 = *aCorner[1] - *aCorner[0];
    const Vector3 vec02 = *aCorner[2] - *aCorner[0];
    return vec01.isDegenerate() || vec02.isDegenerate() || crossProduct(vec01, vec02).sqLength() == 0.0;
}

double RTriangle::getArea() const
{
    return TARN_ZEF::getArea(*aCorner[0], *aCorner[1], *aCorner[2]);
}

double RTriangle::getDevAngle(int ici, const Point3* pNew, bool bSkipIfOnCorner) const
{
    ASSEX_TEXT(ici >= 0 && ici < 3, "false");
    const Point3* pOld = aCorner[ici];
    const Point3* pNext = aCorner[getNext(ici)];
    const Point3* pPrev = aCorner[getPrev(ici)];
    if (bSkipIfOnCorner && (*pNew == *pOld || *pNew == *pNext || *pNew == *pPrev))
        return 0.0;
    bool bOldOK = false;
    const Vector3 oldNNV = getNormalVector(pOld, pNext, pPrev, bOldOK);
    if (!bOldOK)
        return 360.0;
    bool bNewOK = false;
    const Vector3 newNNV = getNormalVector(pNew, pNext, pPrev, bNewOK);
    return bNewOK ? getAngleDegree(oldNNV, newNNV) : -1.0;
}

void RTriangle::kill(RMesh* pMesh)
{
    ASSEX(bAlive);
    for (REdge* pRE : aRE)
        pRE->checkOut(this);
    pMesh->unregisterTriangle(this);
    bAlive = false;
    --pMesh->numAliveT;
}

} // namespace TARN_ZEF

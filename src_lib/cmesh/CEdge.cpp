#include "cmesh/CEdge.h"

#include "cmesh/CMesh.h"
#include "cmesh/CPatch.h"
#include "lattice/Bundle.h"

#include <algorithm>
#include <iostream>

namespace TARN_ZEF
{
namespace
{
void printEdge(const CEdge& edge)
{
    std::cout << "CEdge (" << edge.v0 << ", " << edge.v1 << "), degree " << edge.getDegree();
}
} // namespace

CEdge::CEdge(u64 v0_, u64 v1_, unsigned int number_)
    : v0(v0_)
    , v1(v1_)
    , number(number_)
{
    ASSEX(v0 < v1);
}

u64 CEdge::getOtherVCD(u64 vcd) const
{
    if (!hasVCD(vcd))
    {
        std::cout << "getOtherVCD bug, ";
        printEdge(*this);
        std::cout << std::endl;
        ASSEX_TEXT(false, "false");
    }
    return vcd == v0 ? v1 : v0;
}

Point3 CEdge::getMidPoint(const CMesh* pMesh) const
{
    const Point3* pA = pMesh->getVtx(v0);
    const Point3* pB = pMesh->getVtx(v1);
    return {(pA->x() + pB->x()) / 2.0, (pA->y() + pB->y()) / 2.0, (pA->z() + pB->z()) / 2.0};
}

CTriangle* CEdge::getTriangle(bool bMustExist, bool bMustBeUnique) const
{
    CTriangle* pRet = nullptr;
    for (CTriangle* pCT : vCT)
    {
        if (bMustBeUnique)
            ASSEX(pRet == 0);
        if (pRet == nullptr)
            pRet = pCT;
    }
    if (bMustExist)
        ASSEX(pRet != 0);
    return pRet;
}

bool CEdge::getTwoTriangles(CTriangle*& pT0, CTriangle*& pT1, bool bStrict) const
{
    pT0 = vCT.size() > 0 ? vCT[0] : nullptr;
    pT1 = vCT.size() > 1 ? vCT[1] : nullptr;
    return bStrict ? vCT.size() == 2 : vCT.size() >= 2;
}

void CEdge::getAliveT(std::vector<CTriangle*>& vT) const
{
    vT.insert(vT.end(), vCT.begin(), vCT.end());
}

CTriangle* CEdge::getNeigT(const CTriangle* pCT) const
{
    CTriangle* pNeigT = nullptr;
    for (CTriangle* pOther : vCT)
    {
        if (pOther == pCT)
            continue;
        if (pNeigT != nullptr)
            return nullptr;
        pNeigT = pOther;
    }
    return pNeigT;
}

bool CEdge::hasTriangle(u64 a, u64 b, u64 c) const
{
    return std::any_of(vCT.begin(), vCT.end(),
                       [=](const CTriangle* pCT)
                       { return pCT->hasCorner(a) && pCT->hasCorner(b) && pCT->hasCorner(c); });
}

void CEdge::checkOut(CTriangle* pCT)
{
    if (vCT.eraseSwap(pCT))
        return;
    std::cout << "CEdge::checkOut, triangle live state: " << pCT->isAlive() << ", corners " << pCT->getC0()
              << " " << pCT->getC1() << " " << pCT->getC2() << std::endl;
    ASSEX_TEXT(false, "false");
}

CTriangle* CEdge::getAdjInPatch(const CTriangle* pCT) const
{
    for (CTriangle* pOther : vCT)
        if (pOther != pCT && pOther->getPatch() == pCT->getPatch())
            return pOther;
    errorMessage(ZEF_HERE, "no adjacent triangle");
    throw ZefBugException();
}

CTriangle* CEdge::getUniqueInPatch(const CPatch* pPatch) const
{
    CTriangle* pRet = nullptr;
    for (CTriangle* pCT : vCT)
    {
        if (pCT->getPatch() != pPatch)
            continue;
        if (pRet != nullptr)
            return nullptr;
        pRet = pCT;
    }
    return pRet;
}

int CEdge::getDegreeInPatch(const CPatch* pPatch) const
{
    return static_cast<int>(std::count_if(vCT.begin(), vCT.end(),
                                          [=](const CTriangle* pCT) { return pCT->getPatch() == pPatch; }));
}

void CEdge::getPatches(std::vector<CPatch*>& vPatches) const
{
    const auto start = static_cast<std::ptrdiff_t>(vPatches.size());
    for (const CTriangle* pCT : vCT)
        vPatches.push_back(pCT->getPatch());
    // A triangle outside any patch counts as null, which comes first.
    const auto byId = [](const CPatch* pA, const CPatch* pB)
    { return pB != nullptr && (pA == nullptr || pA->getId() < pB->getId()); };
    std::sort(vPatches.begin() + start, vPatches.end(), byId);
    vPatches.erase(std::unique(vPatches.begin() + start, vPatches.end()), vPatches.end());
}

void CEdge::setDirection(EdgeDir ed)
{
    if (edgeDir != ED_NONE && ed != ED_NONE)
    {
        std::cout << "setDirection for ";
        printEdge(*this);
        std::cout << ", current edgeDirection=" << int{edgeDir} << ", ed=" << int{ed} << std::endl;
    }
    ASSEX(edgeDir == ED_NONE || ed == ED_NONE);
    edgeDir = ed;
}

u64 CEdge::getSource() const
{
    ASSEX(edgeDir != ED_NONE);
    return edgeDir == ED_V0_TO_V1 ? v0 : v1;
}

u64 CEdge::getTarget() const
{
    ASSEX(edgeDir != ED_NONE);
    return edgeDir == ED_V0_TO_V1 ? v1 : v0;
}

} // namespace TARN_ZEF

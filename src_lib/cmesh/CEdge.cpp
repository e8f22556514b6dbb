#include "cmesh/CEdge.h"

#include "cmesh/CMesh.h"
#include "cmesh/CPatch.h"
#include "lattice/Bundle.h"

#include <algorithm>
#include <string>

namespace TARN_ZEF
{
namespace
{
std::string toText(const CEdge& edge)
{
    return "CEdge (" + std::to_string(edge.v0) + ", " + std::to_string(edge.v1) + "), degree " +
           std::to_string(edge.getDegree());
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
        printText("getOtherVCD bug, " + toText(*this) + "\n");
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
    printText("CEdge::checkOut, triangle live state: " + std::to_string(pCT->isAlive()) + ", corners " +
              std::to_string(pCT->getC0()) + " " + std::to_string(pCT->getC1()) + " " +
              std::to_string(pCT->getC2()) + "\n");
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
        printText("setDirection for " + toText(*this) + ", current edgeDirection=" +
                  std::to_string(int{edgeDir}) + ", ed=" + std::to_string(int{ed}) + "\n");
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

#include "repair/BorderRepair.h"

#include "cmesh/CMesh.h"
#include "core/CallRecorder.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace TARN_ZEF
{
namespace
{
// Cube configurations that leave dangling triangles: the rotations and mirrors of one.
const std::array<int, 8> vKillConfigs = {27, 39, 78, 114, 141, 177, 216, 228};

// The third corner of a hole with three edges, one of them given; false if it is none. The last edge may be
// one of an odd number of triangles, at the end of a fin that ran into the hole.
bool findThirdCorner(const CMesh& mesh, const CEdge& edge, u64& thirdCCD)
{
    const u64 ownCCD = edge.vCT[0]->getThirdCCD(edge.v0, edge.v1);
    std::vector<CEdge*> vIncCE;
    mesh.getIncCE(edge.v0, vIncCE);
    for (const CEdge* pCE : vIncCE)
    {
        thirdCCD = pCE->getOtherVCD(edge.v0);
        if (!pCE->isBorder() || thirdCCD == edge.v1 || thirdCCD == ownCCD)
            continue;
        const CEdge* pLastCE = mesh.getCE(thirdCCD, edge.v1);
        if (pLastCE != nullptr && pLastCE->getDegree() % 2 == 1 &&
            !pLastCE->hasTriangle(edge.v0, edge.v1, thirdCCD))
            return true;
    }
    return false;
}

CTriangle* findSmallestEar(const CMesh& mesh, const CEdge& edge)
{
    CTriangle* pSmallest = nullptr;
    double minArea = 0.0;
    for (CTriangle* pCT : edge.vCT)
    {
        if (!pCT->hasBorderEdge())
            continue;
        const double area = pCT->getArea(&mesh);
        const bool bSmaller = pSmallest == nullptr || area < minArea ||
                              (area == minArea && pCT->getNumber() < pSmallest->getNumber());
        if (!bSmaller)
            continue;
        pSmallest = pCT;
        minArea = area;
    }
    return pSmallest;
}
} // namespace

BorderRepair::BorderRepair(CMesh* pCMesh_)
    : pCMesh(pCMesh_)
{
}

void BorderRepair::getBordersKillDeg1nn(std::vector<CEdge*>& vBorders)
{
    std::vector<CEdge*> vCE;
    pCMesh->getDegN(DEG_BORDER, vCE);
    for (CEdge* pCE : vCE)
    {
        ASSEX_TEXT(pCE->vCT.size() == 1, "vCT.size()==1");
        CTriangle* pCT = pCE->vCT[0];
        const int ici = pCT->getICI(pCE->v0, pCE->v1);
        // The two other edges are non-manifold: it hangs between two fins and adds nothing.
        if (pCT->getCEdge(CTriangle::getNext(ici))->isNonManifold() &&
            pCT->getCEdge(CTriangle::getPrev(ici))->isNonManifold())
            pCT->kill(pCMesh);
        else
            vBorders.push_back(pCE);
    }
}

void BorderRepair::integrateCCD(CEdge* pCE)
{
    if (pCE->vCT.size() != 1)
        return;
    CTriangle* pCT = pCE->vCT[0];
    int numBorder = 0;
    int ici = -1; // opposite the non-manifold edge
    for (int i = 0; i < 3; ++i)
    {
        const int degree = pCT->getCEdge(i)->getDegree();
        ASSEX(degree > 0);
        if (degree == 2)
            return;
        if (degree == 1)
            ++numBorder;
        else
            ici = i;
    }
    if (numBorder == 3)
    {
        pCT->kill(pCMesh);
        return;
    }
    if (ici < 0 || numBorder < 2)
        return;
    std::vector<CTriangle*> vKids;
    if (!pCT->getCEdge(ici)->trySplitNeigsKillT(pCMesh, pCT, ici, vKids))
        pCT->kill(pCMesh);
}

void BorderRepair::killBorderEars()
{
    std::vector<CEdge*> vHighDeg;
    pCMesh->getDegN(DEG_NON_MANIFOLD, vHighDeg);
    for (const CEdge* pCE : vHighDeg)
    {
        while (pCE->isNonManifold())
        {
            CTriangle* pEarT = findSmallestEar(*pCMesh, *pCE);
            if (pEarT == nullptr)
                break;
            pEarT->kill(pCMesh);
        }
    }
}

void BorderRepair::closeTriangularHoles()
{
    std::vector<CEdge*> vBorders;
    pCMesh->getDegN(DEG_BORDER, vBorders);
    u64 thirdCCD = 0;
    for (const CEdge* pCE : vBorders)
        if (pCE->isBorder() && findThirdCorner(*pCMesh, *pCE, thirdCCD))
        {
            addToReport(&CallReport::numHolesClosed);
            pCMesh->createT(pCE->v0, pCE->v1, thirdCCD, 0, 0);
        }
}

void BorderRepair::pruneCases()
{
    std::array<std::vector<CTriangle*>, vKillConfigs.size()> vByConfig;
    for (CTriangle* pCT : pCMesh->getAllT())
    {
        const int cfg = std::max(pCT->getCfg(), 0);
        ASSEX(cfg < 256);
        const auto it = std::find(vKillConfigs.begin(), vKillConfigs.end(), cfg);
        if (pCT->isAlive() && it != vKillConfigs.end())
            vByConfig[static_cast<std::size_t>(it - vKillConfigs.begin())].push_back(pCT);
    }
    for (const std::vector<CTriangle*>& vT : vByConfig)
        for (CTriangle* pCT : vT)
            if (pCT->hasBorderEdge())
                pCT->kill(pCMesh);
}

} // namespace TARN_ZEF

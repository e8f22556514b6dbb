#include "rmesh/RMesh.h"

#include "cmesh/CMesh.h"
#include "core/prefetch.h"
#include "lattice/Bundle.h"
#include "lattice/BundleMap.h"
#include "lattice/CellIndex.h"
#include "parallel/parallelFor.h"
#include "rmesh/RPatch.h"

#include <algorithm>
#include <cmath>
#include <iostream>

namespace TARN_ZEF
{
namespace
{
const std::size_t MIN_TRIANGLES_PER_JOB = 10000;
const std::uint32_t NUM_USUAL_SPOKES = 32; // twice the triangles around a vertex
const std::size_t MIN_TRIANGLE_BLOCK = 64; // later blocks are multiples of the first

int clampToInt(double num)
{
    return static_cast<int>(std::min(num, 2.0e9));
}
} // namespace

// --- Construction ------------------------------------------------------------------------------------------

RMeshSource::RMeshSource(const CMesh& mesh)
    : cellSize(mesh.getAvgSpacing())
{
    std::vector<u64> vCCD;
    const BundleMap* pMap = mesh.getBundleMap();
    vCCD.reserve(pMap->size());
    vPoints.reserve(pMap->size());
    pMap->forEach(
        [&](u64 ccd, const Bundle* pBundle)
        {
            vCCD.push_back(ccd);
            vPoints.push_back(*pBundle->pPoint);
        });
    const CellIndex index(vCCD);
    std::vector<CTriangle*> vAliveT;
    mesh.getAliveT(vAliveT);
    vCorners.resize(3 * vAliveT.size());
    parallelFor(vAliveT.size(), MIN_TRIANGLES_PER_JOB,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                        for (int k = 0; k < 3; ++k)
                        {
                            const std::uint32_t rank = index.rank(vAliveT[i]->getCorner(k));
                            ASSEX_TEXT(rank != CellIndex::ABSENT,
                                       "it0!=vCCDVertex.end() && it1!=vCCDVertex.end() && "
                                       "it2!=vCCDVertex.end()");
                            vCorners[3 * i + static_cast<std::size_t>(k)] = rank;
                        }
                });
}

RMesh::RMesh(const CMesh* pCMesh)
    : RMesh(RMeshSource(*pCMesh))
{
}

RMesh::RMesh(const RMeshSource& source, std::vector<StorageBlock> vStorage)
    : cellSize(source.cellSize)
{
    const std::size_t numPoints = source.vPoints.size();
    const std::size_t numTriangles = source.vCorners.size() / 3;
    initPools(numPoints, numTriangles, vStorage);
    std::vector<Point3*> vVertices;
    vVertices.reserve(numPoints);
    for (const Point3& point : source.vPoints)
        vVertices.push_back(makeVertex(point));
    vAllRT.reserve(numTriangles);
    vAllRE.reserve(numTriangles + numTriangles / 2);
    for (std::size_t i = 0; i < source.vCorners.size(); i += 3)
        createT(vVertices[source.vCorners[i]], vVertices[source.vCorners[i + 1]],
                vVertices[source.vCorners[i + 2]]);
}

RMesh::~RMesh()
{
    deletePatches();
    edgePool.forEach([](REdge* pRE) { pRE->~REdge(); });
}

// The vertices stand in one block, whose addresses rise with their numbers.
void RMesh::initPools(std::size_t numPoints, std::size_t numTriangles, std::vector<StorageBlock>& vStorage)
{
    const auto num = static_cast<double>(std::max(numTriangles, MIN_TRIANGLE_BLOCK));
    vtxPool.init(clampToInt(static_cast<double>(numPoints)), SimplePool<RVertex>::increaseOf(1000));
    // Annealing makes many times the triangles of the start: let the blocks grow.
    const int numT = clampToInt(num);
    const int numRE = clampToInt(1.5 * num);
    triPool.init(numT, -1, takeFitting(vStorage, static_cast<std::size_t>(numT) * sizeof(RTriangle)));
    edgePool.init(numRE, -1, takeFitting(vStorage, static_cast<std::size_t>(numRE) * sizeof(REdge)));
}

Point3* RMesh::makeVertex(const Point3& pnt)
{
    auto* pVertex = new (vtxPool.getNext()) RVertex(pnt, static_cast<unsigned int>(numVertices++));
    return &pVertex->point;
}

RTriangle* RMesh::createT(Point3* c0, Point3* c1, Point3* c2)
{
    ASSEX_TEXT(c1 != c2, "pair0.first<pair0.second");
    ASSEX_TEXT(c0 != c2, "pair1.first<pair1.second");
    ASSEX_TEXT(c0 != c1, "pair2.first<pair2.second");
    REdge* pRE01 = getOrMakeEdge(c0, c1);
    REdge* pRE12 = getOrMakeEdge(c1, c2);
    REdge* pRE02 = getOrMakeEdge(c0, c2);
    auto* pRT = new (triPool.getNext()) RTriangle(c0, c1, c2, static_cast<unsigned int>(vAllRT.size()));
    vAllRT.push_back(pRT);
    ++numAliveT;
    pRT->aRE[0] = pRE12;
    pRT->aRE[1] = pRE02;
    pRT->aRE[2] = pRE01;
    for (int i = 0; i < 3; ++i)
    {
        pRT->aRE[i]->vRT.push_back(pRT);
        appendToVertex(pRT, i);
    }
    return pRT;
}

void RMesh::appendToVertex(RTriangle* pRT, int i) noexcept
{
    RVertex* pVertex = RVertex::of(pRT->aCorner[i]);
    RTriangle* pLast = pVertex->pLastT;
    if (pLast == nullptr)
        pVertex->pFirstT = pRT;
    else
        pLast->aNextInc[pLast->indexOf(&pVertex->point)] = pRT;
    pRT->aNextInc[i] = nullptr;
    pVertex->pLastT = pRT;
}

void RMesh::unregisterTriangle(RTriangle* pRT)
{
    int numDelete = 0;
    for (int i = 0; i < 3; ++i)
    {
        const Point3* pPoint = pRT->aCorner[i];
        RVertex* pVertex = RVertex::of(pRT->aCorner[i]);
        RTriangle* pBefore = nullptr;
        RTriangle* pCurrent = pVertex->pFirstT;
        while (pCurrent != nullptr && pCurrent != pRT)
        {
            pBefore = pCurrent;
            pCurrent = pCurrent->aNextInc[pCurrent->indexOf(pPoint)];
        }
        if (pCurrent == nullptr)
            continue;
        RTriangle* pAfter = pRT->aNextInc[i];
        (pBefore == nullptr ? pVertex->pFirstT : pBefore->aNextInc[pBefore->indexOf(pPoint)]) = pAfter;
        if (pAfter == nullptr)
            pVertex->pLastT = pBefore;
        pRT->aNextInc[i] = nullptr;
        ++numDelete;
    }
    ASSEX(numDelete == 3);
}

// --- Edges by their ends -----------------------------------------------------------------------------------

REdge* RMesh::getRE(const Point3* pA, const Point3* pB) const noexcept
{
    if (ByCreationVtx()(pB, pA))
        std::swap(pA, pB);
    REdge* pRE = RVertex::of(pA)->pFirstRE;
    while (pRE != nullptr && pRE->p1 != pB)
        pRE = pRE->pNextAtVtx0;
    return pRE;
}

REdge* RMesh::getOrMakeEdge(Point3* pA, Point3* pB)
{
    REdge* pRE = getRE(pA, pB);
    if (pRE != nullptr)
        return pRE;
    if (ByCreationVtx()(pB, pA))
        std::swap(pA, pB);
    pRE = new (edgePool.getNext()) REdge(pA, pB, static_cast<unsigned int>(vAllRE.size()));
    vAllRE.push_back(pRE);
    linkEdge(pRE);
    return pRE;
}

void RMesh::linkEdge(REdge* pRE) noexcept
{
    RVertex* pLower = RVertex::of(pRE->p0);
    pRE->pNextAtVtx0 = pLower->pFirstRE;
    pLower->pFirstRE = pRE;
}

void RMesh::unlinkEdge(REdge* pRE) noexcept
{
    REdge** ppRE = &RVertex::of(pRE->p0)->pFirstRE;
    while (*ppRE != pRE)
        ppRE = &(*ppRE)->pNextAtVtx0;
    *ppRE = pRE->pNextAtVtx0;
    pRE->pNextAtVtx0 = nullptr;
}

bool RMesh::hasEdge(const Point3* pA, const Point3* pB) const noexcept
{
    const REdge* pRE = getRE(pA, pB);
    return pRE != nullptr && pRE->isAlive();
}

void RMesh::getAdjacentT(const Point3* pA, const Point3* pB, std::vector<RTriangle*>& vRT) const
{
    ASSEX(pA != pB);
    const REdge* pRE = getRE(pA, pB);
    if (pRE != nullptr)
        pRE->getAliveT(vRT);
}

void RMesh::getDegN(int deg, std::vector<REdge*>& vRE) const
{
    if (deg < 0 && deg != DEG_NON_MANIFOLD && deg != DEG_IN_USE)
    {
        std::cout << "deg=" << deg << std::endl;
        ASSEX_TEXT(false, "false");
    }
    const auto fits = [deg](int degree) { return fitsDegree(degree, deg); };
    vtxPool.forEach(
        [&](const RVertex* pVertex)
        {
            const auto start = static_cast<std::ptrdiff_t>(vRE.size());
            for (REdge* pRE = pVertex->pFirstRE; pRE != nullptr; pRE = pRE->pNextAtVtx0)
                if (fits(pRE->getDegree()))
                    vRE.push_back(pRE);
            std::sort(vRE.begin() + start, vRE.end(),
                      [](const REdge* pA, const REdge* pB) { return ByCreationVtx()(pA->p1, pB->p1); });
        });
}

// --- Around a vertex ---------------------------------------------------------------------------------------

void RMesh::getIncidentT(const Point3* pVtx, std::vector<RTriangle*>& vIncT) const
{
    for (RTriangle* pRT = RVertex::of(pVtx)->pFirstT; pRT != nullptr; pRT = pRT->aNextInc[pRT->indexOf(pVtx)])
        vIncT.push_back(pRT);
}

void RMesh::getIncidentRE(const Point3* pVtx, std::vector<REdge*>& vIncRE) const
{
    const auto start = static_cast<std::ptrdiff_t>(vIncRE.size());
    for (const RTriangle* pRT = RVertex::of(pVtx)->pFirstT; pRT != nullptr;)
    {
        const int i = pRT->indexOf(pVtx);
        vIncRE.push_back(pRT->aRE[RTriangle::getNext(i)]);
        vIncRE.push_back(pRT->aRE[RTriangle::getPrev(i)]);
        pRT = pRT->aNextInc[i];
    }
    std::sort(vIncRE.begin() + start, vIncRE.end(), ByCreationRE());
    vIncRE.erase(std::unique(vIncRE.begin() + start, vIncRE.end()), vIncRE.end());
}

void RMesh::getRingRE(const Point3* pVtx, std::vector<REdge*>& vRing) const
{
    for (const RTriangle* pRT = RVertex::of(pVtx)->pFirstT; pRT != nullptr;)
    {
        const int i = pRT->indexOf(pVtx);
        vRing.push_back(pRT->aRE[i]);
        pRT = pRT->aNextInc[i];
    }
}

void RMesh::getRingVtx(const Point3* pVtx, std::vector<Point3*>& vRing) const
{
    const auto start = static_cast<std::ptrdiff_t>(vRing.size());
    for (const RTriangle* pRT = RVertex::of(pVtx)->pFirstT; pRT != nullptr;)
    {
        const int i = pRT->indexOf(pVtx);
        vRing.push_back(pRT->aCorner[RTriangle::getNext(i)]);
        vRing.push_back(pRT->aCorner[RTriangle::getPrev(i)]);
        pRT = pRT->aNextInc[i];
    }
    std::sort(vRing.begin() + start, vRing.end(), ByCreationVtx());
    vRing.erase(std::unique(vRing.begin() + start, vRing.end()), vRing.end());
}

void RMesh::fetchFans(const std::vector<const Point3*>& vVtx, std::vector<const RTriangle*>& vBuffer) const
{
    for (const Point3* pVtx : vVtx)
        prefetch(RVertex::of(pVtx));
    vBuffer.clear();
    for (const Point3* pVtx : vVtx)
        vBuffer.push_back(RVertex::of(pVtx)->pFirstT);
    for (bool bMore = true; bMore;)
    {
        bMore = false;
        for (std::size_t k = 0; k < vBuffer.size(); ++k)
        {
            const RTriangle* pRT = vBuffer[k];
            if (pRT == nullptr)
                continue;
            const int i = pRT->indexOf(vVtx[k]);
            prefetch(RVertex::of(pRT->aCorner[RTriangle::getNext(i)]));
            prefetch(RVertex::of(pRT->aCorner[RTriangle::getPrev(i)]));
            prefetch(pRT->aRE[RTriangle::getNext(i)]);
            vBuffer[k] = pRT->aNextInc[i];
            if (vBuffer[k] != nullptr)
            {
                prefetch(vBuffer[k]);
                bMore = true;
            }
        }
    }
}

bool RMesh::hasDisjointRings(const Point3* pA, const Point3* pB) const
{
    std::vector<REdge*> vRingA;
    std::vector<REdge*> vRingB;
    getRingRE(pA, vRingA);
    getRingRE(pB, vRingB);
    std::sort(vRingA.begin(), vRingA.end(), ByCreationRE());
    return std::none_of(vRingB.begin(), vRingB.end(),
                        [&](REdge* pRE)
                        { return std::binary_search(vRingA.begin(), vRingA.end(), pRE, ByCreationRE()); });
}

void RMesh::getUmbrellas(const Point3* pCenter, std::vector<std::vector<RTriangle*>>& vUmbrellas) const
{
    std::vector<RTriangle*> vAvail;
    getIncidentT(pCenter, vAvail);
    const std::vector<RTriangle*> vAll = vAvail;
    while (!vAvail.empty())
    {
        std::vector<RTriangle*> vUmbrella;
        if (growUmbrella(pCenter, vAvail, vUmbrella))
        {
            vUmbrellas.push_back(std::move(vUmbrella));
            continue;
        }
        warningMessage(ZEF_HERE, "Bad umbrella");
        vUmbrellas.assign(1, vAll);
        return;
    }
}

// Takes one fan out of vAvail; false if it is not closed.
bool RMesh::growUmbrella(const Point3* pCenter, std::vector<RTriangle*>& vAvail,
                         std::vector<RTriangle*>& vUmbrella)
{
    std::vector<RTriangle*> vWorkspace{vAvail.back()};
    vAvail.pop_back();
    std::vector<REdge*> vTestRE;
    while (!vWorkspace.empty())
    {
        RTriangle* pRT = vWorkspace.back();
        vWorkspace.pop_back();
        vUmbrella.push_back(pRT);
        for (REdge* pRE : pRT->aRE)
        {
            if (!pRE->has(pCenter))
                continue;
            vTestRE.push_back(pRE);
            RTriangle* pNeigT = pRE->isInner() ? pRE->getNeigT(pRT) : nullptr;
            const auto it = std::find(vAvail.begin(), vAvail.end(), pNeigT);
            if (pNeigT == nullptr || it == vAvail.end())
                continue;
            std::swap(*it, vAvail.back());
            vAvail.pop_back();
            vWorkspace.push_back(pNeigT);
        }
    }
    std::sort(vTestRE.begin(), vTestRE.end(), ByCreationRE());
    const std::size_t numAll = vTestRE.size();
    vTestRE.erase(std::unique(vTestRE.begin(), vTestRE.end()), vTestRE.end());
    return 2 * vTestRE.size() == numAll;
}

// --- The edge collapse -------------------------------------------------------------------------------------

void RMesh::exchangeCorner(Point3* pSrc, Point3* pTrg)
{
    if (REdge* pKillEdge = getRE(pSrc, pTrg))
    {
        ASSEX_TEXT(pKillEdge->isAlive(), "pKillEdge==0 || pKillEdge->isAlive()");
        while (pKillEdge->isAlive())
            pKillEdge->vRT[0]->kill(this);
    }
    SmallVec<REdge*, NUM_USUAL_SPOKES> vRE;
    forEachIncidentT(pSrc,
                     [&vRE](const RTriangle* pRT, int i)
                     {
                         vRE.push_back(pRT->aRE[RTriangle::getNext(i)]);
                         vRE.push_back(pRT->aRE[RTriangle::getPrev(i)]);
                     });
    std::sort(vRE.begin(), vRE.end(), ByCreationRE());
    std::for_each(vRE.begin(), std::unique(vRE.begin(), vRE.end()),
                  [&](REdge* pRE) { moveEdge(pRE, pSrc, pTrg); });

    RTriangle* pNext = RVertex::of(pSrc)->pFirstT;
    RVertex::of(pSrc)->pFirstT = nullptr;
    RVertex::of(pSrc)->pLastT = nullptr;
    while (pNext != nullptr)
    {
        RTriangle* pRT = pNext;
        ASSEX(pRT->isAlive());
        const int i = pRT->indexOf(pSrc);
        pNext = pRT->aNextInc[i];
        pRT->setCorner(i, pTrg);
        appendToVertex(pRT, i);
    }
}

void RMesh::moveEdge(REdge* pRE, Point3* pSrc, Point3* pTrg)
{
    ASSEX(pRE->has(pSrc));
    ASSEX(pRE->isAlive());
    ASSEX(!pRE->has(pTrg));
    Point3* pRingVtx = pRE->getOtherPoint(pSrc);
    ASSEX(pRingVtx != pTrg);
    unlinkEdge(pRE);
    if (REdge* pExistingRE = getRE(pRingVtx, pTrg))
    {
        mergeEdge(pRE, pExistingRE);
        return;
    }
    const bool bRingFirst = ByCreationVtx()(pRingVtx, pTrg);
    pRE->p0 = bRingFirst ? pRingVtx : pTrg;
    pRE->p1 = bRingFirst ? pTrg : pRingVtx;
    linkEdge(pRE);
}

void RMesh::mergeEdge(REdge* pRE, REdge* pExistingRE)
{
    for (RTriangle* pRT : pRE->vRT)
    {
        const auto it = std::find(std::begin(pRT->aRE), std::end(pRT->aRE), pRE);
        ASSEX_TEXT(it != std::end(pRT->aRE), "false");
        pExistingRE->vRT.push_back(pRT);
        *it = pExistingRE;
    }
    pRE->vRT.clear();
    ASSEX(!pRE->isAlive());
    ASSEX(pExistingRE->isAlive());
}

// --- Vertices by coordinates -------------------------------------------------------------------------------

void RMesh::ensurePointTable() const
{
    if (bPointTable)
        return;
    pointTable.reserve(numVertices);
    vtxPool.forEach([this](RVertex* pVertex) { pointTable.insert(&pVertex->point); });
    bPointTable = true;
}

bool RMesh::hasVertexAt(const Point3& pnt) const
{
    ensurePointTable();
    return pointTable.find(pnt) != nullptr;
}

Point3* RMesh::getVertexAt(const Point3& pnt, bool bFailIfExists)
{
    ensurePointTable();
    if (Point3* pFound = pointTable.find(pnt))
        return bFailIfExists ? nullptr : pFound;
    Point3* pNew = makeVertex(pnt);
    pointTable.insert(pNew);
    return pNew;
}

Point3* RMesh::getVertexAt(double x, double y, double z, bool bFailIfExists)
{
    return getVertexAt(Point3(x, y, z), bFailIfExists);
}

// Of two vertices on one place only one is in the table, and a vertex may have been written directly: then
// there is nothing to erase.
void RMesh::updateVertex(Point3* pVtx, const Point3& newPoint)
{
    ASSEX_TEXT(*pVtx != newPoint, "*pVtx!=newPoint");
    ensurePointTable();
    pointTable.erase(pVtx);
    *pVtx = newPoint;
    const bool bOK = pointTable.insert(pVtx);
    ASSEX(bOK);
}

// --- The whole mesh ----------------------------------------------------------------------------------------

void RMesh::getPoints(std::vector<Point3*>& vP) const
{
    ASSEX(vP.empty());
    vP.reserve(numVertices);
    vtxPool.forEach(
        [&](RVertex* pVertex)
        {
            if (pVertex->pFirstT != nullptr)
                vP.push_back(&pVertex->point);
        });
}

void RMesh::getTriangles(std::vector<Point3*>& vTriCorners) const
{
    vTriCorners.reserve(vTriCorners.size() + 3 * numAliveT);
    for (const RTriangle* pRT : vAllRT)
        if (pRT->isAlive())
            vTriCorners.insert(vTriCorners.end(), pRT->aCorner, pRT->aCorner + 3);
}

void RMesh::getAliveT(std::vector<RTriangle*>& vRT) const
{
    vRT.reserve(vRT.size() + numAliveT);
    for (RTriangle* pRT : vAllRT)
        if (pRT->isAlive())
            vRT.push_back(pRT);
}

double RMesh::getArea() const
{
    double area = 0.0;
    for (const RTriangle* pRT : vAllRT)
        if (pRT->isAlive())
            area += pRT->getArea();
    return area;
}

double RMesh::getAverageEdgeLength() const
{
    double sum = 0.0;
    std::size_t num = 0;
    for (const REdge* pRE : vAllRE)
    {
        if (!pRE->isAlive())
            continue;
        sum += std::sqrt(pRE->getSqLength());
        ++num;
    }
    return num > 0 ? sum / static_cast<double>(num) : -1.0;
}

void RMesh::fillNormals()
{
    parallelFor(vAllRT.size(), MIN_TRIANGLES_PER_JOB,
                [this](std::size_t from, std::size_t to)
                {
                    bool bOK = false;
                    for (std::size_t i = from; i < to; ++i)
                        if (vAllRT[i]->isAlive())
                            vAllRT[i]->getNNV(bOK);
                });
}

} // namespace TARN_ZEF

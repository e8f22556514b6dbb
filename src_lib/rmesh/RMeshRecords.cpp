#include "rmesh/RMeshRecords.h"

#include "core/prefetch.h"

#include <algorithm>
#include <string>

namespace TARN_ZEF
{
namespace
{
const std::uint32_t NUM_USUAL_SPOKES = 32; // twice the triangles around a vertex
const std::size_t MIN_TRIANGLE_BLOCK = 64; // later blocks are multiples of the first

int clampToInt(double num)
{
    return static_cast<int>(std::min(num, 2.0e9));
}
} // namespace

RMeshRecords::RMeshRecords(double cellSize_)
    : cellSize(cellSize_)
{
}

RMeshRecords::~RMeshRecords()
{
    edgePool.forEach([](REdge* pRE) { pRE->~REdge(); });
}

// The vertices stand in one block, whose addresses rise with their numbers.
void RMeshRecords::initPools(std::size_t numPoints, std::size_t numTriangles,
                             std::vector<StorageBlock>& vStorage)
{
    const auto num = static_cast<double>(std::max(numTriangles, MIN_TRIANGLE_BLOCK));
    vtxPool.init(clampToInt(static_cast<double>(numPoints)), SimplePool<RVertex>::increaseOf(1000));
    // Annealing makes many times the triangles of the start: let the blocks grow.
    const int numT = clampToInt(num);
    const int numRE = clampToInt(1.5 * num);
    triPool.init(numT, -1, takeFitting(vStorage, static_cast<std::size_t>(numT) * sizeof(RTriangle)));
    edgePool.init(numRE, -1, takeFitting(vStorage, static_cast<std::size_t>(numRE) * sizeof(REdge)));
    vAllRT.reserve(numTriangles);
    vAllRE.reserve(numTriangles + numTriangles / 2);
}

Point3* RMeshRecords::makeVertex(const Point3& pnt)
{
    auto* pVertex = new (vtxPool.getNext()) RVertex(pnt, static_cast<unsigned int>(numVertices++));
    return &pVertex->point;
}

RTriangle* RMeshRecords::createT(Point3* c0, Point3* c1, Point3* c2)
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

void RMeshRecords::appendToVertex(RTriangle* pRT, int i) noexcept
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

void RMeshRecords::unregisterTriangle(RTriangle* pRT)
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

REdge* RMeshRecords::getRE(const Point3* pA, const Point3* pB) const noexcept
{
    if (ByCreationVtx()(pB, pA))
        std::swap(pA, pB);
    REdge* pRE = RVertex::of(pA)->pFirstRE;
    while (pRE != nullptr && pRE->p1 != pB)
        pRE = pRE->pNextAtVtx0;
    return pRE;
}

REdge* RMeshRecords::getOrMakeEdge(Point3* pA, Point3* pB)
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

void RMeshRecords::linkEdge(REdge* pRE) noexcept
{
    RVertex* pLower = RVertex::of(pRE->p0);
    pRE->pNextAtVtx0 = pLower->pFirstRE;
    pLower->pFirstRE = pRE;
}

void RMeshRecords::unlinkEdge(REdge* pRE) noexcept
{
    REdge** ppRE = &RVertex::of(pRE->p0)->pFirstRE;
    while (*ppRE != pRE)
        ppRE = &(*ppRE)->pNextAtVtx0;
    *ppRE = pRE->pNextAtVtx0;
    pRE->pNextAtVtx0 = nullptr;
}

bool RMeshRecords::hasEdge(const Point3* pA, const Point3* pB) const noexcept
{
    const REdge* pRE = getRE(pA, pB);
    return pRE != nullptr && pRE->isAlive();
}

void RMeshRecords::getAdjacentT(const Point3* pA, const Point3* pB, std::vector<RTriangle*>& vRT) const
{
    ASSEX(pA != pB);
    const REdge* pRE = getRE(pA, pB);
    if (pRE != nullptr)
        pRE->getAliveT(vRT);
}

void RMeshRecords::getDegN(int deg, std::vector<REdge*>& vRE) const
{
    if (deg < 0 && deg != DEG_NON_MANIFOLD && deg != DEG_IN_USE)
    {
        printText("deg=" + std::to_string(deg) + "\n");
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

void RMeshRecords::getIncidentT(const Point3* pVtx, std::vector<RTriangle*>& vIncT) const
{
    for (RTriangle* pRT = RVertex::of(pVtx)->pFirstT; pRT != nullptr; pRT = pRT->aNextInc[pRT->indexOf(pVtx)])
        vIncT.push_back(pRT);
}

void RMeshRecords::getIncidentRE(const Point3* pVtx, std::vector<REdge*>& vIncRE) const
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

void RMeshRecords::getRingRE(const Point3* pVtx, std::vector<REdge*>& vRing) const
{
    for (const RTriangle* pRT = RVertex::of(pVtx)->pFirstT; pRT != nullptr;)
    {
        const int i = pRT->indexOf(pVtx);
        vRing.push_back(pRT->aRE[i]);
        pRT = pRT->aNextInc[i];
    }
}

void RMeshRecords::getRingVtx(const Point3* pVtx, std::vector<Point3*>& vRing) const
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

void RMeshRecords::fetchFans(const std::vector<const Point3*>& vVtx,
                             std::vector<const RTriangle*>& vBuffer) const
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

// Each walk reads what the one before has asked for.
void RMeshRecords::fetchQuads(const std::vector<const REdge*>& vRE)
{
    const auto forEachT = [&vRE](auto f)
    {
        for (const REdge* pRE : vRE)
            for (const RTriangle* pRT : pRE->vRT)
                f(pRT);
    };
    for (const REdge* pRE : vRE)
        prefetch(pRE);
    forEachT([](const RTriangle* pRT) { prefetch(pRT); });
    forEachT(
        [](const RTriangle* pRT)
        {
            for (int i = 0; i < 3; ++i)
            {
                prefetch(RVertex::of(pRT->aCorner[i]));
                prefetch(pRT->aRE[i]);
            }
        });
    forEachT(
        [](const RTriangle* pRT)
        {
            for (const REdge* pRE : pRT->aRE)
                for (const RTriangle* pNeigT : pRE->vRT)
                    prefetch(pNeigT);
        });
}

// --- One vertex for another --------------------------------------------------------------------------------

void RMeshRecords::replaceVertex(Point3* pSrc, Point3* pTrg)
{
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

void RMeshRecords::moveEdge(REdge* pRE, Point3* pSrc, Point3* pTrg)
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

void RMeshRecords::mergeEdge(REdge* pRE, REdge* pExistingRE)
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

void RMeshRecords::ensurePointTable() const
{
    if (bPointTable)
        return;
    pointTable.reserve(numVertices);
    vtxPool.forEach([this](RVertex* pVertex) { pointTable.insert(&pVertex->point); });
    bPointTable = true;
}

bool RMeshRecords::hasVertexAt(const Point3& pnt) const
{
    ensurePointTable();
    return pointTable.find(pnt) != nullptr;
}

Point3* RMeshRecords::getVertexAt(const Point3& pnt, bool bFailIfExists)
{
    ensurePointTable();
    if (Point3* pFound = pointTable.find(pnt))
        return bFailIfExists ? nullptr : pFound;
    Point3* pNew = makeVertex(pnt);
    pointTable.insert(pNew);
    return pNew;
}

Point3* RMeshRecords::getVertexAt(double x, double y, double z, bool bFailIfExists)
{
    return getVertexAt(Point3(x, y, z), bFailIfExists);
}

// Of two vertices on one place only one is in the table, and a vertex may have been written directly: then
// there is nothing to erase.
void RMeshRecords::updateVertex(Point3* pVtx, const Point3& newPoint)
{
    ASSEX_TEXT(*pVtx != newPoint, "*pVtx!=newPoint");
    ensurePointTable();
    pointTable.erase(pVtx);
    *pVtx = newPoint;
    const bool bOK = pointTable.insert(pVtx);
    ASSEX(bOK);
}

// --- All of them -------------------------------------------------------------------------------------------

void RMeshRecords::getPoints(std::vector<Point3*>& vP) const
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

void RMeshRecords::getTriangles(std::vector<Point3*>& vTriCorners) const
{
    vTriCorners.reserve(vTriCorners.size() + 3 * numAliveT);
    for (const RTriangle* pRT : vAllRT)
        if (pRT->isAlive())
            vTriCorners.insert(vTriCorners.end(), pRT->aCorner, pRT->aCorner + 3);
}

void RMeshRecords::getAliveT(std::vector<RTriangle*>& vRT) const
{
    vRT.reserve(vRT.size() + numAliveT);
    for (RTriangle* pRT : vAllRT)
        if (pRT->isAlive())
            vRT.push_back(pRT);
}

} // namespace TARN_ZEF

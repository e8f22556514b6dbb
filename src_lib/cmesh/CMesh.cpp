#include "cmesh/CMesh.h"

#include "cmesh/CPatch.h"
#include "geometry/tools.h"
#include "lattice/Bundle.h"
#include "parallel/collectInOrder.h"

#include <algorithm>
#include <cmath>
#include <iostream>

namespace TARN_ZEF
{
namespace
{
const int NUM_POOL_INITIAL = 64; // of a mesh whose corners are not known beforehand

// Pool sizes from the number of corners: a closed surface has twice as many triangles and three times as
// many edges as corners; the raw extraction has some more.
int poolSize(std::size_t numCorners, double perCorner)
{
    return static_cast<int>(std::min(perCorner * static_cast<double>(numCorners) + NUM_POOL_INITIAL, 2.0e9));
}
} // namespace

CMesh::CMesh(Calc* pCalc_, BundleMap* pCCDBundle_)
    : pCalc(pCalc_)
    , pCCDBundle(pCCDBundle_)
{
}

CMesh::~CMesh()
{
    deletePatches();
    destroyEdges();
    for (Bundle* pBundle : vBundles)
    {
        delete pBundle->pPoint;
        delete pBundle;
    }
}

void CMesh::destroyEdges()
{
    if (pEdgePool)
        pEdgePool->forEach([](CEdge* pCE) { pCE->~CEdge(); });
}

// The next extraction makes about as many triangles and edges: it finds their memory mapped already.
void CMesh::clearAll()
{
    deletePatches();
    destroyEdges();
    if (pEdgePool)
        pEdgePool->rewind();
    if (pTrianglePool)
        pTrianglePool->rewind();
    pVertexPool.reset();
    vCT.clear();
    vTable.clear();
    numAliveT = 0;
    pPrepared = nullptr;
    numVertices = 0;
    numEdges = 0;
    degrees.clear();
    lastAscendingCCD = 0;
    numAscending = 0;
    extracted = {};
    pRenewed.reset();
}

void CMesh::markExtracted(std::size_t numCubeT)
{
    ASSEX(numAliveT == vCT.size());
    extracted = {vCT.size(), numCubeT, getNumEdgeSlots(), {}};
    ++numExtractions;
    pRenewed.reset();
}

std::vector<StorageBlock> CMesh::releaseStorage()
{
    deletePatches();
    destroyEdges();
    std::vector<StorageBlock> vStorage;
    if (pTrianglePool)
        vStorage.push_back(pTrianglePool->releaseFirstBlock());
    if (pEdgePool)
        vStorage.push_back(pEdgePool->releaseFirstBlock());
    pTrianglePool.reset();
    pEdgePool.reset();
    return vStorage;
}

void CMesh::initPools(std::size_t numCorners)
{
    pVertexPool = std::make_unique<SimplePool<CVertex>>();
    pVertexPool->init(poolSize(numCorners, 1.0), -1);
    if (pEdgePool && pTrianglePool)
        return;
    pEdgePool = std::make_unique<SimplePool<CEdge>>();
    pEdgePool->init(poolSize(numCorners, 3.2), -1);
    pTrianglePool = std::make_unique<SimplePool<CTriangle>>();
    pTrianglePool->init(poolSize(numCorners, 2.1), -1);
}

void CMesh::prepareCorners(const std::vector<u64>& vCCD)
{
    ASSEX(numVertices == 0);
    if (vCCD.empty())
        return;
    initPools(vCCD.size());
    growTable(vCCD.size());
    vCT.reserve(static_cast<std::size_t>(poolSize(vCCD.size(), 2.1)));
    for (const u64 ccd : vCCD)
        makeVertex(ccd);
    // The pool's first block holds them all.
    pPrepared = findVertex(vCCD.front());

    std::size_t i = 0;
    pCCDBundle->forEach(
        [&](u64 ccd, Bundle* pBundle)
        {
            while (i < vCCD.size() && vCCD[i] < ccd)
                ++i;
            if (i < vCCD.size() && vCCD[i] == ccd)
                pPrepared[i].pBundle = pBundle;
        });
}

// --- Corner records ----------------------------------------------------------------------------------------

// Sixteen codes in a row share their part of the table, so that a walk along the lattice finds most of its
// neighbours in a cache line that is there already.
std::size_t CMesh::hashSlot(u64 ccd) const noexcept
{
    const u64 block = (ccd >> 4) * 0x9E3779B97F4A7C15ull;
    return (((block >> 28) << 4) | (ccd & 15)) & (vTable.size() - 1);
}

CVertex* CMesh::findVertex(u64 ccd) const noexcept
{
    if (vTable.empty())
        return nullptr;
    for (std::size_t slot = hashSlot(ccd);; slot = (slot + 1) & (vTable.size() - 1))
    {
        CVertex* pVertex = vTable[slot];
        if (pVertex == nullptr || pVertex->ccd == ccd)
            return pVertex;
    }
}

void CMesh::enterInTable(CVertex* pVertex)
{
    std::size_t slot = hashSlot(pVertex->ccd);
    while (vTable[slot] != nullptr)
        slot = (slot + 1) & (vTable.size() - 1);
    vTable[slot] = pVertex;
}

void CMesh::growTable(std::size_t numCorners)
{
    std::size_t numSlots = 64;
    while (numSlots * 6 < numCorners * 10)
        numSlots *= 2;
    vTable.assign(numSlots, nullptr);
    pVertexPool->forEach([this](CVertex* pVertex) { enterInTable(pVertex); });
}

CVertex* CMesh::makeVertex(u64 ccd)
{
    CVertex* pVertex = new (pVertexPool->getNext()) CVertex(ccd);
    if (numAscending == numVertices && (numVertices == 0 || lastAscendingCCD < ccd))
    {
        lastAscendingCCD = ccd;
        ++numAscending;
    }
    ++numVertices;
    enterInTable(pVertex);
    return pVertex;
}

CVertex* CMesh::getOrMakeVertex(u64 ccd)
{
    CVertex* pVertex = findVertex(ccd);
    if (pVertex != nullptr)
        return pVertex;
    if (!pVertexPool)
        initPools(0);
    if (vTable.empty() || (numVertices + 1) * 10 > vTable.size() * 6)
        growTable(2 * (numVertices + 1));
    pVertex = makeVertex(ccd);
    pVertex->pBundle = pCCDBundle->find(ccd);
    return pVertex;
}

void CMesh::getVerticesAscending(std::vector<CVertex*>& vVertices) const
{
    if (!pVertexPool)
        return;
    vVertices.reserve(numVertices);
    pVertexPool->forEach([&](CVertex* pVertex) { vVertices.push_back(pVertex); });
    const auto isLess = [](const CVertex* pA, const CVertex* pB) { return pA->ccd < pB->ccd; };
    const auto itTail = vVertices.begin() + static_cast<std::ptrdiff_t>(numAscending);
    std::sort(itTail, vVertices.end(), isLess);
    std::inplace_merge(vVertices.begin(), itTail, vVertices.end(), isLess);
}

// --- Triangles ---------------------------------------------------------------------------------------------

CTriangle* CMesh::createT(u64 v0, u64 v1, u64 v2, u64 generatingVCD, int cfg)
{
    ASSEX(v0 != v1 && v1 != v2 && v0 != v2);
    CVertex* pV0 = getOrMakeVertex(v0);
    CVertex* pV1 = getOrMakeVertex(v1);
    CVertex* pV2 = getOrMakeVertex(v2);
    return createT(pV0, pV1, pV2, generatingVCD, cfg);
}

CTriangle* CMesh::createT(CVertex* pV0, CVertex* pV1, CVertex* pV2, u64 generatingVCD, int cfg)
{
    ASSEX(pV0 != pV1 && pV1 != pV2 && pV0 != pV2);
    CEdge* pCE01 = getOrMakeEdge(pV0, pV1);
    CEdge* pCE12 = getOrMakeEdge(pV1, pV2);
    CEdge* pCE02 = getOrMakeEdge(pV0, pV2);
    auto* pCT = new (pTrianglePool->getNext())
        CTriangle(pV0, pV1, pV2, generatingVCD, cfg, static_cast<unsigned int>(vCT.size()));
    vCT.push_back(pCT);
    ++numAliveT;
    pCT->aEdge[0] = pCE12;
    pCT->aEdge[1] = pCE02;
    pCT->aEdge[2] = pCE01;
    registerTriangle(pCT);
    return pCT;
}

void CMesh::registerTriangle(CTriangle* pCT)
{
    for (int i = 0; i < 3; ++i)
    {
        pCT->aEdge[i]->vCT.push_back(pCT);
        degrees.noteGrown(pCT->aEdge[i]);
        appendToCorner(pCT, i);
    }
}

void CMesh::appendToCorner(CTriangle* pCT, int ici) noexcept
{
    CVertex* pVertex = pCT->aVertex[ici];
    CTriangle* pLast = pVertex->pLastT;
    if (pLast == nullptr)
        pVertex->pFirstT = pCT;
    else
        pLast->aNextInc[pLast->indexOf(pVertex)] = pCT;
    pVertex->pLastT = pCT;
}

void CMesh::unregisterTriangle(CTriangle* pCT)
{
    int numDelete = 0;
    for (int i = 0; i < 3; ++i)
    {
        CVertex* pVertex = pCT->aVertex[i];
        CTriangle* pBefore = nullptr;
        CTriangle* pCurrent = pVertex->pFirstT;
        while (pCurrent != nullptr && pCurrent != pCT)
        {
            pBefore = pCurrent;
            pCurrent = pCurrent->aNextInc[pCurrent->indexOf(pVertex)];
        }
        if (pCurrent == nullptr)
            continue;
        CTriangle* pAfter = pCT->aNextInc[i];
        (pBefore == nullptr ? pVertex->pFirstT : pBefore->aNextInc[pBefore->indexOf(pVertex)]) = pAfter;
        if (pAfter == nullptr)
            pVertex->pLastT = pBefore;
        pCT->aNextInc[i] = nullptr;
        ++numDelete;
    }
    ASSEX(numDelete == 3);
}

void CMesh::getIncT(u64 ccd, std::vector<CTriangle*>& vT) const
{
    const CVertex* pVertex = findVertex(ccd);
    if (pVertex == nullptr)
        return;
    for (CTriangle* pCT = pVertex->pFirstT; pCT != nullptr; pCT = pCT->aNextInc[pCT->indexOf(pVertex)])
        vT.push_back(pCT);
}

void CMesh::getAliveT(std::vector<CTriangle*>& vT) const
{
    vT.reserve(vT.size() + numAliveT);
    for (CTriangle* pCT : vCT)
        if (pCT->isAlive())
            vT.push_back(pCT);
}

void CMesh::clearVisited()
{
    for (CTriangle* pCT : vCT)
        pCT->bVisited = false;
}

// --- Edges -------------------------------------------------------------------------------------------------

CEdge* CMesh::getCE(u64 a, u64 b) const
{
    const CVertex* pLower = findVertex(std::min(a, b));
    return pLower != nullptr ? findUpward(pLower, std::max(a, b)) : nullptr;
}

CEdge* CMesh::getCE(const CVertex* pA, const CVertex* pB) const noexcept
{
    return pA->ccd < pB->ccd ? findUpward(pA, pB->ccd) : findUpward(pB, pA->ccd);
}

CEdge* CMesh::findUpward(const CVertex* pLower, u64 upper) noexcept
{
    CEdge* pCE = pLower->pFirstCE;
    while (pCE != nullptr && pCE->v1 != upper)
        pCE = pCE->pNextAtV0;
    return pCE;
}

CEdge* CMesh::getOrMakeEdge(CVertex* pA, CVertex* pB)
{
    CVertex* pLower = pA->ccd < pB->ccd ? pA : pB;
    const u64 upper = std::max(pA->ccd, pB->ccd);
    CEdge* pCE = findUpward(pLower, upper);
    if (pCE != nullptr)
        return pCE;
    pCE = new (pEdgePool->getNext()) CEdge(pLower->ccd, upper, numEdges++);
    pCE->pNextAtV0 = pLower->pFirstCE;
    pLower->pFirstCE = pCE;
    return pCE;
}

bool CMesh::hasEdge(u64 a, u64 b) const
{
    ASSEX_TEXT(a != b, "q.first<q.second");
    const CEdge* pCE = getCE(a, b);
    return pCE != nullptr && !pCE->isOrphan();
}

template <typename Filter>
void CMesh::collectInMapOrder(std::vector<CEdge*>& vCE, Filter filter) const
{
    std::vector<CEdge*> vAtCorner;
    const auto collectAt = [&](const CVertex* pVertex)
    {
        vAtCorner.clear();
        for (CEdge* pCE = pVertex->pFirstCE; pCE != nullptr; pCE = pCE->pNextAtV0)
            if (filter(pCE))
                vAtCorner.push_back(pCE);
        std::sort(vAtCorner.begin(), vAtCorner.end(), ByMapOrderCE());
        vCE.insert(vCE.end(), vAtCorner.begin(), vAtCorner.end());
    };
    if (numAscending == numVertices)
    {
        if (pVertexPool)
            pVertexPool->forEach(collectAt);
        return;
    }
    std::vector<CVertex*> vVertices;
    getVerticesAscending(vVertices);
    for (const CVertex* pVertex : vVertices)
        collectAt(pVertex);
}

template <typename Filter>
std::vector<CEdge*> CMesh::findEdges(Filter filter) const
{
    std::vector<CEdge*> vFound =
        collectInOrder<CEdge*>(getNumEdgeSlots(),
                               [&](std::size_t from, std::size_t to, std::vector<CEdge*>& vPart)
                               {
                                   forEachEdge(from, to,
                                               [&](CEdge* pCE)
                                               {
                                                   if (filter(pCE))
                                                       vPart.push_back(pCE);
                                               });
                               });
    std::sort(vFound.begin(), vFound.end(), ByMapOrderCE());
    return vFound;
}

void CMesh::getDegN(int deg, std::vector<CEdge*>& vCE) const
{
    if (!isDegreeQuery(deg))
    {
        std::cout << "deg=" << deg << std::endl;
        ASSEX_TEXT(false, "false");
    }
    if (!hasDegree(deg))
        return;
    const auto fits = [deg](const CEdge* pCE) { return fitsDegree(pCE->getDegree(), deg); };
    if (deg == DEG_INNER || deg == DEG_IN_USE)
    {
        collectInMapOrder(vCE, fits); // nearly all edges
        return;
    }
    const std::vector<CEdge*> vFound =
        degrees.isIrregularKnown() ? degrees.getIrregular(deg) : findEdges(fits);
    vCE.insert(vCE.end(), vFound.begin(), vFound.end());
}

void CMesh::getAllCE(std::vector<CEdge*>& vCE) const
{
    vCE.reserve(vCE.size() + numEdges);
    collectInMapOrder(vCE, [](const CEdge*) { return true; });
}

void CMesh::getIncCE(u64 ccd, std::vector<CEdge*>& vCE) const
{
    const CVertex* pVertex = findVertex(ccd);
    if (pVertex == nullptr)
        return;
    const auto start = static_cast<std::ptrdiff_t>(vCE.size());
    for (CTriangle* pCT = pVertex->pFirstT; pCT != nullptr;)
    {
        const int ici = pCT->indexOf(pVertex);
        vCE.push_back(pCT->aEdge[CTriangle::getNext(ici)]);
        vCE.push_back(pCT->aEdge[CTriangle::getPrev(ici)]);
        pCT = pCT->aNextInc[ici];
    }
    std::sort(vCE.begin() + start, vCE.end(), ByCreationCE());
    vCE.erase(std::unique(vCE.begin() + start, vCE.end()), vCE.end());
}

// --- Positions and bundles ---------------------------------------------------------------------------------

void CMesh::getUsedCCDs(std::vector<u64>& vCCD) const
{
    std::vector<CVertex*> vVertices;
    getVerticesAscending(vVertices);
    for (const CVertex* pVertex : vVertices)
        if (pVertex->pFirstT != nullptr)
            vCCD.push_back(pVertex->ccd);
}

Bundle* CMesh::findBundle(u64 ccd) const
{
    const CVertex* pVertex = findVertex(ccd);
    if (pVertex != nullptr && pVertex->pBundle != nullptr)
        return pVertex->pBundle;
    return pCCDBundle->find(ccd);
}

Point3* CMesh::getVtx(u64 ccd) const
{
    const Bundle* pBundle = findBundle(ccd);
    ASSEX_TEXT(pBundle != nullptr, "q_it!=mCCDBundle.end()");
    return pBundle->pPoint;
}

Point3 CMesh::getCoarsePoint(u64 ccd) const
{
    return pCalc->getMid(ccd);
}

double CMesh::getAvgSpacing() const
{
    return pCalc->getCellSizeX();
}

double CMesh::getArea() const
{
    double area = 0.0;
    for (const CTriangle* pCT : vCT)
        if (pCT->isAlive())
            area += pCT->getArea(this);
    return area;
}

void CMesh::addBundle(u64 ccd)
{
    if (findBundle(ccd) != nullptr)
        return;
    auto pPoint = std::make_unique<Point3>(pCalc->getMid(ccd));
    auto pBundle = std::make_unique<Bundle>(pPoint.get());
    pBundle->ccd = ccd;
    vBundles.push_back(pBundle.get());
    Bundle* pOwned = pBundle.release();
    sExtraVtx.insert(pPoint.release());
    pCCDBundle->insert(ccd, pOwned);
    if (CVertex* pVertex = findVertex(ccd))
        pVertex->pBundle = pOwned;
    averageBundle(pOwned);
}

void CMesh::eraseBundle(Bundle* pBundle)
{
    pCCDBundle->erase(pBundle->ccd);
    if (CVertex* pVertex = findVertex(pBundle->ccd))
        pVertex->pBundle = nullptr;
    sExtraVtx.erase(pBundle->pPoint);
    delete pBundle->pPoint;
    delete pBundle;
}

// --- Diagnostics -------------------------------------------------------------------------------------------

void CMesh::statistics(const std::string& name) const
{
    std::vector<u64> vCCD;
    getUsedCCDs(vCCD);
    std::map<int, std::size_t> mDegreeCount;
    forEachEdge(
        [&](const CEdge* pCE)
        {
            if (!pCE->isOrphan())
                ++mDegreeCount[pCE->getDegree()];
        });
    std::cout << "Statistics (\"" << name << "\"):\n  Vertices: " << vCCD.size()
              << "\n  Triangles:  " << numAliveT << "\n";
    for (const auto& [degree, num] : mDegreeCount)
        std::cout << "  Edges with degree " << degree << ":\t" << num << "\n";
    std::cout << std::flush;
}

bool CMesh::checkNoDups(const std::string& name) const
{
    bool bClean = true;
    forEachEdge(
        [&](const CEdge* pCE)
        {
            std::vector<u64> vThird;
            for (const CTriangle* pCT : pCE->vCT)
                vThird.push_back(pCT->getThirdCCD(pCE->v0, pCE->v1));
            std::sort(vThird.begin(), vThird.end());
            bClean = bClean && std::adjacent_find(vThird.begin(), vThird.end()) == vThird.end();
        });
    if (!bClean)
        std::cout << name << ": DUPLICATE TRIANGLE" << std::endl;
    return bClean;
}

bool CMesh::checkNoDegenerate(const std::string& name) const
{
    const auto num =
        std::count_if(vCT.begin(), vCT.end(),
                      [this](const CTriangle* pCT) { return pCT->isAlive() && pCT->isDegenerate(this); });
    if (num != 0)
        std::cout << name << ": " << num << " degenerate triangles" << std::endl;
    return num == 0;
}

bool CMesh::hasNaN() const
{
    return std::any_of(vCT.begin(), vCT.end(),
                       [this](const CTriangle* pCT)
                       {
                           if (!pCT->isAlive())
                               return false;
                           double x = 0.0, y = 0.0, z = 0.0;
                           for (int i = 0; i < 3; ++i)
                               pCT->getVtx(this, i)->addOwnCoords(x, y, z);
                           return std::isnan(x + y + z);
                       });
}

} // namespace TARN_ZEF

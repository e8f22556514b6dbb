#include "cmesh/CMeshRecords.h"

#include "parallel/collectInOrder.h"

#include <algorithm>
#include <string>

namespace TARN_ZEF
{
namespace
{
const int NUM_POOL_INITIAL = 64; // of a mesh whose corners are not known beforehand

// Pool sizes from the number of corners: a closed surface has twice as many triangles and three times as
// many edges as corners; the raw extraction has some more.
const double TRIANGLES_PER_CORNER = 2.1;
const double EDGES_PER_CORNER = 3.2;

int poolSize(std::size_t numCorners, double perCorner)
{
    return static_cast<int>(std::min(perCorner * static_cast<double>(numCorners) + NUM_POOL_INITIAL, 2.0e9));
}
} // namespace

CMeshRecords::CMeshRecords(BundleMap* pCCDBundle_)
    : pCCDBundle(pCCDBundle_)
{
}

CMeshRecords::~CMeshRecords()
{
    destroyEdges();
}

void CMeshRecords::destroyEdges()
{
    if (pEdgePool)
        pEdgePool->forEach([](CEdge* pCE) { pCE->~CEdge(); });
}

// The next extraction makes about as many triangles and edges: it finds their memory mapped already.
void CMeshRecords::clearRecords()
{
    destroyEdges();
    if (pEdgePool)
        pEdgePool->rewind();
    if (pTrianglePool)
        pTrianglePool->rewind();
    corners.clear();
    vCT.clear();
    numAliveT = 0;
    numEdges = 0;
    degrees.clear();
    extraction.clear();
}

std::vector<StorageBlock> CMeshRecords::releaseRecords()
{
    // Room first: nothing may fail once the edges are destroyed.
    std::vector<StorageBlock> vStorage;
    vStorage.reserve(2);
    destroyEdges();
    if (pTrianglePool)
        vStorage.push_back(pTrianglePool->releaseFirstBlock());
    if (pEdgePool)
        vStorage.push_back(pEdgePool->releaseFirstBlock());
    pTrianglePool.reset();
    pEdgePool.reset();
    return vStorage;
}

void CMeshRecords::initPools(std::size_t numCorners)
{
    if (pEdgePool && pTrianglePool)
        return;
    pEdgePool = std::make_unique<SimplePool<CEdge>>();
    pEdgePool->init(poolSize(numCorners, EDGES_PER_CORNER), -1);
    pTrianglePool = std::make_unique<SimplePool<CTriangle>>();
    pTrianglePool->init(poolSize(numCorners, TRIANGLES_PER_CORNER), -1);
}

void CMeshRecords::markExtracted(std::size_t numCubeT)
{
    ASSEX(numAliveT == vCT.size());
    extraction.mark(vCT.size(), numCubeT, getNumEdgeSlots());
}

// --- Corners -----------------------------------------------------------------------------------------------

void CMeshRecords::prepareCorners(const std::vector<u64>& vCCD)
{
    corners.prepare(vCCD);
    if (vCCD.empty())
        return;
    initPools(vCCD.size());
    vCT.reserve(static_cast<std::size_t>(poolSize(vCCD.size(), TRIANGLES_PER_CORNER)));
    std::size_t i = 0;
    pCCDBundle->forEach(
        [&](u64 ccd, Bundle* pBundle)
        {
            while (i < vCCD.size() && vCCD[i] < ccd)
                ++i;
            if (i < vCCD.size() && vCCD[i] == ccd)
                corners.getPrepared(i)->pBundle = pBundle;
        });
}

CVertex* CMeshRecords::getCorner(u64 ccd)
{
    CVertex* pVertex = findVertex(ccd);
    return pVertex != nullptr ? pVertex : makeCorner(ccd);
}

CVertex* CMeshRecords::makeCorner(u64 ccd)
{
    initPools(0);
    CVertex* pVertex = corners.make(ccd);
    pVertex->pBundle = pCCDBundle->find(ccd);
    return pVertex;
}

void CMeshRecords::getUsedCCDs(std::vector<u64>& vCCD) const
{
    corners.forEachAscending(
        [&vCCD](const CVertex* pVertex)
        {
            if (pVertex->pFirstT != nullptr)
                vCCD.push_back(pVertex->ccd);
        });
}

bool CMeshRecords::canCollapse(u64 src, u64 trg) const
{
    const CVertex* pSrc = findVertex(src);
    const CVertex* pTrg = findVertex(trg);
    if (pSrc == nullptr || pTrg == nullptr || pSrc->pFirstT == nullptr || pTrg->pFirstT == nullptr)
        return false;
    // A triangle that holds both corners stands at trg with its own two other corners, so it forbids the
    // collapse of every living edge.
    for (const CTriangle* pSrcT = pSrc->pFirstT; pSrcT != nullptr;
         pSrcT = pSrcT->aNextInc[pSrcT->indexOf(pSrc)])
    {
        const int ici = pSrcT->indexOf(pSrc);
        const u64 a = pSrcT->aVertex[CTriangle::getNext(ici)]->ccd;
        const u64 b = pSrcT->aVertex[CTriangle::getPrev(ici)]->ccd;
        for (const CTriangle* pTrgT = pTrg->pFirstT; pTrgT != nullptr;
             pTrgT = pTrgT->aNextInc[pTrgT->indexOf(pTrg)])
            if (pTrgT->hasCorner(a) && pTrgT->hasCorner(b))
                return false;
    }
    return true;
}

// --- Triangles ---------------------------------------------------------------------------------------------

CTriangle* CMeshRecords::createT(u64 v0, u64 v1, u64 v2, u64 generatingVCD, int cfg)
{
    ASSEX(v0 != v1 && v1 != v2 && v0 != v2);
    CVertex* pV0 = getCorner(v0);
    CVertex* pV1 = getCorner(v1);
    CVertex* pV2 = getCorner(v2);
    return createT(pV0, pV1, pV2, generatingVCD, cfg);
}

CTriangle* CMeshRecords::createT(CVertex* pV0, CVertex* pV1, CVertex* pV2, u64 generatingVCD, int cfg)
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

void CMeshRecords::registerTriangle(CTriangle* pCT)
{
    for (int i = 0; i < 3; ++i)
    {
        pCT->aEdge[i]->vCT.push_back(pCT);
        degrees.noteGrown(pCT->aEdge[i]);
        appendToCorner(pCT, i);
    }
}

void CMeshRecords::appendToCorner(CTriangle* pCT, int ici) noexcept
{
    CVertex* pVertex = pCT->aVertex[ici];
    CTriangle* pLast = pVertex->pLastT;
    if (pLast == nullptr)
        pVertex->pFirstT = pCT;
    else
        pLast->aNextInc[pLast->indexOf(pVertex)] = pCT;
    pVertex->pLastT = pCT;
}

void CMeshRecords::unregisterTriangle(CTriangle* pCT)
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

void CMeshRecords::getIncT(u64 ccd, std::vector<CTriangle*>& vT) const
{
    const CVertex* pVertex = findVertex(ccd);
    if (pVertex == nullptr)
        return;
    for (CTriangle* pCT = pVertex->pFirstT; pCT != nullptr; pCT = pCT->aNextInc[pCT->indexOf(pVertex)])
        vT.push_back(pCT);
}

void CMeshRecords::getAliveT(std::vector<CTriangle*>& vT) const
{
    vT.reserve(vT.size() + numAliveT);
    for (CTriangle* pCT : vCT)
        if (pCT->isAlive())
            vT.push_back(pCT);
}

void CMeshRecords::clearVisited()
{
    for (CTriangle* pCT : vCT)
        pCT->bVisited = false;
}

// --- Edges -------------------------------------------------------------------------------------------------

CEdge* CMeshRecords::getCE(u64 a, u64 b) const
{
    const CVertex* pLower = findVertex(std::min(a, b));
    return pLower != nullptr ? findUpward(pLower, std::max(a, b)) : nullptr;
}

CEdge* CMeshRecords::getCE(const CVertex* pA, const CVertex* pB) const noexcept
{
    return pA->ccd < pB->ccd ? findUpward(pA, pB->ccd) : findUpward(pB, pA->ccd);
}

CEdge* CMeshRecords::findUpward(const CVertex* pLower, u64 upper) noexcept
{
    CEdge* pCE = pLower->pFirstCE;
    while (pCE != nullptr && pCE->v1 != upper)
        pCE = pCE->pNextAtV0;
    return pCE;
}

CEdge* CMeshRecords::getOrMakeEdge(CVertex* pA, CVertex* pB)
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

bool CMeshRecords::hasEdge(u64 a, u64 b) const
{
    ASSEX_TEXT(a != b, "q.first<q.second");
    const CEdge* pCE = getCE(a, b);
    return pCE != nullptr && !pCE->isOrphan();
}

template <typename Filter>
void CMeshRecords::collectInMapOrder(std::vector<CEdge*>& vCE, Filter filter) const
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
    corners.forEachAscending(collectAt);
}

template <typename Filter>
std::vector<CEdge*> CMeshRecords::findEdges(Filter filter) const
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

void CMeshRecords::getDegN(int deg, std::vector<CEdge*>& vCE) const
{
    if (!isDegreeQuery(deg))
    {
        printText("deg=" + std::to_string(deg) + "\n");
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

void CMeshRecords::getAllCE(std::vector<CEdge*>& vCE) const
{
    vCE.reserve(vCE.size() + numEdges);
    collectInMapOrder(vCE, [](const CEdge*) { return true; });
}

void CMeshRecords::getIncCE(u64 ccd, std::vector<CEdge*>& vCE) const
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

} // namespace TARN_ZEF

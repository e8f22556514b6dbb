#include "extraction/ExtractionRenewal.h"

#include "cmesh/CMesh.h"
#include "parallel/parallelScan.h"

#include <algorithm>
#include <cstdint>

namespace TARN_ZEF
{
namespace
{
const std::size_t TRIANGLES_PER_CHUNK = 1 << 11; // with their edges, so that they stay in the cache

// The edges of a triangle in the order in which CMesh::createT() makes them.
const int CREATION_ICI[3] = {2, 0, 1};

// The first of the triangles [from, to), ascending by cube, whose cube is not below base. It is expected soon.
std::size_t findCube(const std::vector<CTriangle*>& vCT, std::size_t from, std::size_t to, u64 base)
{
    const auto isBelow = [base](const CTriangle* pCT, u64) { return pCT->getGeneratingVCD() < base; };
    std::size_t step = 1;
    std::size_t low = from;
    while (low + step < to && vCT[low + step]->getGeneratingVCD() < base)
    {
        low += step;
        step *= 2;
    }
    const auto itBegin = vCT.begin();
    const auto itLow = itBegin + static_cast<std::ptrdiff_t>(low);
    const auto itHigh = itBegin + static_cast<std::ptrdiff_t>(std::min(low + step, to));
    return static_cast<std::size_t>(std::lower_bound(itLow, itHigh, base, isBelow) - itBegin);
}
} // namespace

ExtractionRenewal::ExtractionRenewal(CMesh* pCMesh_, std::vector<u64> vBases_)
    : pCMesh(pCMesh_)
    , vBases(std::move(vBases_))
    , numOldCubeT(pCMesh_->extraction.getNumCubeT())
    , numOldT(pCMesh_->extraction.getNumT())
{
    ASSEX(pCMesh->extraction.isKnown());
    pCMesh->deletePatches();
    undoPasses();
    vCubeGaps = findGaps(0, numOldCubeT);
    vFlatGaps = findGaps(numOldCubeT, numOldT);
    takeOutTriangles(vCubeGaps);
    takeOutTriangles(vFlatGaps);
    takeOutOrphans();
}

// --- Back to the last extraction ---------------------------------------------------------------------------

void ExtractionRenewal::undoPasses()
{
    const std::size_t numEdgeSlots = pCMesh->extraction.getNumEdgeSlots();
    vRevivedT = pCMesh->extraction.forget(); // from here on kills are none of the passes
    std::vector<CTriangle*>& vCT = pCMesh->vCT;
    const std::vector<CTriangle*> vMadeSince(vCT.begin() + static_cast<std::ptrdiff_t>(numOldT), vCT.end());
    for (CTriangle* pCT : vMadeSince)
        if (pCT->isAlive())
            pCT->kill(pCMesh);
    vCT.resize(numOldT);
    for (CTriangle* pCT : vRevivedT)
    {
        pCT->bAlive = true;
        ++pCMesh->numAliveT;
        pCMesh->registerTriangle(pCT);
    }
    // Lists have lost their order where triangles came and went, those of edges also in stars that were sorted.
    sortLists(vRevivedT, ByCreationCT());
    std::vector<CEdge*> vHigh;
    pCMesh->getDegN(DEG_NON_MANIFOLD, vHigh);
    for (CEdge* pCE : vHigh)
        sortEdge(*pCE, ByCreationCT());
    pCMesh->forEachEdge(numEdgeSlots, pCMesh->getNumEdgeSlots(), [this](CEdge* pCE) { takeOut(pCE); });
}

// --- Out with the old --------------------------------------------------------------------------------------

std::vector<ExtractionRenewal::Gap> ExtractionRenewal::findGaps(std::size_t from, std::size_t to) const
{
    const std::vector<CTriangle*>& vCT = pCMesh->vCT;
    std::vector<Gap> vGaps;
    vGaps.reserve(vBases.size());
    for (const u64 base : vBases)
    {
        Gap gap{base, findCube(vCT, from, to, base), 0};
        for (gap.to = gap.from; gap.to < to && vCT[gap.to]->getGeneratingVCD() == base;)
            ++gap.to;
        from = gap.to;
        vGaps.push_back(gap);
    }
    return vGaps;
}

void ExtractionRenewal::takeOutTriangles(const std::vector<Gap>& vGaps)
{
    for (const Gap& gap : vGaps)
        for (std::size_t i = gap.from; i < gap.to; ++i)
        {
            pCMesh->vCT[i]->kill(pCMesh);
            vTakenOutT.push_back(pCMesh->vCT[i]);
        }
}

void ExtractionRenewal::takeOutOrphans()
{
    for (const CTriangle* pCT : vTakenOutT)
        for (CEdge* pCE : pCT->aEdge)
            if (pCE->isOrphan() && pCE->number != CEdge::TAKEN_OUT)
                takeOut(pCE);
}

// Nobody finds the edge any more; its slot stays empty.
void ExtractionRenewal::takeOut(CEdge* pCE) noexcept
{
    CEdge** ppCE = &pCMesh->findVertex(pCE->v0)->pFirstCE;
    while (*ppCE != pCE)
        ppCE = &(*ppCE)->pNextAtV0;
    *ppCE = pCE->pNextAtV0;
    pCE->number = CEdge::TAKEN_OUT;
}

// --- Into order --------------------------------------------------------------------------------------------

void ExtractionRenewal::finish(std::size_t numNewCubeT)
{
    std::vector<CTriangle*>& vCT = pCMesh->vCT;
    const std::size_t fromFlat = numOldT + numNewCubeT;
    std::vector<CTriangle*> vNewT(vCT.begin() + static_cast<std::ptrdiff_t>(numOldT), vCT.end());
    const ByPlace isBefore{numOldCubeT, numOldT, fromFlat};
    sortLists(vTakenOutT, isBefore);
    sortLists(vNewT, isBefore);

    std::vector<Run> vRuns;
    appendRuns(0, vCubeGaps, numOldCubeT, numOldT, fromFlat, vRuns);
    const std::size_t numCubeT = vRuns.back().getTargetEnd();
    appendRuns(numOldCubeT, vFlatGaps, numOldT, fromFlat, vCT.size(), vRuns);
    const std::size_t numT = vRuns.back().getTargetEnd();
    ASSEX(numT == vCT.size() - vTakenOutT.size());
    moveRuns(vRuns, vNewT);
    vCT.resize(numT);

    numberAll();
    pCMesh->degrees.dropSurplus();
    pCMesh->markExtracted(numCubeT);
    std::erase_if(vRevivedT, [](const CTriangle* pCT) { return !pCT->isAlive(); });
    pCMesh->extraction.setRenewed({std::move(vNewT), std::move(vTakenOutT), std::move(vRevivedT)});
}

// The triangles [from, to) without the gaps, and in each gap those of [fromNew, toNew) that are of its cube. They
// follow on what vRuns holds.
void ExtractionRenewal::appendRuns(std::size_t from, const std::vector<Gap>& vGaps, std::size_t to,
                                   std::size_t fromNew, std::size_t toNew, std::vector<Run>& vRuns) const
{
    const std::vector<CTriangle*>& vCT = pCMesh->vCT;
    const auto append = [&vRuns](std::size_t first, std::size_t end) {
        vRuns.push_back({first, end, vRuns.empty() ? 0 : vRuns.back().getTargetEnd()});
    };
    for (const Gap& gap : vGaps)
    {
        const std::size_t firstOfCube = fromNew;
        while (fromNew < toNew && vCT[fromNew]->getGeneratingVCD() == gap.base)
            ++fromNew;
        append(from, gap.from);
        append(firstOfCube, fromNew);
        from = gap.to;
    }
    append(from, to);
    ASSEX(fromNew == toNew); // they came in the order of the cubes
}

// Old runs keep their order, so one that moves up is in nobody's way once the ones above it have moved up, and
// one that moves down once the ones below it have moved down.
void ExtractionRenewal::moveRuns(const std::vector<Run>& vRuns, const std::vector<CTriangle*>& vNewT)
{
    const auto itBegin = pCMesh->vCT.begin();
    const auto at = [itBegin](std::size_t i) { return itBegin + static_cast<std::ptrdiff_t>(i); };
    const auto isOld = [this](const Run& run) { return run.from < numOldT; };
    for (auto it = vRuns.rbegin(); it != vRuns.rend(); ++it)
        if (isOld(*it) && it->target > it->from)
            std::move_backward(at(it->from), at(it->to), at(it->getTargetEnd()));
    for (const Run& run : vRuns)
        if (isOld(run) && run.target < run.from)
            std::move(at(run.from), at(run.to), at(run.target));
    for (const Run& run : vRuns)
        if (!isOld(run))
            std::copy(vNewT.begin() + static_cast<std::ptrdiff_t>(run.from - numOldT),
                      vNewT.begin() + static_cast<std::ptrdiff_t>(run.to - numOldT), at(run.target));
}

bool ExtractionRenewal::ByPlace::operator()(const CTriangle* pA, const CTriangle* pB) const noexcept
{
    const bool bFlatA = isFlat(*pA);
    const bool bFlatB = isFlat(*pB);
    if (bFlatA != bFlatB)
        return bFlatB;
    if (pA->getGeneratingVCD() != pB->getGeneratingVCD())
        return pA->getGeneratingVCD() < pB->getGeneratingVCD();
    return pA->getNumber() < pB->getNumber(); // of one cube all are old or all are new
}

// The lists that hold these triangles, or held them. A corner's list lost its order only if it ends with one of
// these.
template <typename Less>
void ExtractionRenewal::sortLists(const std::vector<CTriangle*>& vT, Less isLess)
{
    for (const CTriangle* pCT : vT)
        for (int i = 0; i < 3; ++i)
        {
            sortEdge(*pCT->aEdge[i], isLess);
            if (pCT->aVertex[i]->pLastT == pCT)
                sortCorner(pCT->aVertex[i], isLess);
        }
}

template <typename Less>
void ExtractionRenewal::sortEdge(CEdge& edge, Less isLess)
{
    if (edge.getDegree() > 1 && !std::is_sorted(edge.vCT.begin(), edge.vCT.end(), isLess))
        std::sort(edge.vCT.begin(), edge.vCT.end(), isLess);
}

template <typename Less>
void ExtractionRenewal::sortCorner(CVertex* pVertex, Less isLess)
{
    vAtCorner.clear();
    for (CTriangle* pCT = pVertex->pFirstT; pCT != nullptr; pCT = pCT->aNextInc[pCT->indexOf(pVertex)])
        vAtCorner.push_back(pCT);
    if (std::is_sorted(vAtCorner.begin(), vAtCorner.end(), isLess))
        return;
    std::sort(vAtCorner.begin(), vAtCorner.end(), isLess);
    CTriangle** ppNext = &pVertex->pFirstT;
    for (CTriangle* pCT : vAtCorner)
    {
        *ppNext = pCT;
        ppNext = &pCT->aNextInc[pCT->indexOf(pVertex)];
    }
    *ppNext = nullptr;
    pVertex->pLastT = vAtCorner.back();
}

// Gives all triangles and edges their numbers and makes them as good as new. An edge is made with the first of its
// triangles: so the triangles in order give the order of the edges.
void ExtractionRenewal::numberAll()
{
    const std::vector<CTriangle*>& vCT = pCMesh->vCT;
    const auto getEnd = [&vCT](std::size_t chunk)
    { return std::min((chunk + 1) * TRIANGLES_PER_CHUNK, vCT.size()); };
    // f(CEdge&) for each edge that is made with the triangle, in order.
    const auto forEachMade = [](const CTriangle* pCT, auto f)
    {
        for (const int ici : CREATION_ICI)
            if (pCT->aEdge[ici]->vCT[0] == pCT)
                f(*pCT->aEdge[ici]);
    };
    const auto numberTriangles = [&](std::size_t chunk)
    {
        std::size_t numMade = 0;
        for (std::size_t i = chunk * TRIANGLES_PER_CHUNK; i < getEnd(chunk); ++i)
        {
            CTriangle& ct = *vCT[i];
            if (ct.bTurned)
                ct.flipOrientation();
            ct.number = static_cast<unsigned int>(i);
            ct.pPatch = nullptr;
            ct.bVisited = false;
            forEachMade(&ct, [&numMade](const CEdge&) { ++numMade; });
        }
        return numMade;
    };
    const auto numberEdges = [&](std::size_t chunk, std::size_t first)
    {
        auto number = static_cast<unsigned int>(first);
        for (std::size_t i = chunk * TRIANGLES_PER_CHUNK; i < getEnd(chunk); ++i)
            forEachMade(vCT[i],
                        [&number](CEdge& edge)
                        {
                            edge.number = number++;
                            edge.edgeDir = ED_NONE;
                        });
    };
    const std::size_t numChunks = (vCT.size() + TRIANGLES_PER_CHUNK - 1) / TRIANGLES_PER_CHUNK;
    pCMesh->numEdges = static_cast<unsigned int>(parallelScan(numChunks, numberTriangles, numberEdges));
}

} // namespace TARN_ZEF

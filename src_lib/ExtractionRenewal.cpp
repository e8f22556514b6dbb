#include "ExtractionRenewal.h"

#include "CMesh.h"
#include "parallelFor.h"

#include <algorithm>
#include <cstdint>

namespace TARN_ZEF
{
namespace
{
const std::size_t MIN_TRIANGLES_PER_JOB = 1 << 14;
const std::size_t TRIANGLES_PER_CHUNK = 1 << 15; // of the count of edges

// The edges of a triangle in the order in which CMesh::createT() makes them.
const int CREATION_ICI[3] = {2, 0, 1};

void sortTriangles(CEdge& edge)
{
    if (edge.getDegree() > 1 && !std::is_sorted(edge.vCT.begin(), edge.vCT.end(), ByCreationCT()))
        std::sort(edge.vCT.begin(), edge.vCT.end(), ByCreationCT());
}

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
    , numOldCubeT(pCMesh_->extracted.numCubeT)
    , numOldT(pCMesh_->extracted.numT)
{
    ASSEX(pCMesh->isExtractionKnown());
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
    CMesh::Extracted extracted;
    std::swap(extracted, pCMesh->extracted); // from here on kills are none of the passes
    std::vector<CTriangle*>& vCT = pCMesh->vCT;
    const std::vector<CTriangle*> vMadeSince(vCT.begin() + static_cast<std::ptrdiff_t>(numOldT), vCT.end());
    for (CTriangle* pCT : vMadeSince)
        if (pCT->isAlive())
            pCT->kill(pCMesh);
    vCT.resize(numOldT);
    for (CTriangle* pCT : extracted.vKilled)
    {
        pCT->bAlive = true;
        ++pCMesh->numAliveT;
        pCMesh->registerTriangle(pCT);
    }
    vRevivedT = extracted.vKilled;
    // Lists have lost their order where triangles came and went, those of edges also in stars that were sorted.
    sortLists(extracted.vKilled);
    std::vector<CEdge*> vHigh;
    pCMesh->getDegN(-1, vHigh);
    for (CEdge* pCE : vHigh)
        sortTriangles(*pCE);
    pCMesh->forEachEdge(extracted.numEdgeSlots, pCMesh->getNumEdgeSlots(),
                        [this](CEdge* pCE) { takeOut(pCE); });
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
            if (pCE->getDegree() == 0 && pCE->number != CEdge::TAKEN_OUT)
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
    std::vector<CTriangle*> vMerged;
    vMerged.reserve(vCT.capacity());
    appendMerged(0, vCubeGaps, numOldCubeT, numOldT, fromFlat, vMerged);
    const std::size_t numCubeT = vMerged.size();
    appendMerged(numOldCubeT, vFlatGaps, numOldT, fromFlat, vCT.size(), vMerged);
    ASSEX(vMerged.size() == vCT.size() - vTakenOutT.size());
    vCT.swap(vMerged);

    numberTriangles();
    sortLists(vTakenOutT);
    sortLists(vNewT);
    numberEdges();
    pCMesh->markExtracted(numCubeT);
    std::erase_if(vRevivedT, [](const CTriangle* pCT) { return !pCT->isAlive(); });
    pCMesh->pRenewed = std::make_unique<CMesh::Renewed>(
        CMesh::Renewed{std::move(vNewT), std::move(vTakenOutT), std::move(vRevivedT)});
}

// The triangles [from, to) without the gaps, and in each gap those of [fromNew, toNew) that are of its cube.
void ExtractionRenewal::appendMerged(std::size_t from, const std::vector<Gap>& vGaps, std::size_t to,
                                     std::size_t fromNew, std::size_t toNew,
                                     std::vector<CTriangle*>& vMerged) const
{
    const std::vector<CTriangle*>& vCT = pCMesh->vCT;
    const auto at = [&vCT](std::size_t i) { return vCT.begin() + static_cast<std::ptrdiff_t>(i); };
    for (const Gap& gap : vGaps)
    {
        vMerged.insert(vMerged.end(), at(from), at(gap.from));
        for (; fromNew < toNew && vCT[fromNew]->getGeneratingVCD() == gap.base; ++fromNew)
            vMerged.push_back(vCT[fromNew]);
        from = gap.to;
    }
    vMerged.insert(vMerged.end(), at(from), at(to));
    ASSEX(fromNew == toNew); // they came in the order of the cubes
}

void ExtractionRenewal::numberTriangles()
{
    std::vector<CTriangle*>& vCT = pCMesh->vCT;
    parallelFor(vCT.size(), MIN_TRIANGLES_PER_JOB,
                [&vCT](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                    {
                        CTriangle& ct = *vCT[i];
                        if (ct.bTurned)
                            ct.flipOrientation();
                        ct.number = static_cast<unsigned int>(i);
                        ct.pPatch = nullptr;
                        ct.bVisited = false;
                    }
                });
}

// The lists that hold these triangles, or held them.
void ExtractionRenewal::sortLists(const std::vector<CTriangle*>& vT)
{
    for (const CTriangle* pCT : vT)
        for (int i = 0; i < 3; ++i)
        {
            sortTriangles(*pCT->aEdge[i]);
            sortCorner(pCT->aVertex[i]);
        }
}

void ExtractionRenewal::sortCorner(CVertex* pVertex)
{
    vAtCorner.clear();
    for (CTriangle* pCT = pVertex->pFirstT; pCT != nullptr; pCT = pCT->aNextInc[pCT->indexOf(pVertex)])
        vAtCorner.push_back(pCT);
    if (std::is_sorted(vAtCorner.begin(), vAtCorner.end(), ByCreationCT()))
        return;
    std::sort(vAtCorner.begin(), vAtCorner.end(), ByCreationCT());
    CTriangle** ppNext = &pVertex->pFirstT;
    for (CTriangle* pCT : vAtCorner)
    {
        *ppNext = pCT;
        ppNext = &pCT->aNextInc[pCT->indexOf(pVertex)];
    }
    *ppNext = nullptr;
    pVertex->pLastT = vAtCorner.back();
}

// An edge is made with the first of its triangles: so the triangles in order give the order of the edges.
void ExtractionRenewal::numberEdges()
{
    const std::vector<CTriangle*>& vCT = pCMesh->vCT;
    const std::size_t numChunks = (vCT.size() + TRIANGLES_PER_CHUNK - 1) / TRIANGLES_PER_CHUNK;
    // f(CEdge&) for each edge that is made with a triangle of the chunk, in order.
    const auto forEachMade = [&vCT](std::size_t chunk, auto f)
    {
        const std::size_t to = std::min((chunk + 1) * TRIANGLES_PER_CHUNK, vCT.size());
        for (std::size_t i = chunk * TRIANGLES_PER_CHUNK; i < to; ++i)
            for (const int ici : CREATION_ICI)
                if (vCT[i]->aEdge[ici]->vCT[0] == vCT[i])
                    f(*vCT[i]->aEdge[ici]);
    };
    std::vector<unsigned int> vFirstNumber(numChunks + 1, 0);
    parallelFor(numChunks, 1,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t chunk = from; chunk < to; ++chunk)
                        forEachMade(chunk, [&num = vFirstNumber[chunk + 1]](const CEdge&) { ++num; });
                });
    for (std::size_t chunk = 0; chunk < numChunks; ++chunk)
        vFirstNumber[chunk + 1] += vFirstNumber[chunk];
    parallelFor(numChunks, 1,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t chunk = from; chunk < to; ++chunk)
                        forEachMade(chunk,
                                    [number = vFirstNumber[chunk]](CEdge& edge) mutable
                                    {
                                        edge.number = number++;
                                        edge.edgeDir = ED_NONE;
                                    });
                });
    pCMesh->numEdges = vFirstNumber.back();
}

} // namespace TARN_ZEF

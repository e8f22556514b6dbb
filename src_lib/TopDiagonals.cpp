// The pass of Top that leaves each square lattice face one diagonal.
#include "Top.h"

#include "CMesh.h"
#include "collectInOrder.h"
#include "parallelFor.h"
#include "produceInOrder.h"
#include "sortMT2.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <functional>
#include <vector>

namespace TARN_ZEF
{
namespace
{
const std::size_t EDGES_PER_PART = 1 << 17;
const std::size_t MIN_DIAGONALS_PER_JOB = 1 << 14;

// One bit for each square of the lattice, by a hash of its name. A square that was inserted is found; one that
// was not may be found too.
class SquareFilter
{
public:
    explicit SquareFilter(std::size_t numSquares)
    {
        std::size_t numBits = 1024;
        while (numBits < 16 * numSquares)
            numBits *= 2;
        vBits.resize(numBits / 64);
    }
    // May be called by several threads at once.
    void insert(u64 square)
    {
        std::atomic_ref<u64>(vBits[getWord(square)])
            .fetch_or(u64{1} << (square & 63), std::memory_order_relaxed);
    }
    [[nodiscard]] bool mayContain(u64 square) const
    {
        return (vBits[getWord(square)] >> (square & 63) & 1) != 0;
    }

private:
    // The lowest bits choose in the word, so that squares nearby share a cache line.
    [[nodiscard]] std::size_t getWord(u64 square) const
    {
        return ((square >> 6) * 0x9E3779B97F4A7C15ull >> 24) & (vBits.size() - 1);
    }
    std::vector<u64> vBits;
};

// How an edge lies in the lattice.
struct Span
{
    explicit Span(const CEdge& edge)
    {
        u64 low = 0;
        for (int axis = 0; axis < 3; ++axis)
        {
            const u64 mask = getMask(axis);
            const u64 a = edge.v0 & mask;
            const u64 b = edge.v1 & mask;
            low |= std::min(a, b);
            if (a == b)
            {
                square = static_cast<u64>(axis) << 62;
                continue;
            }
            ++numAxes;
            // The bits of the other axes are clear, so a borrow runs through them.
            bUnit = bUnit && ((std::max(a, b) - std::min(a, b)) & mask) == (mask & 7);
        }
        bUpward = low == edge.v0;
        square ^= low;
    }
    [[nodiscard]] bool isDiagonal() const { return numAxes == 2; }

    int numAxes = 0;   // in which the ends differ
    bool bUnit = true; // by no more than one cell
    bool bUpward;      // v0 is the lowest corner of the square
    u64 square = 0;    // of a diagonal: names the square
};

struct Diagonal
{
    u64 square;
    CEdge* pCE;
};

// Those that the filter may contain, in their order.
std::vector<Diagonal> getMarked(const std::vector<Diagonal>& vDiagonals, const SquareFilter& filter)
{
    return collectInOrder<Diagonal>(vDiagonals.size(),
                                    [&](std::size_t from, std::size_t to, std::vector<Diagonal>& vPart)
                                    {
                                        for (std::size_t i = from; i < to; ++i)
                                            if (filter.mayContain(vDiagonals[i].square))
                                                vPart.push_back(vDiagonals[i]);
                                    });
}

SquareFilter makeFilter(const std::vector<Diagonal>& vDiagonals)
{
    SquareFilter filter(vDiagonals.size());
    parallelFor(vDiagonals.size(), MIN_DIAGONALS_PER_JOB,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                        filter.insert(vDiagonals[i].square);
                });
    return filter;
}

// An edge with what the order of the map goes by.
struct MapEntry
{
    explicit MapEntry(CEdge* pCE_)
        : v0(pCE_->v0)
        , v1(pCE_->v1)
        , pCE(pCE_)
    {
    }
    bool operator<(const MapEntry& other) const { return v0 != other.v0 ? v0 < other.v0 : v1 < other.v1; }

    u64 v0;
    u64 v1;
    CEdge* pCE;
};

// The diagonals of unit squares among some of the edges.
struct Diagonals
{
    std::vector<Diagonal> vUpward;
    std::vector<Diagonal> vAcross;
    bool bAllUnit = true; // no edge is longer than within a unit cube

    void collect(const CMesh& mesh, std::size_t from, std::size_t to)
    {
        mesh.forEachEdge(from, to,
                         [this](CEdge* pCE)
                         {
                             const Span span(*pCE);
                             bAllUnit = bAllUnit && span.bUnit;
                             if (span.isDiagonal())
                                 (span.bUpward ? vUpward : vAcross).push_back({span.square, pCE});
                         });
    }
    void append(const Diagonals& other)
    {
        vUpward.insert(vUpward.end(), other.vUpward.begin(), other.vUpward.end());
        vAcross.insert(vAcross.end(), other.vAcross.begin(), other.vAcross.end());
        bAllUnit = bAllUnit && other.bAllUnit;
    }
};

// The edges, in map order, that may have a crossing one: in a mesh whose edges all join cells of one cube,
// those are the diagonals of unit squares that have both. Where an edge is longer, all edges.
void collectCandidates(const CMesh& mesh, std::vector<CEdge*>& vCE)
{
    Diagonals diagonals;
    produceRangesInOrder<Diagonals>(
        mesh.getNumEdgeSlots(), EDGES_PER_PART,
        [&](Diagonals& part, std::size_t from, std::size_t to)
        {
            part = {};
            part.collect(mesh, from, to);
        },
        [&](const Diagonals& part) { diagonals.append(part); });
    if (!diagonals.bAllUnit)
    {
        mesh.getAllCE(vCE);
        return;
    }
    const std::vector<Diagonal> vUpward = getMarked(diagonals.vUpward, makeFilter(diagonals.vAcross));
    const std::vector<Diagonal> vAcross = getMarked(diagonals.vAcross, makeFilter(vUpward));
    std::vector<MapEntry> vEntries;
    vEntries.reserve(vUpward.size() + vAcross.size());
    for (const std::vector<Diagonal>* pvCrossing : {&vUpward, &vAcross})
        for (const Diagonal& diagonal : *pvCrossing)
            vEntries.emplace_back(diagonal.pCE);
    sortMT(vEntries.begin(), vEntries.end(), std::less<>());
    vCE.reserve(vEntries.size());
    for (const MapEntry& entry : vEntries)
        vCE.push_back(entry.pCE);
}
} // namespace

void Top::unifyDiagonals()
{
    const unsigned int numEdges = pCMesh->getNumEdges();
    std::vector<CEdge*> vCE;
    collectCandidates(*pCMesh, vCE);
    for (std::size_t i = 0; i < vCE.size(); ++i)
    {
        if (!unifyDiagonalAt(vCE[i]))
            continue;
        // A split may give any edge a crossing one. The edges that it made are none of this pass.
        std::vector<CEdge*> vAllCE;
        pCMesh->getAllCE(vAllCE);
        std::erase_if(vAllCE, [&](CEdge* pCE)
                      { return pCE->getNumber() >= numEdges || !(MapEntry(vCE[i]) < MapEntry(pCE)); });
        for (std::size_t k = 0; k < vAllCE.size(); ++k)
            unifyDiagonalAt(vAllCE[k]);
        break;
    }
}

// Returns whether a flat triangle was split.
bool Top::unifyDiagonalAt(CEdge* pCE)
{
    const int comp = pCalc->getUniqueSameComponent(pCE->v0, pCE->v1);
    CTriangle* pCT0 = nullptr;
    CTriangle* pCT1 = nullptr;
    if (comp < 0 || !pCE->getTwoTriangles(pCT0, pCT1, true))
        return false;
    const u64 ccd0 = pCT0->getThirdCCD(pCE->v0, pCE->v1);
    const u64 ccd1 = pCT1->getThirdCCD(pCE->v0, pCE->v1);
    if (ccd0 == ccd1 || pCalc->getUniqueSameComponent(ccd0, ccd1) != comp)
        return false;
    // Not in parallel planes.
    const u64 mask = getMask(comp);
    if ((pCE->v0 & mask) != (ccd0 & mask))
        return false;
    const CEdge* pOtherCE = pCMesh->getCE(ccd0, ccd1);
    if (pOtherCE == nullptr)
        return false;

    pCT0->kill(pCMesh);
    pCT1->kill(pCMesh);
    const u64 generatingVCD = pCT0->getGeneratingVCD();
    std::array<CTriangle*, 2> vNewT = {};
    if (!pOtherCE->hasTriangle(ccd0, ccd1, pCE->v0))
        vNewT[0] = pCMesh->createT(ccd0, ccd1, pCE->v0, generatingVCD, 0);
    if (!pOtherCE->hasTriangle(ccd1, ccd0, pCE->v1))
        vNewT[1] = pCMesh->createT(ccd1, ccd0, pCE->v1, generatingVCD, 0);
    const std::size_t numT = pCMesh->getAllT().size();
    for (CTriangle* pNewT : vNewT)
        if (pNewT != nullptr && pNewT->isAlive() && pNewT->isDegenerate(pCMesh))
            splitNewFlat(pNewT);
    return pCMesh->getAllT().size() != numT;
}

// Its corner 2 lies on the edge of the other two, or nearly so.
void Top::splitNewFlat(CTriangle* pNewT)
{
    CEdge* pCE = pNewT->getCEdge(2);
    ASSEX(pCE->getDegree() >= 2);
    std::vector<CTriangle*> vKids;
    if (pCE->trySplitNeigsKillT(pCMesh, pNewT, 2, vKids) || moveOneCorner(*pNewT, 2))
        return;
    errorMessage(ZEF_HERE, "trySplitNeigsKillT() and laplacianForOne() did not succeed");
    throw ZefBugException();
}

} // namespace TARN_ZEF

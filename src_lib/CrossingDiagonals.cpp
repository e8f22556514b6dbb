#include "CrossingDiagonals.h"

#include "collectInOrder.h"
#include "parallelFor.h"
#include "produceInOrder.h"
#include "sortMT2.h"

#include <algorithm>
#include <atomic>
#include <functional>
#include <utility>

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
                flatAxis = axis;
                continue;
            }
            ++numAxes;
            // The bits of the other axes are clear, so a borrow runs through them.
            bUnit = bUnit && ((std::max(a, b) - std::min(a, b)) & mask) == (mask & 7);
        }
        bUpward = low == edge.v0;
        square = static_cast<u64>(flatAxis) << 62 ^ low;
    }
    [[nodiscard]] bool isDiagonal() const { return numAxes == 2; }
    // The ends of the other diagonal of the square.
    [[nodiscard]] std::pair<u64, u64> getCrossing(const CEdge& edge) const
    {
        const u64 swapped = (edge.v0 ^ edge.v1) & getMask((flatAxis + 1) % 3);
        return {edge.v0 ^ swapped, edge.v1 ^ swapped};
    }

    int numAxes = 0;   // in which the ends differ
    bool bUnit = true; // by no more than one cell
    bool bUpward;      // v0 is the lowest corner of the square
    int flatAxis = 0;  // of a diagonal: the one in which the ends do not differ
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

std::vector<CEdge*> sortByMap(std::vector<MapEntry> vEntries)
{
    sortMT(vEntries.begin(), vEntries.end(), std::less<>());
    std::vector<CEdge*> vCE;
    vCE.reserve(vEntries.size());
    for (const MapEntry& entry : vEntries)
        if (vCE.empty() || vCE.back() != entry.pCE)
            vCE.push_back(entry.pCE);
    return vCE;
}
} // namespace

bool CrossingDiagonals::find(const CMesh& mesh)
{
    const CMesh::Renewed* pRenewed = mesh.getRenewed();
    const bool bKnown = pRenewed != nullptr && extraction > 0 && mesh.getNumExtractions() == extraction + 1;
    const bool bFound = (bKnown && update(mesh, *pRenewed)) || findAll(mesh);
    extraction = bFound ? mesh.getNumExtractions() : 0;
    return bFound;
}

bool CrossingDiagonals::findAll(const CMesh& mesh)
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
        return false;
    const std::vector<Diagonal> vUpward = getMarked(diagonals.vUpward, makeFilter(diagonals.vAcross));
    const std::vector<Diagonal> vAcross = getMarked(diagonals.vAcross, makeFilter(vUpward));
    std::vector<MapEntry> vEntries;
    vEntries.reserve(vUpward.size() + vAcross.size());
    for (const std::vector<Diagonal>* pvCrossing : {&vUpward, &vAcross})
        for (const Diagonal& diagonal : *pvCrossing)
            vEntries.emplace_back(diagonal.pCE);
    vCE = sortByMap(std::move(vEntries));
    return true;
}

// Passes only take edges away from what an extraction made, and a renewed one gives these back. So a new pair
// has an edge of a triangle that was made anew.
bool CrossingDiagonals::update(const CMesh& mesh, const CMesh::Renewed& renewed)
{
    std::vector<MapEntry> vEntries;
    for (CEdge* pCE : vCE)
        if (pCE->isInMesh())
            vEntries.emplace_back(pCE);
    for (const CTriangle* pCT : renewed.vMadeT)
        for (int i = 0; i < 3; ++i)
        {
            CEdge* pCE = pCT->getCEdge(i);
            const Span span(*pCE);
            if (!span.bUnit)
                return false;
            if (!span.isDiagonal())
                continue;
            const auto [a, b] = span.getCrossing(*pCE);
            if (CEdge* pOtherCE = mesh.getCE(a, b))
                vEntries.insert(vEntries.end(), {MapEntry(pCE), MapEntry(pOtherCE)});
        }
    vCE = sortByMap(std::move(vEntries));
    return true;
}

} // namespace TARN_ZEF

#include "CrossingDiagonals.h"

#include "collectInOrder.h"
#include "parallelFor.h"
#include "produceInOrder.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace TARN_ZEF
{
namespace
{
const std::size_t EDGES_PER_PART = 1 << 17;
const std::size_t MIN_DIAGONALS_PER_JOB = 1 << 14;
const std::size_t DIAGONALS_PER_PART = 1 << 12; // that are looked at with their triangles

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

// Appends the edge, and the one that crosses it, if it has a crossed square.
void appendIfCrossed(const CMesh& mesh, CEdge* pCE, std::vector<CEdge*>& vCE)
{
    if (CEdge* pOtherCE = findCrossedSquare(mesh, *pCE).pOtherCE)
        vCE.insert(vCE.end(), {pCE, pOtherCE});
}

void appendCrossed(const CMesh& mesh, const std::vector<Diagonal>& vDiagonals, std::vector<CEdge*>& vCE)
{
    const std::vector<CEdge*> vCrossed = collectInOrder<CEdge*>(
        vDiagonals.size(),
        [&](std::size_t from, std::size_t to, std::vector<CEdge*>& vPart)
        {
            for (std::size_t i = from; i < to; ++i)
                appendIfCrossed(mesh, vDiagonals[i].pCE, vPart);
        },
        DIAGONALS_PER_PART);
    vCE.insert(vCE.end(), vCrossed.begin(), vCrossed.end());
}

void sortByMap(std::vector<CEdge*>& vCE)
{
    std::sort(vCE.begin(), vCE.end(), ByMapOrderCE());
    vCE.erase(std::unique(vCE.begin(), vCE.end()), vCE.end());
}
} // namespace

CrossedSquare findCrossedSquare(const CMesh& mesh, const CEdge& edge)
{
    CrossedSquare square;
    const Calc& calc = *mesh.getCalc();
    const int comp = calc.getUniqueSameComponent(edge.v0, edge.v1);
    if (comp < 0 || !edge.getTwoTriangles(square.pCT0, square.pCT1, true))
        return square;
    square.ccd0 = square.pCT0->getThirdCCD(edge.v0, edge.v1);
    const u64 mask = getMask(comp);
    if ((edge.v0 & mask) != (square.ccd0 & mask))
        return square; // most edges, without a look at the other triangle
    square.ccd1 = square.pCT1->getThirdCCD(edge.v0, edge.v1);
    if (square.ccd0 != square.ccd1 && calc.getUniqueSameComponent(square.ccd0, square.ccd1) == comp)
        square.pOtherCE = mesh.getCE(square.ccd0, square.ccd1);
    return square;
}

bool CrossingDiagonals::find(const CMesh& mesh)
{
    const CMesh::Renewed* pRenewed = mesh.getRenewed();
    const bool bKnown = pRenewed != nullptr && extraction > 0 && mesh.getNumExtractions() == extraction + 1;
    const bool bFound = (bKnown && mesh.isAsExtracted() && update(mesh, *pRenewed)) || findAll(mesh);
    extraction = bFound && mesh.isAsExtracted() ? mesh.getNumExtractions() : 0;
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
    vCE.clear();
    appendCrossed(mesh, vUpward, vCE);
    appendCrossed(mesh, vAcross, vCE);
    sortByMap(vCE);
    return true;
}

// Whether a square is crossed depends on the triangles at the one diagonal and on whether the other one exists.
// So what was not crossed after the extraction before has now a diagonal on which a triangle has come or gone.
bool CrossingDiagonals::update(const CMesh& mesh, const CMesh::Renewed& renewed)
{
    std::vector<CEdge*> vSuspects;
    for (CEdge* pCE : vCE)
        if (pCE->isInMesh())
            vSuspects.push_back(pCE);
    for (const std::vector<CTriangle*>* pvT : {&renewed.vMadeT, &renewed.vTakenOutT})
        for (const CTriangle* pCT : *pvT)
            for (int i = 0; i < 3; ++i)
            {
                CEdge* pCE = pCT->getCEdge(i);
                if (!pCE->isInMesh())
                    continue;
                const Span span(*pCE);
                if (!span.bUnit)
                    return false;
                if (span.isDiagonal())
                    vSuspects.push_back(pCE);
            }
    vCE.clear();
    for (CEdge* pCE : vSuspects)
    {
        appendIfCrossed(mesh, pCE, vCE);
        const auto [a, b] = Span(*pCE).getCrossing(*pCE);
        if (CEdge* pOtherCE = mesh.getCE(a, b))
            appendIfCrossed(mesh, pOtherCE, vCE);
    }
    sortByMap(vCE);
    return true;
}

} // namespace TARN_ZEF

#include "repair/CrossingDiagonals.h"

#include "parallel/parallelFor.h"

#include <algorithm>
#include <atomic>
#include <utility>

namespace TARN_ZEF
{
namespace
{
const std::size_t EDGES_PER_PART = 1 << 16;

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
};

// f(k) for each part, on the workers of the pool.
template <typename F>
void forEachPart(const std::vector<Diagonals>& vParts, F f)
{
    parallelFor(vParts.size(), 1,
                [&f](std::size_t from, std::size_t to)
                {
                    for (std::size_t k = from; k < to; ++k)
                        f(k);
                });
}

using List = std::vector<Diagonal> Diagonals::*;

// The squares of one of the two lists in all parts.
SquareFilter makeFilter(const std::vector<Diagonals>& vParts, List pList)
{
    std::size_t num = 0;
    for (const Diagonals& part : vParts)
        num += (part.*pList).size();
    SquareFilter filter(num);
    forEachPart(vParts,
                [&](std::size_t k)
                {
                    for (const Diagonal& diagonal : vParts[k].*pList)
                        filter.insert(diagonal.square);
                });
    return filter;
}

// Drops those of a list that the filter does not contain.
void keepMarked(std::vector<Diagonals>& vParts, List pList, const SquareFilter& filter)
{
    forEachPart(vParts,
                [&](std::size_t k)
                {
                    std::erase_if(vParts[k].*pList, [&filter](const Diagonal& diagonal)
                                  { return !filter.mayContain(diagonal.square); });
                });
}

// Appends the edge, and the one that crosses it, if it has a crossed square.
void appendIfCrossed(const CMesh& mesh, CEdge* pCE, std::vector<CEdge*>& vCE)
{
    if (CEdge* pOtherCE = findCrossedSquare(mesh, *pCE).pOtherCE)
        vCE.insert(vCE.end(), {pCE, pOtherCE});
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
    const std::size_t numSlots = mesh.getNumEdgeSlots();
    std::vector<Diagonals> vParts((numSlots + EDGES_PER_PART - 1) / EDGES_PER_PART);
    forEachPart(vParts,
                [&](std::size_t k)
                {
                    const std::size_t from = k * EDGES_PER_PART;
                    vParts[k].collect(mesh, from, std::min(from + EDGES_PER_PART, numSlots));
                });
    if (!std::all_of(vParts.begin(), vParts.end(), [](const Diagonals& part) { return part.bAllUnit; }))
        return false;
    keepMarked(vParts, &Diagonals::vUpward, makeFilter(vParts, &Diagonals::vAcross));
    keepMarked(vParts, &Diagonals::vAcross, makeFilter(vParts, &Diagonals::vUpward));
    std::vector<std::vector<CEdge*>> vvCrossed(vParts.size());
    forEachPart(vParts,
                [&](std::size_t k)
                {
                    for (const List pList : {&Diagonals::vUpward, &Diagonals::vAcross})
                        for (const Diagonal& diagonal : vParts[k].*pList)
                            appendIfCrossed(mesh, diagonal.pCE, vvCrossed[k]);
                });
    vCE.clear();
    for (const std::vector<CEdge*>& vCrossed : vvCrossed)
        vCE.insert(vCE.end(), vCrossed.begin(), vCrossed.end());
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

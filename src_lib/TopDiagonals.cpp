// The pass of Top that leaves each square lattice face one diagonal.
#include "Top.h"

#include "CMesh.h"

#include <algorithm>
#include <array>

namespace TARN_ZEF
{
namespace
{
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
    void insert(u64 square) { vBits[getWord(square)] |= u64{1} << (square & 63); }
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

void appendIfMarked(const std::vector<Diagonal>& vDiagonals, const SquareFilter& filter,
                    std::vector<Diagonal>& vResult)
{
    for (const Diagonal& diagonal : vDiagonals)
        if (filter.mayContain(diagonal.square))
            vResult.push_back(diagonal);
}

SquareFilter makeFilter(const std::vector<Diagonal>& vDiagonals)
{
    SquareFilter filter(vDiagonals.size());
    for (const Diagonal& diagonal : vDiagonals)
        filter.insert(diagonal.square);
    return filter;
}

bool isLessInMap(const CEdge* pA, const CEdge* pB)
{
    return pA->v0 != pB->v0 ? pA->v0 < pB->v0 : pA->v1 < pB->v1;
}

// The edges, in map order, that may have a crossing one: in a mesh whose edges all join cells of one cube,
// those are the diagonals of unit squares that have both. Where an edge is longer, all edges.
void collectCandidates(const CMesh& mesh, std::vector<CEdge*>& vCE)
{
    std::vector<Diagonal> vUpward;
    std::vector<Diagonal> vAcross;
    bool bAllUnit = true;
    mesh.forEachEdge(
        [&](CEdge* pCE)
        {
            const Span span(*pCE);
            bAllUnit = bAllUnit && span.bUnit;
            if (span.isDiagonal())
                (span.bUpward ? vUpward : vAcross).push_back({span.square, pCE});
        });
    if (!bAllUnit)
    {
        mesh.getAllCE(vCE);
        return;
    }
    std::vector<Diagonal> vCrossing;
    appendIfMarked(vUpward, makeFilter(vAcross), vCrossing);
    appendIfMarked(vAcross, makeFilter(vCrossing), vCrossing);
    for (const Diagonal& diagonal : vCrossing)
        vCE.push_back(diagonal.pCE);
    std::sort(vCE.begin(), vCE.end(), isLessInMap);
}
} // namespace

void Top::unifyDiagonals()
{
    unsigned int numEdges = 0;
    pCMesh->forEachEdge([&numEdges](const CEdge*) { ++numEdges; });
    std::vector<CEdge*> vCE;
    collectCandidates(*pCMesh, vCE);
    for (std::size_t i = 0; i < vCE.size(); ++i)
    {
        if (!unifyDiagonalAt(vCE[i]))
            continue;
        // A split may give any edge a crossing one. The edges that it made are none of this pass.
        std::vector<CEdge*> vAllCE;
        pCMesh->getAllCE(vAllCE);
        std::erase_if(vAllCE, [&](const CEdge* pCE)
                      { return pCE->getNumber() >= numEdges || !isLessInMap(vCE[i], pCE); });
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

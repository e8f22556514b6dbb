#ifndef ZEF_DEGREEINDEX_H
#define ZEF_DEGREEINDEX_H

#include <array>
#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
class CEdge;

// How many edges of a mesh have which degree and, once told, which ones are irregular: of degree 1 or above 2.
// A surface has few of these, so nobody need walk over all edges for them.
//
// Ownership:  refers to the edges of one mesh, which must stay where they are, orphans too, until clear().
// Invariant:  after setIrregular() and until clear(), every irregular edge is in vIrregular. Edges that are
//             regular again may be there too, and any of them several times.
// Threads:    none; const calls may run in parallel.
class DegreeIndex
{
public:
    static constexpr int NUM_DEGREES = 7; // that are counted one by one, from 0

    // To be called for an edge whose degree has grown or fallen by one.
    void noteGrown(CEdge* pCE);
    void noteFallen(CEdge* pCE);
    // No edges any more.
    void clear();

    // Whether there are edges of a degree as CMesh::getDegN() takes it; for degrees from NUM_DEGREES on:
    // whether there may be some.
    [[nodiscard]] bool has(int deg) const;

    // All irregular edges, in any order.
    void setIrregular(std::vector<CEdge*> vCE);
    [[nodiscard]] bool isIrregularKnown() const noexcept { return bIrregularKnown; }
    // Those of a degree as CMesh::getDegN() takes it but of a regular one, in map order. They must be known.
    [[nodiscard]] std::vector<CEdge*> getIrregular(int deg) const;
    // Forgets edges that are regular again; worth while after many changes.
    void dropSurplus();

private:
    static constexpr std::size_t MIN_LIMIT = 1 << 16;

    void addIrregular(CEdge* pCE);

    // Orphans are not counted, and all from NUM_DEGREES on are counted together.
    std::array<std::size_t, NUM_DEGREES + 1> aNumOfDegree = {};
    bool bIrregularKnown = false;
    std::vector<CEdge*> vIrregular;
    std::size_t limit = MIN_LIMIT; // size from which on vIrregular is worth cleaning
};

} // namespace TARN_ZEF

#endif

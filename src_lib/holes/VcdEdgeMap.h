#ifndef ZEF_VCDEDGEMAP_H
#define ZEF_VCDEDGEMAP_H

#include "core/definitions.h"

#include <vector>

namespace TARN_ZEF
{
class CEdge;

// Corner to edges: for each end of each edge one entry (the mmVCD2CE of chains and loops). It is both the
// input and the work list of chain building: an edge that was taken leaves it at both ends.
//
// Corners come in ascending order, the edges of one corner in order of insertion. The corners stand in one
// sorted table; the entries of a corner hang on it as a list.
//
// Ownership:  none; the edges belong to their mesh.
// Invariant:  no corner before firstKey has entries. An entry is never null.
// Threads:    none.
// Cost:       assign() sorts; every other call is a binary search and a walk over the few entries of a
//             corner. addEdge() shifts the table if an end is new.
class VcdEdgeMap
{
public:
    VcdEdgeMap() = default;
    explicit VcdEdgeMap(const std::vector<CEdge*>& vCE) { assign(vCE); }

    // Takes the edges, in this order, in place of all earlier content.
    void assign(const std::vector<CEdge*>& vCE);
    void addEdge(CEdge* pCE); // at both ends, behind what stands there

    [[nodiscard]] bool empty() const noexcept { return numEntries == 0; }
    [[nodiscard]] std::size_t size() const noexcept { return numEntries; } // entries, two for a whole edge
    [[nodiscard]] std::size_t count(u64 vcd) const;
    [[nodiscard]] u64 getFirstVCD() const;                  // the lowest corner with entries; empty is fatal
    [[nodiscard]] CEdge* getFirstEdge() const;              // its first edge
    [[nodiscard]] CEdge* findFirst(u64 vcd) const;          // the first edge at the corner, null if none
    void getEdges(u64 vcd, std::vector<CEdge*>& vCE) const; // appends those at the corner, in order
    void getAllEdges(std::vector<CEdge*>& vCE) const;       // appends one edge for each entry, in order
    void
    getJunctions(std::vector<u64>& vVCD) const; // appends the corners with more than two entries, ascending

    void eraseEdge(const CEdge* pCE); // wherever it still stands
    void eraseVCD(u64 vcd);           // all entries of the corner; the edges stay at their other ends

private:
    static constexpr unsigned int NONE = 0xffffffffu;

    struct Key
    {
        u64 vcd;
        unsigned int first = NONE; // index in vEntries
        unsigned int last = NONE;
        unsigned int num = 0;
    };
    struct Entry
    {
        CEdge* pCE;
        unsigned int next;
    };

    [[nodiscard]] std::size_t findKey(u64 vcd) const; // index in vKeys, or its size
    std::size_t getOrMakeKey(u64 vcd);
    void append(Key& key, CEdge* pCE);
    void eraseAt(u64 vcd, const CEdge* pCE);
    void skipEmptyKeys() noexcept;

    std::vector<Key> vKeys; // ascending; a corner that lost its entries stays
    std::vector<Entry> vEntries;
    std::size_t numEntries = 0; // not yet erased
    std::size_t firstKey = 0;   // the lowest key with entries, or the size of vKeys
};

} // namespace TARN_ZEF

#endif

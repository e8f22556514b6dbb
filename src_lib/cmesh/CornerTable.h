#ifndef ZEF_CORNERTABLE_H
#define ZEF_CORNERTABLE_H

#include "cmesh/CVertex.h"
#include "core/definitions.h"
#include "tarn_tools/SimplePool.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace TARN_ZEF
{
// The corner records of a mesh, to be found by their codes.
//
// Ownership:  owns the records, which never move until clear(). What a record refers to is not its business.
// Invariant:  one record a code; every record stands in the table.
// Order:      of creation, which mostly is that of the codes too; forEachAscending() is always that of the codes.
// Threads:    none; const calls may run in parallel.
// Cost:       find() is one cache line in most cases; making one is the same and a counter step.
class CornerTable
{
public:
    // Makes the records of the given codes, strictly ascending, in one block. There must be none yet.
    void prepare(const std::vector<u64>& vCCD);
    // Record i of prepare().
    [[nodiscard]] CVertex* getPrepared(std::size_t i) const noexcept { return pPrepared + i; }
    // Makes the record of a code that has none.
    CVertex* make(u64 ccd);
    void clear();

    [[nodiscard]] std::size_t size() const noexcept { return numVertices; }
    [[nodiscard]] CVertex* find(u64 ccd) const noexcept // null if absent
    {
        if (vTable.empty())
            return nullptr;
        for (std::size_t slot = hashSlot(ccd);; slot = (slot + 1) & (vTable.size() - 1))
        {
            CVertex* pVertex = vTable[slot];
            if (pVertex == nullptr || pVertex->ccd == ccd)
                return pVertex;
        }
    }

    // f(CVertex*) for each record, in the order of creation or of the codes.
    template <typename F>
    void forEach(F&& f) const;
    template <typename F>
    void forEachAscending(F&& f) const;

private:
    // Sixteen codes in a row share their part of the table, so that a walk along the lattice finds most of its
    // neighbours in a cache line that is there already.
    [[nodiscard]] std::size_t hashSlot(u64 ccd) const noexcept
    {
        const u64 block = (ccd >> 4) * 0x9E3779B97F4A7C15ull;
        return (((block >> 28) << 4) | (ccd & 15)) & (vTable.size() - 1);
    }
    void initPool(std::size_t numCorners);
    CVertex* append(u64 ccd);
    void enter(CVertex* pVertex);
    void grow(std::size_t numCorners);
    [[nodiscard]] std::vector<CVertex*> getSorted() const; // by code

    std::unique_ptr<SimplePool<CVertex>> pPool; // null while there are no records
    std::vector<CVertex*> vTable;               // open addressing on the code; size a power of two
    CVertex* pPrepared = nullptr;
    std::size_t numVertices = 0;
    u64 lastAscendingCCD = 0;     // code of the last of these:
    std::size_t numAscending = 0; // the first records, made in ascending order of code
};

template <typename F>
void CornerTable::forEach(F&& f) const
{
    if (pPool)
        pPool->forEach(f);
}

template <typename F>
void CornerTable::forEachAscending(F&& f) const
{
    if (numAscending == numVertices)
    {
        forEach(f);
        return;
    }
    for (CVertex* pVertex : getSorted())
        f(pVertex);
}

} // namespace TARN_ZEF

#endif

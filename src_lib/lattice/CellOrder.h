#ifndef ZEF_CELLORDER_H
#define ZEF_CELLORDER_H

#include "core/definitions.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// Elements in the order of the cells that they are in, those of one cell by their number: a sorted list of
// (code, element) pairs, as a rule in eight bytes a pair.
//
// Invariant:  of the codes, only the bits that differ among them are kept; dropping the others leaves their
//             order. These bits and the element share a word. Where they do not fit in, pairs serve.
// Threads:    the sort uses the pool; reading is free.
// Cost:       a radix sort of the kept bits, in place of the codes and a second array of their size.
class CellOrder
{
public:
    // Code by element, CCD or RCD; at most 2^32 - 1 elements. The vector is used up.
    explicit CellOrder(std::vector<u64> vCodes);

    [[nodiscard]] std::size_t size() const noexcept { return vPairs.empty() ? vWords.size() : vPairs.size(); }
    [[nodiscard]] std::uint32_t getElement(std::size_t i) const noexcept
    {
        return vPairs.empty() ? static_cast<std::uint32_t>(vWords[i] & elementMask) : vPairs[i].second;
    }
    [[nodiscard]] u64 getCode(std::size_t i) const noexcept
    {
        return vPairs.empty() ? expand(vWords[i] >> numElementBits) : vPairs[i].first;
    }
    [[nodiscard]] bool isSameCode(std::size_t i, std::size_t k) const noexcept
    {
        if (vPairs.empty())
            return vWords[i] >> numElementBits == vWords[k] >> numElementBits;
        return vPairs[i].first == vPairs[k].first;
    }

    // The place of the first element of each cell, and size() behind the last.
    [[nodiscard]] std::vector<std::uint32_t> getFirsts() const;

private:
    // A stretch of bits that differ: where it stands in a code, and among the kept bits.
    struct BitRun
    {
        u64 mask; // at the low end
        int from;
        int to;
    };

    void findBitRuns(u64 differing);
    void pack(std::vector<u64> vCodes);
    void makePairs(const std::vector<u64>& vCodes);
    [[nodiscard]] u64 squeeze(u64 code) const noexcept;
    [[nodiscard]] u64 expand(u64 bits) const noexcept;

    std::vector<BitRun> vRuns; // from the low end up
    int numKeptBits = 0;
    int numElementBits = 0;
    u64 elementMask = 0;
    u64 sharedBits = 0;      // of every code; the differing ones are clear
    std::vector<u64> vWords; // kept bits of the code, then the element; empty if vPairs serves
    std::vector<std::pair<u64, std::uint32_t>> vPairs;
};

} // namespace TARN_ZEF

#endif

#ifndef ZEF_CELLSET_H
#define ZEF_CELLSET_H

#include "core/definitions.h"
#include "core/largeVectors.h"

#include <algorithm>
#include <bit>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// A growing set of cell codes, CCD or RCD, which answers only membership: it has no order to walk in.
//
// Invariant:  at most half of the slots are taken, so a probe ends after a few steps. All ones marks a free
//             slot; that code is kept in a flag of its own.
// Threads:    none.
// Cost:       insert() and contains() are one multiplication and mostly one cache line: the low three bits
//             of a code stay the low bits of its slot, so cells next to each other share a line.
// Source:     open addressing with linear probing, D. E. Knuth, The Art of Computer Programming, vol. 3,
//             section 6.4; multiplicative hashing of the code without its low bits.
class CellSet
{
public:
    // Room for numExpected codes without growing.
    explicit CellSet(std::size_t numExpected = 0) { rebuild(slotsFor(numExpected)); }

    [[nodiscard]] std::size_t size() const noexcept { return numCodes + std::size_t{bHasAllOnes}; }
    [[nodiscard]] bool empty() const noexcept { return size() == 0; }

    [[nodiscard]] bool contains(u64 code) const noexcept
    {
        if (code == FREE) [[unlikely]]
            return bHasAllOnes;
        return vSlots[findSlot(code)] == code;
    }

    // Whether code is new.
    bool insert(u64 code)
    {
        if (code == FREE) [[unlikely]]
            return !std::exchange(bHasAllOnes, true);
        const std::size_t slot = findSlot(code);
        if (vSlots[slot] == code)
            return false;
        vSlots[slot] = code;
        if (++numCodes * 2 > vSlots.size()) [[unlikely]]
            rebuild(vSlots.size() * 2);
        return true;
    }

private:
    static constexpr u64 FREE = ~u64{0};

    [[nodiscard]] static std::size_t slotsFor(std::size_t numExpected)
    {
        return std::bit_ceil(std::max<std::size_t>(16, numExpected * 2));
    }

    // The slot that holds code, or the free one where it belongs.
    [[nodiscard]] std::size_t findSlot(u64 code) const noexcept
    {
        const std::size_t mask = vSlots.size() - 1;
        const u64 group = ((code >> 3) * 0x9E3779B97F4A7C15) >> shift;
        std::size_t slot = static_cast<std::size_t>(group << 3 | (code & 7));
        while (vSlots[slot] != code && vSlots[slot] != FREE)
            slot = (slot + 1) & mask;
        return slot;
    }

    void rebuild(std::size_t numSlots)
    {
        std::vector<u64> vOld;
        growTo(vOld, numSlots, FREE);
        vOld.swap(vSlots);
        shift = 64 - (std::countr_zero(numSlots) - 3);
        CancelStride cancel;
        for (const u64 code : vOld)
        {
            cancel.step();
            if (code != FREE)
                vSlots[findSlot(code)] = code;
        }
    }

    std::vector<u64> vSlots;  // a power of two, at least 16
    int shift = 0;            // leaves as many hash bits as there are groups of eight slots
    std::size_t numCodes = 0; // without the code of all ones
    bool bHasAllOnes = false;
};

} // namespace TARN_ZEF

#endif

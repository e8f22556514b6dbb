#ifndef ZEF_CELLINDEX_H
#define ZEF_CELLINDEX_H

#include "lattice/cellCodes.h"

#include <bit>
#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// A fixed set of cells, with the position (rank) of each in ascending order.
//
// Cells are kept as bits in blocks of 8x8x8. The low nine bits of a code are the cell's place in its block
// and the rest names the block, so a test is one hash lookup of a block and one bit. Surfaces fill a block
// with some fifty cells: the whole index is about two bytes a cell, and a walk over neighbours stays in the
// cache.
//
// Threads:    immutable after construction.
// Cost:       contains() and rank() are a hash lookup, mostly in the cache, and a few population counts.
class CellIndex
{
public:
    static constexpr std::uint32_t ABSENT = 0xFFFFFFFF;
    static constexpr int BLOCK_BITS = 9; // bits of a code that name a cell within its block
    static constexpr u64 LOCAL_MASK = (u64{1} << BLOCK_BITS) - 1;

    struct Block
    {
        u64 code;                 // of its cells, without their low nine bits (shifted away)
        u64 aBits[8];             // bit i of word w: the cell with local code 64 w + i
        std::uint32_t firstRank;  // of its lowest cell
        std::uint16_t aBefore[8]; // cells of the block in the words before this one
    };

    // Strictly ascending codes; at most 2^32 - 2. The vector is not kept.
    explicit CellIndex(const std::vector<u64>& vCCD);

    [[nodiscard]] std::size_t size() const noexcept { return numCells; }
    [[nodiscard]] bool contains(u64 ccd) const noexcept
    {
        const Block* pBlock = findBlock(ccd >> BLOCK_BITS);
        return pBlock != nullptr && isSet(*pBlock, ccd & LOCAL_MASK);
    }
    // Position among all cells, or ABSENT.
    [[nodiscard]] std::uint32_t rank(u64 ccd) const noexcept
    {
        const Block* pBlock = findBlock(ccd >> BLOCK_BITS);
        if (pBlock == nullptr || !isSet(*pBlock, ccd & LOCAL_MASK))
            return ABSENT;
        return rankIn(*pBlock, ccd & LOCAL_MASK);
    }

    // In ascending order of code.
    [[nodiscard]] const std::vector<Block>& getBlocks() const noexcept { return vBlocks; }
    // Null if no cell lies in it.
    [[nodiscard]] const Block* findBlock(u64 code) const noexcept
    {
        if (vBlocks.empty())
            return nullptr;
        std::size_t slot = hashOf(code);
        while (vSlots[slot] != ABSENT)
        {
            const Block& block = vBlocks[vSlots[slot]];
            if (block.code == code)
                return &block;
            slot = (slot + 1) & (vSlots.size() - 1);
        }
        return nullptr;
    }

    [[nodiscard]] static bool isSet(const Block& block, u64 local) noexcept
    {
        return (block.aBits[local >> 6] >> (local & 63) & 1) != 0;
    }
    // Of a cell that is set.
    [[nodiscard]] static std::uint32_t rankIn(const Block& block, u64 local) noexcept
    {
        const u64 below = block.aBits[local >> 6] & ((u64{1} << (local & 63)) - 1);
        return block.firstRank + block.aBefore[local >> 6] + static_cast<std::uint32_t>(std::popcount(below));
    }

private:
    [[nodiscard]] std::size_t hashOf(u64 code) const noexcept
    {
        return (code * 0x9E3779B97F4A7C15ull >> 20) & (vSlots.size() - 1);
    }
    void fillBlocks(const std::vector<u64>& vCCD);
    void fillSlots();

    std::vector<Block> vBlocks;
    std::vector<std::uint32_t> vSlots; // open addressing, index into vBlocks; size a power of two
    std::size_t numCells;
};

} // namespace TARN_ZEF

#endif

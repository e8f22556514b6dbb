#include "lattice/CellIndex.h"

namespace TARN_ZEF
{
CellIndex::CellIndex(const std::vector<u64>& vCCD)
    : numCells(vCCD.size())
{
    ASSEX(vCCD.size() < ABSENT);
    fillBlocks(vCCD);
    fillSlots();
}

void CellIndex::fillBlocks(const std::vector<u64>& vCCD)
{
    for (std::size_t i = 0; i < vCCD.size(); ++i)
    {
        ASSEX(i == 0 || vCCD[i - 1] < vCCD[i]);
        const u64 code = vCCD[i] >> BLOCK_BITS;
        if (vBlocks.empty() || vBlocks.back().code != code)
            vBlocks.push_back({code, {}, static_cast<std::uint32_t>(i), {}});
        const u64 local = vCCD[i] & LOCAL_MASK;
        vBlocks.back().aBits[local >> 6] |= u64{1} << (local & 63);
    }
    for (Block& block : vBlocks)
        for (int w = 1; w < 8; ++w)
            block.aBefore[w] =
                static_cast<std::uint16_t>(block.aBefore[w - 1] + std::popcount(block.aBits[w - 1]));
}

void CellIndex::fillSlots()
{
    std::size_t numSlots = 16;
    while (numSlots < 2 * vBlocks.size())
        numSlots *= 2;
    vSlots.assign(numSlots, ABSENT);
    for (std::size_t i = 0; i < vBlocks.size(); ++i)
    {
        std::size_t slot = hashOf(vBlocks[i].code);
        while (vSlots[slot] != ABSENT)
            slot = (slot + 1) & (numSlots - 1);
        vSlots[slot] = static_cast<std::uint32_t>(i);
    }
}

} // namespace TARN_ZEF

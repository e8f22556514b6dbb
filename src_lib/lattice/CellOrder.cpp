#include "lattice/CellOrder.h"

#include <bit>

#include "parallel/parallelFor.h"
#include "parallel/sortMT2.h"

namespace TARN_ZEF
{
namespace
{
constexpr std::size_t MIN_CHUNK = 20000;

u64 findDifferingBits(const std::vector<u64>& vCodes)
{
    u64 bits = 0;
    for (const u64 code : vCodes)
        bits |= code ^ vCodes.front();
    return bits;
}
} // namespace

CellOrder::CellOrder(std::vector<u64> vCodes)
{
    ASSEX(vCodes.size() < 0xFFFFFFFF);
    if (vCodes.empty())
        return;
    const u64 differing = findDifferingBits(vCodes);
    sharedBits = vCodes.front() & ~differing;
    findBitRuns(differing);
    numElementBits = std::bit_width(vCodes.size());
    elementMask = (u64{1} << numElementBits) - 1;
    if (numKeptBits + numElementBits <= 64)
        pack(std::move(vCodes));
    else
        makePairs(vCodes);
}

void CellOrder::findBitRuns(u64 differing)
{
    while (differing != 0)
    {
        const int from = std::countr_zero(differing);
        const int num = std::countr_one(differing >> from);
        const u64 mask = num == 64 ? ~u64{0} : (u64{1} << num) - 1;
        vRuns.push_back({mask, from, numKeptBits});
        numKeptBits += num;
        differing &= ~(mask << from);
    }
}

u64 CellOrder::squeeze(u64 code) const noexcept
{
    u64 bits = 0;
    for (const BitRun& run : vRuns)
        bits |= (code >> run.from & run.mask) << run.to;
    return bits;
}

u64 CellOrder::expand(u64 bits) const noexcept
{
    u64 code = sharedBits;
    for (const BitRun& run : vRuns)
        code |= (bits >> run.to & run.mask) << run.from;
    return code;
}

void CellOrder::pack(std::vector<u64> vCodes)
{
    vWords = std::move(vCodes);
    parallelFor(vWords.size(), MIN_CHUNK,
                [this](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                        vWords[i] = squeeze(vWords[i]) << numElementBits | i;
                });
    // The elements stand in order already, so the radix sort can leave their bits alone.
    const auto getKey = [shift = numElementBits](u64 word) { return word >> shift; };
    if (!RadixSort2(vWords.data(), vWords.size(), getKey).run())
        sortMT(vWords.begin(), vWords.end());
}

void CellOrder::makePairs(const std::vector<u64>& vCodes)
{
    vPairs.reserve(vCodes.size());
    for (std::size_t i = 0; i < vCodes.size(); ++i)
        vPairs.emplace_back(vCodes[i], static_cast<std::uint32_t>(i));
    sortByFirstMT(vPairs.begin(), vPairs.end());
}

std::vector<std::uint32_t> CellOrder::getFirsts() const
{
    const std::size_t num = size();
    std::size_t numCells = 0;
    for (std::size_t i = 0; i < num; ++i)
        numCells += i == 0 || !isSameCode(i - 1, i) ? 1 : 0;
    std::vector<std::uint32_t> vFirsts;
    vFirsts.reserve(numCells + 1);
    for (std::size_t i = 0; i < num; ++i)
        if (i == 0 || !isSameCode(i - 1, i))
            vFirsts.push_back(static_cast<std::uint32_t>(i));
    vFirsts.push_back(static_cast<std::uint32_t>(num));
    return vFirsts;
}

} // namespace TARN_ZEF

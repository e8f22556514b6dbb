#include "files/PointNumbering.h"

#include "core/definitions.h"

namespace TARN_ZEF
{
namespace
{
constexpr int FIRST_SLOT_BITS = 8;
} // namespace

PointNumbering::PointNumbering()
    : vSlots(std::size_t{1} << FIRST_SLOT_BITS, 0)
    , numSlotBits(FIRST_SLOT_BITS)
{
}

unsigned int PointNumbering::getNumber(const Point3* pPoint)
{
    std::size_t slot = findSlot(pPoint);
    if (vSlots[slot] != 0)
        return vSlots[slot] - 1;
    if (2 * (vPoints.size() + 1) > vSlots.size())
    {
        grow();
        slot = findSlot(pPoint);
    }
    vPoints.push_back(pPoint);
    vSlots[slot] = static_cast<unsigned int>(vPoints.size());
    return vSlots[slot] - 1;
}

// The slot of a point, or the empty one where it belongs. Multiplicative hashing: the high bits of the
// product depend on all bits of the address. Source: D. E. Knuth, The Art of Computer Programming, 6.4.
std::size_t PointNumbering::findSlot(const Point3* pPoint) const noexcept
{
    const u64 hash = reinterpret_cast<std::uintptr_t>(pPoint) * u64{0x9E3779B97F4A7C15};
    std::size_t slot = static_cast<std::size_t>(hash >> (64 - numSlotBits));
    while (vSlots[slot] != 0 && vPoints[vSlots[slot] - 1] != pPoint)
        slot = (slot + 1) & (vSlots.size() - 1);
    return slot;
}

void PointNumbering::grow()
{
    ++numSlotBits;
    std::vector<unsigned int>(std::size_t{1} << numSlotBits, 0).swap(vSlots);
    for (std::size_t i = 0; i < vPoints.size(); ++i)
        vSlots[findSlot(vPoints[i])] = static_cast<unsigned int>(i + 1);
}

} // namespace TARN_ZEF

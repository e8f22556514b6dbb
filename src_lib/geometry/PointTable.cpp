#include "geometry/PointTable.h"

#include "core/definitions.h"
#include "core/largeVectors.h"

#include <bit>

namespace TARN_ZEF
{
namespace
{
// -0.0 and 0.0 are equal and must meet in one slot; adding 0.0 makes both 0.0.
u64 bitsOf(double coordinate)
{
    return std::bit_cast<u64>(coordinate + 0.0);
}
} // namespace

std::size_t PointTable::hashSlot(const Point3& coordinates) const noexcept
{
    u64 h = bitsOf(coordinates.x()) * 0x9E3779B97F4A7C15ull;
    h = (h ^ h >> 32 ^ bitsOf(coordinates.y())) * 0xC2B2AE3D27D4EB4Full;
    h = (h ^ h >> 32 ^ bitsOf(coordinates.z())) * 0x165667B19E3779F9ull;
    return (h ^ h >> 32) & (vSlots.size() - 1);
}

void PointTable::reserve(std::size_t numPoints)
{
    std::size_t numSlots = 16;
    while (numSlots * 6 < numPoints * 10)
        numSlots *= 2;
    if (numSlots > vSlots.size())
        rebuild(numSlots);
}

void PointTable::rebuild(std::size_t numSlots)
{
    PointTable larger;
    growTo<Point3*>(larger.vSlots, numSlots, nullptr);
    CancelStride cancel;
    for (Point3* pPoint : vSlots)
    {
        cancel.step();
        if (pPoint == nullptr)
            continue;
        std::size_t slot = larger.hashSlot(*pPoint);
        while (larger.vSlots[slot] != nullptr)
            slot = (slot + 1) & (numSlots - 1);
        larger.vSlots[slot] = pPoint;
    }
    vSlots.swap(larger.vSlots);
}

Point3* PointTable::find(const Point3& coordinates) const noexcept
{
    if (vSlots.empty())
        return nullptr;
    for (std::size_t slot = hashSlot(coordinates);; slot = (slot + 1) & (vSlots.size() - 1))
        if (vSlots[slot] == nullptr || *vSlots[slot] == coordinates)
            return vSlots[slot];
}

bool PointTable::insert(Point3* pPoint)
{
    reserve(numEntries + 1);
    std::size_t slot = hashSlot(*pPoint);
    for (; vSlots[slot] != nullptr; slot = (slot + 1) & (vSlots.size() - 1))
        if (*vSlots[slot] == *pPoint)
            return false;
    vSlots[slot] = pPoint;
    ++numEntries;
    return true;
}

bool PointTable::erase(const Point3* pPoint)
{
    if (vSlots.empty())
        return false;
    for (std::size_t slot = hashSlot(*pPoint); vSlots[slot] != nullptr;
         slot = (slot + 1) & (vSlots.size() - 1))
    {
        if (vSlots[slot] != pPoint)
            continue;
        closeGap(slot);
        --numEntries;
        return true;
    }
    return false;
}

// Moves later entries of the run back, so that no probe ends too early at the freed slot.
// Source: D. E. Knuth, The Art of Computer Programming, vol. 3, section 6.4, algorithm R.
void PointTable::closeGap(std::size_t slot) noexcept
{
    const std::size_t mask = vSlots.size() - 1;
    std::size_t gap = slot;
    for (std::size_t i = (slot + 1) & mask; vSlots[i] != nullptr; i = (i + 1) & mask)
    {
        const std::size_t home = hashSlot(*vSlots[i]);
        if (((i - home) & mask) < ((i - gap) & mask))
            continue;
        vSlots[gap] = vSlots[i];
        gap = i;
    }
    vSlots[gap] = nullptr;
}

} // namespace TARN_ZEF

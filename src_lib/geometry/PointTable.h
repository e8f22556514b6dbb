#ifndef ZEF_POINTTABLE_H
#define ZEF_POINTTABLE_H

#include "Point3.h"

#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
// Vertices found by their coordinates, exactly; -0.0 counts as 0.0.
//
// Ownership:  none; the points must stay where they are, and a point's coordinates may change only between
//             its erase() and its insert().
// Invariant:  no two entries have equal coordinates.
// Cost:       constant; open addressing, at most 60 percent full.
class PointTable
{
public:
    void reserve(std::size_t numPoints);
    [[nodiscard]] Point3* find(const Point3& coordinates) const noexcept; // null if absent
    bool insert(Point3* pPoint);      // false, and nothing changed, if the coordinates are taken
    bool erase(const Point3* pPoint); // false if this very point is not entered
    [[nodiscard]] std::size_t size() const noexcept { return numEntries; }

private:
    [[nodiscard]] std::size_t hashSlot(const Point3& coordinates) const noexcept;
    void rebuild(std::size_t numSlots);
    void closeGap(std::size_t slot) noexcept;

    std::vector<Point3*> vSlots; // size a power of two, or empty
    std::size_t numEntries = 0;
};

} // namespace TARN_ZEF

#endif

#ifndef ZEF_POINTGRID_H
#define ZEF_POINTGRID_H

#include "Point3.h"

#include <array>
#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// Finds the points within a fixed distance.
//
// Ownership:  refers to the points, which must stay as they are.
// Threads:    queries may run at the same time.
// Cost:       a sort to build; a query looks at the points of 27 cells, as wide as the distance.
class PointGrid
{
public:
    struct Hit
    {
        std::uint32_t index;
        double squaredDistance;
    };

    PointGrid(const std::vector<Point3>& vPoints_, double reach_);

    // The points within reach, the centre's own included, nearest first, ties by place, then by index.
    void find(const Point3& mid, std::vector<Hit>& vHits) const;

private:
    struct Entry
    {
        std::uint64_t cell;
        std::uint32_t index;
    };

    [[nodiscard]] std::array<std::int64_t, 3> getCell(const Point3& p) const;
    [[nodiscard]] static std::uint64_t codeOf(std::int64_t x, std::int64_t y, std::int64_t z);

    const std::vector<Point3>& vPoints;
    double reach;
    Point3 low;
    std::vector<Entry> vEntries; // ascending by cell, then by index
};

} // namespace TARN_ZEF

#endif

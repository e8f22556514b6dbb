#ifndef ZEF_POINTGRID_H
#define ZEF_POINTGRID_H

#include "Point3.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// Finds the points within a fixed distance of a place that is no farther from their box than that.
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
    // Calls f(hit) for each of them, in an order that depends on where the points lie alone; ties by index.
    template <typename F>
    void visit(const Point3& mid, F f) const;

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

template <typename F>
void PointGrid::visit(const Point3& mid, F f) const
{
    const auto cell = getCell(mid);
    for (std::int64_t dz = -1; dz <= 1; ++dz)
        for (std::int64_t dy = -1; dy <= 1; ++dy)
        {
            const std::uint64_t first = codeOf(cell[0] - 1, cell[1] + dy, cell[2] + dz);
            auto it = std::lower_bound(vEntries.begin(), vEntries.end(), first,
                                       [](const Entry& e, std::uint64_t code) { return e.cell < code; });
            for (; it != vEntries.end() && it->cell <= first + 2; ++it)
            {
                const double squared = (vPoints[it->index] - mid).sqLength();
                if (squared <= reach * reach)
                    f(Hit{it->index, squared});
            }
        }
}

} // namespace TARN_ZEF

#endif

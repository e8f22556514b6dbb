#ifndef ZEF_POINTTREE_H
#define ZEF_POINTTREE_H

#include "Point3.h"

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

namespace TARN_ZEF
{
// Finds the nearest of many points.
//
// The points of a stretch are parted at the middle one along the axis on which they reach farthest, and so on down to
// a few: the tree is the order of the points and the axis of each middle one, without a pointer.
//
// Ownership:  copies the points, so that those next to each other stand together in memory.
// Invariant:  no two entries are equal points; the answer is that of a search through all points, whatever the tree looks like.
// Threads:    queries from any thread.
// Cost:       n log n to build, 40 bytes a point; a query looks at some ten stretches.
class PointTree
{
public:
    static constexpr std::int64_t NONE = -1;

    // Points that are not finite are left out. Squares of distances must be numbers.
    explicit PointTree(const std::vector<Point3>& vPoints);

    // The index of the nearest point, of several the lowest; NONE without points. p is finite.
    [[nodiscard]] std::int64_t findNearest(const Point3& p) const;

private:
    static constexpr std::size_t MOST_IN_LEAF = 8;

    struct Entry
    {
        Point3 point;
        std::uint32_t index;
        std::uint32_t axis; // of a middle one
    };
    struct Nearest
    {
        double sqDistance = std::numeric_limits<double>::infinity();
        std::int64_t index = NONE;
    };

    void dropDoubles();
    void part(std::size_t from, std::size_t to);
    [[nodiscard]] std::uint32_t findLongestAxis(std::size_t from, std::size_t to) const;
    void search(std::size_t from, std::size_t to, const Point3& p, Nearest& nearest) const;
    static void look(const Entry& entry, const Point3& p, Nearest& nearest);

    std::vector<Entry> vEntries; // of equal points the first alone
};

} // namespace TARN_ZEF

#endif

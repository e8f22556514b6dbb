#include "comparison/PointTree.h"

#include "core/cancel.h"
#include "geometry/isFinite.h"
#include "parallel/sortMT2.h"

#include <algorithm>
#include <array>

namespace TARN_ZEF
{
namespace
{
[[nodiscard]] double coordinate(const Point3& p, std::uint32_t axis) noexcept
{
    if (axis == 0)
        return p.x();
    return axis == 1 ? p.y() : p.z();
}
} // namespace

PointTree::PointTree(const std::vector<Point3>& vPoints)
{
    vEntries.reserve(vPoints.size());
    for (std::size_t i = 0; i < vPoints.size(); ++i)
    {
        checkCancelledAt(i);
        if (isFinite(vPoints[i]))
            vEntries.push_back({vPoints[i], static_cast<std::uint32_t>(i), 0});
    }
    dropDoubles();
    part(0, vEntries.size());
}

// A query looks at all points that are as near, so there must not be many in one place.
void PointTree::dropDoubles()
{
    sortMT(vEntries.begin(), vEntries.end(),
           [](const Entry& a, const Entry& b)
           { return a.point < b.point || (a.point == b.point && a.index < b.index); });
    checkCancelled();
    const auto end = std::unique(vEntries.begin(), vEntries.end(),
                                 [](const Entry& a, const Entry& b) { return a.point == b.point; });
    vEntries.erase(end, vEntries.end());
}

void PointTree::part(std::size_t from, std::size_t to)
{
    if (to - from <= MOST_IN_LEAF)
        return;
    checkCancelled();
    const std::uint32_t axis = findLongestAxis(from, to);
    const std::size_t middle = from + (to - from) / 2;
    const auto at = [this](std::size_t i) { return vEntries.begin() + static_cast<std::ptrdiff_t>(i); };
    std::nth_element(at(from), at(middle), at(to),
                     [axis](const Entry& a, const Entry& b)
                     { return coordinate(a.point, axis) < coordinate(b.point, axis); });
    vEntries[middle].axis = axis;
    part(from, middle);
    part(middle + 1, to);
}

std::uint32_t PointTree::findLongestAxis(std::size_t from, std::size_t to) const
{
    std::uint32_t longest = 0;
    double longestExtent = -1.0;
    for (std::uint32_t axis = 0; axis < 3; ++axis)
    {
        double low = coordinate(vEntries[from].point, axis);
        double high = low;
        for (std::size_t i = from; i < to; ++i)
        {
            low = std::min(low, coordinate(vEntries[i].point, axis));
            high = std::max(high, coordinate(vEntries[i].point, axis));
        }
        if (high - low > longestExtent)
        {
            longestExtent = high - low;
            longest = axis;
        }
    }
    return longest;
}

std::int64_t PointTree::findNearest(const Point3& p) const
{
    Nearest nearest;
    search(0, vEntries.size(), p, nearest);
    return nearest.index;
}

void PointTree::search(std::size_t from, std::size_t to, const Point3& p, Nearest& nearest) const
{
    if (to - from <= MOST_IN_LEAF)
    {
        for (std::size_t i = from; i < to; ++i)
            look(vEntries[i], p, nearest);
        return;
    }
    const std::size_t middle = from + (to - from) / 2;
    const Entry& parting = vEntries[middle];
    const double side = coordinate(p, parting.axis) - coordinate(parting.point, parting.axis);
    const bool bLow = side < 0.0;
    search(bLow ? from : middle + 1, bLow ? middle : to, p, nearest);
    look(parting, p, nearest);
    // Rounding never makes a distance shorter than its part along an axis, so none that is as near is missed.
    if (side * side <= nearest.sqDistance)
        search(bLow ? middle + 1 : from, bLow ? to : middle, p, nearest);
}

void PointTree::look(const Entry& entry, const Point3& p, Nearest& nearest)
{
    const double sqDistance = (entry.point - p).sqLength();
    const bool bFirst = sqDistance == nearest.sqDistance && std::int64_t{entry.index} < nearest.index;
    if (sqDistance < nearest.sqDistance || bFirst)
        nearest = {sqDistance, entry.index};
}

} // namespace TARN_ZEF

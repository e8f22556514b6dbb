#include "choice/PointGrid.h"

#include <algorithm>
#include <cmath>
#include <tuple>

#include "parallel/parallelFor.h"
#include "parallel/sortMT2.h"

namespace TARN_ZEF
{
namespace
{
constexpr int AXIS_BITS = 21;
constexpr std::size_t MIN_CHUNK = 20000;
} // namespace

PointGrid::PointGrid(const std::vector<Point3>& vPoints_, double reach_)
    : vPoints(vPoints_)
    , reach(reach_)
    , vEntries(vPoints_.size())
{
    if (vPoints.empty())
        return;
    low = vPoints.front();
    for (const Point3& p : vPoints)
        low.set(std::min(low.x(), p.x()), std::min(low.y(), p.y()), std::min(low.z(), p.z()));
    parallelFor(vPoints.size(), MIN_CHUNK,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                    {
                        const auto cell = getCell(vPoints[i]);
                        vEntries[i] = {codeOf(cell[0], cell[1], cell[2]), static_cast<std::uint32_t>(i)};
                    }
                });
    sortMT(vEntries.begin(), vEntries.end(),
           [](const Entry& a, const Entry& b)
           { return a.cell != b.cell ? a.cell < b.cell : a.index < b.index; });
}

// Two are added, so that the cells around those below the lowest have codes too.
std::array<std::int64_t, 3> PointGrid::getCell(const Point3& p) const
{
    return {static_cast<std::int64_t>(std::floor((p.x() - low.x()) / reach)) + 2,
            static_cast<std::int64_t>(std::floor((p.y() - low.y()) / reach)) + 2,
            static_cast<std::int64_t>(std::floor((p.z() - low.z()) / reach)) + 2};
}

std::uint64_t PointGrid::codeOf(std::int64_t x, std::int64_t y, std::int64_t z)
{
    return static_cast<std::uint64_t>(z) << (2 * AXIS_BITS) | static_cast<std::uint64_t>(y) << AXIS_BITS |
           static_cast<std::uint64_t>(x);
}

void PointGrid::find(const Point3& mid, std::vector<Hit>& vHits) const
{
    vHits.clear();
    visit(mid, [&vHits](const Hit& hit) { vHits.push_back(hit); });
    // By place where distances are equal: the first few must not depend on the order of the cloud.
    const auto rank = [this](const Hit& hit)
    {
        const Point3& p = vPoints[hit.index];
        return std::tuple(hit.squaredDistance, p.x(), p.y(), p.z(), hit.index);
    };
    std::sort(vHits.begin(), vHits.end(), [&](const Hit& a, const Hit& b) { return rank(a) < rank(b); });
}

} // namespace TARN_ZEF

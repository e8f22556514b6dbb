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

// One is added, so that the cells below the lowest have codes too.
std::array<std::int64_t, 3> PointGrid::getCell(const Point3& p) const
{
    return {static_cast<std::int64_t>(std::floor((p.x() - low.x()) / reach)) + 1,
            static_cast<std::int64_t>(std::floor((p.y() - low.y()) / reach)) + 1,
            static_cast<std::int64_t>(std::floor((p.z() - low.z()) / reach)) + 1};
}

std::uint64_t PointGrid::codeOf(std::int64_t x, std::int64_t y, std::int64_t z)
{
    return static_cast<std::uint64_t>(z) << (2 * AXIS_BITS) | static_cast<std::uint64_t>(y) << AXIS_BITS |
           static_cast<std::uint64_t>(x);
}

void PointGrid::find(const Point3& mid, std::vector<Hit>& vHits) const
{
    vHits.clear();
    const auto cell = getCell(mid);
    for (std::int64_t dz = -1; dz <= 1; ++dz)
        for (std::int64_t dy = -1; dy <= 1; ++dy)
        {
            const std::uint64_t first = codeOf(cell[0] - 1, cell[1] + dy, cell[2] + dz);
            auto it = std::lower_bound(vEntries.begin(), vEntries.end(), first,
                                       [](const Entry& e, std::uint64_t code) { return e.cell < code; });
            for (; it != vEntries.end() && it->cell <= first + 2; ++it)
            {
                const Point3& p = vPoints[it->index];
                const double x = p.x() - mid.x();
                const double y = p.y() - mid.y();
                const double z = p.z() - mid.z();
                const double squared = x * x + y * y + z * z;
                if (squared <= reach * reach)
                    vHits.push_back({it->index, squared});
            }
        }
    // By place where distances are equal: the first few must not depend on the order of the cloud.
    const auto rank = [this](const Hit& hit)
    {
        const Point3& p = vPoints[hit.index];
        return std::tuple(hit.squaredDistance, p.x(), p.y(), p.z(), hit.index);
    };
    std::sort(vHits.begin(), vHits.end(), [&](const Hit& a, const Hit& b) { return rank(a) < rank(b); });
}

} // namespace TARN_ZEF

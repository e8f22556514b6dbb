#include "comparison/TriangleTree.h"

#include "core/cancel.h"
#include "core/spreadBits.h"
#include "parallel/parallelFor.h"
#include "parallel/sortMT2.h"
#include "remesh/triangles.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <utility>

namespace TARN_ZEF
{
namespace
{
constexpr double CURVE_CELLS = 2097151.0; // 2^21 - 1 along each axis

[[nodiscard]] double sqGapOf(double x, double low, double high) noexcept
{
    const double gap = std::max({low - x, x - high, 0.0});
    return gap * gap;
}

[[nodiscard]] double sqDistance(const Box& box, const Point3& p) noexcept
{
    return sqGapOf(p.x(), box.xmin, box.xmax) + sqGapOf(p.y(), box.ymin, box.ymax) +
           sqGapOf(p.z(), box.zmin, box.zmax);
}

[[nodiscard]] Box boxOf(const std::array<Point3, 3>& triangle) noexcept
{
    Box box;
    for (const Point3& p : triangle)
        box.include({p.x(), p.y(), p.z(), p.x(), p.y(), p.z()});
    return box;
}

// One box around each WIDTH in a row.
template <std::size_t WIDTH>
[[nodiscard]] std::vector<Box> enclose(const std::vector<Box>& vBelow)
{
    std::vector<Box> vBoxes;
    vBoxes.reserve((vBelow.size() + WIDTH - 1) / WIDTH);
    for (std::size_t i = 0; i < vBelow.size(); ++i)
    {
        if (i % WIDTH == 0)
            vBoxes.push_back(vBelow[i]);
        else
            vBoxes.back().include(vBelow[i]);
    }
    return vBoxes;
}
} // namespace

TriangleTree::TriangleTree(const std::vector<Point3>& vPoints, const std::vector<int>& vCorners)
{
    const auto corner = [&](std::size_t i) { return vPoints[static_cast<std::size_t>(vCorners[i])]; };
    vTriangles.reserve(vCorners.size() / 3);
    for (std::size_t i = 0; i < vCorners.size(); i += 3)
    {
        checkCancelledAt(i);
        vTriangles.push_back({corner(i), corner(i + 1), corner(i + 2)});
    }
    sortAlongCurve();
    buildLevels();
}

void TriangleTree::sortAlongCurve()
{
    const std::vector<std::uint64_t> vCodes = getCurveCodes();
    std::vector<std::pair<std::uint64_t, std::uint32_t>> vOrder(vCodes.size());
    for (std::size_t i = 0; i < vOrder.size(); ++i)
        vOrder[i] = {vCodes[i], static_cast<std::uint32_t>(i)};
    sortMT(vOrder.begin(), vOrder.end(), std::less<>());
    checkCancelled();
    std::vector<Triangle> vSorted;
    vSorted.reserve(vTriangles.size());
    for (const auto& [code, i] : vOrder)
        vSorted.push_back(vTriangles[i]);
    vTriangles.swap(vSorted);
}

std::vector<std::uint64_t> TriangleTree::getCurveCodes() const
{
    Box all = boxOf(vTriangles.front());
    for (const Triangle& triangle : vTriangles)
        all.include(boxOf(triangle));
    const double extent = std::max({all.xmax - all.xmin, all.ymax - all.ymin, all.zmax - all.zmin});
    const double toCells = extent > 0.0 ? CURVE_CELLS / extent : 0.0;
    std::vector<std::uint64_t> vCodes(vTriangles.size());
    parallelFor(vCodes.size(), 10000,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                    {
                        const Box box = boxOf(vTriangles[i]);
                        const auto cellOf = [toCells](double low, double high, double origin)
                        { return static_cast<u64>((low + (high - low) * 0.5 - origin) * toCells); };
                        vCodes[i] = spreadBits3(cellOf(box.xmin, box.xmax, all.xmin)) |
                                    spreadBits3(cellOf(box.ymin, box.ymax, all.ymin)) << 1 |
                                    spreadBits3(cellOf(box.zmin, box.zmax, all.zmin)) << 2;
                    }
                });
    return vCodes;
}

void TriangleTree::buildLevels()
{
    std::vector<Box> vBoxes;
    vBoxes.reserve(vTriangles.size());
    for (const Triangle& triangle : vTriangles)
        vBoxes.push_back(boxOf(triangle));
    checkCancelled();
    vLevels.push_back(enclose<WIDTH>(vBoxes));
    while (vLevels.back().size() > 1)
        vLevels.push_back(enclose<WIDTH>(vLevels.back()));
}

TriangleTree::Nearest TriangleTree::find(const Point3& p) const
{
    Nearest nearest{p, std::numeric_limits<double>::infinity()};
    Stack stack;
    std::size_t numWaiting = 0;
    stack[numWaiting++] = {0.0, static_cast<std::uint32_t>(vLevels.size() - 1), 0};
    while (numWaiting > 0)
    {
        const Waiting next = stack[--numWaiting];
        if (!(next.sqDistance < nearest.sqDistance))
            continue;
        if (next.level == 0)
            visitBlock(next.index, p, nearest);
        else
            pushChildren(next, p, nearest.sqDistance, stack, numWaiting);
    }
    return nearest;
}

// The nearest one last, so that it is taken first.
void TriangleTree::pushChildren(const Waiting& parent, const Point3& p, double limit, Stack& stack,
                                std::size_t& numWaiting) const
{
    const std::vector<Box>& vBoxes = vLevels[parent.level - 1];
    const std::size_t first = parent.index * WIDTH;
    const std::size_t end = std::min(first + WIDTH, vBoxes.size());
    const std::size_t base = numWaiting;
    for (std::size_t i = first; i < end; ++i)
    {
        const double sqGap = sqDistance(vBoxes[i], p);
        if (!(sqGap < limit))
            continue;
        std::size_t k = numWaiting++;
        for (; k > base && stack[k - 1].sqDistance < sqGap; --k)
            stack[k] = stack[k - 1];
        stack[k] = {sqGap, parent.level - 1, static_cast<std::uint32_t>(i)};
    }
}

void TriangleTree::visitBlock(std::size_t block, const Point3& p, Nearest& nearest) const
{
    const std::size_t end = std::min(WIDTH * (block + 1), vTriangles.size());
    for (std::size_t i = WIDTH * block; i < end; ++i)
    {
        const Triangle& triangle = vTriangles[i];
        const NearestOnTriangle found = nearestOnTriangle(p, triangle[0], triangle[1], triangle[2]);
        if (found.sqDist < nearest.sqDistance)
            nearest = {found.point, found.sqDist};
    }
}

} // namespace TARN_ZEF

#include "comparison/TriangleTree.h"

#include "core/cancel.h"
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

// Two zeros between each of the lowest 21 bits and the next.
[[nodiscard]] std::uint64_t spread(std::uint64_t x) noexcept
{
    x = (x | x << 32) & 0x1F00000000FFFF;
    x = (x | x << 16) & 0x1F0000FF0000FF;
    x = (x | x << 8) & 0x100F00F00F00F00F;
    x = (x | x << 4) & 0x10C30C30C30C30C3;
    x = (x | x << 2) & 0x1249249249249249;
    return x;
}

[[nodiscard]] double sqGap(double x, double low, double high) noexcept
{
    const double gap = std::max({low - x, x - high, 0.0});
    return gap * gap;
}

// One box around each WIDTH in a row.
template <std::size_t WIDTH, typename Box>
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

void TriangleTree::Box::include(const Box& other)
{
    low.set(std::min(low.x(), other.low.x()), std::min(low.y(), other.low.y()),
            std::min(low.z(), other.low.z()));
    high.set(std::max(high.x(), other.high.x()), std::max(high.y(), other.high.y()),
             std::max(high.z(), other.high.z()));
}

double TriangleTree::Box::sqDistanceTo(const Point3& p) const
{
    return sqGap(p.x(), low.x(), high.x()) + sqGap(p.y(), low.y(), high.y()) +
           sqGap(p.z(), low.z(), high.z());
}

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
    const double extent = (all.high - all.low).getMaxComponent();
    const double toCells = extent > 0.0 ? CURVE_CELLS / extent : 0.0;
    std::vector<std::uint64_t> vCodes(vTriangles.size());
    parallelFor(vCodes.size(), 10000,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                    {
                        const Box box = boxOf(vTriangles[i]);
                        const Vector3 cell = (box.low + (box.high - box.low) * 0.5 - all.low) * toCells;
                        vCodes[i] = spread(static_cast<std::uint64_t>(cell.x())) |
                                    spread(static_cast<std::uint64_t>(cell.y())) << 1 |
                                    spread(static_cast<std::uint64_t>(cell.z())) << 2;
                    }
                });
    return vCodes;
}

TriangleTree::Box TriangleTree::boxOf(const Triangle& triangle)
{
    Box box{triangle[0], triangle[0]};
    box.include({triangle[1], triangle[1]});
    box.include({triangle[2], triangle[2]});
    return box;
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
        const double sqDistance = vBoxes[i].sqDistanceTo(p);
        if (!(sqDistance < limit))
            continue;
        std::size_t k = numWaiting++;
        for (; k > base && stack[k - 1].sqDistance < sqDistance; --k)
            stack[k] = stack[k - 1];
        stack[k] = {sqDistance, parent.level - 1, static_cast<std::uint32_t>(i)};
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

#include "finish/FoldFinder.h"

#include "core/numbers.h"
#include "finish/cellNumber.h"
#include "geometry/tools.h"
#include "judge/judgeMesh.h"
#include "parallel/parallelFor.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace TARN_ZEF
{
namespace
{
// Triangles whose box covers more cells than this along an axis are always looked at.
constexpr double MAX_CELLS = 8.0;
constexpr std::size_t MIN_CHUNK = 10'000;
// Least height of a triangle, as a share of its longest edge.
constexpr double LEAST_HEIGHT = 1e-5;

// Has an area, but no normal that could be trusted.
bool isNearlyFlat(const Point3& a, const Point3& b, const Point3& c)
{
    const double longest = std::max({sqDistance(a, b), sqDistance(b, c), sqDistance(c, a)});
    return crossProduct(b - a, c - a).length() < LEAST_HEIGHT * longest;
}
} // namespace

FoldFinder::FoldFinder(const HalfEdgeMesh& mesh_)
    : mesh(mesh_)
{
}

std::vector<FoldFinder::Pair> FoldFinder::findAll() const
{
    std::vector<int> vTriangles;
    vTriangles.reserve(static_cast<std::size_t>(mesh.getNumTriangles()));
    for (int t = 0; t < mesh.endTriangles(); ++t)
        if (mesh.isAlive(t))
            vTriangles.push_back(t);
    return judge(vTriangles);
}

std::vector<FoldFinder::Pair> FoldFinder::judge(const std::vector<int>& vTriangles) const
{
    std::vector<Point3> vPoints(static_cast<std::size_t>(mesh.endVertices()));
    for (int v = 0; v < mesh.endVertices(); ++v)
        vPoints[static_cast<std::size_t>(v)] = mesh.isAliveVertex(v) ? mesh.point(v) : Point3();
    std::vector<int> vCorners;
    vCorners.reserve(3 * vTriangles.size());
    for (const int t : vTriangles)
        for (int h = 4 * t; h < 4 * t + 3; ++h)
            vCorners.push_back(mesh.from(h));
    CheckOptions options;
    options.maxPlaces = std::numeric_limits<int>::max();
    const MeshCheck check = judgeShapes(vPoints, vCorners, options);
    std::vector<Pair> vResult;
    for (const MeshFault& fault : check.vFaults)
    {
        const bool bAlone = fault.kind == MeshFaultKind::NOT_FINITE || fault.kind == MeshFaultKind::FLAT;
        if (!bAlone && fault.kind != MeshFaultKind::DUPLICATE && fault.kind != MeshFaultKind::INTERSECTION)
            continue;
        const int first = vTriangles[static_cast<std::size_t>(fault.triangle)];
        const int second = bAlone ? first : vTriangles[static_cast<std::size_t>(fault.otherTriangle)];
        vResult.emplace_back(std::min(first, second), std::max(first, second));
    }
    for (const int t : vTriangles)
        if (isNearlyFlat(mesh.point(mesh.from(4 * t)), mesh.point(mesh.to(4 * t)),
                         mesh.point(mesh.apex(4 * t))))
            vResult.emplace_back(t, t);
    std::sort(vResult.begin(), vResult.end());
    vResult.erase(std::unique(vResult.begin(), vResult.end()), vResult.end());
    return vResult;
}

FoldFinder::Box FoldFinder::getBox(int t) const
{
    const Point3& a = mesh.point(mesh.from(4 * t));
    const Point3& b = mesh.point(mesh.to(4 * t));
    const Point3& c = mesh.point(mesh.apex(4 * t));
    return {
        {std::min({a.x(), b.x(), c.x()}), std::min({a.y(), b.y(), c.y()}), std::min({a.z(), b.z(), c.z()})},
        {std::max({a.x(), b.x(), c.x()}), std::max({a.y(), b.y(), c.y()}), std::max({a.z(), b.z(), c.z()})}};
}

// f(0) alone stands for a box of very many cells.
template <typename F>
void FoldFinder::forEachCell(const Box& box, double cellSize, F f) const
{
    const auto low = [&](double x) { return std::floor(x / cellSize); };
    const double fromX = low(box.low.x());
    const double fromY = low(box.low.y());
    const double fromZ = low(box.low.z());
    const double toX = low(box.high.x());
    const double toY = low(box.high.y());
    const double toZ = low(box.high.z());
    // Beyond 2^53 there are no single cells any more.
    constexpr double farthest = 9007199254740992.0;
    const bool bNear = std::max({std::fabs(fromX), std::fabs(toX), std::fabs(fromY), std::fabs(toY),
                                 std::fabs(fromZ), std::fabs(toZ)}) < farthest;
    if (!bNear || toX - fromX > MAX_CELLS || toY - fromY > MAX_CELLS || toZ - fromZ > MAX_CELLS)
    {
        f(0);
        return;
    }
    for (double x = fromX; x <= toX; x += 1.0)
        for (double y = fromY; y <= toY; y += 1.0)
            for (double z = fromZ; z <= toZ; z += 1.0)
                f(getCellNumber(x, y, z) | 1);
}

std::vector<FoldFinder::Pair> FoldFinder::findNear(const std::vector<std::uint8_t>& vTouched) const
{
    double extent = 0.0;
    std::size_t numTouched = 0;
    const auto forEachTouched = [&](auto f)
    {
        for (int t = 0; t < static_cast<int>(vTouched.size()); ++t)
            if (vTouched[static_cast<std::size_t>(t)] != 0 && mesh.isAlive(t))
                f(t);
    };
    forEachTouched(
        [&](int t)
        {
            const Box box = getBox(t);
            extent += (box.high - box.low).getMaxComponent();
            ++numTouched;
        });
    if (numTouched == 0)
        return {};
    const double cellSize = 2.0 * extent / static_cast<double>(numTouched);
    if (!(cellSize > 0.0) || !std::isfinite(cellSize))
        return findAll();
    std::vector<u64> vCells;
    forEachTouched([&](int t)
                   { forEachCell(getBox(t), cellSize, [&](u64 cell) { vCells.push_back(cell); }); });
    std::sort(vCells.begin(), vCells.end());
    vCells.erase(std::unique(vCells.begin(), vCells.end()), vCells.end());
    if (vCells.front() == 0)
        return findAll();
    std::vector<std::uint8_t> vIsNear(static_cast<std::size_t>(mesh.endTriangles()), 0);
    parallelFor(vIsNear.size(), MIN_CHUNK,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t t = from; t < to; ++t)
                    {
                        if (!mesh.isAlive(static_cast<int>(t)))
                            continue;
                        forEachCell(getBox(static_cast<int>(t)), cellSize,
                                    [&](u64 cell) {
                                        vIsNear[t] |= cell == 0 ||
                                                      std::binary_search(vCells.begin(), vCells.end(), cell);
                                    });
                    }
                });
    std::vector<int> vTriangles;
    for (std::size_t t = 0; t < vIsNear.size(); ++t)
        if (vIsNear[t] != 0)
            vTriangles.push_back(static_cast<int>(t));
    return judge(vTriangles);
}

} // namespace TARN_ZEF

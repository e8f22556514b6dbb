#include "finish/PointOwners.h"

#include "geometry/tools.h"
#include "parallel/parallelFor.h"
#include "parallel/sortMT2.h"

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
constexpr std::size_t MIN_CHUNK = 5'000;
// Cells of the grid along an axis; the frame leaves room for a neighbour on each side.
constexpr double MAX_CELLS = 2'000'000.0;
constexpr int BITS = 21;
// The triangles around so many of the nearest vertices are looked at.
constexpr std::size_t NUM_NEAREST = 3;

double getSqDistance(const Point3& p, const Point3& a, const Point3& b, const Point3& c)
{
    const Vector3 ab = b - a;
    const Vector3 ac = c - a;
    const Vector3 ap = p - a;
    const double d1 = ab * ap;
    const double d2 = ac * ap;
    if (d1 <= 0.0 && d2 <= 0.0)
        return ap.sqLength();
    const Vector3 bp = p - b;
    const double d3 = ab * bp;
    const double d4 = ac * bp;
    if (d3 >= 0.0 && d4 <= d3)
        return bp.sqLength();
    const double vc = d1 * d4 - d3 * d2;
    if (vc <= 0.0 && d1 >= 0.0 && d3 <= 0.0)
        return (ap + ab * (-d1 / (d1 - d3))).sqLength();
    const Vector3 cp = p - c;
    const double d5 = ab * cp;
    const double d6 = ac * cp;
    if (d6 >= 0.0 && d5 <= d6)
        return cp.sqLength();
    const double vb = d5 * d2 - d1 * d6;
    if (vb <= 0.0 && d2 >= 0.0 && d6 <= 0.0)
        return (ap + ac * (-d2 / (d2 - d6))).sqLength();
    const double va = d3 * d6 - d5 * d4;
    if (va <= 0.0 && d4 - d3 >= 0.0 && d5 - d6 >= 0.0)
        return (bp + (c - b) * (-(d4 - d3) / ((d4 - d3) + (d5 - d6)))).sqLength();
    const Vector3 normal = crossProduct(ab, ac);
    const double height = normal * ap;
    return height * height / normal.sqLength();
}
} // namespace

PointOwners::PointOwners(const HalfEdgeMesh& mesh_, const std::vector<Point3>& vCloud_, double cellSize_)
    : mesh(mesh_)
    , vCloud(vCloud_)
    , cellSize(2.0 * cellSize_)
    , vOwner(vCloud_.size(), HalfEdgeMesh::NONE)
{
    chooseFrame();
    const std::vector<Entry> vVertices = sortVertices();
    const std::vector<Entry> vSorted = sortCloud();
    parallelFor(vSorted.size(), MIN_CHUNK,
                [&](std::size_t from, std::size_t to) { findOwners(vVertices, vSorted, from, to); });
    collect();
}

void PointOwners::chooseFrame()
{
    std::array<double, 3> lowest = {DBL_MAX, DBL_MAX, DBL_MAX};
    std::array<double, 3> highest = {-DBL_MAX, -DBL_MAX, -DBL_MAX};
    for (int v = 0; v < mesh.endVertices(); ++v)
    {
        if (!mesh.isAliveVertex(v))
            continue;
        const Point3& p = mesh.point(v);
        const std::array<double, 3> place = {p.x(), p.y(), p.z()};
        for (std::size_t i = 0; i < 3; ++i)
        {
            lowest[i] = std::min(lowest[i], place[i]);
            highest[i] = std::max(highest[i], place[i]);
        }
    }
    low.set(lowest[0], lowest[1], lowest[2]);
    for (std::size_t i = 0; i < 3; ++i)
        cellSize = std::max(cellSize, (highest[i] - lowest[i]) / MAX_CELLS);
}

// Cells start at 2 on each axis; what lies far off the mesh gets the cell 0, around which there are no vertices.
u64 PointOwners::getCell(const Point3& p) const noexcept
{
    const std::array<double, 3> place = {(p.x() - low.x()) / cellSize, (p.y() - low.y()) / cellSize,
                                         (p.z() - low.z()) / cellSize};
    u64 cell = 0;
    for (const double x : place)
    {
        if (!(x > -1.0 && x < MAX_CELLS + 2.0))
            return 0;
        cell = cell << BITS | static_cast<u64>(x + 3.0);
    }
    return cell;
}

std::vector<PointOwners::Entry> PointOwners::sortVertices() const
{
    std::vector<Entry> vResult;
    vResult.reserve(static_cast<std::size_t>(mesh.getNumVertices()));
    for (int v = 0; v < mesh.endVertices(); ++v)
        if (mesh.isAliveVertex(v))
            vResult.emplace_back(getCell(mesh.point(v)), static_cast<std::uint32_t>(v));
    sortMT(vResult.begin(), vResult.end());
    return vResult;
}

std::vector<PointOwners::Entry> PointOwners::sortCloud() const
{
    std::vector<Entry> vResult(vCloud.size());
    parallelFor(vCloud.size(), MIN_CHUNK,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                        vResult[i] = {getCell(vCloud[i]), static_cast<std::uint32_t>(i)};
                });
    sortMT(vResult.begin(), vResult.end());
    return vResult;
}

// Points of one cell share the vertices of the cells around: nine stretches of three cells.
void PointOwners::findOwners(const std::vector<Entry>& vVertices, const std::vector<Entry>& vSorted,
                             std::size_t from, std::size_t to)
{
    std::vector<std::uint32_t> vNear;
    for (std::size_t i = from; i < to; ++i)
    {
        const u64 cell = vSorted[i].first;
        if (cell == 0)
            continue;
        if (i == from || cell != vSorted[i - 1].first)
        {
            vNear.clear();
            for (u64 x = 0; x < 3; ++x)
            {
                for (u64 y = 0; y < 3; ++y)
                {
                    const u64 first =
                        cell + (x << 2 * BITS) + (y << BITS) - (u64{1} << 2 * BITS) - (u64{1} << BITS) - 1;
                    for (auto it = std::lower_bound(vVertices.begin(), vVertices.end(), Entry{first, 0});
                         it != vVertices.end() && it->first <= first + 2; ++it)
                        vNear.push_back(it->second);
                }
            }
        }
        const std::uint32_t point = vSorted[i].second;
        vOwner[point] = findOwner(vCloud[point], vNear);
    }
}

int PointOwners::findOwner(const Point3& p, const std::vector<std::uint32_t>& vNear) const
{
    std::array<std::pair<double, int>, NUM_NEAREST> nearest;
    nearest.fill({DBL_MAX, HalfEdgeMesh::NONE});
    for (const std::uint32_t v : vNear)
    {
        std::pair<double, int> entry(sqDistance(p, mesh.point(static_cast<int>(v))), static_cast<int>(v));
        for (auto& place : nearest)
            if (entry < place)
                std::swap(entry, place);
    }
    int owner = HalfEdgeMesh::NONE;
    double best = DBL_MAX;
    for (const auto& [sqDist, v] : nearest)
    {
        if (v == HalfEdgeMesh::NONE)
            continue;
        mesh.forEachOutgoing(v,
                             [&](int h)
                             {
                                 const double d =
                                     getSqDistance(p, mesh.point(mesh.from(h)), mesh.point(mesh.to(h)),
                                                   mesh.point(mesh.apex(h)));
                                 const int t = HalfEdgeMesh::triangleOf(h);
                                 if (d < best || (d == best && t < owner))
                                 {
                                     best = d;
                                     owner = t;
                                 }
                             });
    }
    return owner;
}

void PointOwners::collect()
{
    vStarts.assign(static_cast<std::size_t>(mesh.endTriangles()) + 1, 0);
    std::size_t num = 0;
    for (const int t : vOwner)
    {
        if (t == HalfEdgeMesh::NONE)
            continue;
        ++vStarts[static_cast<std::size_t>(t)];
        ++num;
    }
    for (std::size_t sum = 0; std::size_t & start : vStarts)
        start = std::exchange(sum, sum + start);
    vPoints.resize(num);
    std::vector<std::size_t> vNext(vStarts);
    for (std::size_t i = 0; i < vOwner.size(); ++i)
        if (vOwner[i] != HalfEdgeMesh::NONE)
            vPoints[vNext[static_cast<std::size_t>(vOwner[i])]++] = static_cast<std::uint32_t>(i);
}

} // namespace TARN_ZEF

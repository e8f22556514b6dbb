#include "finish/PointOwners.h"

#include "geometry/tools.h"
#include "parallel/parallelFor.h"
#include "parallel/sortMT2.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cfloat>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
constexpr std::size_t MIN_CHUNK = 5'000;
// Cells of the grid along an axis; the frame leaves room for a neighbour on each side.
constexpr double MAX_CELLS = 2'000'000.0;
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

// The vertices in the cells around one, and how far they are from a point.
struct PointOwners::Scratch
{
    std::array<std::vector<Entry>::const_iterator, 9> starts; // of the stretches of three cells
    bool bFirst = true;
    std::vector<std::uint32_t> vVertices;
    std::vector<double> vX;
    std::vector<double> vY;
    std::vector<double> vZ;
    std::vector<double> vSqDistances;
};

PointOwners::PointOwners(const HalfEdgeMesh& mesh, const std::vector<Point3>& vCloud, double cellSize_,
                         double maxReach, const std::vector<int>& vAsked)
    : cellSize(2.0 * cellSize_)
{
    chooseFrame(mesh);
    collect(vCloud, findOwners(mesh, vCloud, findAskedCells(mesh, maxReach, vAsked)),
            static_cast<std::size_t>(mesh.endTriangles()));
}

// All cells if no vertices are named. The stretches come in order and do not overlap.
std::vector<PointOwners::Stretch> PointOwners::findAskedCells(const HalfEdgeMesh& mesh, double maxReach,
                                                              const std::vector<int>& vAsked) const
{
    if (vAsked.empty())
        return {{1, ~u64{0}}};
    std::vector<u64> vCells;
    vCells.reserve(vAsked.size());
    for (const int v : vAsked)
        vCells.push_back(getCell(mesh.point(v)));
    std::sort(vCells.begin(), vCells.end());
    vCells.erase(std::unique(vCells.begin(), vCells.end()), vCells.end());
    // A reach beyond the frame, which has room for two neighbours only, ends in cells without points.
    const auto range = static_cast<u64>(std::ceil(maxReach / cellSize));
    std::vector<Stretch> vStretches;
    vStretches.reserve(vCells.size() * (2 * range + 1) * (2 * range + 1));
    for (const u64 cell : vCells)
        for (u64 i = 0; i <= 2 * range; ++i)
            for (u64 k = 0; k <= 2 * range; ++k)
            {
                const u64 middle = cell + ((i - range) << shifts[0]) + ((k - range) << shifts[1]);
                vStretches.emplace_back(middle - range, middle + range);
            }
    std::sort(vStretches.begin(), vStretches.end());
    std::vector<Stretch> vResult;
    for (const Stretch& stretch : vStretches)
        if (vResult.empty() || stretch.first > vResult.back().second)
            vResult.push_back(stretch);
        else
            vResult.back().second = std::max(vResult.back().second, stretch.second);
    return vResult;
}

// Cells of vertices start at 3 on each axis.
void PointOwners::chooseFrame(const HalfEdgeMesh& mesh)
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
    if (mesh.getNumVertices() == 0)
        return;
    low.set(lowest[0], lowest[1], lowest[2]);
    for (std::size_t i = 0; i < 3; ++i)
        cellSize = std::max(cellSize, (highest[i] - lowest[i]) / MAX_CELLS);
    int shift = 0;
    for (std::size_t i = 3; i-- > 0;)
    {
        lastCells[i] = static_cast<u64>((highest[i] - lowest[i]) / cellSize + 3.0) + 1;
        shifts[i] = shift;
        shift += std::bit_width(lastCells[i] + 1);
    }
}

// The cell 0, around which there are no vertices, is that of all that lies far off the mesh.
u64 PointOwners::getCell(const Point3& p) const noexcept
{
    const std::array<double, 3> place = {(p.x() - low.x()) / cellSize, (p.y() - low.y()) / cellSize,
                                         (p.z() - low.z()) / cellSize};
    u64 cell = 0;
    for (std::size_t i = 0; i < 3; ++i)
    {
        if (!(place[i] > -1.0 && place[i] < MAX_CELLS + 2.0))
            return 0;
        const u64 number = static_cast<u64>(place[i] + 3.0);
        if (number > lastCells[i])
            return 0;
        cell |= number << shifts[i];
    }
    return cell;
}

std::vector<PointOwners::Entry> PointOwners::sortVertices(const HalfEdgeMesh& mesh) const
{
    std::vector<Entry> vResult;
    vResult.reserve(static_cast<std::size_t>(mesh.getNumVertices()));
    for (int v = 0; v < mesh.endVertices(); ++v)
        if (mesh.isAliveVertex(v))
            vResult.emplace_back(getCell(mesh.point(v)), static_cast<std::uint32_t>(v));
    sortByFirstMT(vResult.begin(), vResult.end());
    return vResult;
}

std::vector<PointOwners::Entry> PointOwners::sortCloud(const std::vector<Point3>& vCloud) const
{
    std::vector<Entry> vResult(vCloud.size());
    parallelFor(vCloud.size(), MIN_CHUNK,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                        vResult[i] = {getCell(vCloud[i]), static_cast<std::uint32_t>(i)};
                });
    sortByFirstMT(vResult.begin(), vResult.end());
    return vResult;
}

// Points of one cell share the vertices of the cells around.
std::vector<int> PointOwners::findOwners(const HalfEdgeMesh& mesh, const std::vector<Point3>& vCloud,
                                         const std::vector<Stretch>& vAskedCells) const
{
    std::vector<int> vOwner(vCloud.size(), HalfEdgeMesh::NONE);
    const std::vector<Entry> vVertices = sortVertices(mesh);
    const std::vector<Entry> vSorted = sortCloud(vCloud);
    const auto isAsked = [&](u64 cell)
    {
        const auto it = std::lower_bound(vAskedCells.begin(), vAskedCells.end(), cell,
                                         [](const Stretch& s, u64 c) { return s.second < c; });
        return it != vAskedCells.end() && it->first <= cell;
    };
    parallelFor(vSorted.size(), MIN_CHUNK,
                [&](std::size_t from, std::size_t to)
                {
                    Scratch scratch;
                    u64 seen = 0;
                    bool bAsked = false;
                    for (std::size_t i = from; i < to; ++i)
                    {
                        const auto [cell, point] = vSorted[i];
                        if (cell != seen)
                        {
                            seen = cell;
                            bAsked = isAsked(cell);
                            if (bAsked)
                                gatherNear(mesh, vVertices, cell, scratch);
                        }
                        if (bAsked)
                            vOwner[point] = findOwner(mesh, vCloud[point], scratch);
                    }
                });
    return vOwner;
}

// Nine stretches of three cells. Cells come in rising order, so that a stretch starts where it did or later.
void PointOwners::gatherNear(const HalfEdgeMesh& mesh, const std::vector<Entry>& vVertices, u64 cell,
                             Scratch& scratch) const
{
    scratch.vVertices.clear();
    for (u64 k = 0; k < 9; ++k)
    {
        const u64 middle = cell + ((k / 3) << shifts[0]) + ((k % 3) << shifts[1]);
        const u64 first = middle - (u64{1} << shifts[0]) - (u64{1} << shifts[1]) - 1;
        auto& it = scratch.starts[k];
        if (scratch.bFirst)
            it = std::lower_bound(vVertices.begin(), vVertices.end(), Entry{first, 0});
        while (it != vVertices.end() && it->first < first)
            ++it;
        for (auto near = it; near != vVertices.end() && near->first <= first + 2; ++near)
            scratch.vVertices.push_back(near->second);
    }
    scratch.bFirst = false;
    const std::size_t num = scratch.vVertices.size();
    for (auto* pValues : {&scratch.vX, &scratch.vY, &scratch.vZ, &scratch.vSqDistances})
        pValues->resize(num);
    for (std::size_t i = 0; i < num; ++i)
        mesh.point(static_cast<int>(scratch.vVertices[i])).xyz(scratch.vX[i], scratch.vY[i], scratch.vZ[i]);
}

int PointOwners::findOwner(const HalfEdgeMesh& mesh, const Point3& p, Scratch& scratch)
{
    const std::size_t num = scratch.vVertices.size();
    for (std::size_t i = 0; i < num; ++i)
        scratch.vSqDistances[i] = sqDistance(p, Point3(scratch.vX[i], scratch.vY[i], scratch.vZ[i]));
    std::array<std::pair<double, int>, NUM_NEAREST> nearest;
    nearest.fill({DBL_MAX, HalfEdgeMesh::NONE});
    for (std::size_t i = 0; i < num; ++i)
    {
        if (scratch.vSqDistances[i] > nearest.back().first)
            continue;
        std::pair<double, int> entry(scratch.vSqDistances[i], static_cast<int>(scratch.vVertices[i]));
        for (auto& place : nearest)
            if (entry < place)
                std::swap(entry, place);
    }
    int owner = HalfEdgeMesh::NONE;
    double best = DBL_MAX;
    for (std::size_t i = 0; i < NUM_NEAREST && nearest[i].second != HalfEdgeMesh::NONE; ++i)
    {
        const int v = nearest[i].second;
        // Triangles of nearer vertices have been looked at.
        const auto isSeen = [&](int u)
        {
            return std::any_of(nearest.begin(), nearest.begin() + i,
                               [u](const auto& nearer) { return nearer.second == u; });
        };
        mesh.forEachOutgoing(v,
                             [&](int h)
                             {
                                 if (isSeen(mesh.to(h)) || isSeen(mesh.apex(h)))
                                     return;
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

void PointOwners::collect(const std::vector<Point3>& vCloud, const std::vector<int>& vOwner,
                          std::size_t numTriangles)
{
    vStarts.assign(numTriangles + 1, 0);
    std::uint32_t num = 0;
    for (const int t : vOwner)
    {
        if (t == HalfEdgeMesh::NONE)
            continue;
        ++vStarts[static_cast<std::size_t>(t)];
        ++num;
    }
    for (std::uint32_t sum = 0; std::uint32_t & start : vStarts)
        start = std::exchange(sum, sum + start);
    vPoints.resize(num);
    std::vector<std::uint32_t> vNext(vStarts);
    for (std::size_t i = 0; i < vOwner.size(); ++i)
        if (vOwner[i] != HalfEdgeMesh::NONE)
            vPoints[vNext[static_cast<std::size_t>(vOwner[i])]++] = vCloud[i];
}

} // namespace TARN_ZEF

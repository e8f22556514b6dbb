#include "finish/SheetFit.h"

#include "core/Progress.h"
#include "finish/NormalTensor.h"
#include "finish/QuadricSums.h"
#include "finish/directions.h"
#include "geometry/tools.h"
#include "parallel/parallelFor.h"
#include "parallel/produceInOrder.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
constexpr int NONE = HalfEdgeMesh::NONE;
constexpr std::size_t MIN_CHUNK = 500;
constexpr std::size_t MIN_SAMPLES = 100;
// Radii of the quadrics in cells; the first is that of clean clouds.
constexpr std::array<double, 3> RADII = {2.3, 3.2, 4.5};
constexpr double SMALL_RADIUS = 1.5;
// A place where points leave the quadric by so many times the usual gets the small radius.
constexpr double SHARP = 2.5;
// Cosine: the surface around a vertex is followed as long as it faces the same way within 66 degrees.
constexpr double SAME_SHEET = 0.4;
constexpr int NUM_SAMPLES = 2000;
// Variance of a quadric's height in the middle of its points, times their number, over that of one point.
constexpr double VARIANCE_FACTOR = 4.0;
// Fits whose normal turned by less than this cosine are not made again.
constexpr double SAME_NORMAL = 0.9998;
// Those whose normal turned by less than 10 degrees are made with the same points.
constexpr double SAME_REACH = 0.985;
constexpr std::size_t MIN_POINTS = 4;
// Sides of a crease that meet under about 10 degrees or less do not say where along their normals' difference.
constexpr double MEETING_SHARE = 0.008;

double getMedian(std::vector<double> vValues)
{
    if (vValues.empty())
        return 0.0;
    const auto middle = vValues.begin() + static_cast<std::ptrdiff_t>(vValues.size() / 2);
    std::nth_element(vValues.begin(), middle, vValues.end());
    return *middle;
}
} // namespace

SheetFit::SheetFit(HalfEdgeMesh& mesh_, const std::vector<Point3>& vCloud, double cellSize_, double maxMove_)
    : mesh(mesh_)
    , owners(mesh_, vCloud, cellSize_)
    , cellSize(cellSize_)
    , maxMove(maxMove_)
{
}

void SheetFit::run(bool bKeepPlanes, Progress& progress)
{
    fillNormals();
    fillFacings();
    chooseRadius();
    std::vector<Point3> vProposed(static_cast<std::size_t>(mesh.endVertices()));
    vPlanes.assign(bKeepPlanes ? vProposed.size() : 0, LocalPlane());
    propose(vProposed, progress);
    for (int v = 0; v < mesh.endVertices(); ++v)
        if (mesh.isAliveVertex(v))
            mesh.setPoint(v, vProposed[static_cast<std::size_t>(v)]);
}

void SheetFit::propose(std::vector<Point3>& vProposed, Progress& progress)
{
    struct Part
    {
        Scratch scratch;
        std::size_t num = 0;
    };
    // Some ten milliseconds of work.
    constexpr std::size_t perPart = 4096;
    produceRangesInOrder<Part>(
        vProposed.size(), perPart,
        [&](Part& part, std::size_t from, std::size_t to)
        {
            LocalPlane forgotten;
            part.num = to - from;
            for (std::size_t v = from; v < to; ++v)
                if (mesh.isAliveVertex(static_cast<int>(v)))
                    vProposed[v] =
                        propose(static_cast<int>(v), part.scratch, vPlanes.empty() ? forgotten : vPlanes[v]);
        },
        [&](const Part& part) { progress.increment(part.num); });
}

Vector3 SheetFit::getRawNormal(int v) const
{
    Vector3 sum;
    mesh.forEachOutgoing(v,
                         [&](int h)
                         {
                             const Point3& p = mesh.point(mesh.from(h));
                             sum.add(crossProduct(mesh.point(mesh.to(h)) - p, mesh.point(mesh.apex(h)) - p));
                         });
    return getUnit(sum);
}

// Area-weighted, then once over the neighbours: single triangles of a noisy mesh say little. Vertices on creases have
// none: what they would give is neither side's.
void SheetFit::fillNormals()
{
    const auto num = static_cast<std::size_t>(mesh.endVertices());
    std::vector<Vector3> vRaw(num);
    vNormals.assign(num, Vector3());
    const auto isPlain = [this](std::size_t v)
    {
        return mesh.isAliveVertex(static_cast<int>(v)) &&
               mesh.kind(static_cast<int>(v)) == HalfEdgeMesh::Kind::FREE;
    };
    parallelFor(num, MIN_CHUNK,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t v = from; v < to; ++v)
                        if (isPlain(v))
                            vRaw[v] = getRawNormal(static_cast<int>(v));
                });
    parallelFor(num, MIN_CHUNK,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t v = from; v < to; ++v)
                    {
                        if (!isPlain(v))
                            continue;
                        Vector3 sum = vRaw[v];
                        mesh.forEachNeighbour(static_cast<int>(v), [&](int u)
                                              { sum.add(vRaw[static_cast<std::size_t>(u)] * 0.5); });
                        vNormals[v] = getUnit(sum);
                    }
                });
}

void SheetFit::fillFacings()
{
    vFacings.resize(static_cast<std::size_t>(mesh.endTriangles()));
    parallelFor(vFacings.size(), MIN_CHUNK,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                    {
                        const int t = static_cast<int>(i);
                        if (!mesh.isAlive(t))
                            continue;
                        Vector3 sum;
                        for (int h = 4 * t; h < 4 * t + 3; ++h)
                            sum.add(vNormals[static_cast<std::size_t>(mesh.from(h))]);
                        if (sum.sqLength() == 0.0)
                            sum = getSideNormal({t});
                        vFacings[i] = {sum, sum.sqLength()};
                    }
                });
}

std::vector<int> SheetFit::chooseSamples() const
{
    const int step = std::max(1, mesh.endVertices() / NUM_SAMPLES);
    std::vector<int> vSamples;
    for (int v = 0; v < mesh.endVertices(); v += step)
        if (mesh.isAliveVertex(v) && !mesh.isBorderVertex(v) && mesh.kind(v) == HalfEdgeMesh::Kind::FREE)
            vSamples.push_back(v);
    return vSamples;
}

// The error of a fit is told from samples: what is left of the noise by averaging, and what a larger radius adds to
// the residual, which is shape.
void SheetFit::chooseRadius()
{
    const std::vector<int> vSamples = chooseSamples();
    std::vector<Fit> vFits(vSamples.size());
    double smallest = 0.0;
    double leastError = 0.0;
    for (const double candidate : RADII)
    {
        parallelFor(vFits.size(), MIN_SAMPLES,
                    [&](std::size_t from, std::size_t to)
                    {
                        Scratch scratch;
                        for (std::size_t i = from; i < to; ++i)
                        {
                            seedAll(vSamples[i], scratch);
                            vFits[i] = fit(vSamples[i], vNormals[static_cast<std::size_t>(vSamples[i])],
                                           candidate, scratch);
                        }
                    });
        std::vector<double> vResiduals;
        std::vector<double> vNumbers;
        for (const Fit& result : vFits)
        {
            if (!result.bUsable || result.numPoints < QuadricSums::minPoints)
                continue;
            vResiduals.push_back(result.residual);
            vNumbers.push_back(static_cast<double>(result.numPoints));
        }
        const double residual = getMedian(std::move(vResiduals));
        const double num = std::max(1.0, getMedian(std::move(vNumbers)));
        const double square = residual * residual;
        if (radius == 0.0)
            smallest = square;
        const double error = square * VARIANCE_FACTOR / num + std::max(0.0, square - smallest);
        if (radius == 0.0 || error < leastError)
        {
            radius = candidate;
            leastError = error;
            noise = residual;
        }
    }
}

Point3 SheetFit::propose(int v, Scratch& scratch, LocalPlane& plane) const
{
    if (mesh.kind(v) != HalfEdgeMesh::Kind::FREE)
        return proposeOnCrease(v, scratch);
    const Point3& p = mesh.point(v);
    seedAll(v, scratch);
    const Fit best = fitBest(v, vNormals[static_cast<std::size_t>(v)], scratch, plane.firstResidual);
    if (!best.bUsable)
        return p;
    const double limit = maxMove * cellSize;
    const Point3 result = p + best.way * std::clamp(best.height, -limit, limit);
    if (!std::isfinite(result.x() + result.y() + result.z()))
        return p;
    plane.point = p + best.way * best.height;
    plane.normal = best.normal;
    plane.residual = best.residual;
    plane.bUsable = true;
    return result;
}

// The triangles at a vertex, parted by its feature edges; none if fewer than two sides are there.
std::vector<std::vector<int>> SheetFit::getSides(int v) const
{
    std::vector<int> vRing;
    mesh.forEachOutgoing(v, [&](int h) { vRing.push_back(h); });
    const auto isWall = [this](int h) { return mesh.feature(h) != 0; };
    if (!mesh.isBorderVertex(v))
        std::rotate(vRing.begin(), std::find_if(vRing.begin(), vRing.end(), isWall), vRing.end());
    std::vector<std::vector<int>> vSides;
    for (const int h : vRing)
    {
        if (vSides.empty() || isWall(h))
            vSides.emplace_back();
        vSides.back().push_back(HalfEdgeMesh::triangleOf(h));
    }
    if (vSides.size() < 2)
        vSides.clear();
    return vSides;
}

Vector3 SheetFit::getSideNormal(const std::vector<int>& vSide) const
{
    Vector3 sum;
    for (const int t : vSide)
    {
        const Point3& p = mesh.point(mesh.from(4 * t));
        sum.add(crossProduct(mesh.point(mesh.to(4 * t)) - p, mesh.point(mesh.apex(4 * t)) - p));
    }
    return getUnit(sum);
}

// The least move onto the planes of all sides.
Point3 SheetFit::proposeOnCrease(int v, Scratch& scratch) const
{
    const Point3& p = mesh.point(v);
    NormalTensor tensor;
    Vector3 right;
    for (const std::vector<int>& vSide : getSides(v))
    {
        scratch.vSeeds = vSide;
        double firstResidual = 0.0;
        const Fit side = fitBest(v, getSideNormal(vSide), scratch, firstResidual);
        if (!side.bUsable)
            return p;
        tensor.add(side.normal);
        right.add(side.normal * (side.way * side.normal * side.height));
    }
    const Vector3 move = tensor.solve(right, MEETING_SHARE);
    const double length = move.length();
    if (!(length > 0.0) || !std::isfinite(length))
        return p;
    return p + move * std::min(1.0, maxMove * cellSize / length);
}

void SheetFit::seedAll(int v, Scratch& scratch) const
{
    scratch.vSeeds.clear();
    mesh.forEachOutgoing(v, [&](int h) { scratch.vSeeds.push_back(HalfEdgeMesh::triangleOf(h)); });
}

SheetFit::Fit SheetFit::fitBest(int v, const Vector3& normal, Scratch& scratch, double& firstResidual) const
{
    Fit best = fitTwice(v, normal, radius, scratch);
    firstResidual = best.residual;
    if (best.bUsable && best.residual > SHARP * noise)
    {
        const Fit small = fitTwice(v, normal, SMALL_RADIUS, scratch);
        if (small.bUsable && small.residual < best.residual)
            best = small;
    }
    return best;
}

// Whether points belong to the sheet hardly depends on a small turn of the normal.
SheetFit::Fit SheetFit::fitTwice(int v, const Vector3& normal, double radiusInCells, Scratch& scratch) const
{
    const Fit first = fit(v, normal, radiusInCells, scratch);
    if (!first.bUsable || first.normal * normal > SAME_NORMAL)
        return first;
    const Fit second = first.normal * normal > SAME_REACH ? fitReached(first.normal, radiusInCells, scratch)
                                                          : fit(v, first.normal, radiusInCells, scratch);
    return second.bUsable ? second : first;
}

bool SheetFit::faces(int t, const Vector3& normal) const
{
    const Facing& facing = vFacings[static_cast<std::size_t>(t)];
    const double product = facing.sum * normal;
    return product > 0.0 && product * product > SAME_SHEET * SAME_SHEET * facing.sqLength;
}

void SheetFit::reachTriangles(int v, const Vector3& normal, double reach, Scratch& scratch) const
{
    scratch.vStamps.resize(static_cast<std::size_t>(mesh.endTriangles()), 0);
    ++scratch.stamp;
    scratch.vReached.clear();
    const Point3& centre = mesh.point(v);
    const auto stampOf = [&scratch](int t) -> std::uint32_t&
    { return scratch.vStamps[static_cast<std::size_t>(t)]; };
    for (const int t : scratch.vSeeds)
    {
        if (stampOf(t) == scratch.stamp)
            continue;
        stampOf(t) = scratch.stamp;
        const auto sqDistanceOf = [&](int h) { return sqDistance(centre, mesh.point(mesh.from(h))); };
        scratch.vReached.push_back(
            {t, {sqDistanceOf(4 * t), sqDistanceOf(4 * t + 1), sqDistanceOf(4 * t + 2)}});
    }
    for (std::size_t i = 0; i < scratch.vReached.size(); ++i)
    {
        const Reached near = scratch.vReached[i];
        for (std::size_t k = 0; k < 3; ++k)
        {
            const int h = 4 * near.t + static_cast<int>(k);
            const int other = mesh.partner(h);
            // The nearer end of the edge stands for the triangle beyond it.
            if (other == NONE ||
                !(std::min(near.sqDistances[k], near.sqDistances[(k + 1) % 3]) < reach * reach))
                continue;
            const int t = HalfEdgeMesh::triangleOf(other);
            if (stampOf(t) == scratch.stamp || mesh.feature(h) != 0 || !faces(t, normal))
                continue;
            stampOf(t) = scratch.stamp;
            scratch.vReached.push_back(reachAcross(h, near, centre));
        }
    }
}

// The triangle beyond h has two corners of the near one.
SheetFit::Reached SheetFit::reachAcross(int h, const Reached& near, const Point3& centre) const
{
    const int other = mesh.partner(h);
    const auto nearCorner = static_cast<std::size_t>(h & 3);
    const auto corner = static_cast<std::size_t>(other & 3);
    Reached result = {HalfEdgeMesh::triangleOf(other), {}};
    result.sqDistances[corner] = near.sqDistances[(nearCorner + 1) % 3];
    result.sqDistances[(corner + 1) % 3] = near.sqDistances[nearCorner];
    result.sqDistances[(corner + 2) % 3] = sqDistance(centre, mesh.point(mesh.apex(other)));
    return result;
}

void SheetFit::reachPoints(int v, const Vector3& normal, double reach, Scratch& scratch) const
{
    reachTriangles(v, normal, reach, scratch);
    scratch.vWays.clear();
    const Point3& centre = mesh.point(v);
    // Beyond all doubt too far, whatever the divisions below round to.
    const double farthest = reach * reach * (1.0 + 1e-9);
    for (const Reached& reached : scratch.vReached)
    {
        for (const Point3& p : owners.getPoints(reached.t))
        {
            const Vector3 way = p - centre;
            if (way.sqLength() > farthest)
                continue;
            const Vector3 d = way / reach;
            if (d.sqLength() < 1.0)
                scratch.vWays.push_back(d);
        }
    }
}

SheetFit::Fit SheetFit::fit(int v, const Vector3& normal, double radiusInCells, Scratch& scratch) const
{
    reachPoints(v, normal, radiusInCells * cellSize, scratch);
    return fitReached(normal, radiusInCells, scratch);
}

SheetFit::Fit SheetFit::fitReached(const Vector3& normal, double radiusInCells, const Scratch& scratch) const
{
    Fit result;
    const double reach = radiusInCells * cellSize;
    const Vector3 axis = std::fabs(normal.x()) < 0.6 ? Vector3(1.0, 0.0, 0.0) : Vector3(0.0, 1.0, 0.0);
    const Vector3 xAxis = getUnit(crossProduct(axis, normal));
    const Vector3 yAxis = crossProduct(normal, xAxis);
    QuadricSums sums;
    for (const Vector3& d : scratch.vWays)
        sums.add(d * xAxis, d * yAxis, d * normal);
    result.numPoints = sums.size();
    if (sums.size() < MIN_POINTS || !sums.solve())
        return result;
    result.way = normal;
    result.height = sums.getHeight() * reach;
    result.normal = getUnit(normal + xAxis * -sums.getSlopeX() + yAxis * -sums.getSlopeY());
    result.residual = sums.getResidual() * radiusInCells;
    result.bUsable = std::isfinite(result.height) && std::isfinite(result.residual);
    return result;
}

} // namespace TARN_ZEF

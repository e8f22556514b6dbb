#include "finish/SheetFit.h"

#include "core/Progress.h"
#include "finish/NormalTensor.h"
#include "geometry/isFinite.h"
#include "geometry/tools.h"
#include "parallel/collectInOrder.h"
#include "parallel/parallelFor.h"
#include "parallel/produceInOrder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace TARN_ZEF
{
namespace
{
constexpr std::size_t MIN_CHUNK = 2'000;
constexpr std::size_t MIN_SAMPLES = 100;
// Radii of the quadrics in cells; the first is that of clean clouds.
constexpr std::array<double, 3> RADII = {2.3, 3.2, 4.5};
constexpr double SMALL_RADIUS = 1.5;
// A place where points leave the quadric by so many times the usual gets the small radius.
constexpr double SHARP = 2.5;
constexpr int NUM_SAMPLES = 2000;
// Variance of a quadric's height in the middle of its points, times their number, over that of one point.
constexpr double VARIANCE_FACTOR = 4.0;
// Fits whose normal turned by less than this cosine are not made again.
constexpr double SAME_NORMAL = 0.9998;
// Those whose normal turned by less than 10 degrees are made with the same points.
constexpr double SAME_REACH = 0.985;
constexpr std::size_t MIN_POINTS = 4;
// Vertices so close to one that face the same way share its look at the points around, in cells.
constexpr double GROUP_REACH = 1.6;
// A surface holds for a vertex that strayed no farther from its middle, in cells.
constexpr double HOLDS = 0.6;
// Rings of vertices that a cell may take.
constexpr double RINGS_PER_CELL = 1.5;
// Cells by which a vertex may leave the box of the points.
constexpr double ROOM = 1.9;
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

SheetFit::SheetFit(HalfEdgeMesh& mesh_, const std::vector<Point3>& vCloud_, double cellSize_, double maxMove_)
    : mesh(mesh_)
    , vCloud(vCloud_)
    , cellSize(cellSize_)
    , maxMove(maxMove_)
    , room(findRoom())
{
}

LocalSurface SheetFit::Fit::toSurface(const Point3& p, double firstResidual) const
{
    LocalSurface result;
    result.origin = p;
    result.reach = reach;
    const auto round = [](const Vector3& v) -> std::array<float, 3> {
        return {static_cast<float>(v.x()), static_cast<float>(v.y()), static_cast<float>(v.z())};
    };
    result.way = round(way);
    result.normal = round(normal);
    for (std::size_t i = 0; i < terms.size(); ++i)
        result.terms[i] = static_cast<float>(terms[i]);
    result.residual = static_cast<float>(residual);
    result.firstResidual = static_cast<float>(firstResidual);
    return result;
}

void SheetFit::run(Progress& progress)
{
    const SheetReach reach(mesh, vCloud, cellSize, 0.0, {});
    chooseRadius(reach);
    vSurfaces.assign(static_cast<std::size_t>(mesh.endVertices()), LocalSurface());
    propose(reach, findAlive(), progress);
    moveAll();
}

void SheetFit::repeat(Progress& progress)
{
    vSurfaces.resize(static_cast<std::size_t>(mesh.endVertices()));
    projectAll();
    const std::vector<int> vOutdated = findOutdated();
    if (!vOutdated.empty())
    {
        const SheetReach reach(mesh, vCloud, cellSize, (radius + GROUP_REACH) * cellSize, vOutdated);
        propose(reach, vOutdated, progress);
    }
    moveAll();
    progress.increment(static_cast<u64>(mesh.endVertices()) - vOutdated.size());
}

std::vector<int> SheetFit::findAlive() const
{
    std::vector<int> vResult;
    vResult.reserve(static_cast<std::size_t>(mesh.getNumVertices()));
    for (int v = 0; v < mesh.endVertices(); ++v)
        if (mesh.isAliveVertex(v))
            vResult.push_back(v);
    return vResult;
}

// What has a surface, but strayed from it, what has none, and what is so close to a crease that its surface
// may be of a time before that.
std::vector<int> SheetFit::findOutdated() const
{
    const Flags vIsNearCrease = findNearCreases();
    return collectInOrder<int>(static_cast<std::size_t>(mesh.endVertices()),
                               [&](std::size_t from, std::size_t to, std::vector<int>& vFound)
                               {
                                   for (std::size_t i = from; i < to; ++i)
                                   {
                                       const int v = static_cast<int>(i);
                                       if (mesh.isAliveVertex(v) && (vIsNearCrease[i] != 0 || !holds(v)))
                                           vFound.push_back(v);
                                   }
                               });
}

bool SheetFit::holds(int v) const
{
    const LocalSurface& surface = vSurfaces[static_cast<std::size_t>(v)];
    const double limit = HOLDS * cellSize;
    return surface.isUsable() && sqDistance(surface.getPoint(), mesh.point(v)) <= limit * limit;
}

SheetFit::Flags SheetFit::findNearCreases() const
{
    Flags vIsNear(static_cast<std::size_t>(mesh.endVertices()), 0);
    std::vector<int> vRing;
    for (int v = 0; v < mesh.endVertices(); ++v)
        if (mesh.isAliveVertex(v) && mesh.kind(v) != HalfEdgeMesh::Kind::FREE)
            vRing.push_back(v);
    const int numRings = static_cast<int>(std::ceil(RINGS_PER_CELL * radius));
    for (int i = 0; i <= numRings; ++i)
    {
        std::vector<int> vNext;
        for (const int v : vRing)
        {
            if (std::exchange(vIsNear[static_cast<std::size_t>(v)], std::uint8_t{1}) == 0)
                mesh.forEachNeighbour(v, [&](int u) { vNext.push_back(u); });
        }
        vRing = std::move(vNext);
    }
    return vIsNear;
}

// Vertices come in order of their numbers.
void SheetFit::propose(const SheetReach& reach, const std::vector<int>& vVertices, Progress& progress)
{
    struct Part
    {
        Scratch scratch;
        std::size_t num = 0;
    };
    vProposed.resize(static_cast<std::size_t>(mesh.endVertices()));
    vIsPending.assign(vProposed.size(), 0);
    for (const int v : vVertices)
        vIsPending[static_cast<std::size_t>(v)] = 1;
    // Some ten milliseconds of work.
    constexpr std::size_t perPart = 8192;
    produceRangesInOrder<Part>(
        vVertices.size(), perPart,
        [&](Part& part, std::size_t from, std::size_t to)
        {
            part.num = to - from;
            proposeRange(reach, vVertices[from], vVertices[to - 1] + 1, part.scratch);
        },
        [&](const Part& part) { progress.increment(part.num); });
}

// The vertices of a range that are pending, in groups.
void SheetFit::proposeRange(const SheetReach& reach, int from, int to, Scratch& scratch)
{
    for (int v = from; v < to; ++v)
    {
        if (vIsPending[static_cast<std::size_t>(v)] == 0)
            continue;
        if (mesh.kind(v) != HalfEdgeMesh::Kind::FREE)
        {
            vProposed[static_cast<std::size_t>(v)] = proposeOnCrease(reach, v, scratch);
            continue;
        }
        collectGroup(reach, v, from, to, scratch);
        proposeGroup(reach, scratch);
    }
}

// The first one, and others of the range around it that have the same points in reach.
void SheetFit::collectGroup(const SheetReach& reach, int first, int from, int to, Scratch& scratch)
{
    const double limit = GROUP_REACH * cellSize;
    std::vector<int>& vGroup = scratch.vGroup;
    vGroup.assign(1, first);
    vIsPending[static_cast<std::size_t>(first)] = 0;
    for (std::size_t i = 0; i < vGroup.size(); ++i)
        mesh.forEachNeighbour(vGroup[i],
                              [&](int u)
                              {
                                  // Others than those of the range may be at work on another thread.
                                  if (u < from || u >= to || vIsPending[static_cast<std::size_t>(u)] == 0 ||
                                      mesh.kind(u) != HalfEdgeMesh::Kind::FREE ||
                                      !(sqDistance(mesh.point(u), mesh.point(first)) < limit * limit) ||
                                      !(reach.getNormal(u) * reach.getNormal(first) > SAME_REACH))
                                      return;
                                  vIsPending[static_cast<std::size_t>(u)] = 0;
                                  vGroup.push_back(u);
                              });
}

void SheetFit::proposeGroup(const SheetReach& reach, Scratch& scratch)
{
    const int first = scratch.vGroup.front();
    const Point3& centre = mesh.point(first);
    double farthest = 0.0;
    for (const int v : scratch.vGroup)
        farthest = std::max(farthest, sqDistance(mesh.point(v), centre));
    seedAll(first, scratch);
    reach.gather(centre, reach.getNormal(first), radius * cellSize + std::sqrt(farthest), scratch.reach,
                 scratch.shared);
    for (const int v : scratch.vGroup)
        vProposed[static_cast<std::size_t>(v)] =
            proposeFree(reach, {v, scratch.shared, mesh.point(v) - centre}, scratch);
}

// Onto the surfaces that they have.
void SheetFit::projectAll()
{
    const double limit = maxMove * cellSize;
    vProposed.resize(static_cast<std::size_t>(mesh.endVertices()));
    parallelFor(vProposed.size(), MIN_CHUNK,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                    {
                        const Point3& p = mesh.point(static_cast<int>(i));
                        vProposed[i] = p;
                        if (!vSurfaces[i].isUsable())
                            continue;
                        const Vector3 step = vSurfaces[i].getStep(p);
                        const double length = step.length();
                        if (length > 0.0 && std::isfinite(length))
                            vProposed[i] = p + step * std::min(1.0, limit / length);
                    }
                });
}

// A surface that leads farther out of the cloud than this tells of no points.
Box SheetFit::findRoom() const
{
    Box box;
    for (const Point3& p : vCloud)
        if (isFinite(p))
            box.include({p.x(), p.y(), p.z(), p.x(), p.y(), p.z()});
    const double margin = ROOM * cellSize;
    return {box.xmin - margin, box.ymin - margin, box.zmin - margin,
            box.xmax + margin, box.ymax + margin, box.zmax + margin};
}

void SheetFit::moveAll()
{
    for (int v = 0; v < mesh.endVertices(); ++v)
    {
        if (!mesh.isAliveVertex(v))
            continue;
        const Point3& p = vProposed[static_cast<std::size_t>(v)];
        if (room.contains(p.x(), p.y(), p.z()))
            mesh.setPoint(v, p);
    }
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
void SheetFit::chooseRadius(const SheetReach& reach)
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
                            const int v = vSamples[i];
                            seedAll(v, scratch);
                            vFits[i] = gatherAndFit(reach, v, reach.getNormal(v), candidate, scratch);
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

Point3 SheetFit::proposeFree(const SheetReach& reach, const Place& place, Scratch& scratch)
{
    const Point3& p = mesh.point(place.v);
    double firstResidual = 0.0;
    const Fit best = fitBest(reach, place, reach.getNormal(place.v), scratch, firstResidual);
    if (!best.bUsable)
        return p;
    const double limit = maxMove * cellSize;
    const Point3 result = p + best.way * std::clamp(best.getHeight(), -limit, limit);
    if (!std::isfinite(result.x() + result.y() + result.z()))
        return p;
    vSurfaces[static_cast<std::size_t>(place.v)] = best.toSurface(p, firstResidual);
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

// The least move onto the planes of all sides.
Point3 SheetFit::proposeOnCrease(const SheetReach& reach, int v, Scratch& scratch) const
{
    const Point3& p = mesh.point(v);
    NormalTensor tensor;
    Vector3 right;
    for (const std::vector<int>& vSide : getSides(v))
    {
        scratch.reach.vSeeds = vSide;
        const Vector3 normal = reach.getSideNormal(vSide);
        reach.gather(p, normal, radius * cellSize, scratch.reach, scratch.shared);
        double firstResidual = 0.0;
        const Fit side = fitBest(reach, {v, scratch.shared, Vector3()}, normal, scratch, firstResidual);
        if (!side.bUsable)
            return p;
        tensor.add(side.normal);
        right.add(side.normal * (side.way * side.normal * side.getHeight()));
    }
    const Vector3 move = tensor.solve(right, MEETING_SHARE);
    const double length = move.length();
    if (!(length > 0.0) || !std::isfinite(length))
        return p;
    return p + move * std::min(1.0, maxMove * cellSize / length);
}

void SheetFit::seedAll(int v, Scratch& scratch) const
{
    scratch.reach.vSeeds.clear();
    mesh.forEachOutgoing(v, [&](int h) { scratch.reach.vSeeds.push_back(HalfEdgeMesh::triangleOf(h)); });
}

SheetFit::Fit SheetFit::fitBest(const SheetReach& reach, const Place& place, const Vector3& normal,
                                Scratch& scratch, double& firstResidual) const
{
    Fit best = fitTwice(reach, place, normal, radius, scratch);
    firstResidual = best.residual;
    if (best.bUsable && best.residual > SHARP * noise)
    {
        const Fit small = fitTwice(reach, place, normal, SMALL_RADIUS, scratch);
        if (small.bUsable && small.residual < best.residual)
            return small;
    }
    return best;
}

// Whether points belong to the sheet hardly depends on a small turn of the normal.
SheetFit::Fit SheetFit::fitTwice(const SheetReach& reach, const Place& place, const Vector3& normal,
                                 double radiusInCells, Scratch& scratch) const
{
    const Fit first = fit(place, normal, radiusInCells);
    if (!first.bUsable || first.normal * normal > SAME_NORMAL)
        return first;
    const Fit second = first.normal * normal > SAME_REACH
                           ? fit(place, first.normal, radiusInCells)
                           : gatherAndFit(reach, place.v, first.normal, radiusInCells, scratch);
    return second.bUsable ? second : first;
}

// From the seeds that the scratch holds.
SheetFit::Fit SheetFit::gatherAndFit(const SheetReach& reach, int v, const Vector3& normal,
                                     double radiusInCells, Scratch& scratch) const
{
    reach.gather(mesh.point(v), normal, radiusInCells * cellSize, scratch.reach, scratch.own);
    return fit({v, scratch.own, Vector3()}, normal, radiusInCells);
}

SheetFit::Fit SheetFit::fit(const Place& place, const Vector3& normal, double radiusInCells) const
{
    Fit result;
    result.reach = radiusInCells * cellSize;
    result.way = normal;
    const SurfaceFrame frame(normal);
    QuadricSums sums;
    place.points.forEachNear(place.offset, result.reach,
                             [&](const Vector3& d)
                             { sums.add(d * frame.xAxis, d * frame.yAxis, d * normal); });
    result.numPoints = sums.size();
    if (sums.size() < MIN_POINTS || !sums.solve())
        return result;
    result.terms = sums.getTerms();
    result.normal = getUnit(frame.toWorld(-result.terms[1], -result.terms[2], 1.0));
    result.residual = sums.getResidual() * radiusInCells;
    result.bUsable = std::isfinite(result.getHeight()) && std::isfinite(result.residual);
    return result;
}

} // namespace TARN_ZEF

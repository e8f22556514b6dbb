#include "outer/HullSurface.h"

#include "remesh/triangles.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace TARN_ZEF
{
namespace
{
// Cells that a vertex may stand off the middle of its own along an axis.
constexpr double REACH = 1.25;
} // namespace

HullSurface::HullSurface(const HullLattice& lattice_, const AllCrossings& crossings_,
                         const InsidePoints& points_, const HalfEdgeMesh& surface_)
    : DualSurface(lattice_)
    , crossings(crossings_)
    , points(points_)
    , surface(surface_)
    , walker(surface_)
{
}

void HullSurface::run()
{
    std::vector<Change> vFound;
    points.getInside().forEachChange(
        [&](int axis, const Cell& p, bool bFirstInside) {
            vFound.push_back({p, axis, bFirstInside});
        });
    DualSurface::run(std::move(vFound));
}

HullVertex HullSurface::makeVertex(const Cell& cell, const std::vector<const Change*>& vLoop) const
{
    std::vector<EdgeSample> vSamples;
    vSamples.reserve(vLoop.size());
    for (const Change* pChange : vLoop)
        vSamples.push_back(sample(*pChange));
    const Point3 centre = lattice.toPoint({cell[0] + 0.5, cell[1] + 0.5, cell[2] + 0.5});
    HullVertex vertex = placeOnPlanes(vSamples, centre, REACH * lattice.cell);
    const auto onSurface = std::find_if(vSamples.begin(), vSamples.end(),
                                        [](const EdgeSample& s) { return !s.normal.isDegenerate(); });
    if (vertex.rank == 1 && onSurface != vSamples.end())
        vertex.point = walker.walk(vertex.point, onSurface->triangle).point;
    return vertex;
}

// Where the triangles are met first from outside.
EdgeSample HullSurface::sample(const Change& change) const
{
    const LineCrossings::Range all = crossings[change.axis].after(change.lower);
    Cell upper = change.lower;
    ++upper[change.axis];
    const bool bWall = points.isWall(change.bFirstInside ? change.lower : upper);
    Place place = {static_cast<double>(change.lower[0]), static_cast<double>(change.lower[1]),
                   static_cast<double>(change.lower[2])};
    EdgeSample result;
    if (bWall || all.empty())
    {
        place[change.axis] += 0.5;
        result.point = lattice.toPoint(place);
        return result;
    }
    const LineCrossings::Crossing& crossing = change.bFirstInside ? *(all.pEnd - 1) : *all.pBegin;
    place[change.axis] = crossing.at;
    result.point = lattice.toPoint(place);
    result.triangle = crossing.getTriangle();
    const int h = 4 * result.triangle;
    const Vector3 normal =
        unitOrNull(rawNormal(surface.point(surface.from(h)), surface.point(surface.from(h + 1)),
                             surface.point(surface.from(h + 2))));
    // As it is met, whichever way the triangle faces.
    result.normal = crossing.enters() == change.bFirstInside ? normal * -1.0 : normal;
    return result;
}

// The one whose triangles pass nearer to the place where the edge meets the surface; on a plane the shorter one.
bool HullSurface::isFirstDiagonalBetter(const std::array<int, 4>& ring, const Change& change) const
{
    const Point3 crossing = sample(change).point;
    constexpr double equal = 1e-6; // of a cell, squared
    const auto place = [&](int i) -> const Point3& { return getVertices()[ring[i % 4]].point; };
    const auto offOf = [&](int i)
    {
        return std::min(nearestOnTriangle(crossing, place(i), place(i + 1), place(i + 2)).sqDist,
                        nearestOnTriangle(crossing, place(i + 2), place(i + 3), place(i)).sqDist);
    };
    const double offFirst = offOf(0);
    const double offSecond = offOf(1);
    if (std::fabs(offFirst - offSecond) > equal * lattice.cell * lattice.cell)
        return offFirst < offSecond;
    return sqDistance(place(0), place(2)) <= sqDistance(place(1), place(3));
}

} // namespace TARN_ZEF

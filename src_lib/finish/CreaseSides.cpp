#include "finish/CreaseSides.h"

#include "geometry/tools.h"
#include "parallel/parallelFor.h"

#include <algorithm>
#include <cfloat>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
constexpr std::size_t MIN_CHUNK = 2'000;
// Cosines of 30 and 155 degrees: sides that meet under less are one, under more no crease but two sheets.
constexpr double FLATTEST = 0.866;
constexpr double SHARPEST = -0.906;
// A fit is good if the points leave it by no more than so many times the usual, or so many cells.
constexpr double GOOD = 2.0;
constexpr double GOOD_CELLS = 0.01;
// Planes of others are taken if their residual is less than this share of the own one.
constexpr double BETTER = 0.35;
// An edge crosses a crease only if the fit at one of its ends is worse than those of the sides so many times.
constexpr double BROKEN = 3.0;
// How far off the planes of sides are looked for, in cells and in radii of the fits.
constexpr double REACH_CELLS = 2.8;
constexpr double REACH_RADII = 1.15;
// What a cell of distance, a cell of residual, and neighbours that took other sides add to the height over a plane.
constexpr double DISTANCE_COST = 0.03;
constexpr double RESIDUAL_COST = 5.0;
constexpr double DISSENT_COST = 0.3;
constexpr int VOTE_ROUNDS = 3;
// Farthest way of the middle of an edge to the crease, in cells, beside half the edge.
constexpr double FARTHEST = 0.9;
// Farthest way of a vertex to the plane of its side, in cells.
constexpr double FARTHEST_OFF = 0.6;
} // namespace

CreaseSides::CreaseSides(const HalfEdgeMesh& mesh_, const Surfaces& vSurfaces_, double cellSize_,
                         double noise_, double radius_, const Box& room_)
    : mesh(mesh_)
    , vSurfaces(vSurfaces_)
    , cellSize(cellSize_)
    , room(room_)
    , noise(noise_)
    , radius(radius_)
{
}

void CreaseSides::run()
{
    choose();
    for (int i = 0; i < VOTE_ROUNDS; ++i)
        vote();
}

bool CreaseSides::isGood(int v) const
{
    const LocalSurface& surface = vSurfaces[static_cast<std::size_t>(v)];
    return surface.isUsable() && surface.residual <= std::max(GOOD * noise, GOOD_CELLS);
}

void CreaseSides::choose()
{
    vSide.assign(vSurfaces.size(), NONE);
    parallelFor(vSide.size(), MIN_CHUNK,
                [&](std::size_t from, std::size_t to)
                {
                    std::vector<int> vNear;
                    for (std::size_t v = from; v < to; ++v)
                        if (mesh.isAliveVertex(static_cast<int>(v)) && vSurfaces[v].isUsable())
                            vSide[v] = findSide(static_cast<int>(v), vNear);
                });
}

// How badly a plane goes with a vertex, in cells.
double CreaseSides::getCost(int v, int side) const
{
    const LocalSurface& surface = vSurfaces[static_cast<std::size_t>(side)];
    const TangentPlane plane = surface.getPlane();
    const Vector3 way = plane.point - mesh.point(v);
    return (std::fabs(way * plane.normal) + DISTANCE_COST * way.length()) / cellSize +
           RESIDUAL_COST * surface.residual;
}

// The plane of a vertex in the neighbourhood that fits its points and passes nearest.
int CreaseSides::findSide(int v, std::vector<int>& vNear) const
{
    if (isGood(v))
        return v;
    const double own = vSurfaces[static_cast<std::size_t>(v)].residual;
    const double limit = std::max({GOOD * noise, GOOD_CELLS, BETTER * own});
    const double reach = cellSize * std::max(REACH_CELLS, REACH_RADII * radius);
    int best = NONE;
    double leastCost = DBL_MAX;
    const auto visit = [&](int u)
    {
        if (!(sqDistance(mesh.point(v), mesh.point(u)) < reach * reach) ||
            std::find(vNear.begin(), vNear.end(), u) != vNear.end())
            return;
        vNear.push_back(u);
        const LocalSurface& surface = vSurfaces[static_cast<std::size_t>(u)];
        if (!surface.isUsable() || surface.residual > limit)
            return;
        const double cost = getCost(v, u);
        if (cost < leastCost || (cost == leastCost && u < best))
        {
            leastCost = cost;
            best = u;
        }
    };
    vNear.assign(1, v);
    for (std::size_t i = 0; i < vNear.size(); ++i)
        mesh.forEachNeighbour(vNear[i], visit);
    return best;
}

bool CreaseSides::agree(int side, int otherSide) const
{
    const auto normalOf = [this](int v) { return vSurfaces[static_cast<std::size_t>(v)].getNormal(); };
    return side == otherSide || normalOf(side) * normalOf(otherSide) > FLATTEST;
}

// Vertices near a crease go with their neighbours, unless the points say much else: a crease is no zigzag.
void CreaseSides::vote()
{
    const std::vector<int> vOld(vSide);
    const auto oldSide = [&vOld](int v) { return vOld[static_cast<std::size_t>(v)]; };
    const auto getVotedCost = [&](int v, int side)
    {
        double num = 0.0;
        double numDissent = 0.0;
        mesh.forEachNeighbour(v,
                              [&](int u)
                              {
                                  num += 1.0;
                                  if (oldSide(u) != NONE && !agree(side, oldSide(u)))
                                      numDissent += 1.0;
                              });
        return getCost(v, side) + DISSENT_COST * numDissent / num;
    };
    const auto choose = [&](int v)
    {
        int& best = vSide[static_cast<std::size_t>(v)];
        double leastCost = getVotedCost(v, best);
        mesh.forEachNeighbour(v,
                              [&](int u)
                              {
                                  const double cost =
                                      oldSide(u) == NONE ? DBL_MAX : getVotedCost(v, oldSide(u));
                                  if (cost < leastCost || (cost == leastCost && oldSide(u) < best))
                                  {
                                      leastCost = cost;
                                      best = oldSide(u);
                                  }
                              });
    };
    parallelFor(vSide.size(), MIN_CHUNK,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t v = from; v < to; ++v)
                        if (vOld[v] != NONE && !isGood(static_cast<int>(v)))
                            choose(static_cast<int>(v));
                });
}

// Where the planes of both sides meet, next to the middle of the edge.
bool CreaseSides::meet(int a, int b, Point3& point) const
{
    const TangentPlane planeA = planeOf(a);
    const TangentPlane planeB = planeOf(b);
    const double cosine = planeA.normal * planeB.normal;
    if (!(cosine < FLATTEST && cosine > SHARPEST))
        return false;
    const auto isFarOff = [this](int v, const TangentPlane& plane)
    { return std::fabs((mesh.point(v) - plane.point) * plane.normal) > FARTHEST_OFF * cellSize; };
    if (isFarOff(a, planeA) || isFarOff(b, planeB))
        return false;
    const Vector3 edge = mesh.point(b) - mesh.point(a);
    const Point3 middle = mesh.point(a) + edge * 0.5;
    const double heightA = (planeA.point - middle) * planeA.normal;
    const double heightB = (planeB.point - middle) * planeB.normal;
    const double det = 1.0 - cosine * cosine;
    const Vector3 move = planeA.normal * ((heightA - cosine * heightB) / det) +
                         planeB.normal * ((heightB - cosine * heightA) / det);
    const double limit = FARTHEST * cellSize + 0.5 * edge.length();
    point = middle + move;
    return move.sqLength() < limit * limit && room.contains(point.x(), point.y(), point.z());
}

// Whether the fits over an edge are far worse than those of its sides: else the surface is round there.
bool CreaseSides::isBroken(int a, int b) const
{
    const auto residual = [this](int v) -> double { return vSurfaces[static_cast<std::size_t>(v)].residual; };
    return std::max(residual(a), residual(b)) >
           BROKEN * std::max({residual(get(a)), residual(get(b)), noise});
}

} // namespace TARN_ZEF

#include "sheets/PointFacing.h"

#include "choice/flattestDirection.h"
#include "core/cancel.h"
#include "finish/ParityUnion.h"
#include "finish/directions.h"
#include "geometry/tools.h"
#include "parallel/parallelFor.h"
#include "parallel/sortMT2.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace TARN_ZEF
{
namespace
{
constexpr std::size_t MIN_CHUNK = 1'000;
// A spacing between two points weighs as much as a hundredth of the difference between sure and unsure.
constexpr double DOUBT_OF_SPACING = 0.01;
// Bodies of fewer points do not count for what lies within what, nor do more bodies than that.
constexpr std::size_t LEAST_OF_BODY = 200;
constexpr std::size_t MOST_BODIES = 32;
constexpr std::size_t NUM_SAMPLES = 9;
} // namespace

PointFacing::PointFacing(const std::vector<Point3>& vPoints_, const PointGrid& grid_, double spacing_)
    : vPoints(vPoints_)
    , grid(grid_)
    , spacing(spacing_)
{
}

void PointFacing::run()
{
    fitPlanes();
    agree();
    faceOutward();
    faceCavitiesInward();
}

void PointFacing::fitPlanes()
{
    vNeighbours.resize(vPoints.size());
    vNormals.resize(vPoints.size());
    parallelFor(vPoints.size(), MIN_CHUNK,
                [&](std::size_t from, std::size_t to)
                {
                    std::vector<PointGrid::Hit> vHits;
                    for (std::size_t i = from; i < to; ++i)
                    {
                        grid.find(vPoints[i], vHits);
                        Neighbours& own = vNeighbours[i];
                        own.fill(NONE);
                        std::size_t num = 0;
                        for (std::size_t k = 0; k < vHits.size() && num < NUM_NEIGHBOURS; ++k)
                            if (vHits[k].index != i)
                                own[num++] = vHits[k].index;
                        vNormals[i] = fitPlane(static_cast<std::uint32_t>(i));
                    }
                });
}

Vector3 PointFacing::fitPlane(std::uint32_t point) const
{
    std::array<Vector3, NUM_NEIGHBOURS + 1> ways; // the first one to the point itself
    std::size_t num = 1;
    Vector3 sum;
    for (const std::uint32_t neighbour : vNeighbours[point])
        if (neighbour != NONE)
        {
            ways[num] = vPoints[neighbour] - vPoints[point];
            sum.add(ways[num]);
            ++num;
        }
    SymmetricMatrix moments;
    const Vector3 toMean = sum * (1.0 / static_cast<double>(num));
    for (std::size_t i = 0; i < num; ++i)
        moments.addSquareOf(ways[i] + toMean * -1.0);
    double spread = 0.0;
    return flattestDirection(moments, spread);
}

double PointFacing::compare(std::uint32_t a, std::uint32_t b) const
{
    const Vector3 way = vPoints[b] - vPoints[a];
    const double sqLength = way.sqLength();
    const Vector3& normal = vNormals[a];
    if (!(sqLength > 0.0))
        return normal * vNormals[b];
    const Vector3 mirrored = normal + way * (-2.0 * (normal * way) / sqLength);
    return mirrored * vNormals[b];
}

// Each pair once, although two points can be neighbours of one another.
std::vector<PointFacing::Pair> PointFacing::findPairs() const
{
    std::vector<Pair> vPairs;
    for (std::uint32_t a = 0; a < vPoints.size(); ++a)
    {
        checkCancelledAt(a);
        for (const std::uint32_t b : vNeighbours[a])
        {
            if (b == NONE)
                break;
            const Neighbours& others = vNeighbours[b];
            if (b < a && std::find(others.begin(), others.end(), a) != others.end())
                continue;
            const double length = std::sqrt(sqDistance(vPoints[a], vPoints[b]));
            vPairs.push_back({1.0 - std::fabs(compare(a, b)) + DOUBT_OF_SPACING * length / spacing, a, b});
        }
    }
    sortMT(vPairs.begin(), vPairs.end(),
           [](const Pair& p, const Pair& q)
           { return std::tie(p.doubt, p.a, p.b) < std::tie(q.doubt, q.a, q.b); });
    return vPairs;
}

void PointFacing::agree()
{
    ParityUnion facing(vPoints.size());
    for (const Pair& pair : findPairs())
        facing.unite(pair.a, pair.b, compare(pair.a, pair.b) < 0.0 ? 1 : 0);
    // The first of a group has the lowest number of it, so groups are numbered by their first points.
    vGroup.resize(vPoints.size());
    for (std::uint32_t i = 0; i < vPoints.size(); ++i)
    {
        checkCancelledAt(i);
        std::uint8_t bUnlike = 0;
        const std::uint32_t first = facing.find(i, bUnlike);
        if (first == i)
        {
            vGroup[i] = static_cast<std::uint32_t>(vOfGroup.size());
            vOfGroup.emplace_back();
        }
        vGroup[i] = vGroup[first];
        vOfGroup[vGroup[i]].push_back(i);
        if (bUnlike != 0)
            vNormals[i] = vNormals[i] * -1.0;
    }
}

// Where a body reaches farthest in a direction, it faces that way.
void PointFacing::faceOutward()
{
    std::vector<bool> vTurned(vOfGroup.size());
    for (std::size_t group = 0; group < vOfGroup.size(); ++group)
    {
        checkCancelled();
        double vote = 0.0;
        for (int code = 0; code < 27; ++code)
        {
            const auto step = [](int number) { return number % 3 - 1.0; };
            const Vector3 direction = getUnit({step(code), step(code / 3), step(code / 9)});
            const std::vector<std::uint32_t>& vOwn = vOfGroup[group];
            const Point3& start = vPoints[vOwn.front()];
            const auto reach = [&](std::uint32_t i) { return (vPoints[i] - start) * direction; };
            const auto it =
                std::max_element(vOwn.begin(), vOwn.end(),
                                 [&](std::uint32_t i, std::uint32_t k) { return reach(i) < reach(k); });
            vote += vNormals[*it] * direction;
        }
        vTurned[group] = vote < 0.0;
    }
    turnGroups(vTurned);
}

void PointFacing::faceCavitiesInward()
{
    std::vector<std::uint32_t> vBodies;
    for (std::uint32_t group = 0; group < vOfGroup.size(); ++group)
        if (vOfGroup[group].size() >= LEAST_OF_BODY)
            vBodies.push_back(group);
    if (vBodies.size() < 2 || vBodies.size() > MOST_BODIES)
        return;
    std::vector<bool> vTurned(vOfGroup.size());
    for (const std::uint32_t body : vBodies)
        for (const std::uint32_t other : vBodies)
            if (body != other && isWithin(body, other))
                vTurned[body] = !vTurned[body];
    turnGroups(vTurned);
}

// By the faces of the other body that are nearest to some of the points.
bool PointFacing::isWithin(std::uint32_t group, std::uint32_t other) const
{
    const std::vector<std::uint32_t>& vOwn = vOfGroup[group];
    std::size_t numWithin = 0;
    for (std::size_t i = 0; i < NUM_SAMPLES; ++i)
    {
        checkCancelled();
        const Point3& p = vPoints[vOwn[(2 * i + 1) * vOwn.size() / (2 * NUM_SAMPLES)]];
        const std::uint32_t nearest = findNearestOf(other, p);
        if (vNormals[nearest] * (p - vPoints[nearest]) < 0.0)
            ++numWithin;
    }
    return 2 * numWithin > NUM_SAMPLES;
}

std::uint32_t PointFacing::findNearestOf(std::uint32_t group, const Point3& p) const
{
    const std::vector<std::uint32_t>& vOwn = vOfGroup[group];
    return *std::min_element(vOwn.begin(), vOwn.end(),
                             [&](std::uint32_t i, std::uint32_t k)
                             { return sqDistance(vPoints[i], p) < sqDistance(vPoints[k], p); });
}

void PointFacing::turnGroups(const std::vector<bool>& vTurned)
{
    for (std::size_t i = 0; i < vNormals.size(); ++i)
        if (vTurned[vGroup[i]])
            vNormals[i] = vNormals[i] * -1.0;
}

} // namespace TARN_ZEF

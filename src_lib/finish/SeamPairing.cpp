#include "finish/SeamPairing.h"

#include "finish/directions.h"
#include "geometry/tools.h"

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
// Grows with the angle of a direction, from 0 to 4 in one turn; no arc function is needed for an order.
double getTurn(double x, double y)
{
    const double size = std::fabs(x) + std::fabs(y);
    if (!(size > 0.0) || !std::isfinite(size))
        return 0.0;
    const double part = y / size;
    if (x < 0.0)
        return 2.0 - part;
    return part < 0.0 ? 4.0 + part : part;
}

// A unit vector at right angles on the unit vector v.
Vector3 getOrthogonal(const Vector3& v)
{
    const int axis = std::fabs(v.x()) <= std::fabs(v.y()) ? (std::fabs(v.x()) <= std::fabs(v.z()) ? 0 : 2)
                                                          : (std::fabs(v.y()) <= std::fabs(v.z()) ? 1 : 2);
    const Vector3 unit(axis == 0 ? 1.0 : 0.0, axis == 1 ? 1.0 : 0.0, axis == 2 ? 1.0 : 0.0);
    return getUnit(crossProduct(v, unit));
}
} // namespace

SeamPairing::SeamPairing(const FlatMesh& mesh, std::vector<Index> vHalfEdges)
{
    const Index first = vHalfEdges.front();
    const Point3& start = mesh.vPoints[std::min(mesh.from(first), mesh.to(first))];
    const Point3& end = mesh.vPoints[std::max(mesh.from(first), mesh.to(first))];
    const Vector3 along = getUnit(end - start);
    const Vector3 xAxis = getOrthogonal(along);
    const Vector3 yAxis = crossProduct(along, xAxis);
    struct Entry
    {
        double turn;
        Index h;
        Direction direction;
    };
    std::vector<Entry> vEntries;
    for (const Index h : vHalfEdges)
    {
        const Vector3 v = mesh.vPoints[mesh.opposite(h)] - start;
        const double x = v * xAxis;
        const double y = v * yAxis;
        const double length = std::sqrt(x * x + y * y);
        vEntries.push_back(
            {getTurn(x, y), h, length > 0.0 ? Direction{x / length, y / length} : Direction{1.0, 0.0}});
    }
    std::sort(vEntries.begin(), vEntries.end(),
              [](const Entry& a, const Entry& b) { return a.turn != b.turn ? a.turn < b.turn : a.h < b.h; });
    for (const Entry& entry : vEntries)
    {
        vOrder.push_back(entry.h);
        vDirections.push_back(entry.direction);
    }
}

double SeamPairing::getFlatness(int a, int b) const noexcept
{
    const Direction& dirA = vDirections[static_cast<std::size_t>(a)];
    const Direction& dirB = vDirections[static_cast<std::size_t>(b)];
    const double flatness = 0.5 * (1.0 - (dirA.x * dirB.x + dirA.y * dirB.y));
    return std::isfinite(flatness) ? std::clamp(flatness, 0.0, 1.0) : 0.0;
}

} // namespace TARN_ZEF

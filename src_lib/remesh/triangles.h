// Measures of single triangles for the cycle of remeshing; all from square roots and the four rules alone, so
// that decisions are the same on every system.
#ifndef ZEF_REMESH_TRIANGLES_H
#define ZEF_REMESH_TRIANGLES_H

#include "Point3.h"
#include "Vector3.h"
#include "geometry/tools.h"

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
// At right angles, twice the area long.
[[nodiscard]] inline Vector3 rawNormal(const Point3& a, const Point3& b, const Point3& c)
{
    return crossProduct(b - a, c - a);
}

[[nodiscard]] inline Vector3 unitOrNull(const Vector3& v)
{
    const double len = v.length();
    return len > 0.0 ? v / len : Vector3();
}

[[nodiscard]] inline Point3 middle(const Point3& a, const Point3& b)
{
    return a + (b - a) * 0.5;
}

[[nodiscard]] inline Point3 centre(const Point3& a, const Point3& b, const Point3& c)
{
    return a + ((b - a) + (c - a)) / 3.0;
}

// 1 for an equilateral triangle, 0 for a flat one.
[[nodiscard]] inline double shapeOf(const Point3& a, const Point3& b, const Point3& c)
{
    constexpr double normaliser = 3.4641016151377544; // 2 sqrt(3)
    const double sum = sqDistance(a, b) + sqDistance(b, c) + sqDistance(c, a);
    return sum > 0.0 ? normaliser * rawNormal(a, b, c).length() / sum : 0.0;
}

// Whether the triangle stands higher over its longest edge than the given part of that edge.
[[nodiscard]] inline bool isHigh(const Point3& a, const Point3& b, const Point3& c, double part)
{
    const double sqLongest = std::max({sqDistance(a, b), sqDistance(b, c), sqDistance(c, a)});
    return rawNormal(a, b, c).length() > part * sqLongest;
}

// Grows with the angle from (1, 0) counter-clockwise, from 0 to 4.
[[nodiscard]] inline double pseudoAngle(double x, double y)
{
    const double sum = std::fabs(x) + std::fabs(y);
    if (!(sum > 0.0))
        return 0.0;
    const double along = y / sum;
    if (x < 0.0)
        return 2.0 - along;
    return y < 0.0 ? 4.0 + along : along;
}

// Whether a volume is more than rounding for a surface of that area: a millionth of that of the ball.
[[nodiscard]] inline bool enclosesSpace(double volume, double area)
{
    constexpr double leastRoundness = 1e-6;
    constexpr double sphereFactor = 10.6347; // area^1.5 over volume
    return volume > leastRoundness * area * std::sqrt(area) / sphereFactor;
}

// Cosine of an angle in degrees from 0 to 180, the same on every system.
[[nodiscard]] double cosOfDegrees(double degrees);

// The place on a triangle that is nearest to p.
struct NearestOnTriangle
{
    Point3 point;
    double sqDist = 0.0;
    int edge = -1;   // 0 to 2 if it lies on the edge from that corner
    int corner = -1; // 0 to 2 if it is that corner
};
[[nodiscard]] NearestOnTriangle nearestOnTriangle(const Point3& p, const Point3& a, const Point3& b,
                                                  const Point3& c);
[[nodiscard]] double sqDistanceToSegment(const Point3& p, const Point3& a, const Point3& b,
                                         Point3* pFoot = nullptr);

} // namespace TARN_ZEF

#endif

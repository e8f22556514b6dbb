#include "remesh/triangles.h"

#include <cmath>

namespace TARN_ZEF
{
// Half the angle by its series, then doubled: cos 2x = 2 cos^2 x - 1, three times.
double cosOfDegrees(double degrees)
{
    constexpr double radiansPerDegree = 0.017453292519943295;
    const double x = degrees * radiansPerDegree / 8.0; // at most 0.4
    const double s = x * x;
    double c = 1.0 - s / 2.0 * (1.0 - s / 12.0 * (1.0 - s / 30.0 * (1.0 - s / 56.0 * (1.0 - s / 90.0))));
    for (int i = 0; i < 3; ++i)
        c = 2.0 * c * c - 1.0;
    return c;
}

// By the regions of corners and edges. (Ericson, Real-Time Collision Detection, 2005, section 5.1.5)
namespace
{
// Of a triangle without area, whose inside has no coordinates.
NearestOnTriangle nearestOnEdges(const Point3& p, const Point3& a, const Point3& b, const Point3& c)
{
    NearestOnTriangle nearest{a, sqDistance(p, a), -1, 0};
    const Point3* const corners[] = {&a, &b, &c};
    for (int edge = 0; edge < 3; ++edge)
    {
        Point3 foot;
        const double sqDist = sqDistanceToSegment(p, *corners[edge], *corners[(edge + 1) % 3], &foot);
        if (sqDist < nearest.sqDist)
            nearest = {foot, sqDist, edge, -1};
    }
    return nearest;
}
} // namespace

NearestOnTriangle nearestOnTriangle(const Point3& p, const Point3& a, const Point3& b, const Point3& c)
{
    const auto at = [&p](const Point3& q, int edge, int corner) {
        return NearestOnTriangle{q, sqDistance(p, q), edge, corner};
    };
    const Vector3 ab = b - a;
    const Vector3 ac = c - a;
    const Vector3 ap = p - a;
    const double d1 = ab * ap;
    const double d2 = ac * ap;
    if (d1 <= 0.0 && d2 <= 0.0)
        return at(a, -1, 0);
    const Vector3 bp = p - b;
    const double d3 = ab * bp;
    const double d4 = ac * bp;
    if (d3 >= 0.0 && d4 <= d3)
        return at(b, -1, 1);
    const double vc = d1 * d4 - d3 * d2;
    if (vc <= 0.0 && d1 >= 0.0 && d3 <= 0.0 && d1 > d3)
        return at(a + ab * (d1 / (d1 - d3)), 0, -1);
    const Vector3 cp = p - c;
    const double d5 = ab * cp;
    const double d6 = ac * cp;
    if (d6 >= 0.0 && d5 <= d6)
        return at(c, -1, 2);
    const double vb = d5 * d2 - d1 * d6;
    if (vb <= 0.0 && d2 >= 0.0 && d6 <= 0.0 && d2 > d6)
        return at(a + ac * (d2 / (d2 - d6)), 2, -1);
    const double va = d3 * d6 - d5 * d4;
    if (va <= 0.0 && d4 - d3 >= 0.0 && d5 - d6 >= 0.0 && (d4 - d3) + (d5 - d6) > 0.0)
        return at(b + (c - b) * ((d4 - d3) / ((d4 - d3) + (d5 - d6))), 1, -1);
    const double denominator = va + vb + vc;
    if (!(denominator > 0.0))
        return nearestOnEdges(p, a, b, c);
    return at(a + ab * (vb / denominator) + ac * (vc / denominator), -1, -1);
}

double sqDistanceToSegment(const Point3& p, const Point3& a, const Point3& b, Point3* pFoot)
{
    const Vector3 ab = b - a;
    const double sqLen = ab.sqLength();
    const double along = sqLen > 0.0 ? std::clamp(((p - a) * ab) / sqLen, 0.0, 1.0) : 0.0;
    const Point3 foot = a + ab * along;
    if (pFoot != nullptr)
        *pFoot = foot;
    return sqDistance(p, foot);
}

} // namespace TARN_ZEF

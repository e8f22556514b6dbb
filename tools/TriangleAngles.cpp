#include "TriangleAngles.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace TARN_TOOL
{
using TARN_ZEF::Point3;

namespace
{
double squaredDistance(const Point3& a, const Point3& b)
{
    const double x = a.x() - b.x();
    const double y = a.y() - b.y();
    const double z = a.z() - b.z();
    return x * x + y * y + z * z;
}

// In degrees; opposite to the shortest side, by the law of cosines. 0.0 if two corners coincide.
double smallestAngle(const Point3& a, const Point3& b, const Point3& c)
{
    double sides[3] = {squaredDistance(a, b), squaredDistance(b, c), squaredDistance(c, a)};
    std::sort(sides, sides + 3);
    if (sides[0] <= 0.0)
        return 0.0;
    const double cosine =
        (sides[1] + sides[2] - sides[0]) / (2.0 * std::sqrt(sides[1]) * std::sqrt(sides[2]));
    return std::acos(std::clamp(cosine, -1.0, 1.0)) * 180.0 / std::numbers::pi;
}
} // namespace

TriangleAngles::TriangleAngles(const TARN_ZEF::Mesh& mesh)
{
    std::vector<Point3*> vCorners;
    mesh.getTriangles(vCorners);
    numTriangles = vCorners.size() / 3;
    if (numTriangles == 0)
        return;
    smallest = 180.0;
    for (std::size_t i = 0; i < vCorners.size(); i += 3)
    {
        const double angle = smallestAngle(*vCorners[i], *vCorners[i + 1], *vCorners[i + 2]);
        smallest = std::min(smallest, angle);
        mean += angle;
    }
    mean /= static_cast<double>(numTriangles);
}

} // namespace TARN_TOOL

#include "SurfaceNormals.h"

#include <cmath>
#include <numeric>

namespace TARN_TOOL
{
namespace
{
const float COS_CREASE = std::cos(0.56f); // 32 degrees
} // namespace

SurfaceNormals::SurfaceNormals(const std::vector<Vec3f>& vPoints, const std::vector<int>& vCorners_)
    : vCorners(vCorners_)
    , vAreas(vCorners_.size() / 3)
    , vBegin(vPoints.size() + 1, 0)
    , vTriangles(vCorners_.size())
{
    for (std::size_t i = 0; i < vAreas.size(); ++i)
    {
        const Vec3f& first = vPoints[vCorners[3 * i]];
        vAreas[i] = cross(vPoints[vCorners[3 * i + 1]] - first, vPoints[vCorners[3 * i + 2]] - first);
    }
    for (const int corner : vCorners)
        ++vBegin[corner + 1];
    std::partial_sum(vBegin.begin(), vBegin.end(), vBegin.begin());
    std::vector<std::size_t> vNext(vBegin.begin(), vBegin.end() - 1);
    for (std::size_t i = 0; i < vCorners.size(); ++i)
        vTriangles[vNext[vCorners[i]]++] = static_cast<int>(i / 3);
}

Vec3f SurfaceNormals::getCornerNormal(std::size_t i) const
{
    const Vec3f own = unit(vAreas[i / 3]);
    const int vertex = vCorners[i];
    Vec3f sum;
    for (std::size_t k = vBegin[vertex]; k < vBegin[vertex + 1]; ++k)
    {
        const Vec3f& other = vAreas[vTriangles[k]];
        if (dot(own, other) >= COS_CREASE * length(other))
            sum += other;
    }
    return unit(sum);
}

Vec3f SurfaceNormals::getMean() const
{
    Vec3f sum;
    float area = 0.0f;
    for (const Vec3f& v : vAreas)
    {
        sum += v;
        area += length(v);
    }
    return area > 0.0f ? (1.0f / area) * sum : Vec3f();
}

} // namespace TARN_TOOL

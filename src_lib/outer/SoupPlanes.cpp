#include "outer/SoupPlanes.h"

#include "finish/NormalTensor.h"
#include "geometry/tools.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
constexpr double SAME_DIRECTION = 1.0 - 1e-10;
constexpr double COS_CREASE = 0.9;   // 26 degrees
constexpr double LEAST_CORNER = 0.1; // of the volume of three unit normals
// Of the strongest direction: what weaker ones hold that count no more on a face, a crease, in a corner.
constexpr std::array<double, 4> WEAK = {1.0, 0.25, 0.02, 0.001};

std::vector<Vector3> findDirections(const std::vector<EdgeSample>& vSamples)
{
    std::vector<Vector3> vDirections;
    for (const EdgeSample& sample : vSamples)
        if (!sample.normal.isDegenerate() &&
            std::none_of(vDirections.begin(), vDirections.end(),
                         [&](const Vector3& v) { return v * sample.normal > SAME_DIRECTION; }))
            vDirections.push_back(sample.normal);
    return vDirections;
}

int rankOf(const std::vector<Vector3>& v)
{
    int rank = 1;
    for (std::size_t i = 0; i < v.size(); ++i)
        for (std::size_t k = i + 1; k < v.size(); ++k)
        {
            if (v[i] * v[k] > COS_CREASE)
                continue;
            rank = std::max(rank, 2);
            const Vector3 along = crossProduct(v[i], v[k]);
            for (std::size_t m = k + 1; m < v.size(); ++m)
                if (v[m] * v[i] < COS_CREASE && v[m] * v[k] < COS_CREASE &&
                    std::fabs(along * v[m]) > LEAST_CORNER)
                    return 3;
        }
    return rank;
}

// Of the samples on planes, if any are.
Point3 meanOf(const std::vector<EdgeSample>& vSamples, bool bOnPlanes)
{
    const Point3& base = vSamples.front().point;
    Vector3 sum;
    int num = 0;
    for (const EdgeSample& sample : vSamples)
        if (!bOnPlanes || !sample.normal.isDegenerate())
        {
            sum.add(sample.point - base);
            ++num;
        }
    return base + sum / num;
}

bool isWithin(const Point3& p, const Point3& centre, double reach)
{
    const Vector3 off = p - centre;
    return off.getMaxAbsComponent() <= reach;
}
} // namespace

HullVertex placeOnPlanes(const std::vector<EdgeSample>& vSamples, const Point3& centre, double reach)
{
    std::vector<Vector3> vDirections = findDirections(vSamples);
    const Point3 mean = meanOf(vSamples, !vDirections.empty());
    HullVertex vertex = {mean, meanOf(vSamples, false), 1};
    if (vDirections.empty())
        return vertex;
    NormalTensor tensor;
    Vector3 right;
    for (const Vector3& v : vDirections)
    {
        double height = 0.0;
        int num = 0;
        for (const EdgeSample& sample : vSamples)
            if (v * sample.normal > SAME_DIRECTION)
            {
                height += v * (sample.point - mean);
                ++num;
            }
        tensor.add(v);
        right.add(v * (height / num));
    }
    for (int rank = rankOf(vDirections); rank > 0; --rank)
    {
        const Point3 p = mean + tensor.solve(right, WEAK[rank]);
        if (isWithin(p, centre, reach))
            return {p, vertex.spare, rank};
    }
    return vertex;
}

} // namespace TARN_ZEF

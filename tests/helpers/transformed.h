// Clouds made from clouds.
#ifndef ZEF_TESTS_TRANSFORMED_H
#define ZEF_TESTS_TRANSFORMED_H

#include "Point3.h"

#include <vector>

namespace TARN_ZEF
{
[[nodiscard]] inline std::vector<Point3> scaled(std::vector<Point3> v, double factor)
{
    for (Point3& p : v)
        p.set(p.x() * factor, p.y() * factor, p.z() * factor);
    return v;
}

[[nodiscard]] inline std::vector<Point3> shifted(std::vector<Point3> v, const Point3& shift)
{
    for (Point3& p : v)
        p.set(p.x() + shift.x(), p.y() + shift.y(), p.z() + shift.z());
    return v;
}

// Half of the points a second time: where points coincide, random numbers part them.
[[nodiscard]] inline std::vector<Point3> doubled(std::vector<Point3> v)
{
    v.reserve(2 * v.size());
    for (std::size_t i = 0, half = v.size() / 2; i < half; ++i)
        v.push_back(v[i]);
    return v;
}

} // namespace TARN_ZEF

#endif

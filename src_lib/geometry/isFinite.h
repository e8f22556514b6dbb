#ifndef ZEF_GEOMETRY_ISFINITE_H
#define ZEF_GEOMETRY_ISFINITE_H

#include "Point3.h"

#include <cmath>

namespace TARN_ZEF
{
// Whether no coordinate is a NaN or infinite.
[[nodiscard]] inline bool isFinite(const Point3& p) noexcept
{
    return std::isfinite(p.x()) && std::isfinite(p.y()) && std::isfinite(p.z());
}

} // namespace TARN_ZEF

#endif

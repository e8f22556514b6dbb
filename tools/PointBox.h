#ifndef ZEF_TOOLS_POINTBOX_H
#define ZEF_TOOLS_POINTBOX_H

#include "Point3.h"
#include "Vector3.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace TARN_TOOL
{
[[nodiscard]] inline bool isFinite(const TARN_ZEF::Point3& p)
{
    return std::isfinite(p.x()) && std::isfinite(p.y()) && std::isfinite(p.z());
}

// The axis-parallel box around points, of which there must be one. Only finite ones.
struct PointBox
{
    TARN_ZEF::Point3 low;
    TARN_ZEF::Point3 high;

    explicit PointBox(const std::vector<TARN_ZEF::Point3>& vPoints)
        : low(vPoints.front())
        , high(low)
    {
        for (const TARN_ZEF::Point3& p : vPoints)
        {
            low.set(std::min(low.x(), p.x()), std::min(low.y(), p.y()), std::min(low.z(), p.z()));
            high.set(std::max(high.x(), p.x()), std::max(high.y(), p.y()), std::max(high.z(), p.z()));
        }
    }
    [[nodiscard]] double getMaxExtent() const { return (high - low).getMaxComponent(); }
};

} // namespace TARN_TOOL

#endif

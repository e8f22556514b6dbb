#ifndef ZEF_TOOLS_LOCALFRAME_H
#define ZEF_TOOLS_LOCALFRAME_H

#include "PointBox.h"
#include "Vec3f.h"

#include <vector>

namespace TARN_TOOL
{
// Coordinates of what is drawn: the middle of its box is the origin, the longest edge of the box is 1. So floats serve
// any unit of length and any place.
class LocalFrame
{
public:
    // There must be a point, and only finite ones.
    explicit LocalFrame(const std::vector<TARN_ZEF::Point3>& vPoints)
    {
        const PointBox box(vPoints);
        const TARN_ZEF::Vector3 extent = box.high - box.low;
        const double largest = extent.getMaxComponent();
        centre = box.low + extent * 0.5;
        size = largest > 0.0 ? largest : 1.0;
    }

    [[nodiscard]] const TARN_ZEF::Point3& getCentre() const { return centre; }
    // Units of the points in one of the frame.
    [[nodiscard]] double getSize() const { return size; }

    [[nodiscard]] Vec3f localise(const TARN_ZEF::Point3& p) const
    {
        const TARN_ZEF::Vector3 v = (p - centre) * (1.0 / size);
        return {static_cast<float>(v.x()), static_cast<float>(v.y()), static_cast<float>(v.z())};
    }
    [[nodiscard]] std::vector<Vec3f> localise(const std::vector<TARN_ZEF::Point3>& vPoints) const
    {
        std::vector<Vec3f> v;
        v.reserve(vPoints.size());
        for (const TARN_ZEF::Point3& p : vPoints)
            v.push_back(localise(p));
        return v;
    }

private:
    TARN_ZEF::Point3 centre;
    double size = 1.0;
};

} // namespace TARN_TOOL

#endif

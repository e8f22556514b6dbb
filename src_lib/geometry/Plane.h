#ifndef ZEF_PLANE_H
#define ZEF_PLANE_H

#include "Point3.h"
#include "Vector3.h"

#include <cmath>

namespace TARN_ZEF
{
// A plane in Hesse normal form: nv*p == d for every point p on it, nv of length 1. The positive side is the
// one that nv points to. A default plane has nv (0,0,0) and d 0.
class Plane
{
public:
    Plane() noexcept = default;
    // Through p, across v, which is brought to length 1. A null vector gives nv (0,0,0).
    Plane(const Point3& p, const Vector3& v);
    // Through three points, counter-clockwise as seen from the positive side. Points on one line are fatal.
    Plane(const Point3& p0, const Point3& p1, const Point3& p2);

    [[nodiscard]] const Vector3& getNV() const noexcept { return nv; }
    [[nodiscard]] double getD() const noexcept { return d; }

    // Positive on the side that nv points to; in units of the points, as getDistance().
    [[nodiscard]] double getSignedDistance(const Point3& p) const noexcept { return dotWithNV(p) - d; }
    [[nodiscard]] double getDistance(const Point3& p) const noexcept
    {
        return std::fabs(getSignedDistance(p));
    }
    [[nodiscard]] bool isPositive(const Point3& p) const noexcept { return getSignedDistance(p) > 0.0; }

private:
    [[nodiscard]] double dotWithNV(const Point3& p) const noexcept
    {
        return nv * Vector3(p.x(), p.y(), p.z());
    }

    Vector3 nv;
    double d = 0.0;
};

} // namespace TARN_ZEF

#endif

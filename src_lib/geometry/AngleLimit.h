#ifndef ZEF_ANGLELIMIT_H
#define ZEF_ANGLELIMIT_H

#include "geometry/tools.h"

#include <cmath>

namespace TARN_ZEF
{
// Compares angles between unit vectors with a fixed limit in degrees, as getAngleDegree() would, but takes
// no arc cosine where the dot product alone decides.
//
// Invariant:  the answers are those of getAngleDegree() compared with the limit: its rounding is far below
//             the margin within which it is asked.
// Errors:     as getAngleDegree(): a vector that is not of length 1 is fatal.
class AngleLimit
{
public:
    // 0.0 to 180.0 degrees.
    explicit AngleLimit(double degrees_)
        : degrees(degrees_)
        , cosine(std::cos(degrees_ / DEGREES_PER_RAD))
    {
    }

    // Whether the angle is less than the limit.
    [[nodiscard]] bool isBelow(const Vector3& a, const Vector3& b) const
    {
        detail::requireUnitLengths("getAngleDegree", a, b);
        const double product = a * b;
        if (product > cosine + MARGIN)
            return true;
        if (product < cosine - MARGIN)
            return false;
        return getAngleDegree(a, b) < degrees;
    }
    // Whether the angle is greater than the limit.
    [[nodiscard]] bool isAbove(const Vector3& a, const Vector3& b) const
    {
        detail::requireUnitLengths("getAngleDegree", a, b);
        const double product = a * b;
        if (product < cosine - MARGIN)
            return true;
        if (product > cosine + MARGIN)
            return false;
        return getAngleDegree(a, b) > degrees;
    }

private:
    static constexpr double MARGIN = 1e-9;

    double degrees;
    double cosine;
};

} // namespace TARN_ZEF

#endif

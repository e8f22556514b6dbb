#ifndef ZEF_FINISH_TRIANGLESHAPE_H
#define ZEF_FINISH_TRIANGLESHAPE_H

#include "Point3.h"
#include "Vector3.h"

#include "finish/directions.h"
#include "geometry/tools.h"

#include <cmath>

namespace TARN_ZEF
{
// The smallest angle of a triangle, which lies opposite its shortest side, by its two legs.
struct SmallestAngle
{
    SmallestAngle(const Point3& a, const Point3& b, const Point3& c)
    {
        const Vector3 ab = b - a;
        const Vector3 bc = c - b;
        const Vector3 ca = a - c;
        const double sqAB = ab.sqLength();
        const double sqBC = bc.sqLength();
        const double sqCA = ca.sqLength();
        if (sqAB <= sqBC && sqAB <= sqCA)
            set(bc, ca, sqBC * sqCA);
        else if (sqBC <= sqCA)
            set(ca, ab, sqCA * sqAB);
        else
            set(ab, bc, sqAB * sqBC);
    }
    void set(const Vector3& leg, const Vector3& nextLeg, double sqLegs_)
    {
        product = -(leg * nextLeg);
        sqLegs = sqLegs_;
    }
    // 1 for a triangle without extent.
    [[nodiscard]] double getCosine() const { return sqLegs > 0.0 ? product / std::sqrt(sqLegs) : 1.0; }
    // REQUIRES: limit >= 0.
    [[nodiscard]] bool hasCosineAbove(double limit) const
    {
        return product > 0.0 ? product * product > limit * limit * sqLegs : limit < 1.0 && sqLegs == 0.0;
    }

    double product = 0.0; // of the legs
    double sqLegs = 0.0;  // product of their squared lengths
};

// Cosine of 5 degrees: the normal of a triangle with a smaller angle says nothing.
inline constexpr double NEEDLE_COSINE = 0.9962;

struct TriangleShape
{
    TriangleShape() = default;
    TriangleShape(const Point3& a, const Point3& b, const Point3& c)
        : worstCosine(SmallestAngle(a, b, c).getCosine())
        , normal(getUnit(crossProduct(b - a, c - a)))
    {
    }
    [[nodiscard]] bool isNeedle() const noexcept { return worstCosine > NEEDLE_COSINE; }

    double worstCosine = 1.0; // of the smallest angle: 1 for none at all
    Vector3 normal;           // unit length; null for a triangle without area
};

} // namespace TARN_ZEF

#endif

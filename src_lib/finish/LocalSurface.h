#ifndef ZEF_FINISH_LOCALSURFACE_H
#define ZEF_FINISH_LOCALSURFACE_H

#include "Point3.h"
#include "Vector3.h"

#include "finish/directions.h"
#include "geometry/tools.h"

#include <array>
#include <cmath>

namespace TARN_ZEF
{
// The axes in which a surface is a height over a plane.
struct SurfaceFrame
{
    // zAxis: of unit length.
    explicit SurfaceFrame(const Vector3& zAxis_)
        : xAxis(getUnit(crossProduct(
              std::fabs(zAxis_.x()) < 0.6 ? Vector3(1.0, 0.0, 0.0) : Vector3(0.0, 1.0, 0.0), zAxis_)))
        , yAxis(crossProduct(zAxis_, xAxis))
        , zAxis(zAxis_)
    {
    }

    [[nodiscard]] Vector3 toWorld(double x, double y, double z) const
    {
        return xAxis * x + yAxis * y + zAxis * z;
    }

    Vector3 xAxis;
    Vector3 yAxis;
    Vector3 zAxis;
};

struct TangentPlane
{
    Point3 point;
    Vector3 normal; // of unit length
};

// What a fit says about the surface around a vertex: a quadric over a plane,
// z = a + b x + c y + d x^2 + e x y + f y^2, in units of the reach of the fit.
//
// Kept a vertex each, so in single precision: that tells ten millionths of a cell.
struct LocalSurface
{
    Point3 origin;                    // where the vertex was
    double reach = 0.0;               // in units of the points; 0: no fit
    std::array<float, 3> way = {};    // the z axis
    std::array<float, 3> normal = {}; // over the origin
    std::array<float, 6> terms = {};
    float residual = 0.0F;      // of the fit that was taken, in cells
    float firstResidual = 0.0F; // of the one with the usual radius

    [[nodiscard]] bool isUsable() const noexcept { return reach > 0.0; }
    [[nodiscard]] Vector3 getWay() const { return getUnit({way[0], way[1], way[2]}); }
    // Both over the origin.
    [[nodiscard]] Point3 getPoint() const { return origin + getWay() * (reach * terms[0]); }
    [[nodiscard]] Vector3 getNormal() const { return getUnit({normal[0], normal[1], normal[2]}); }
    [[nodiscard]] TangentPlane getPlane() const { return {getPoint(), getNormal()}; }
    // The step of a place onto the surface, square to it: one step of Newton, which is good to the square of
    // its length against the reach.
    [[nodiscard]] Vector3 getStep(const Point3& p) const
    {
        const SurfaceFrame frame(getWay());
        const Vector3 d = (p - origin) / reach;
        const double x = d * frame.xAxis;
        const double y = d * frame.yAxis;
        const double z =
            terms[0] + terms[1] * x + terms[2] * y + terms[3] * x * x + terms[4] * x * y + terms[5] * y * y;
        const double slopeX = terms[1] + 2.0 * terms[3] * x + terms[4] * y;
        const double slopeY = terms[2] + terms[4] * x + 2.0 * terms[5] * y;
        const double share = (z - d * frame.zAxis) / (1.0 + slopeX * slopeX + slopeY * slopeY);
        return frame.toWorld(-slopeX, -slopeY, 1.0) * (share * reach);
    }
};

} // namespace TARN_ZEF

#endif

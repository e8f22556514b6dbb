#include "geometry/NearFrame.h"

#include "geometry/tools.h"

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
// Added to the exponent of the extent.
constexpr int EXPONENTS_ABOVE_EXTENT = 3;

// The multiple of step that is nearest to x, the upper one of two; 0.0 if there is none. Without rounding, so that it
// moves by k steps with x.
double nearestMultiple(double x, double step) noexcept
{
    const double quotient = x / step;
    const double below = std::floor(quotient);
    const double origin = (quotient - below >= 0.5 ? below + 1.0 : below) * step;
    return std::isfinite(origin) ? origin : 0.0;
}

// Nothing is added to a coordinate of an axis that stays: -0.0 would change.
double shifted(double x, double shift) noexcept
{
    return shift == 0.0 ? x : x + shift;
}
} // namespace

void NearFrame::Extents::include(const Point3& p) noexcept
{
    if (!isFinite(p))
        return;
    if (!bAny)
        low = high = p;
    bAny = true;
    low.set(std::min(low.x(), p.x()), std::min(low.y(), p.y()), std::min(low.z(), p.z()));
    high.set(std::max(high.x(), p.x()), std::max(high.y(), p.y()), std::max(high.z(), p.z()));
}

double NearFrame::Extents::getLargest() const noexcept
{
    return getMax(high.x() - low.x(), high.y() - low.y(), high.z() - low.z());
}

NearFrame::NearFrame(const Extents& extents, double size) noexcept
{
    const double extent = std::max(extents.getLargest(), size);
    if (!extents.bAny || !(extent > 0.0) || !std::isfinite(extent))
        return;
    const double step = std::ldexp(1.0, std::ilogb(extent) + EXPONENTS_ABOVE_EXTENT);
    const double aLow[3] = {extents.low.x(), extents.low.y(), extents.low.z()};
    for (int axis = 0; axis < 3; ++axis)
        aOrigin[axis] = nearestMultiple(aLow[axis], step);
}

void NearFrame::keepAxesThatLoseDigits(const Point3& p) noexcept
{
    if (!isFinite(p))
        return;
    const double aCoordinates[3] = {p.x(), p.y(), p.z()};
    for (int axis = 0; axis < 3; ++axis)
        if ((aCoordinates[axis] - aOrigin[axis]) + aOrigin[axis] != aCoordinates[axis])
            aOrigin[axis] = 0.0;
}

NearFrame NearFrame::around(const std::vector<Point3>& vPoints, double size)
{
    return around(
        [&vPoints](const auto& f)
        {
            for (const Point3& p : vPoints)
                f(p);
        },
        size);
}

Point3 NearFrame::enter(const Point3& p) const noexcept
{
    return {shifted(p.x(), -aOrigin[0]), shifted(p.y(), -aOrigin[1]), shifted(p.z(), -aOrigin[2])};
}

Point3 NearFrame::leave(const Point3& p) const noexcept
{
    return {shifted(p.x(), aOrigin[0]), shifted(p.y(), aOrigin[1]), shifted(p.z(), aOrigin[2])};
}

void NearFrame::enter(std::vector<Point3>& vPoints) const noexcept
{
    if (isShifted())
        for (Point3& p : vPoints)
            p = enter(p);
}

const std::vector<Point3>& NearFrame::enter(const std::vector<Point3>& vPoints,
                                            std::vector<Point3>& vCopies) const
{
    if (!isShifted())
        return vPoints;
    vCopies = vPoints;
    enter(vCopies);
    return vCopies;
}

void NearFrame::leave(std::vector<Point3>& vPoints) const noexcept
{
    if (isShifted())
        for (Point3& p : vPoints)
            p = leave(p);
}

} // namespace TARN_ZEF

#include "Camera.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace TARN_TOOL
{
namespace
{
constexpr float MARGIN = 0.05f;    // of the picture, on every side
constexpr float FLAT = 0.35f;      // an extent below this share of the next larger one counts as flat
constexpr float OPEN_SHEET = 0.4f; // length of the mean normal from which a surface counts as a sheet

constexpr float toRadians(float degrees)
{
    return degrees * std::numbers::pi_v<float> / 180.0f;
}

// The axes of a scene: elevation is measured from the plane of a and b towards up, azimuth from a to b.
struct Frame
{
    Vec3f a;
    Vec3f b;
    Vec3f up;
};

Frame frameOf(const std::string& upName)
{
    const Vec3f axes[3] = {{1.0f, 0.0f, 0.0f}, {0.0f, 1.0f, 0.0f}, {0.0f, 0.0f, 1.0f}};
    const int upAxis = upName.back() - 'x';
    Frame frame;
    frame.up = (upName.front() == '-' ? -1.0f : 1.0f) * axes[upAxis];
    frame.a = axes[(upAxis + 1) % 3];
    frame.b = cross(frame.up, frame.a);
    return frame;
}

Vec3f direction(const Frame& frame, float azimuth, float elevation)
{
    const float az = toRadians(azimuth);
    const float el = toRadians(elevation);
    return (std::cos(el) * std::cos(az)) * frame.a + (std::cos(el) * std::sin(az)) * frame.b +
           std::sin(el) * frame.up;
}

// The middle of the box is the origin, so the largest magnitudes are half its edges.
Vec3f extentOf(const std::vector<Vec3f>& vPoints)
{
    Vec3f extent;
    for (const Vec3f& p : vPoints)
    {
        extent.x = std::max(extent.x, 2.0f * std::fabs(p.x));
        extent.y = std::max(extent.y, 2.0f * std::fabs(p.y));
        extent.z = std::max(extent.z, 2.0f * std::fabs(p.z));
    }
    return extent;
}

// Looks from a corner at solid things, and more at the wide side of flat ones.
Vec3f directionForBox(const Frame& frame, const Vec3f& extent)
{
    const float alongA = std::fabs(dot(frame.a, extent));
    const float alongB = std::fabs(dot(frame.b, extent));
    const float alongUp = std::fabs(dot(frame.up, extent));
    if (alongUp < FLAT * std::min(alongA, alongB))
        return direction(frame, -60.0f, 52.0f);
    if (alongA < FLAT * std::min(alongB, alongUp))
        return direction(frame, -25.0f, 22.0f);
    if (alongB < FLAT * std::min(alongA, alongUp))
        return direction(frame, -65.0f, 22.0f);
    return direction(frame, -50.0f, 27.0f);
}
} // namespace

Camera::Camera(const ViewOptions& options_, const std::vector<Vec3f>& vPoints, const Vec3f& meanNormal)
    : options(options_)
{
    const Frame frame = frameOf(options.up);
    Vec3f from = directionForBox(frame, extentOf(vPoints));
    if (options.angles)
        from = direction(frame, static_cast<float>((*options.angles)[0]),
                         static_cast<float>((*options.angles)[1]));
    else if (length(meanNormal) > OPEN_SHEET)
    {
        // A sheet is seen from above rather than from its front.
        const float side = dot(meanNormal, frame.up) < -0.5f * length(meanNormal) ? -1.0f : 1.0f;
        from = unit(0.6f * from + side * unit(meanNormal));
    }
    axis = frame.up;
    towardsViewer = unit(from);
    // Straight from above any azimuth is as good; the given one still turns the picture.
    const float azimuth = options.angles ? toRadians(static_cast<float>((*options.angles)[0])) : 0.0f;
    const Vec3f level = cross(frame.up, towardsViewer);
    right = length(level) > 1e-4f ? unit(level) : std::cos(azimuth) * frame.b - std::sin(azimuth) * frame.a;
    up = cross(towardsViewer, right);
}

Camera::Window Camera::windowOf(const std::vector<Vec3f>& vPoints) const
{
    constexpr float HUGE_SIZE = std::numeric_limits<float>::max();
    Window window{HUGE_SIZE, HUGE_SIZE, -HUGE_SIZE, -HUGE_SIZE};
    for (const Vec3f& p : vPoints)
    {
        window.minX = std::min(window.minX, dot(p, right));
        window.maxX = std::max(window.maxX, dot(p, right));
        window.minY = std::min(window.minY, dot(p, up));
        window.maxY = std::max(window.maxY, dot(p, up));
    }
    return window;
}

// Each point runs around a circle about the axis, which the picture shows as an ellipse.
Camera::Window Camera::turningWindowOf(const std::vector<Vec3f>& vPoints) const
{
    const float rise = dot(up, axis);
    const float tilt = std::fabs(dot(towardsViewer, axis));
    Window window{0.0f, 0.0f, 0.0f, 0.0f};
    for (const Vec3f& p : vPoints)
    {
        const float height = dot(p, axis);
        const float radius = length(p - height * axis);
        window.maxX = std::max(window.maxX, radius);
        window.minY = std::min(window.minY, rise * height - tilt * radius);
        window.maxY = std::max(window.maxY, rise * height + tilt * radius);
    }
    window.minX = -window.maxX;
    return window;
}

void Camera::fit(const std::vector<Vec3f>& vPoints, int width, int height)
{
    const auto [minX, minY, maxX, maxY] = options.numTurns > 0 ? turningWindowOf(vPoints) : windowOf(vPoints);
    const float w = static_cast<float>(width);
    const float h = static_cast<float>(height);
    const float usable = 1.0f - 2.0f * MARGIN;
    const float tiny = std::numeric_limits<float>::min();
    const float whole =
        std::min(usable * w / std::max(maxX - minX, tiny), usable * h / std::max(maxY - minY, tiny));
    scale = whole * static_cast<float>(options.zoom);
    const float focusX = 0.5f * (minX + maxX) + (static_cast<float>(options.focus[0]) - 0.5f) * w / whole;
    const float focusY = 0.5f * (minY + maxY) - (static_cast<float>(options.focus[1]) - 0.5f) * h / whole;
    offsetX = 0.5f * w - scale * focusX;
    offsetY = 0.5f * h + scale * focusY;
}

Camera Camera::turned(float degrees) const
{
    const float cosine = std::cos(toRadians(degrees));
    const float sine = std::sin(toRadians(degrees));
    const auto turnedAbout = [&](const Vec3f& v) // Rodrigues 1840
    { return cosine * v + sine * cross(axis, v) + ((1.0f - cosine) * dot(axis, v)) * axis; };
    Camera result = *this;
    result.right = turnedAbout(right);
    result.up = turnedAbout(up);
    result.towardsViewer = turnedAbout(towardsViewer);
    return result;
}

Vec3f Camera::project(const Vec3f& p) const
{
    return {offsetX + scale * dot(p, right), offsetY - scale * dot(p, up), -scale * dot(p, towardsViewer)};
}

Vec3f Camera::turn(const Vec3f& v) const
{
    return {dot(v, right), dot(v, up), dot(v, towardsViewer)};
}

} // namespace TARN_TOOL

#ifndef ZEF_TOOLS_VIEWOPTIONS_H
#define ZEF_TOOLS_VIEWOPTIONS_H

#include <array>
#include <optional>
#include <string>

namespace TARN_TOOL
{
// How a picture is taken.
struct ViewOptions
{
    // Azimuth and elevation of the viewer in degrees, about the axis that points up; chosen from the shape
    // if not given.
    std::optional<std::array<double, 2>> angles;
    // The axis that points up in the picture: "x", "y", "z", "-x", "-y" or "-z".
    std::string up = "z";
    // 1.0 shows everything.
    double zoom = 1.0;
    // What a zoomed picture centres on, as fractions of the whole picture from its upper left corner.
    std::array<double, 2> focus{0.5, 0.5};
    // Draw the edges of the triangles.
    bool bWire = false;
};

} // namespace TARN_TOOL

#endif

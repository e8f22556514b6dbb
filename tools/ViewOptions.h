#ifndef ZEF_TOOLS_VIEWOPTIONS_H
#define ZEF_TOOLS_VIEWOPTIONS_H

#include <array>
#include <optional>
#include <string>

namespace TARN_TOOL
{
enum class Paint
{
    SIDES,    // front or back
    DISTANCE, // to the nearest point of the cloud
    CURVATURE,
    PIECES
};

// How a picture is taken.
struct ViewOptions
{
    int width = 1200; // pixels
    int height = 900;
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
    // What the colors of the surface tell.
    Paint paint = Paint::SIDES;
    // Borders and edges of more than two triangles stand out.
    bool bMarks = false;
    bool bScaleBar = false;
    // Pictures that lead once around what is drawn, about the axis that points up; 0: one picture.
    int numTurns = 0;
};

} // namespace TARN_TOOL

#endif

#ifndef ZEF_TOOLS_PICTUREFIGURES_H
#define ZEF_TOOLS_PICTUREFIGURES_H

#include "JsonLine.h"
#include "MeshDrawing.h"

#include <optional>
#include <string>

namespace TARN_TOOL
{
// What the pictures of a run tell beside what they show.
struct PictureFigures
{
    double barLength = 0.0; // of the scale bar, in units of the points; 0.0 without one
    std::optional<ColorLegend> legend;

    // Both are empty without figures.
    [[nodiscard]] std::string getText() const;
    void addTo(JsonLine& line) const;
};

} // namespace TARN_TOOL

#endif

#ifndef ZEF_TOOLS_ANNOTATIONS_H
#define ZEF_TOOLS_ANNOTATIONS_H

#include "Image.h"
#include "MeshDrawing.h"

// What is drawn flat onto a finished picture.
namespace TARN_TOOL
{
constexpr Colour INK = {0.13f, 0.15f, 0.18f};
constexpr Colour RIM = {0.98f, 0.985f, 0.99f};

struct PixelBox
{
    int left;
    int top;
    int width;
    int height;
};

// What lies outside the picture is left out.
void fillBox(Image& image, const PixelBox& box, const Colour& color);

// The longest of 1, 2 and 5 times a power of ten that is not above limit, which is finite and above 0.
[[nodiscard]] double findRoundLength(double limit);

// At the lower left: a bar of a round length, about a fifth of the width, with its number above.
//
// pixelsPerUnit  pixels for each unit of length
// Returns        the length in these units; 0.0 if the scale is no positive number, then nothing is drawn
double drawScaleBar(Image& image, double pixelsPerUnit);

// At the lower right: the colors and the numbers of both ends.
void drawLegend(Image& image, const ColorLegend& legend);

} // namespace TARN_TOOL

#endif

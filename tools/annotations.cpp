#include "annotations.h"

#include <algorithm>
#include <cmath>

#include "BitmapText.h"
#include "colorScale.h"
#include "numberText.h"

namespace TARN_TOOL
{
namespace
{
// In dots, the squares of digits; see dotOf().
constexpr int MARGIN = 12;
constexpr int GAP = 3;        // between a bar and its number
constexpr int BAR_HEIGHT = 2; // of the scale bar
constexpr int TICK_HEIGHT = 6;
constexpr int LEGEND_WIDTH = 80;
constexpr int LEGEND_HEIGHT = 6;

// Pixels; small pictures have small letters.
int dotOf(const Image& image)
{
    return std::max(1, image.getWidth() / 400);
}

void fillRimmedBox(Image& image, const PixelBox& box)
{
    fillBox(image, {box.left - 2, box.top - 2, box.width + 4, box.height + 4}, RIM);
}
} // namespace

void fillBox(Image& image, const PixelBox& box, const Colour& color)
{
    const int right = std::min(box.left + box.width, image.getWidth());
    const int bottom = std::min(box.top + box.height, image.getHeight());
    for (int y = std::max(box.top, 0); y < bottom; ++y)
        for (int x = std::max(box.left, 0); x < right; ++x)
            image.setPixel(x, y, color);
}

double findRoundLength(double limit)
{
    const double power = std::floor(std::log10(limit));
    for (const double exponent : {power + 1.0, power, power - 1.0}) // the logarithm is rounded
        for (const double digit : {5.0, 2.0, 1.0})
            if (const double length = digit * std::pow(10.0, exponent); length <= limit)
                return length;
    return limit;
}

double drawScaleBar(Image& image, double pixelsPerUnit)
{
    const double limit = image.getWidth() / (4.0 * pixelsPerUnit);
    if (!std::isfinite(limit) || !(limit > 0.0))
        return 0.0;
    const double length = findRoundLength(limit);
    const int width = std::max(1, static_cast<int>(std::lround(length * pixelsPerUnit)));
    const int dot = dotOf(image);
    const int left = dot * MARGIN;
    const int top = image.getHeight() - dot * (MARGIN + TICK_HEIGHT);
    const PixelBox boxes[] = {
        {left, top + dot * (TICK_HEIGHT - BAR_HEIGHT) / 2, width, dot * BAR_HEIGHT},
        {left, top, dot, dot * TICK_HEIGHT},
        {left + width - dot, top, dot, dot * TICK_HEIGHT},
    };
    for (const PixelBox& box : boxes)
        fillRimmedBox(image, box);
    for (const PixelBox& box : boxes)
        fillBox(image, box, INK);
    const BitmapText number(textOf(length), dot);
    number.draw(image, left, top - dot * GAP - number.getHeight());
    return length;
}

void drawLegend(Image& image, const ColorLegend& legend)
{
    const int dot = dotOf(image);
    const int width = dot * LEGEND_WIDTH;
    const int left = image.getWidth() - dot * MARGIN - width;
    const int top = image.getHeight() - dot * (MARGIN + LEGEND_HEIGHT);
    fillRimmedBox(image, {left, top, width, dot * LEGEND_HEIGHT});
    for (int x = 0; x < width; ++x)
    {
        const double share = (x + 0.5) / width;
        fillBox(image, {left + x, top, 1, dot * LEGEND_HEIGHT},
                legend.bSigned ? signedColorOf(2.0 * share - 1.0) : colorOf(share));
    }
    const BitmapText low(textOf(legend.low, 3), dot);
    const BitmapText high(textOf(legend.high, 3), dot);
    const int textTop = top - dot * GAP - low.getHeight();
    low.draw(image, left, textTop);
    high.draw(image, left + width - high.getWidth(), textTop);
}

} // namespace TARN_TOOL

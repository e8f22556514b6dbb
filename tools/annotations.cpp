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
constexpr int MARGIN = 36;
constexpr int DOT = 3;        // pixels of each square of a digit
constexpr int GAP = 10;       // between a bar and its number
constexpr int BAR_HEIGHT = 6; // of the scale bar
constexpr int TICK_HEIGHT = 18;
constexpr int LEGEND_WIDTH = 240;
constexpr int LEGEND_HEIGHT = 18;

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
    const int top = image.getHeight() - MARGIN - TICK_HEIGHT;
    const PixelBox bar = {MARGIN, top + (TICK_HEIGHT - BAR_HEIGHT) / 2, width, BAR_HEIGHT};
    const PixelBox ticks[2] = {{MARGIN, top, 3, TICK_HEIGHT}, {MARGIN + width - 3, top, 3, TICK_HEIGHT}};
    for (const PixelBox& box : {bar, ticks[0], ticks[1]})
        fillRimmedBox(image, box);
    for (const PixelBox& box : {bar, ticks[0], ticks[1]})
        fillBox(image, box, INK);
    const BitmapText number(textOf(length), DOT);
    number.draw(image, MARGIN, top - GAP - number.getHeight());
    return length;
}

void drawLegend(Image& image, const ColorLegend& legend)
{
    const int left = image.getWidth() - MARGIN - LEGEND_WIDTH;
    const int top = image.getHeight() - MARGIN - LEGEND_HEIGHT;
    fillRimmedBox(image, {left, top, LEGEND_WIDTH, LEGEND_HEIGHT});
    for (int x = 0; x < LEGEND_WIDTH; ++x)
    {
        const double share = (x + 0.5) / LEGEND_WIDTH;
        fillBox(image, {left + x, top, 1, LEGEND_HEIGHT},
                legend.bSigned ? signedColorOf(2.0 * share - 1.0) : colorOf(share));
    }
    const BitmapText low(textOf(legend.low, 3), DOT);
    const BitmapText high(textOf(legend.high, 3), DOT);
    const int textTop = top - GAP - low.getHeight();
    low.draw(image, left, textTop);
    high.draw(image, image.getWidth() - MARGIN - high.getWidth(), textTop);
}

} // namespace TARN_TOOL

#include "BitmapText.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

#include "annotations.h"

namespace TARN_TOOL
{
namespace
{
constexpr int COLUMNS = 5;
constexpr int ROWS = 7;
constexpr int ADVANCE = COLUMNS + 1;

struct Glyph
{
    char letter;
    std::array<std::uint8_t, ROWS> rows; // from the top, the leftmost square in bit 4
};

constexpr std::array<Glyph, 14> GLYPHS = {{
    {'0', {0x0E, 0x11, 0x13, 0x15, 0x19, 0x11, 0x0E}},
    {'1', {0x04, 0x0C, 0x04, 0x04, 0x04, 0x04, 0x0E}},
    {'2', {0x0E, 0x11, 0x01, 0x02, 0x04, 0x08, 0x1F}},
    {'3', {0x1F, 0x02, 0x04, 0x02, 0x01, 0x11, 0x0E}},
    {'4', {0x02, 0x06, 0x0A, 0x12, 0x1F, 0x02, 0x02}},
    {'5', {0x1F, 0x10, 0x1E, 0x01, 0x01, 0x11, 0x0E}},
    {'6', {0x06, 0x08, 0x10, 0x1E, 0x11, 0x11, 0x0E}},
    {'7', {0x1F, 0x01, 0x02, 0x04, 0x08, 0x08, 0x08}},
    {'8', {0x0E, 0x11, 0x11, 0x0E, 0x11, 0x11, 0x0E}},
    {'9', {0x0E, 0x11, 0x11, 0x0F, 0x01, 0x02, 0x0C}},
    {'.', {0x00, 0x00, 0x00, 0x00, 0x00, 0x0C, 0x0C}},
    {'-', {0x00, 0x00, 0x00, 0x1F, 0x00, 0x00, 0x00}},
    {'+', {0x00, 0x04, 0x04, 0x1F, 0x04, 0x04, 0x00}},
    {'e', {0x00, 0x00, 0x0E, 0x11, 0x1F, 0x10, 0x0E}},
}};
} // namespace

BitmapText::BitmapText(std::string text_, int dot_)
    : text(std::move(text_))
    , dot(dot_)
{
}

int BitmapText::getWidth() const
{
    return text.empty() ? 0 : dot * (ADVANCE * static_cast<int>(text.size()) - 1);
}

int BitmapText::getHeight() const
{
    return dot * ROWS;
}

template <typename F>
void BitmapText::forEachDot(int left, int top, F f) const
{
    for (std::size_t i = 0; i < text.size(); ++i)
    {
        const auto* const pGlyph =
            std::find_if(GLYPHS.begin(), GLYPHS.end(), [&](const Glyph& g) { return g.letter == text[i]; });
        if (pGlyph == GLYPHS.end())
            continue;
        for (int row = 0; row < ROWS; ++row)
            for (int column = 0; column < COLUMNS; ++column)
                if ((pGlyph->rows[static_cast<std::size_t>(row)] >> (COLUMNS - 1 - column) & 1) != 0)
                    f(left + dot * (ADVANCE * static_cast<int>(i) + column), top + dot * row);
    }
}

void BitmapText::draw(Image& image, int left, int top) const
{
    forEachDot(left, top, [&](int x, int y) { fillBox(image, {x - 1, y - 1, dot + 2, dot + 2}, RIM); });
    forEachDot(left, top, [&](int x, int y) { fillBox(image, {x, y, dot, dot}, INK); });
}

} // namespace TARN_TOOL

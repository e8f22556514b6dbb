#ifndef ZEF_TOOLS_BITMAPTEXT_H
#define ZEF_TOOLS_BITMAPTEXT_H

#include "Image.h"

#include <string>

namespace TARN_TOOL
{
// A number as small squares, five wide and seven high for each letter: pictures need no font for it. Digits, the
// point, signs and the e of exponents are known; others leave a gap.
class BitmapText
{
public:
    // dot  edge of each square, in pixels
    BitmapText(std::string text_, int dot_);

    [[nodiscard]] int getWidth() const; // pixels
    [[nodiscard]] int getHeight() const;

    // With the upper left corner there; a light rim lets it be read on any ground. What lies outside the picture is
    // left out.
    void draw(Image& image, int left, int top) const;

private:
    template <typename F>
    void forEachDot(int left, int top, F f) const;

    std::string text;
    int dot;
};

} // namespace TARN_TOOL

#endif

#include "Image.h"

#include <algorithm>
#include <cmath>

#include "writePng.h"

namespace TARN_TOOL
{
Image::Image(int width_, int height_)
    : width(width_)
    , height(height_)
    , vBytes(3 * static_cast<std::size_t>(width_) * static_cast<std::size_t>(height_), 0)
{
}

void Image::setPixel(int x, int y, const Colour& colour)
{
    std::uint8_t* const pPixel = &vBytes[indexOf(x, y)];
    for (std::size_t c = 0; c < 3; ++c)
        pPixel[c] = static_cast<std::uint8_t>(std::lround(255.0f * std::clamp(colour[c], 0.0f, 1.0f)));
}

Colour Image::getPixel(int x, int y) const
{
    const std::uint8_t* const pPixel = &vBytes[indexOf(x, y)];
    Colour colour;
    for (std::size_t c = 0; c < 3; ++c)
        colour[c] = static_cast<float>(pPixel[c]) / 255.0f;
    return colour;
}

void Image::darken(int x, int y, float factor)
{
    std::uint8_t* const pPixel = &vBytes[indexOf(x, y)];
    for (std::size_t c = 0; c < 3; ++c)
        pPixel[c] = static_cast<std::uint8_t>(factor * static_cast<float>(pPixel[c]));
}

Image Image::halved() const
{
    Image result(width / 2, height / 2);
    for (int y = 0; y < result.height; ++y)
        for (int x = 0; x < result.width; ++x)
        {
            const std::uint8_t* const pUpper = &vBytes[indexOf(2 * x, 2 * y)];
            const std::uint8_t* const pLower = &vBytes[indexOf(2 * x, 2 * y + 1)];
            for (std::size_t c = 0; c < 3; ++c)
                result.vBytes[result.indexOf(x, y) + c] = static_cast<std::uint8_t>(
                    (pUpper[c] + pUpper[c + 3] + pLower[c] + pLower[c + 3] + 2) / 4);
        }
    return result;
}

std::string Image::writePng(const std::string& name) const
{
    return TARN_TOOL::writePng(name, width, height, vBytes);
}

} // namespace TARN_TOOL

#ifndef ZEF_TOOLS_IMAGE_H
#define ZEF_TOOLS_IMAGE_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace TARN_TOOL
{
// Red, green and blue from 0.0 to 1.0; values outside are clipped.
using Colour = std::array<float, 3>;

// A picture of eight bits a channel, rows from the top.
class Image
{
public:
    Image(int width_, int height_);

    [[nodiscard]] int getWidth() const { return width; }
    [[nodiscard]] int getHeight() const { return height; }

    void setPixel(int x, int y, const Colour& colour);
    [[nodiscard]] Colour getPixel(int x, int y) const;
    // Multiplies the colour of a pixel by a factor from 0.0 to 1.0.
    void darken(int x, int y, float factor);

    // Averages blocks of two by two pixels; width and height must be even.
    [[nodiscard]] Image halved() const;

    // Returns an empty string, or the reason why the file could not be written.
    [[nodiscard]] std::string writePng(const std::string& name) const;

private:
    [[nodiscard]] std::size_t indexOf(int x, int y) const
    {
        return 3 *
               (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x));
    }

    int width;
    int height;
    std::vector<std::uint8_t> vBytes; // three for each pixel
};

} // namespace TARN_TOOL

#endif

#include "writePng.h"

#include <cstring>

#include <png.h>

namespace TARN_TOOL
{
bool canWritePng()
{
    return true;
}

std::string writePng(const std::string& name, int width, int height, const std::vector<std::uint8_t>& vBytes)
{
    png_image png;
    std::memset(&png, 0, sizeof png);
    png.version = PNG_IMAGE_VERSION;
    png.width = static_cast<png_uint_32>(width);
    png.height = static_cast<png_uint_32>(height);
    png.format = PNG_FORMAT_RGB;
    const bool bWritten = png_image_write_to_file(&png, name.c_str(), 0, vBytes.data(), 0, nullptr) != 0;
    std::string reason = bWritten ? "" : png.message;
    png_image_free(&png);
    return reason;
}

} // namespace TARN_TOOL

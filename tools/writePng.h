#ifndef ZEF_TOOLS_WRITEPNG_H
#define ZEF_TOOLS_WRITEPNG_H

#include <cstdint>
#include <string>
#include <vector>

namespace TARN_TOOL
{
// Whether this build of the tool has the library that pictures need.
[[nodiscard]] bool canWritePng();

// Writes a picture of three bytes for each pixel, rows from the top.
// Returns an empty string, or the reason why the file could not be written.
[[nodiscard]] std::string writePng(const std::string& name, int width, int height,
                                   const std::vector<std::uint8_t>& vBytes);

} // namespace TARN_TOOL

#endif

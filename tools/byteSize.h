#ifndef ZEF_TOOLS_BYTESIZE_H
#define ZEF_TOOLS_BYTESIZE_H

#include <cstddef>
#include <optional>
#include <string>

namespace TARN_TOOL
{
// A number above 0 of bytes, or with k, M or G of thousands, millions or thousand millions of them: "1.5G".
[[nodiscard]] std::optional<std::size_t> parseByteSize(const std::string& text);

} // namespace TARN_TOOL

#endif

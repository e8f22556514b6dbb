// The LZF compression of point files: runs of literal bytes, and copies of what came up to 8 KB before.
#ifndef ZEF_LZF_H
#define ZEF_LZF_H

#include <cstddef>
#include <string>
#include <string_view>

namespace TARN_ZEF
{
// Exactly size bytes; false if packed is damaged or gives another number. Nothing is allocated beyond what packed
// can give at best, 264 bytes for 3.
[[nodiscard]] bool unpackLzf(std::string_view packed, std::size_t size, std::string& unpacked);

// What unpackLzf() turns back into data: at most a thirtieth longer than data.
[[nodiscard]] std::string packLzf(std::string_view data);

} // namespace TARN_ZEF

#endif

#include "core/numbers.h"

#include <array>
#include <charconv>

namespace TARN_ZEF
{
std::string toText(double value)
{
    std::array<char, 32> buffer;
    const auto result =
        std::to_chars(buffer.data(), buffer.data() + buffer.size(), value, std::chars_format::general, 6);
    return {buffer.data(), result.ptr};
}

} // namespace TARN_ZEF

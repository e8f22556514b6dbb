// Tests on numbers that no compiler option can change, and their text in messages.
#ifndef ZEF_NUMBERS_H
#define ZEF_NUMBERS_H

#include "core/definitions.h"

#include <bit>
#include <string>

namespace TARN_ZEF
{
// By their IEEE-754 bits, so that no compiler option can fold the test away.
[[nodiscard]] constexpr bool isNaN(double value) noexcept
{
    const u64 bits = std::bit_cast<u64>(value);
    const u64 high = (bits >> 32) & 0x7fffffffu;
    const u64 low = bits & 0xffffffffu;
    return high + (low != 0 ? 1 : 0) > 0x7ff00000u;
}
[[nodiscard]] constexpr bool isInf(double value) noexcept
{
    return (std::bit_cast<u64>(value) & 0x7fffffffffffffffu) == 0x7ff0000000000000u;
}
// The number as an untouched stream would print it (up to six digits), whatever the locale. For messages.
[[nodiscard]] std::string toText(double value);

} // namespace TARN_ZEF

#endif

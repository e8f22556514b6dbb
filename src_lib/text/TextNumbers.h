// Numbers out of text, fast and independent of the locale.
#ifndef ZEF_TEXTNUMBERS_H
#define ZEF_TEXTNUMBERS_H

#include "Point3.h"

#include <string_view>

namespace TARN_ZEF
{
// What the classic locale calls white space.
[[nodiscard]] constexpr bool isBlank(char c) noexcept
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

// Extracts the next number and moves p behind it, with the acceptance rules of `stream >> double` in the
// classic locale: blanks before it are passed, a sign may stand in front, and it ends where no longer number
// is possible, so that "1.5abc" gives 1.5 and "1-2" gives 1 and leaves "-2". False for "nan", "inf", a
// number too large for a double, and an exponent without digits; "0x10" gives 0. A number too small for a
// double gives 0.0. After false, p and value are unspecified.
[[nodiscard]] bool extractDouble(const char*& p, const char* pEnd, double& value) noexcept;

// Three numbers at the start of a line; what follows them does not matter.
[[nodiscard]] bool extractPoint(std::string_view line, Point3& point) noexcept;
// Likewise; rest gets what follows them.
[[nodiscard]] bool extractPoint(std::string_view line, Point3& point, std::string_view& rest) noexcept;

// The next stretch without blanks, and moves p behind it; empty at the end.
[[nodiscard]] std::string_view nextToken(const char*& p, const char* pEnd) noexcept;

// The whole token as a number. float and double take also "nan" and "inf", with sign and in any case; too
// small numbers give 0.0. Integers take also "3.0" and "1e3". False, with value unchanged, if anything is
// left over, and if the number is too large for the type or has a fraction that an integer can't hold.
//
// T  one of std::int8_t to std::uint32_t, float, double
template <class T>
[[nodiscard]] bool parseNumber(std::string_view token, T& value) noexcept;

} // namespace TARN_ZEF

#endif

#include "text/TextNumbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

namespace TARN_ZEF
{
namespace
{
[[nodiscard]] constexpr bool isDigit(char c) noexcept
{
    return c >= '0' && c <= '9';
}

[[nodiscard]] constexpr bool isExponentMark(char c) noexcept
{
    return c == 'e' || c == 'E';
}

// The decimal exponent of a number, taken from its digits, for a mantissa from 0.1 to 1. It is a double so
// that no length of the exponent overflows.
[[nodiscard]] double decimalMagnitude(const char* p, const char* pEnd) noexcept
{
    double magnitude = 0.0;
    bool bFraction = false;
    bool bSignificant = false;
    for (; p != pEnd && !isExponentMark(*p); ++p)
    {
        if (*p == '.')
            bFraction = true;
        else if (isDigit(*p))
        {
            bSignificant = bSignificant || *p != '0';
            if (bSignificant && !bFraction)
                magnitude += 1.0;
            else if (!bSignificant && bFraction)
                magnitude -= 1.0;
        }
    }
    if (p == pEnd)
        return magnitude;
    const bool bNegative = ++p != pEnd && *p == '-';
    double exponent = 0.0;
    for (; p != pEnd; ++p)
    {
        if (isDigit(*p))
            exponent = 10.0 * exponent + (*p - '0');
    }
    return bNegative ? magnitude - exponent : magnitude + exponent;
}

// For a number that does not fit its type: too small ones become a zero of the same sign. False for too
// large ones.
template <class T>
[[nodiscard]] bool resolveOutOfRange(const char* p, const char* pEnd, T& value) noexcept
{
    if (decimalMagnitude(p, pEnd) > 0.0)
        return false;
    value = *p == '-' ? T(-0.0) : T(0.0);
    return true;
}

template <class T>
[[nodiscard]] bool parseFloating(std::string_view token, T& value) noexcept
{
    const char* pEnd = token.data() + token.size();
    const auto [p, ec] = std::from_chars(token.data(), pEnd, value);
    if (p != pEnd || ec == std::errc::invalid_argument)
        return false;
    return ec == std::errc() || resolveOutOfRange(token.data(), pEnd, value);
}

template <class T>
[[nodiscard]] bool parseInteger(std::string_view token, T& value) noexcept
{
    const char* pEnd = token.data() + token.size();
    const auto [p, ec] = std::from_chars(token.data(), pEnd, value);
    if (ec == std::errc() && p == pEnd)
        return true;
    double d = 0.0;
    if (!parseFloating(token, d) || d != std::floor(d))
        return false;
    constexpr double lowest = std::numeric_limits<T>::lowest();
    constexpr double highest = std::numeric_limits<T>::max();
    if (!(d >= lowest && d <= highest))
        return false;
    value = static_cast<T>(d);
    return true;
}

} // namespace

bool extractDouble(const char*& p, const char* pEnd, double& value) noexcept
{
    while (p != pEnd && isBlank(*p))
        ++p;
    // The conversion knows no plus; and it knows "nan" and "inf", which are none here.
    const bool bPlus = p != pEnd && *p == '+';
    if (bPlus)
        ++p;
    const char* pDigits = !bPlus && p != pEnd && *p == '-' ? p + 1 : p;
    if (pDigits == pEnd || !(isDigit(*pDigits) || *pDigits == '.'))
        return false;

    const auto [pNext, ec] = std::from_chars(p, pEnd, value);
    if (ec == std::errc::invalid_argument)
        return false;
    // An exponent that the conversion left behind has no digits; a second one is no part of the number.
    if (pNext != pEnd && isExponentMark(*pNext) && std::none_of(p, pNext, isExponentMark))
        return false;
    if (ec != std::errc() && !resolveOutOfRange(p, pNext, value))
        return false;
    p = pNext;
    return true;
}

bool extractPoint(std::string_view line, Point3& point) noexcept
{
    std::string_view rest;
    return extractPoint(line, point, rest);
}

bool extractPoint(std::string_view line, Point3& point, std::string_view& rest) noexcept
{
    const char* p = line.data();
    const char* pEnd = p + line.size();
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
    if (!extractDouble(p, pEnd, x) || !extractDouble(p, pEnd, y) || !extractDouble(p, pEnd, z))
        return false;
    point.set(x, y, z);
    rest = {p, static_cast<std::size_t>(pEnd - p)};
    return true;
}

std::string_view nextToken(const char*& p, const char* pEnd) noexcept
{
    while (p != pEnd && isBlank(*p))
        ++p;
    const char* pFirst = p;
    while (p != pEnd && !isBlank(*p))
        ++p;
    return {pFirst, static_cast<std::size_t>(p - pFirst)};
}

template <class T>
bool parseNumber(std::string_view token, T& value) noexcept
{
    if (token.size() > 1 && token[0] == '+' && token[1] != '-')
        token.remove_prefix(1);
    T parsed{};
    bool bOK = false;
    if constexpr (std::is_floating_point_v<T>)
        bOK = parseFloating(token, parsed);
    else
        bOK = parseInteger(token, parsed);
    if (bOK)
        value = parsed;
    return bOK;
}

template bool parseNumber(std::string_view, std::int8_t&) noexcept;
template bool parseNumber(std::string_view, std::uint8_t&) noexcept;
template bool parseNumber(std::string_view, std::int16_t&) noexcept;
template bool parseNumber(std::string_view, std::uint16_t&) noexcept;
template bool parseNumber(std::string_view, std::int32_t&) noexcept;
template bool parseNumber(std::string_view, std::uint32_t&) noexcept;
template bool parseNumber(std::string_view, float&) noexcept;
template bool parseNumber(std::string_view, double&) noexcept;

} // namespace TARN_ZEF

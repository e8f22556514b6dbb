#include "judge/WideInteger.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace TARN_ZEF
{
namespace
{
constexpr int WORD_BITS = 32;
} // namespace

WideInteger::WideInteger(double x, int unit)
    : bNegative(x < 0.0)
{
    if (x == 0.0)
        return;
    // |x| = mantissa * 2^exponent, the mantissa a whole number below 2^53.
    constexpr int digits = 53;
    int exponent = 0;
    auto mantissa = static_cast<std::uint64_t>(std::ldexp(std::frexp(std::fabs(x), &exponent), digits));
    exponent -= digits;
    // Numbers near the smallest double have fewer digits, and zeros below them.
    for (; exponent < unit; ++exponent)
        mantissa >>= 1;
    const int shift = exponent - unit;
    vWords.assign(static_cast<std::size_t>(shift / WORD_BITS), 0);
    const int rest = shift % WORD_BITS;
    vWords.push_back(static_cast<std::uint32_t>(mantissa << rest));
    mantissa = rest == 0 ? mantissa >> WORD_BITS : mantissa >> (WORD_BITS - rest);
    for (; mantissa != 0; mantissa >>= WORD_BITS)
        vWords.push_back(static_cast<std::uint32_t>(mantissa));
    trim();
}

WideInteger WideInteger::operator-(const WideInteger& other) const
{
    return addSigned(other, !other.bNegative);
}

WideInteger WideInteger::operator+(const WideInteger& other) const
{
    return addSigned(other, other.bNegative);
}

WideInteger WideInteger::operator*(const WideInteger& other) const
{
    WideInteger result;
    result.bNegative = bNegative != other.bNegative;
    result.vWords.assign(vWords.size() + other.vWords.size(), 0);
    for (std::size_t i = 0; i < vWords.size(); ++i)
    {
        std::uint64_t carry = 0;
        for (std::size_t k = 0; k < other.vWords.size(); ++k)
        {
            carry += result.vWords[i + k] + std::uint64_t{vWords[i]} * other.vWords[k];
            result.vWords[i + k] = static_cast<std::uint32_t>(carry);
            carry >>= WORD_BITS;
        }
        result.vWords[i + other.vWords.size()] = static_cast<std::uint32_t>(carry);
    }
    result.trim();
    return result;
}

bool WideInteger::isLess(const Words& a, const Words& b)
{
    if (a.size() != b.size())
        return a.size() < b.size();
    return std::lexicographical_compare(a.rbegin(), a.rend(), b.rbegin(), b.rend());
}

WideInteger::Words WideInteger::add(const Words& a, const Words& b)
{
    Words result(std::max(a.size(), b.size()) + 1);
    std::uint64_t carry = 0;
    for (std::size_t i = 0; i < result.size(); ++i)
    {
        carry += (i < a.size() ? a[i] : 0ull) + (i < b.size() ? b[i] : 0ull);
        result[i] = static_cast<std::uint32_t>(carry);
        carry >>= WORD_BITS;
    }
    return result;
}

WideInteger::Words WideInteger::subtract(const Words& larger, const Words& smaller)
{
    Words result(larger.size());
    std::uint64_t borrow = 0;
    for (std::size_t i = 0; i < larger.size(); ++i)
    {
        const std::uint64_t difference = larger[i] - (i < smaller.size() ? smaller[i] : 0ull) - borrow;
        result[i] = static_cast<std::uint32_t>(difference);
        borrow = difference >> 63;
    }
    return result;
}

WideInteger WideInteger::addSigned(const WideInteger& other, bool bOtherNegative) const
{
    WideInteger result;
    const bool bOtherLarger = isLess(vWords, other.vWords);
    result.bNegative = bOtherLarger ? bOtherNegative : bNegative;
    if (bNegative == bOtherNegative)
        result.vWords = add(vWords, other.vWords);
    else
        result.vWords = bOtherLarger ? subtract(other.vWords, vWords) : subtract(vWords, other.vWords);
    result.trim();
    return result;
}

void WideInteger::trim()
{
    while (!vWords.empty() && vWords.back() == 0)
        vWords.pop_back();
    bNegative = bNegative && !vWords.empty();
}

} // namespace TARN_ZEF

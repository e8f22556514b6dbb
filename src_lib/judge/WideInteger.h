#ifndef ZEF_WIDEINTEGER_H
#define ZEF_WIDEINTEGER_H

#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// A whole number of any size, for signs of determinants whose entries no double arithmetic can hold: slow and
// plain.
//
// Invariant:  the highest word is not 0; 0 has no words and is not negative.
class WideInteger
{
public:
    WideInteger() = default;
    // x / 2^unit. x is finite and a multiple of 2^unit.
    WideInteger(double x, int unit);

    [[nodiscard]] WideInteger operator-(const WideInteger& other) const;
    [[nodiscard]] WideInteger operator+(const WideInteger& other) const;
    [[nodiscard]] WideInteger operator*(const WideInteger& other) const;
    [[nodiscard]] int getSign() const { return vWords.empty() ? 0 : bNegative ? -1 : 1; }

private:
    using Words = std::vector<std::uint32_t>; // the lowest first

    [[nodiscard]] static bool isLess(const Words& a, const Words& b);
    [[nodiscard]] static Words add(const Words& a, const Words& b);
    [[nodiscard]] static Words subtract(const Words& larger, const Words& smaller);
    [[nodiscard]] WideInteger addSigned(const WideInteger& other, bool bOtherNegative) const;
    void trim();

    Words vWords;
    bool bNegative = false;
};

} // namespace TARN_ZEF

#endif

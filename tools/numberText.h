#ifndef ZEF_TOOLS_NUMBERTEXT_H
#define ZEF_TOOLS_NUMBERTEXT_H

#include <optional>
#include <string>

namespace TARN_TOOL
{
// Numbers as text, independent of the locale.

// The whole of text as a finite number.
[[nodiscard]] std::optional<double> parseNumber(const std::string& text);

[[nodiscard]] std::string textOf(double value, int numDigits = 6); // significant ones

// With two decimals at most, and the unit.
[[nodiscard]] std::string secondsText(double seconds);

} // namespace TARN_TOOL

#endif

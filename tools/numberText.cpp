#include "numberText.h"

#include <charconv>
#include <cmath>
#include <locale>
#include <sstream>
#include <system_error>

namespace TARN_TOOL
{
std::optional<double> parseNumber(const std::string& text)
{
    double value = 0.0;
    const char* const pEnd = text.data() + text.size();
    const auto [pStop, error] = std::from_chars(text.data(), pEnd, value);
    if (error != std::errc() || pStop != pEnd || !std::isfinite(value))
        return std::nullopt;
    return value;
}

std::string textOf(double value, int numDigits)
{
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text.precision(numDigits);
    text << value;
    return text.str();
}

std::string secondsText(double seconds)
{
    return textOf(std::round(100.0 * seconds) / 100.0) + " s";
}

} // namespace TARN_TOOL

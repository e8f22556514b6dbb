#include "byteSize.h"

#include "numberText.h"

namespace TARN_TOOL
{
namespace
{
constexpr double MOST_BYTES = 1e18;

double unitOf(char letter)
{
    switch (letter)
    {
    case 'k':
        return 1e3;
    case 'M':
        return 1e6;
    case 'G':
        return 1e9;
    default:
        return 1.0;
    }
}
} // namespace

std::optional<std::size_t> parseByteSize(const std::string& text)
{
    const double unit = text.empty() ? 1.0 : unitOf(text.back());
    const std::optional<double> value = parseNumber(text.substr(0, text.size() - (unit > 1.0 ? 1 : 0)));
    if (!value || *value <= 0.0 || *value * unit > MOST_BYTES)
        return std::nullopt;
    return static_cast<std::size_t>(*value * unit);
}

} // namespace TARN_TOOL

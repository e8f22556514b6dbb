#include "text/quote.h"

#include "text/TextNumbers.h"

namespace TARN_ZEF
{
namespace
{
constexpr std::size_t QUOTED = 40;
}

std::string_view trim(std::string_view text) noexcept
{
    while (!text.empty() && isBlank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && isBlank(text.back()))
        text.remove_suffix(1);
    return text;
}

std::string quote(std::string_view text)
{
    std::string quoted = "\"";
    for (const char c : text.substr(0, QUOTED))
        quoted += c >= ' ' && c <= '~' ? c : c == '\t' ? ' ' : '?';
    return quoted + (text.size() > QUOTED ? "...\"" : "\"");
}

} // namespace TARN_ZEF

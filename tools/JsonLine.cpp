#include "JsonLine.h"

#include <array>
#include <charconv>
#include <cmath>

namespace TARN_TOOL
{
void JsonLine::add(const char* pKey, std::size_t value)
{
    addText(pKey, std::to_string(value));
}

void JsonLine::add(const char* pKey, double value)
{
    std::array<char, 32> text;
    const auto [pEnd, error] = std::to_chars(text.data(), text.data() + text.size(), value);
    addText(pKey, std::isfinite(value) ? std::string(text.data(), pEnd) : "null");
}

void JsonLine::addText(const char* pKey, const std::string& value)
{
    if (!members.empty())
        members += ", ";
    members += '"';
    members += pKey;
    members += "\": ";
    members += value;
}

} // namespace TARN_TOOL

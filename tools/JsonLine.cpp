#include "JsonLine.h"

#include <array>
#include <charconv>
#include <cmath>

namespace TARN_TOOL
{
void JsonLine::add(const char* pKey, std::size_t value)
{
    addRaw(pKey, std::to_string(value));
}

void JsonLine::add(const char* pKey, double value)
{
    std::array<char, 32> text;
    const auto [pEnd, error] = std::to_chars(text.data(), text.data() + text.size(), value);
    addRaw(pKey, std::isfinite(value) ? std::string(text.data(), pEnd) : "null");
}

void JsonLine::add(const char* pKey, std::int64_t value)
{
    addRaw(pKey, std::to_string(value));
}

void JsonLine::add(const char* pKey, const JsonLine& value)
{
    addRaw(pKey, value.getText());
}

void JsonLine::add(const char* pKey, const std::string& value)
{
    addRaw(pKey, '"' + value + '"');
}

void JsonLine::add(const char* pKey, const std::vector<JsonLine>& vValues)
{
    std::string list;
    for (const JsonLine& value : vValues)
        list += (list.empty() ? "" : ", ") + value.getText();
    addRaw(pKey, '[' + list + ']');
}

void JsonLine::addRaw(const char* pKey, const std::string& value)
{
    if (!members.empty())
        members += ", ";
    members += '"';
    members += pKey;
    members += "\": ";
    members += value;
}

} // namespace TARN_TOOL

#include "JsonLine.h"

#include <array>
#include <charconv>
#include <cmath>

namespace TARN_TOOL
{
namespace
{
std::string quoted(const std::string& text)
{
    static constexpr const char* HEX = "0123456789abcdef";
    std::string result = "\"";
    for (const char c : text)
    {
        const auto byte = static_cast<unsigned char>(c);
        if (byte < 0x20)
            result += std::string("\\u00") + HEX[byte >> 4] + HEX[byte & 15];
        else
        {
            if (c == '"' || c == '\\')
                result += '\\';
            result += c;
        }
    }
    return result + '"';
}
} // namespace

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
    addRaw(pKey, quoted(value));
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

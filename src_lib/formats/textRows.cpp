#include "formats/textRows.h"

#include <algorithm>
#include <limits>

namespace TARN_ZEF
{
namespace
{
[[nodiscard]] bool isSeparator(char c) noexcept
{
    return c == ',' || c == ';';
}

[[nodiscard]] bool takeWord(const char*& p, const char* pEnd, double& value) noexcept
{
    const char* pFirst = p;
    while (p != pEnd && !isBlank(*p) && !isSeparator(*p))
        ++p;
    return pFirst != p && parseNumber(std::string_view(pFirst, static_cast<std::size_t>(p - pFirst)), value);
}
} // namespace

std::size_t takeNumbers(std::string_view row, double* values, std::size_t max) noexcept
{
    const char* p = row.data();
    const char* pEnd = p + row.size();
    std::size_t num = 0;
    while (num < max)
    {
        while (p != pEnd && isBlank(*p))
            ++p;
        const char* pWord = p;
        if (!extractDouble(p, pEnd, values[num]) || (p != pEnd && !isBlank(*p) && !isSeparator(*p)))
        {
            p = pWord;
            if (!takeWord(p, pEnd, values[num]))
                return num;
        }
        ++num;
        while (p != pEnd && isBlank(*p))
            ++p;
        if (p != pEnd && isSeparator(*p))
            ++p;
    }
    return num;
}

std::optional<u64> asCount(std::string_view row) noexcept
{
    double value = 0.0;
    if (row.empty() || row.find_first_not_of("0123456789") != std::string_view::npos ||
        !parseNumber(row, value) || value > 1e15)
        return std::nullopt;
    return static_cast<u64>(value);
}

std::vector<std::string_view> contentLines(std::string_view head)
{
    const bool bCut = head.size() == InputFile::HEAD_BYTES;
    if (head.starts_with("\xEF\xBB\xBF"))
        head.remove_prefix(3);
    std::vector<std::string_view> vLines;
    while (!head.empty())
    {
        const std::size_t end = std::min(head.find_first_of("\r\n"), head.size());
        const std::string_view line = trim(head.substr(0, end));
        const bool bWhole = end < head.size() || !bCut || vLines.empty();
        if (bWhole && !line.empty() && !line.starts_with('#') && !line.starts_with("//"))
            vLines.push_back(line);
        head.remove_prefix(std::min(end + 1, head.size()));
    }
    return vLines;
}

bool isWord(std::string_view text, std::string_view word) noexcept
{
    const auto isSame = [](char c, char small)
    { return c == small || (c >= 'A' && c <= 'Z' && c - 'A' + 'a' == small); };
    return std::equal(text.begin(), text.end(), word.begin(), word.end(), isSame);
}

} // namespace TARN_ZEF

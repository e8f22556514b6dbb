#include "files/SkippedLines.h"

#include "text/TextNumbers.h"
#include "text/quote.h"

#include <algorithm>

namespace TARN_ZEF
{
namespace
{
// Names of columns, or the number of points.
bool isHeader(std::string_view line)
{
    const auto isLetter = [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); };
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    return std::any_of(line.begin(), line.end(), isLetter) || std::all_of(line.begin(), line.end(), isDigit);
}
} // namespace

void SkippedLines::Lines::add(std::string_view line, u64 number)
{
    if (num++ > 0)
        return;
    first = "line " + std::to_string(number) + ", " + quote(line);
    constexpr std::string_view SIGNS("\0;,", 3);
    const std::size_t place = line.find_first_of(SIGNS);
    if (place != std::string_view::npos)
        sign = line[place];
}

void SkippedLines::add(std::string_view line, u64 number, bool bBeforePoints)
{
    line = trim(line);
    if (line.empty() || line.starts_with('#') || line.starts_with("//"))
        return;
    const bool bFirst = !bContent;
    bContent = true;
    if (!(bFirst && bBeforePoints && isHeader(line)))
        skipped.add(line, number);
}

void SkippedLines::addRest(std::string_view rest, std::string_view line, u64 number)
{
    if (!rest.empty() && !isBlank(rest.front()))
        odd.add(trim(line), number);
}

std::string SkippedLines::getHint(char sign)
{
    if (sign == '\0')
        return "; the file looks binary, or like a text of two bytes a letter: save it as plain text";
    const std::string wanted = "; three numbers parted by blanks are wanted, with points as decimal signs";
    return sign == ' '
               ? wanted
               : wanted + "; readPoints() of zef_formats.h takes commas and semicolons between columns, too";
}

void SkippedLines::warn(const std::string& filename) const
{
    if (skipped.num > 0)
        warningMessage("readPoints_ASCII", filename +
                                               ": lines that give no point: " + std::to_string(skipped.num) +
                                               ", the first is " + skipped.first + getHint(skipped.sign));
    if (odd.num > 0)
        warningMessage("readPoints_ASCII",
                       filename + ": lines whose third number goes on with what is no number: " +
                           std::to_string(odd.num) + ", the first is " + odd.first + getHint(odd.sign));
}

} // namespace TARN_ZEF

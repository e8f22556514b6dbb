#ifndef ZEF_SKIPPEDLINES_H
#define ZEF_SKIPPEDLINES_H

#include "core/definitions.h"

#include <string>
#include <string_view>

namespace TARN_ZEF
{
// What a text of points has beside points, for one warning at its end: lines that give no point, and points whose third
// number does not end with a blank. Blank lines, comments, and one header or count of points before the first point
// belong into such a text.
class SkippedLines
{
public:
    // bBeforePoints  no line gave a point so far
    void add(std::string_view line, u64 number, bool bBeforePoints);
    // rest  of a line that gave a point
    void addRest(std::string_view rest, std::string_view line, u64 number);

    // Nothing if all was as it should be.
    void warn(const std::string& filename) const;

private:
    struct Lines
    {
        void add(std::string_view line, u64 number);

        u64 num = 0;
        std::string first; // for the user
        char sign = ' ';   // that tells why, as far as it is known
    };
    [[nodiscard]] static std::string getHint(char sign);

    bool bContent = false; // a line that is neither blank nor a comment came
    Lines skipped;
    Lines odd; // their third number goes on
};

} // namespace TARN_ZEF

#endif

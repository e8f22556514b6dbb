// What the text formats share: numbers of a row, and a look at the first lines.
#ifndef ZEF_TEXTROWS_H
#define ZEF_TEXTROWS_H

#include "formats/InputFile.h"
#include "text/TextNumbers.h"

#include <optional>
#include <string_view>
#include <vector>

namespace TARN_ZEF
{
// The numbers at the start of a row, which blanks, a comma or a semicolon part. "nan" and "inf" count, as files
// have them for what is not there.
//
// max      no more are taken
// Returns  how many there are in values, which holds max of them
[[nodiscard]] std::size_t takeNumbers(std::string_view row, double* values, std::size_t max) noexcept;

// A whole number and nothing else.
[[nodiscard]] std::optional<u64> asCount(std::string_view row) noexcept;

// The whole lines of a head that hold more than a comment, without blanks around them; a last one that is cut
// only if it is the only one.
[[nodiscard]] std::vector<std::string_view> contentLines(std::string_view head);

// Whether text is the word, in small letters, in any case.
[[nodiscard]] bool isWord(std::string_view text, std::string_view word) noexcept;

} // namespace TARN_ZEF

#endif

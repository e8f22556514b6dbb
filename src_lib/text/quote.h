#ifndef ZEF_QUOTE_H
#define ZEF_QUOTE_H

#include <string>
#include <string_view>

namespace TARN_ZEF
{
// Without blanks around it.
[[nodiscard]] std::string_view trim(std::string_view text) noexcept;
// For a message: as it stands, but shortened and without odd characters.
[[nodiscard]] std::string quote(std::string_view text);

} // namespace TARN_ZEF

#endif

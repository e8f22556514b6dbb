#ifndef ZEF_JSON_H
#define ZEF_JSON_H

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace TARN_ZEF
{
// A value of JSON, as far as the head of a GLB needs it: numbers are doubles, true is 1.0, false and null are 0.0.
//
// Asking for what is not there gives a null value, so that a chain of questions needs no checks between.
class Json
{
public:
    // Throws FileError with the byte in text.
    [[nodiscard]] static Json parse(std::string_view text);

    [[nodiscard]] const Json& operator[](std::string_view key) const;
    [[nodiscard]] const Json& operator[](std::size_t index) const;
    // Entries of a list.
    [[nodiscard]] std::size_t size() const noexcept { return vEntries.size(); }
    [[nodiscard]] bool has(std::string_view key) const;

    [[nodiscard]] double number(double ifMissing) const noexcept { return value.value_or(ifMissing); }
    // A whole number from 0 to 2^53; nothing for anything else.
    [[nodiscard]] std::optional<std::size_t> index() const noexcept;
    [[nodiscard]] const std::string& text() const noexcept { return words; }

private:
    friend class JsonParser;

    std::optional<double> value;
    std::string words;
    std::vector<Json> vEntries;
    std::map<std::string, Json, std::less<>> members;
};

} // namespace TARN_ZEF

#endif

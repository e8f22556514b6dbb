#ifndef ZEF_TOOLS_JSONLINE_H
#define ZEF_TOOLS_JSONLINE_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace TARN_TOOL
{
// One JSON object on one line, the members in the order in which they were added. Keys are plain words: no quotes,
// backslashes or control characters. Text values may be any UTF-8. Independent of the locale.
class JsonLine
{
public:
    void add(const char* pKey, std::size_t value);
    // As many digits as bring the number back exactly; null if it is not finite.
    void add(const char* pKey, double value);
    void add(const char* pKey, std::int64_t value);
    void add(const char* pKey, const JsonLine& value);
    void add(const char* pKey, const std::string& value);
    void add(const char* pKey, const std::vector<JsonLine>& vValues);

    // Without a line end.
    [[nodiscard]] std::string getText() const { return "{" + members + "}"; }

private:
    void addRaw(const char* pKey, const std::string& value);

    std::string members;
};

} // namespace TARN_TOOL

#endif

#ifndef ZEF_TOOLS_JSONLINE_H
#define ZEF_TOOLS_JSONLINE_H

#include <cstddef>
#include <string>

namespace TARN_TOOL
{
// One JSON object of numbers on one line, the members in the order in which they were added. Keys are plain
// words. Independent of the locale.
class JsonLine
{
public:
    void add(const char* pKey, std::size_t value);
    // As many digits as bring the number back exactly; null if it is not finite.
    void add(const char* pKey, double value);

    // Without a line end.
    [[nodiscard]] std::string getText() const { return "{" + members + "}"; }

private:
    void addText(const char* pKey, const std::string& value);

    std::string members;
};

} // namespace TARN_TOOL

#endif

#include "formats/Json.h"

#include "formats/FileError.h"
#include "text/TextNumbers.h"

#include <cmath>

namespace TARN_ZEF
{
namespace
{
// Deeper than any real file, shallow enough for the stack.
constexpr int MAX_DEPTH = 200;
const Json MISSING;
} // namespace

class JsonParser
{
public:
    explicit JsonParser(std::string_view text_)
        : text(text_)
    {
    }

    [[nodiscard]] Json parseAll()
    {
        Json json = parseValue(0);
        passBlanks();
        if (pos != text.size())
            fail("the end");
        return json;
    }

private:
    [[noreturn]] void fail(const char* wanted) const
    {
        failAtByte(pos, std::string(wanted) + " is wanted in the JSON; get the file anew");
    }

    void passBlanks()
    {
        while (pos < text.size() && isBlank(text[pos]))
            ++pos;
    }

    [[nodiscard]] bool takeIf(char c)
    {
        passBlanks();
        if (pos >= text.size() || text[pos] != c)
            return false;
        ++pos;
        return true;
    }

    [[nodiscard]] Json parseValue(int depth)
    {
        if (depth > MAX_DEPTH)
            fail("less depth");
        passBlanks();
        Json json;
        if (takeIf('{'))
            parseMembers(json, depth);
        else if (takeIf('['))
            parseEntries(json, depth);
        else if (pos < text.size() && text[pos] == '"')
            json.words = parseString();
        else
            json.value = parseWord();
        return json;
    }

    void parseMembers(Json& json, int depth)
    {
        if (takeIf('}'))
            return;
        do
        {
            passBlanks();
            const std::string key = parseString();
            if (!takeIf(':'))
                fail("a colon");
            json.members[key] = parseValue(depth + 1);
        } while (takeIf(','));
        if (!takeIf('}'))
            fail("a comma or }");
    }

    void parseEntries(Json& json, int depth)
    {
        if (takeIf(']'))
            return;
        do
            json.vEntries.push_back(parseValue(depth + 1));
        while (takeIf(','));
        if (!takeIf(']'))
            fail("a comma or ]");
    }

    // Escapes stay as they are but for the character after the backslash: names that matter have none.
    [[nodiscard]] std::string parseString()
    {
        if (pos >= text.size() || text[pos] != '"')
            fail("a string");
        std::string s;
        for (++pos; pos < text.size() && text[pos] != '"'; ++pos)
        {
            if (text[pos] == '\\' && pos + 1 < text.size())
                ++pos;
            s += text[pos];
        }
        if (pos >= text.size())
            fail("the end of a string");
        ++pos;
        return s;
    }

    [[nodiscard]] double parseWord()
    {
        const std::size_t end = std::min(text.find_first_of(",]} \t\r\n", pos), text.size());
        const std::string_view word = text.substr(pos, end - pos);
        double number = word == "true" ? 1.0 : 0.0;
        if (word != "true" && word != "false" && word != "null" && !parseNumber(word, number))
            fail("a value");
        pos = end;
        return number;
    }

    std::string_view text;
    std::size_t pos = 0;
};

Json Json::parse(std::string_view text)
{
    return JsonParser(text).parseAll();
}

const Json& Json::operator[](std::string_view key) const
{
    const auto it = members.find(key);
    return it == members.end() ? MISSING : it->second;
}

const Json& Json::operator[](std::size_t index) const
{
    return index < vEntries.size() ? vEntries[index] : MISSING;
}

bool Json::has(std::string_view key) const
{
    return members.find(key) != members.end();
}

std::optional<std::size_t> Json::index() const noexcept
{
    if (!value || !(*value >= 0.0 && *value <= 9007199254740992.0) || *value != std::floor(*value))
        return std::nullopt;
    return static_cast<std::size_t>(*value);
}

} // namespace TARN_ZEF

#include "tinyply/PlyHeader.h"

#include "text/TextNumbers.h"

#include <algorithm>
#include <charconv>
#include <istream>
#include <stdexcept>

namespace tinyply
{
namespace
{
// A binary file that only begins like a PLY would otherwise be taken for one endless line.
constexpr std::size_t MAX_LINE_BYTES = std::size_t{1} << 16;

struct TypeInfo
{
    Type type;
    std::size_t size;
    std::string_view name;
    std::string_view sizedName;
};

constexpr TypeInfo TYPES[] = {
    {Type::INT8, 1, "char", "int8"},        {Type::UINT8, 1, "uchar", "uint8"},
    {Type::INT16, 2, "short", "int16"},     {Type::UINT16, 2, "ushort", "uint16"},
    {Type::INT32, 4, "int", "int32"},       {Type::UINT32, 4, "uint", "uint32"},
    {Type::FLOAT32, 4, "float", "float32"}, {Type::FLOAT64, 8, "double", "float64"},
};

[[nodiscard]] Type typeOf(std::string_view name) noexcept
{
    const auto* pInfo =
        std::find_if(std::begin(TYPES), std::end(TYPES),
                     [name](const TypeInfo& info) { return info.name == name || info.sizedName == name; });
    return pInfo == std::end(TYPES) ? Type::INVALID : pInfo->type;
}

// Reads a header line by line and builds the elements.
class HeaderParser
{
public:
    HeaderParser(std::istream& is_, PlyHeader& header_)
        : is(is_)
        , header(header_)
    {
    }

    void run()
    {
        readLine();
        if (line != "ply" && line != "PLY")
            fail("this is no PLY file");
        do
        {
            readLine();
        } while (takeLine());
        if (!bFormat)
            fail("the format line is missing");
    }

private:
    [[noreturn]] void fail(const std::string& reason) const
    {
        throw std::runtime_error("line " + std::to_string(header.numLines) + ": " + reason);
    }

    // A line ends at a line feed. Only if the very first one ends in a carriage return alone, all do: the
    // first byte of binary data may well be a line feed.
    void readLine()
    {
        ++header.numLines;
        line.clear();
        for (;;)
        {
            const int c = is.get();
            if (c == std::istream::traits_type::eof())
                fail("the header ends early");
            if (c == '\n')
                break;
            if (c == '\r' && header.numLines == 1)
                bCROnly = is.peek() != '\n';
            if (c == '\r' && bCROnly)
                break;
            line += static_cast<char>(c);
            if (line.size() > MAX_LINE_BYTES)
                fail("the header line is too long");
        }
        trim();
        pNext = line.data();
    }

    void trim()
    {
        while (!line.empty() && TARN_ZEF::isBlank(line.back()))
            line.pop_back();
        const auto first = std::find_if_not(line.begin(), line.end(), TARN_ZEF::isBlank);
        line.erase(line.begin(), first);
    }

    [[nodiscard]] std::string_view nextWord()
    {
        return TARN_ZEF::nextToken(pNext, line.data() + line.size());
    }

    // False at the end of the header.
    [[nodiscard]] bool takeLine()
    {
        const std::string_view keyword = nextWord();
        if (keyword == "end_header")
            return false;
        if (keyword == "format")
            takeFormat();
        else if (keyword == "element")
            takeElement();
        else if (keyword == "property")
            takeProperty();
        else if (!keyword.empty() && keyword != "comment" && keyword != "obj_info")
            fail("unknown word in the header");
        return true;
    }

    void takeFormat()
    {
        const std::string_view name = nextWord();
        if (name == "ascii")
            header.format = Format::ASCII;
        else if (name == "binary_little_endian")
            header.format = Format::BINARY_LITTLE_ENDIAN;
        else if (name == "binary_big_endian")
            header.format = Format::BINARY_BIG_ENDIAN;
        else
            fail("unknown format");
        bFormat = true;
    }

    void takeElement()
    {
        Element element;
        element.name = nextWord();
        const std::string_view number = nextWord();
        const char* pEnd = number.data() + number.size();
        const auto [p, ec] = std::from_chars(number.data(), pEnd, element.count);
        if (ec != std::errc() || p != pEnd)
            fail("an element without a sound count");
        if (header.find(element.name) != nullptr)
            fail("element '" + element.name + "' stands twice");
        header.vElements.push_back(std::move(element));
    }

    void takeProperty()
    {
        if (header.vElements.empty())
            fail("a property before all elements");
        Property property;
        std::string_view word = nextWord();
        if (word == "list")
        {
            property.listType = typeOf(nextWord());
            if (property.listType == Type::INVALID || isFloating(property.listType))
                fail("unknown type of a list's count");
            word = nextWord();
        }
        property.type = typeOf(word);
        if (property.type == Type::INVALID)
            fail("unknown type of a property");
        property.name = nextWord();
        if (property.name.empty())
            fail("a property without a name");
        header.vElements.back().vProperties.push_back(std::move(property));
    }

    std::istream& is;
    PlyHeader& header;
    std::string line;
    const char* pNext = nullptr; // next word of line
    bool bCROnly = false;
    bool bFormat = false;
};

} // namespace

std::size_t sizeOf(Type type) noexcept
{
    return type == Type::INVALID ? 0 : TYPES[static_cast<std::size_t>(type) - 1].size;
}

std::string_view nameOf(Type type) noexcept
{
    return type == Type::INVALID ? "invalid" : TYPES[static_cast<std::size_t>(type) - 1].name;
}

bool isFloating(Type type) noexcept
{
    return type == Type::FLOAT32 || type == Type::FLOAT64;
}

Property* Element::find(std::string_view propertyName) noexcept
{
    const auto it = std::find_if(vProperties.begin(), vProperties.end(),
                                 [propertyName](const Property& p) { return p.name == propertyName; });
    return it == vProperties.end() ? nullptr : &*it;
}

bool Element::hasLists() const noexcept
{
    return std::any_of(vProperties.begin(), vProperties.end(), [](const Property& p) { return p.isList(); });
}

bool Element::isRequested() const noexcept
{
    return std::any_of(vProperties.begin(), vProperties.end(),
                       [](const Property& p) { return p.request != NO_REQUEST; });
}

std::size_t Element::getLeastRowBytes(Format format) const noexcept
{
    std::size_t numBytes = 0;
    for (const Property& property : vProperties)
    {
        // In text a digit and a blank, or the end of the line.
        if (format == Format::ASCII)
            numBytes += 2;
        else
            numBytes += sizeOf(property.isList() ? property.listType : property.type);
    }
    return numBytes;
}

void PlyHeader::parse(std::istream& is)
{
    HeaderParser(is, *this).run();
}

Element* PlyHeader::find(std::string_view elementName) noexcept
{
    const auto it = std::find_if(vElements.begin(), vElements.end(),
                                 [elementName](const Element& e) { return e.name == elementName; });
    return it == vElements.end() ? nullptr : &*it;
}

void PlyHeader::checkFits(std::uint64_t numBytes, std::uint64_t endOffset) const
{
    // The last line of a text may lack its end.
    std::uint64_t numLeft = numBytes + (format == Format::ASCII ? 1 : 0);
    for (const Element& element : vElements)
    {
        const std::uint64_t least = element.getLeastRowBytes(format);
        if (least == 0)
            continue;
        if (element.count > numLeft / least)
            throw std::runtime_error("byte " + std::to_string(endOffset) + ": the file ends after " +
                                     std::to_string(numBytes) + " bytes of data, too early for " +
                                     std::to_string(element.count) + " rows of element '" + element.name +
                                     "'");
        numLeft -= element.count * least;
    }
}

} // namespace tinyply

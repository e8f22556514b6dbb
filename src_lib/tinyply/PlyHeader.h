#ifndef ZEF_PLYHEADER_H
#define ZEF_PLYHEADER_H

#include "tinyply/tinyply.h"

#include <cstdint>
#include <iosfwd>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tinyply
{
// Bytes of a scalar; 0 for INVALID.
[[nodiscard]] std::size_t sizeOf(Type type) noexcept;
// The spelling that all readers know: "char", "uchar" to "double".
[[nodiscard]] std::string_view nameOf(Type type) noexcept;
[[nodiscard]] bool isFloating(Type type) noexcept;

enum class Format
{
    ASCII,
    BINARY_LITTLE_ENDIAN,
    BINARY_BIG_ENDIAN
};

inline constexpr std::size_t NO_REQUEST = std::numeric_limits<std::size_t>::max();

struct Property
{
    std::string name;
    Type type = Type::INVALID;     // of the scalar, or of a list's entries
    Type listType = Type::INVALID; // of a list's count; INVALID: a scalar

    // Whose data takes the values, and at which place of a row of that data.
    std::size_t request = NO_REQUEST;
    std::size_t slot = 0;

    [[nodiscard]] bool isList() const noexcept { return listType != Type::INVALID; }
};

struct Element
{
    std::string name;
    std::uint64_t count = 0;
    std::vector<Property> vProperties;

    [[nodiscard]] Property* find(std::string_view propertyName) noexcept;
    [[nodiscard]] bool hasLists() const noexcept;
    [[nodiscard]] bool isRequested() const noexcept;
    // Bytes that a row takes at least: all of them if there are no lists in a binary file.
    [[nodiscard]] std::size_t getLeastRowBytes(Format format) const noexcept;
};

// What stands before the data of a PLY file.
struct PlyHeader
{
    Format format = Format::ASCII;
    std::vector<Element> vElements; // in file order, names differ
    std::uint64_t numLines = 0;

    // Reads from "ply" to the end of the line "end_header" and not a byte further. Takes lines that end in
    // LF, CR LF or CR, blanks and tabs at will, comments anywhere, and both spellings of the types. Throws
    // std::runtime_error with the line.
    void parse(std::istream& is);

    [[nodiscard]] Element* find(std::string_view elementName) noexcept;
    // Throws std::runtime_error if numBytes of data, the last one before byte endOffset of the file, can't
    // hold all rows.
    void checkFits(std::uint64_t numBytes, std::uint64_t endOffset) const;
};

} // namespace tinyply

#endif

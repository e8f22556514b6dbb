// PLY files: the part of the interface of the tinyply library that this project uses, on code of its own. A
// build with ZEF_USE_SYSTEM_TINYPLY takes the library itself in place of this folder.
//
// Beyond it: every error throws an exception that tells the line or byte; nothing is allocated on the word
// of a header alone; and lists of any length come with their counts (listCounts). Code that uses the counts
// asks for ZEF_OWN_TINYPLY.
#ifndef ZEF_TINYPLY_H
#define ZEF_TINYPLY_H

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <memory>
#include <string>
#include <vector>

#define ZEF_OWN_TINYPLY 1

namespace tinyply
{
// Scalar types of a PLY file.
enum class Type : std::uint8_t
{
    INVALID,
    INT8,
    UINT8,
    INT16,
    UINT16,
    INT32,
    UINT32,
    FLOAT32,
    FLOAT64
};

// Values as they stand in memory, without gaps.
class Buffer
{
public:
    [[nodiscard]] std::uint8_t* get() noexcept { return vBytes.data(); }
    [[nodiscard]] const std::uint8_t* get() const noexcept { return vBytes.data(); }
    [[nodiscard]] std::size_t size_bytes() const noexcept { return vBytes.size(); }

private:
    friend class BodyReader;
    std::vector<std::uint8_t> vBytes;
};

// The values of requested properties; filled by PlyFile::read.
//
// Several properties stand row by row in the order of the request. If their types differ, they come as
// FLOAT64. A list property stands entry by entry over all rows.
struct PlyData
{
    Type t = Type::INVALID;
    Buffer buffer;
    std::size_t count = 0; // rows
    bool isList = false;

    // Lists only: entries of each row. Empty if every row has as many as the request's list_size_hint.
    std::vector<std::uint32_t> listCounts;
};

// One PLY file. To read: parse_header, the requests, read. To write: add_properties_to_element, write.
//
// Ownership:  the requested data is shared with the caller. Data to write stays the caller's and must last
//             until write.
// Errors:     std::runtime_error for a file that is broken or of another kind, std::invalid_argument for a
//             request that the file can't answer. The words tell the line or the byte.
class PlyFile
{
public:
    PlyFile();
    ~PlyFile();
    PlyFile(const PlyFile&) = delete;
    PlyFile& operator=(const PlyFile&) = delete;

    // Leaves the stream at the first byte of data. Never returns false.
    bool parse_header(std::istream& is);

    // One or more scalar properties, or one list property. Each property can be asked for once.
    //
    // list_size_hint  the usual number of entries of a list
    [[nodiscard]] std::shared_ptr<PlyData>
    request_properties_from_element(const std::string& elementKey,
                                    const std::vector<std::string>& propertyKeys,
                                    std::uint32_t list_size_hint = 0);

    // Reads all rows of all elements, so that a truncated file never passes. is must stand where
    // parse_header left it.
    void read(std::istream& is);

    // Elements and properties are written in the order of these calls.
    //
    // data       count rows of the properties' values, or for lists count * listCount values; null if empty
    // listType   type of a list's count; INVALID: no list
    // listCount  entries of each row
    void add_properties_to_element(const std::string& elementKey,
                                   const std::vector<std::string>& propertyKeys, Type type, std::size_t count,
                                   const std::uint8_t* data, Type listType, std::size_t listCount);

    // Little-endian if binary. Errors stand in the state of the stream.
    void write(std::ostream& os, bool isBinary);

private:
    struct Impl;
    std::unique_ptr<Impl> pImpl;
};

} // namespace tinyply

#endif

#ifndef ZEF_INPUTFILE_H
#define ZEF_INPUTFILE_H

#include "core/Progress.h"
#include "formats/FileError.h"
#include "text/ByteSource.h"
#include "text/LineReader.h"
#include "text/quote.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <fstream>
#include <string>
#include <string_view>

namespace TARN_ZEF
{
// A value as it stands in a file, of the given byte order.
template <class T>
[[nodiscard]] T loadValue(const char* p, std::endian order = std::endian::little) noexcept
{
    T value;
    if (order == std::endian::native)
    {
        std::memcpy(&value, p, sizeof(T));
        return value;
    }
    char aBytes[sizeof(T)];
    std::reverse_copy(p, p + sizeof(T), aBytes);
    std::memcpy(&value, aBytes, sizeof(T));
    return value;
}

// An open file that is read once from its start to its end, by bytes or by lines.
//
// Errors:     FileError where the file ends early or can't be opened.
// Progress:   a step for each byte; stepTo() is called by the reader of a format, cheap enough for each record.
class InputFile
{
public:
    // The head is at hand before anything is read.
    explicit InputFile(const std::string& path);

    [[nodiscard]] const std::string& getPath() const noexcept { return path; }
    [[nodiscard]] u64 getSize() const noexcept { return size; }
    // The first bytes, at most HEAD_BYTES.
    [[nodiscard]] std::string_view getHead() const noexcept { return head; }

    [[nodiscard]] ByteSource& getBytes() noexcept { return source; }
    [[nodiscard]] LineReader& getLines() noexcept { return lines; }
    // The stream itself, at its start. Nothing else of this object may be used afterwards.
    [[nodiscard]] std::istream& getStream();

    // The next num bytes, until the next call; what tells what they are.
    [[nodiscard]] const char* take(std::size_t num, const char* what);
    // The same as a copy, which takes no more memory than that.
    [[nodiscard]] std::string takeCopy(std::size_t num, const char* what);
    // As many whole records of a count as are at hand, at least one; the number is in count.
    [[nodiscard]] const char* takeRecords(std::size_t recordBytes, std::size_t& count, const char* what);
    // The next line, without blanks around it; false at the end.
    [[nodiscard]] bool nextLine(std::string_view& line);
    // The next line that is neither blank nor a comment, up to its comment; false at the end.
    [[nodiscard]] bool nextContent(std::string_view& line);

    // As many of count records as the file can still hold, for a reserve.
    [[nodiscard]] std::size_t limitCount(u64 count, std::size_t recordBytes) const noexcept;

    [[noreturn]] void failHere(const std::string& reason) const { failAtLine(lines.getLineNumber(), reason); }

    void step();

    static constexpr std::size_t HEAD_BYTES = 1024;

private:
    std::string path;
    std::ifstream stream;
    std::string head;
    u64 size = 0;
    ByteSource source;
    LineReader lines;
    Progress* pProgress = nullptr;
    u64 reported = 0;
};

} // namespace TARN_ZEF

#endif

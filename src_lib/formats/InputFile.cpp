#include "formats/InputFile.h"

#include <algorithm>
#include <filesystem>

namespace TARN_ZEF
{
namespace
{
// Between two reports of progress.
constexpr u64 STEP_BYTES = u64{1} << 16;

[[noreturn]] void failCut(u64 offset, std::size_t wanted, std::size_t left, const char* what)
{
    failAtByte(offset, std::string("the file ends within ") + what + ", " + std::to_string(wanted) +
                           " bytes are wanted and " + std::to_string(left) +
                           " are left; it was cut, get it anew");
}

std::ifstream& openAt(std::ifstream& stream, const std::string& path, std::string& head, u64& size)
{
    std::error_code ec;
    if (std::filesystem::is_directory(path, ec))
        throw FileError("it is a folder; give the name of a file");
    stream.open(path, std::ios::binary);
    if (!stream)
        throw FileError("it can't be opened; check the name and the permissions");
    head.resize(InputFile::HEAD_BYTES);
    stream.read(head.data(), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<std::size_t>(stream.gcount()));
    stream.clear();
    stream.seekg(0, std::ios::end);
    const std::streamoff end = stream.tellg();
    if (end < 0)
        throw FileError("it is no regular file; give one, or copy what it holds into one");
    size = static_cast<u64>(end);
    stream.seekg(0);
    return stream;
}
} // namespace

InputFile::InputFile(const std::string& path_)
    : path(path_)
    , source(openAt(stream, path, head, size))
    , lines(source, LineEnds::LF_OR_CR)
{
}

std::istream& InputFile::getStream()
{
    return stream;
}

const char* InputFile::take(std::size_t num, const char* what)
{
    if (!source.need(num))
        failCut(source.getOffset(), num, source.getAvailable(), what);
    const char* p = source.getData();
    source.consume(num);
    step();
    return p;
}

std::string InputFile::takeCopy(std::size_t num, const char* what)
{
    const u64 offset = source.getOffset();
    std::string copy;
    copy.reserve(num);
    while (copy.size() < num)
    {
        if (!source.need(1))
            failCut(offset, num, copy.size(), what);
        const std::size_t part = std::min(num - copy.size(), source.getAvailable());
        copy.append(source.getData(), part);
        source.consume(part);
        step();
    }
    return copy;
}

const char* InputFile::takeRecords(std::size_t recordBytes, std::size_t& count, const char* what)
{
    if (!source.need(recordBytes))
        failCut(source.getOffset(), recordBytes, source.getAvailable(), what);
    count = std::min(count, source.getAvailable() / recordBytes);
    return take(count * recordBytes, what);
}

bool InputFile::nextLine(std::string_view& line)
{
    if (!lines.next(line))
        return false;
    step();
    line = trim(line);
    if (lines.getLineNumber() == 1 && line.starts_with("\xEF\xBB\xBF"))
        line = trim(line.substr(3));
    return true;
}

bool InputFile::nextContent(std::string_view& line)
{
    while (nextLine(line))
    {
        line = trim(line.substr(0, line.find('#')));
        if (!line.empty())
            return true;
    }
    return false;
}

std::size_t InputFile::limitCount(u64 count, std::size_t recordBytes) const noexcept
{
    const u64 left = source.getRemaining().value_or(0);
    return static_cast<std::size_t>(std::min(count, left / std::max<std::size_t>(recordBytes, 1)));
}

void InputFile::step()
{
    const u64 offset = source.getOffset();
    if (offset - reported < STEP_BYTES)
        return;
    if (pProgress == nullptr)
        pProgress = getRootProgress()->getChildProgressSetTodo("Read", size);
    pProgress->increment(offset - reported);
    reported = offset;
}

} // namespace TARN_ZEF

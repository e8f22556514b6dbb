#include "text/TextWriter.h"

#include "core/cancel.h"

#include <cstring>
#include <ostream>

namespace TARN_ZEF
{
namespace
{
constexpr std::size_t BLOCK_BYTES = std::size_t{1} << 16;
} // namespace

TextWriter::TextWriter(std::ostream& stream_, int precision_)
    : stream(stream_)
    , precision(precision_)
    , pBuffer(std::make_unique_for_overwrite<char[]>(BLOCK_BYTES))
    , pNext(pBuffer.get())
    , pEnd(pBuffer.get() + BLOCK_BYTES)
{
}

TextWriter::~TextWriter()
{
    writeOut();
}

void TextWriter::text(std::string_view s)
{
    if (s.empty())
        return;
    if (static_cast<std::size_t>(pEnd - pNext) < s.size())
        flush();
    if (s.size() > BLOCK_BYTES)
    {
        stream.write(s.data(), static_cast<std::streamsize>(s.size()));
        return;
    }
    std::memcpy(pNext, s.data(), s.size());
    pNext += s.size();
}

void TextWriter::flush()
{
    checkCancelled();
    writeOut();
}

void TextWriter::writeOut()
{
    stream.write(pBuffer.get(), pNext - pBuffer.get());
    pNext = pBuffer.get();
}

} // namespace TARN_ZEF

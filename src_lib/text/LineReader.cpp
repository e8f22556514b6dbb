#include "text/LineReader.h"

#include <algorithm>
#include <cstring>

namespace TARN_ZEF
{
namespace
{
constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";
}

LineEnds findLineEnds(ByteSource& source)
{
    static_cast<void>(source.need(1));
    const std::string_view head(source.getData(), source.getAvailable());
    for (std::size_t pos = head.find('\r'); pos != std::string_view::npos; pos = head.find('\r', pos + 1))
        if (pos + 1 < head.size() && head[pos + 1] != '\n')
            return LineEnds::LF_OR_CR;
    return LineEnds::LF;
}

void skipByteOrderMark(ByteSource& source)
{
    if (source.need(BYTE_ORDER_MARK.size()) &&
        std::string_view(source.getData(), BYTE_ORDER_MARK.size()) == BYTE_ORDER_MARK)
        source.consume(BYTE_ORDER_MARK.size());
}

LineReader::LineReader(ByteSource& source_, LineEnds ends_)
    : source(source_)
    , ends(ends_)
{
}

bool LineReader::next(std::string_view& line)
{
    if (bAfterCR && source.need(1) && *source.getData() == '\n')
        source.consume(1);
    bAfterCR = false;

    std::size_t numScanned = 0;
    const char* pEnd = findEnd(numScanned);
    while (pEnd == nullptr)
    {
        numScanned = source.getAvailable();
        if (!source.readMore())
            break;
        pEnd = findEnd(numScanned);
    }
    if (pEnd == nullptr && source.getAvailable() == 0)
        return false;

    const std::size_t len =
        pEnd == nullptr ? source.getAvailable() : static_cast<std::size_t>(pEnd - source.getData());
    line = std::string_view(source.getData(), len);
    bAfterCR = pEnd != nullptr && *pEnd == '\r';
    source.consume(pEnd == nullptr ? len : len + 1);
    ++lineNumber;
    return true;
}

// The first end of line at hand from the given position on, or null.
const char* LineReader::findEnd(std::size_t from) const noexcept
{
    if (from >= source.getAvailable())
        return nullptr;
    const char* pFrom = source.getData() + from;
    const char* pLast = source.getData() + source.getAvailable();
    if (ends == LineEnds::LF)
        return static_cast<const char*>(std::memchr(pFrom, '\n', static_cast<std::size_t>(pLast - pFrom)));
    const char* pEnd = std::find_if(pFrom, pLast, [](char c) { return c == '\n' || c == '\r'; });
    return pEnd == pLast ? nullptr : pEnd;
}

} // namespace TARN_ZEF

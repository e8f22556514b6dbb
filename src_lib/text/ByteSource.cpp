#include "text/ByteSource.h"

#include "core/cancel.h"

#include <algorithm>
#include <cstring>
#include <istream>
#include <stdexcept>

namespace TARN_ZEF
{
namespace
{
// Large enough that the calls of the system do not count, small enough to stay in the second level cache.
constexpr std::size_t BLOCK_BYTES = std::size_t{1} << 18;
} // namespace

ByteSource::ByteSource(std::istream& stream_)
    : stream(stream_)
{
    const std::streamoff start = stream.tellg();
    if (start < 0)
    {
        stream.clear();
        return;
    }
    endOffset = static_cast<u64>(start);
    stream.seekg(0, std::ios::end);
    const std::streamoff end = stream.tellg();
    stream.clear();
    stream.seekg(start);
    if (end >= start)
        size = static_cast<u64>(end);
}

bool ByteSource::readMore()
{
    checkCancelled();
    if (first > 0)
    {
        std::memmove(vBuffer.data(), getData(), getAvailable());
        last -= first;
        first = 0;
    }
    if (vBuffer.empty())
        vBuffer.resize(getFirstBytes());
    else if (vBuffer.size() - last < std::min(vBuffer.size(), BLOCK_BYTES) / 2)
        vBuffer.resize(2 * vBuffer.size());

    stream.read(vBuffer.data() + last, static_cast<std::streamsize>(vBuffer.size() - last));
    if (stream.bad())
        throw std::runtime_error("read error at byte " + std::to_string(endOffset));
    const auto num = static_cast<std::size_t>(stream.gcount());
    last += num;
    endOffset += num;
    return num > 0;
}

// A small file needs no block.
std::size_t ByteSource::getFirstBytes() const noexcept
{
    constexpr u64 LEAST_BYTES = 64;
    return static_cast<std::size_t>(
        std::clamp(getRemaining().value_or(BLOCK_BYTES), LEAST_BYTES, u64{BLOCK_BYTES}));
}

bool ByteSource::need(std::size_t n)
{
    while (getAvailable() < n)
    {
        if (!readMore())
            return false;
    }
    return true;
}

bool ByteSource::skip(u64 n)
{
    while (n > getAvailable())
    {
        n -= getAvailable();
        consume(getAvailable());
        if (!readMore())
            return false;
    }
    consume(static_cast<std::size_t>(n));
    return true;
}

std::optional<u64> ByteSource::getRemaining() const noexcept
{
    if (!size.has_value())
        return std::nullopt;
    return *size > getOffset() ? *size - getOffset() : 0;
}

} // namespace TARN_ZEF

#ifndef ZEF_BYTESOURCE_H
#define ZEF_BYTESOURCE_H

#include "core/definitions.h"

#include <iosfwd>
#include <optional>
#include <vector>

namespace TARN_ZEF
{
// A stream in large blocks: hands out stretches of bytes in one piece, without a copy per line or value.
//
// Ownership:  refers to the stream, which must outlive it and must not be read by others meanwhile: the
//             source reads ahead. All pointers into it end with the next call that reads.
// Errors:     a stream that breaks while reading (a folder, a lost disk) throws std::runtime_error.
class ByteSource
{
public:
    // Starts at the present position of the stream.
    explicit ByteSource(std::istream& stream_);
    ByteSource(const ByteSource&) = delete;
    ByteSource& operator=(const ByteSource&) = delete;

    // The bytes at hand: getAvailable() of them, from getData() on.
    [[nodiscard]] const char* getData() const noexcept { return vBuffer.data() + first; }
    [[nodiscard]] std::size_t getAvailable() const noexcept { return last - first; }
    // Passes n of the bytes at hand.
    void consume(std::size_t n) noexcept { first += n; }

    // Adds a block to the bytes at hand; false at the end of the stream.
    [[nodiscard]] bool readMore();
    // Makes at least n bytes at hand; false if the stream ends before.
    [[nodiscard]] bool need(std::size_t n);
    // Passes n bytes, at hand or not; false if the stream ends before.
    [[nodiscard]] bool skip(u64 n);

    // Offset of getData() in the stream.
    [[nodiscard]] u64 getOffset() const noexcept { return endOffset - getAvailable(); }
    // Bytes from getData() to the end of the stream; nothing if the stream can't tell, as a pipe.
    [[nodiscard]] std::optional<u64> getRemaining() const noexcept;

private:
    [[nodiscard]] std::size_t getFirstBytes() const noexcept;

    std::istream& stream;
    std::vector<char> vBuffer;
    std::size_t first = 0; // the bytes at hand are vBuffer[first..last)
    std::size_t last = 0;
    u64 endOffset = 0; // offset in the stream of vBuffer[last]
    std::optional<u64> size;
};

} // namespace TARN_ZEF

#endif

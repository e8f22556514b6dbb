#ifndef ZEF_LINEREADER_H
#define ZEF_LINEREADER_H

#include "text/ByteSource.h"

#include <string_view>

namespace TARN_ZEF
{
// How a line of text may end.
enum class LineEnds
{
    LF,       // at a line feed; a carriage return before it stays, as a blank at the end of the line
    LF_OR_CR, // at a line feed, a carriage return, or both together
};

// By the first block of a text at its start: lone carriage returns are looked for only where some stand there, since
// that takes time.
[[nodiscard]] LineEnds findLineEnds(ByteSource& source);
// Passes the mark of UTF-8, if the text starts with it.
void skipByteOrderMark(ByteSource& source);

// Hands out a stream line by line, without a copy. The last line needs no end.
//
// Ownership:  refers to the source, which must outlive it.
class LineReader
{
public:
    explicit LineReader(ByteSource& source_, LineEnds ends_ = LineEnds::LF);

    // The next line, without its end; false if there is none. The line lasts until the next call.
    [[nodiscard]] bool next(std::string_view& line);

    // Number of the line that next() gave last; the first line of the stream is 1.
    [[nodiscard]] u64 getLineNumber() const noexcept { return lineNumber; }
    // For a stream of which lines were read before.
    void setLineNumber(u64 lineNumber_) noexcept { lineNumber = lineNumber_; }

private:
    [[nodiscard]] const char* findEnd(std::size_t from) const noexcept;

    ByteSource& source;
    LineEnds ends;
    u64 lineNumber = 0;
    bool bAfterCR = false; // a line feed right here belongs to the end of the last line
};

} // namespace TARN_ZEF

#endif

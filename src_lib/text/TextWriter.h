#ifndef ZEF_TEXTWRITER_H
#define ZEF_TEXTWRITER_H

#include "Point3.h"

#include <charconv>
#include <cstddef>
#include <iosfwd>
#include <memory>
#include <string_view>

namespace TARN_ZEF
{
// Formats text and numbers into a stream: in large blocks, independent of the locale, with the digits that
// the stream itself would print in its default notation.
//
// Ownership:  refers to the stream, which must outlive it. What is not flushed yet goes out with the writer.
// Errors:     none of its own but that of a cancelled call, from all members that write; others stand in the state of
//             the stream (see closeWhole).
class TextWriter
{
public:
    // precision  significant digits of number() and point(), up to 18
    TextWriter(std::ostream& stream_, int precision_);
    ~TextWriter();
    TextWriter(const TextWriter&) = delete;
    TextWriter& operator=(const TextWriter&) = delete;

    void text(std::string_view s);
    void number(double value)
    {
        ensureRoom();
        pNext = std::to_chars(pNext, pEnd, value, std::chars_format::general, precision).ptr;
    }
    // The fewest digits that give back the same float or double; integers as they are.
    template <class T>
    void exact(T value)
    {
        ensureRoom();
        pNext = std::to_chars(pNext, pEnd, value).ptr;
    }
    // "x y z" and the end of the line.
    void point(const Point3& p)
    {
        number(p.x());
        text(" ");
        number(p.y());
        text(" ");
        number(p.z());
        text("\n");
    }
    void flush();

private:
    void writeOut();
    void ensureRoom()
    {
        if (pEnd - pNext < LONGEST_NUMBER)
            flush();
    }

    // Sign, 18 digits, point, exponent and some more.
    static constexpr std::ptrdiff_t LONGEST_NUMBER = 64;

    std::ostream& stream;
    int precision;
    std::unique_ptr<char[]> pBuffer;
    char* pNext;
    char* pEnd;
};

} // namespace TARN_ZEF

#endif

#include "Base64Stream.h"

#include <bit>

namespace TARN_TOOL
{
namespace
{
constexpr const char* LETTERS = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::size_t BLOCK = 1 << 16;
} // namespace

Base64Stream::Base64Stream(std::ostream& out_)
    : out(out_)
{
    buffer.reserve(BLOCK + 4);
}

void Base64Stream::add(std::uint8_t byte)
{
    triple = triple << 8 | byte;
    if (++numWaiting == 3)
        encode(3);
}

void Base64Stream::add(std::uint16_t number)
{
    add(static_cast<std::uint8_t>(number & 0xFF));
    add(static_cast<std::uint8_t>(number >> 8));
}

void Base64Stream::add(std::uint32_t number)
{
    add(static_cast<std::uint16_t>(number & 0xFFFF));
    add(static_cast<std::uint16_t>(number >> 16));
}

void Base64Stream::add(float number)
{
    add(std::bit_cast<std::uint32_t>(number));
}

void Base64Stream::finish()
{
    if (numWaiting > 0)
    {
        const int numBytes = numWaiting;
        triple <<= 8 * (3 - numBytes);
        encode(numBytes);
    }
    flush();
}

void Base64Stream::encode(int numBytes)
{
    for (int i = 0; i < 4; ++i)
        buffer.push_back(i <= numBytes ? LETTERS[triple >> (18 - 6 * i) & 63] : '=');
    triple = 0;
    numWaiting = 0;
    if (buffer.size() >= BLOCK)
        flush();
}

void Base64Stream::flush()
{
    out.write(buffer.data(), static_cast<std::streamsize>(buffer.size()));
    buffer.clear();
}

} // namespace TARN_TOOL

#ifndef ZEF_TOOLS_BASE64STREAM_H
#define ZEF_TOOLS_BASE64STREAM_H

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>

namespace TARN_TOOL
{
// Writes numbers as base64 (RFC 4648), the lowest byte of each first on every machine.
//
// Ownership:  the stream outlives it.
// Cost:       a few kilobytes of buffer.
class Base64Stream
{
public:
    explicit Base64Stream(std::ostream& out_);
    ~Base64Stream() = default;
    Base64Stream(const Base64Stream&) = delete;
    Base64Stream& operator=(const Base64Stream&) = delete;

    void add(std::uint8_t byte);
    void add(std::uint16_t number);
    void add(std::uint32_t number);
    void add(float number);

    // Pads and hands over what is left. Nothing may be added after it.
    void finish();

private:
    void encode(int numBytes);
    void flush();

    std::ostream& out;
    std::string buffer;
    std::uint32_t triple = 0; // the bytes that wait for the third
    int numWaiting = 0;
};

} // namespace TARN_TOOL

#endif

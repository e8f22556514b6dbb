#ifndef ZEF_TESTS_STREAMCAPTURE_H
#define ZEF_TESTS_STREAMCAPTURE_H

#include <iostream>
#include <sstream>
#include <string>

namespace TARN_ZEF
{
// Catches what goes to a stream (std::cout if none is named) while it lives.
class StreamCapture
{
public:
    explicit StreamCapture(std::ostream& os_ = std::cout)
        : os(os_)
        , pOldBuffer(os_.rdbuf(caught.rdbuf()))
    {
    }
    ~StreamCapture() { os.rdbuf(pOldBuffer); }
    StreamCapture(const StreamCapture&) = delete;
    StreamCapture& operator=(const StreamCapture&) = delete;

    [[nodiscard]] std::string text() const { return caught.str(); }
    [[nodiscard]] bool contains(const std::string& part) const
    {
        return text().find(part) != std::string::npos;
    }

private:
    std::ostringstream caught;
    std::ostream& os;
    std::streambuf* pOldBuffer;
};

} // namespace TARN_ZEF

#endif

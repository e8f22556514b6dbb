#ifndef ZEF_TOOLS_OUTPUTCAPTURE_H
#define ZEF_TOOLS_OUTPUTCAPTURE_H

#include <string>

namespace TARN_TOOL
{
// Decides for the time of one library call where the library's messages go. The library writes to the
// standard streams of the process, so the file descriptors themselves are turned aside.
//
// Invariant:  the streams are as before once finish() or the destructor has run.
// Threads:    the streams belong to the process: one capture at a time.
class OutputCapture
{
public:
    enum class Mode
    {
        HOLD,           // both streams are held back in a temporary file
        PASS,           // nothing is changed
        TO_ERROR_STREAM // standard output goes to the error stream
    };

    explicit OutputCapture(Mode mode_);
    ~OutputCapture();
    OutputCapture(const OutputCapture&) = delete;
    OutputCapture& operator=(const OutputCapture&) = delete;

    // Restores the streams and returns what was held back. A second call returns nothing.
    std::string finish();

private:
    void restore();

    Mode mode;
    int savedOut = -1; // the streams as they were; -1 if not turned aside
    int savedErr = -1;
    int holdFile = -1; // temporary file without a name
};

} // namespace TARN_TOOL

#endif

#ifndef ZEF_TOOLS_LIBRARYMESSAGES_H
#define ZEF_TOOLS_LIBRARYMESSAGES_H

#include <string>

namespace TARN_TOOL
{
// Decides for the time of one library call where the library's messages go.
//
// Invariant:  the library prints its messages itself again once finish() or the destructor has run.
// Threads:    the receiver belongs to the process: one object at a time.
class LibraryMessages
{
public:
    enum class Mode
    {
        HOLD,           // kept for finish()
        PASS,           // printed by the library
        TO_ERROR_STREAM // all of them to the error stream
    };

    explicit LibraryMessages(Mode mode);
    ~LibraryMessages();
    LibraryMessages(const LibraryMessages&) = delete;
    LibraryMessages& operator=(const LibraryMessages&) = delete;

    // Returns what was held back. A second call returns nothing.
    std::string finish();

private:
    std::string held;
};

} // namespace TARN_TOOL

#endif

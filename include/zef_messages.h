// Where the library's messages go: to the standard streams, or to a receiver of the host's own.
#ifndef ZEF_ZEF_MESSAGES_H
#define ZEF_ZEF_MESSAGES_H

#include "zef_export.h"

#include <functional>
#include <string>

namespace TARN_ZEF
{
enum class Severity
{
    Info,    // what the library does or has found, and what a call was asked to print
    Warning, // the result may not be what was wanted
    Error    // the call fails: it throws, or its result tells so
};

struct Message
{
    Severity severity = Severity::Info;
    std::string label;         // where it comes from; may be empty
    std::string text;          // the words alone, without a line end
    std::string printed;       // the words as printMessage() prints them, frame and line ends included
    bool bErrorStream = false; // printMessage() takes standard error
};

using MessageReceiver = std::function<void(const Message&)>;

// Makes receiver the one that gets every message of the library, in place of an earlier one. The library
// itself writes nothing to the standard streams but through the first receiver, printMessage(); an empty
// function brings that one back.
//
// Scope       the whole process: messages of calls on all threads
// Threads     may be called at any time on any thread, also while calls run. Once it returns, the earlier
//             receiver is no longer in use. A receiver runs on the thread of the call that the message is
//             about, or on a worker of it, one message at a time; the others wait, so it should be quick.
// A receiver must not call the library, nor wait for a thread that is in a call. What it throws is dropped.
ZEF_API void setMessageReceiver(MessageReceiver receiver);

// Writes message.printed to standard output or standard error.
ZEF_API void printMessage(const Message& message);

} // namespace TARN_ZEF

#endif

#ifndef ZEF_PYTHON_CALLMESSAGES_H
#define ZEF_PYTHON_CALLMESSAGES_H

#include <mutex>
#include <string>
#include <vector>

#include "zef_messages.h"

namespace TARN_PYTHON
{
// The library's words during one call, until the thread of Python that waits for the call logs them.
//
// A receiver of messages must not wait, so it never takes Python's lock: it only puts the words down here.
// Threads:    words come from the thread that runs the call; those of the library's workers, which cannot tell whose they
//             are, are logged by any call that looks.
class CallMessages
{
public:
    CallMessages() = default;
    CallMessages(const CallMessages&) = delete;
    CallMessages& operator=(const CallMessages&) = delete;

    // Makes this module the receiver of the library's messages, for as long as the process lives.
    static void receive();

    // While it lives, messages of this thread belong to the call.
    class Scope
    {
    public:
        explicit Scope(CallMessages& messages) noexcept;
        ~Scope();
        Scope(const Scope&) = delete;
        Scope& operator=(const Scope&) = delete;
    };

    // Logs what has come, to the logger "zef"; needs Python's lock. Errors wait for logErrors(), since most of them come
    // back as the text of an exception.
    void log();
    // At the end of the call. reason: what it has thrown, which is not said twice; empty if nothing
    void logErrors(const std::string& reason);

private:
    void add(const TARN_ZEF::Message& message);

    std::mutex mtx;
    std::vector<TARN_ZEF::Message> vWaiting;
    std::vector<TARN_ZEF::Message> vErrors; // of log(), on the thread of Python alone
};

} // namespace TARN_PYTHON

#endif

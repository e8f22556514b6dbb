#ifndef ZEF_TOOLS_INTERRUPTION_H
#define ZEF_TOOLS_INTERRUPTION_H

#include "zef.h"

namespace TARN_TOOL
{
// How the user ends a run early: interrupt, termination, hang-up.
//
// A signal during a library call cancels the call, and the run unwinds from there; at other times, and the second time,
// it takes temporary files away and ends the process at once. Either way no file is left, and the exit status is
// getStatus().
// Threads:    handlers run on any; all else on the main one.
class Interruption
{
public:
    // While it lives, the library's calls of this thread end when a signal comes.
    class Call
    {
    public:
        Call();
        ~Call();
        Call(const Call&) = delete;
        Call& operator=(const Call&) = delete;

    private:
        TARN_ZEF::CancelScope scope;
    };

    // Call once, before any other thread is there. Signals that the caller ignores stay ignored.
    static void installHandlers();
    // Throws ZefCancelledException if a signal has come.
    static void check();
    // 128 and the number of the signal, as shells have it.
    [[nodiscard]] static int getStatus();
};

} // namespace TARN_TOOL

#endif

#ifndef ZEF_CALLSCOPE_H
#define ZEF_CALLSCOPE_H

#include "core/CallRecorder.h"
#include "core/zefRand.h"

#include <memory>

namespace TARN_ZEF
{
// What code draws from and leaves behind within one public call.
struct CallState
{
    ZefRandom random;
    int occupancySign = 1; // side that the last thinning pass of an IsoStore tried first
};

// One public call. Each opens a scope as its first act, and so starts with a fresh CallState; what is inside
// reaches the state by the functions below, never by a variable of its own that would outlive the call.
//
// Ownership:  the scope holds the state, on the stack of the call.
// Invariant:  when the scope ends, by return or exception, the state of the call around it is in force again.
// Threads:    each thread has its own calls. Workers of the pool have none: what depends on the state
//             happens on the thread of the call, or no result could be the same for every number of threads.
// Errors:     a host that wants the call no longer ends it here: ZefCancelledException.
// Settings:   with setIndependentCalls(false), scopes have no state; that of the thread or the process holds.
// Report:     a call with a name fills in the report of its host, if there is one (CallRecorder).
class CallScope
{
public:
    CallScope();
    explicit CallScope(const char* name);
    ~CallScope();
    CallScope(const CallScope&) = delete;
    CallScope& operator=(const CallScope&) = delete;

    // Of the innermost call of this thread; null outside of calls and in calls that have none of their own.
    [[nodiscard]] static CallState* getState() noexcept;

private:
    CallState state;
    CallState* pOuter;
    std::unique_ptr<CallRecorder> pRecorder; // null if nobody asks
    int numExceptions;                       // under way when the call began
};

// Whether the thread is in a call that has a state of its own.
[[nodiscard]] inline bool isIndependentCall() noexcept
{
    return CallScope::getState() != nullptr;
}

} // namespace TARN_ZEF

#endif

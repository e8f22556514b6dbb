// How code within a call finds out that its host wants it no longer.
//
// Long loops call checkCancelled(), every few milliseconds at the least; a step that must not be left half done has
// no check inside. Jobs on the workers of the pool stand under the token of the call that they belong to, and
// what they throw reaches the caller. So each place that checks must be able to pass an exception on.
#ifndef ZEF_CANCEL_H
#define ZEF_CANCEL_H

#include "CancelToken.h"

#include <cstddef>

namespace TARN_ZEF
{
// Where the thread's calls look; null where nobody can cancel them. Set by CancelScope and CancelAdoption alone.
extern thread_local constinit const CancelScope* pCancelScope;

class CancelCheck
{
public:
    [[nodiscard]] static bool isCancelled(const CancelScope* pScope) noexcept;
    static void throwIfCancelled(const CancelScope* pScope);
};

[[nodiscard]] inline bool isCancelled() noexcept
{
    return pCancelScope != nullptr && CancelCheck::isCancelled(pCancelScope);
}

// Throws ZefCancelledException if a token of this thread, or of the call that the thread works for, is cancelled.
inline void checkCancelled()
{
    if (pCancelScope != nullptr) [[unlikely]]
        CancelCheck::throwIfCancelled(pCancelScope);
}

// The check for a loop of steps of microseconds or less: looks once in 4096 steps.
inline void checkCancelledAt(std::size_t step)
{
    if ((step & 4095) == 0) [[unlikely]]
        checkCancelled();
}

// The same for a loop that has no number at hand.
class CancelStride
{
public:
    void step() { checkCancelledAt(++num); }

private:
    std::size_t num = 0;
};

// A job of another thread's call, for the time of the job; with a null pointer, work that nobody can cancel.
class CancelAdoption
{
public:
    explicit CancelAdoption(const CancelScope* pScope) noexcept
        : pOwn(pCancelScope)
    {
        pCancelScope = pScope;
    }
    ~CancelAdoption() { pCancelScope = pOwn; }
    CancelAdoption(const CancelAdoption&) = delete;
    CancelAdoption& operator=(const CancelAdoption&) = delete;

private:
    const CancelScope* pOwn;
};

} // namespace TARN_ZEF

#endif

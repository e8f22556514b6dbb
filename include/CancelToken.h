// Stopping a running call from any thread.
//
//     CancelToken token;                      // one for each piece of work; the button gets a copy
//     std::thread worker([token]
//     {
//         const CancelScope scope(token);     // the calls of this thread, until the scope ends
//         try
//         {
//             auto pMesh = reconstruct_auto(vPoints, false, 1.0);
//             ...
//         }
//         catch (const ZefCancelledException&)
//         {
//         }
//     });
//     ...
//     token.cancel();                         // on whatever thread
//
// What holds after a cancelled call:
//   - It has thrown ZefCancelledException, within a tenth of a second as a rule and a quarter at worst.
//   - The library and the thread are as before: the next call gives what it would have given anyway.
//   - Nothing was appended to the vectors handed in, and no report was filled in.
//   - A mesh handed in to post-processing is whole: as some of the call's steps, each of them finished, have left
//     it. Steps are single collapses in reduce(), single flips in the edge flips, whole iterations in
//     laplacianSmoothing(). Before the first step, it is as it was.
//   - A writer has removed the file that it had begun. What stood under that name before is gone, as it is when the
//     writer starts.
// The same holds after an exception that ProgressBase::update() has thrown, which passes through the call as it is.
//
// Why a token and not a call of ProgressBase: files can be cancelled too, which report no progress; several calls
// that belong together, such as read, reconstruct and write, end with one token, also between two of them; and
// a new token for new work leaves no flag to clear, and no race about when to clear it.
#ifndef ZEF_CANCELTOKEN_H
#define ZEF_CANCELTOKEN_H

#include "ZefCancelledException.h"
#include "zef_export.h"

#include <atomic>
#include <memory>

namespace TARN_ZEF
{
// Whether a piece of work is still wanted. Copies share one state: what one of them cancels, all show.
//
// Threads:    all members, and copying, on any thread, at any time
class ZEF_API CancelToken
{
public:
    // A new state, not cancelled.
    CancelToken();

    // For good. Does not wait for the calls to end.
    void cancel() const noexcept;
    [[nodiscard]] bool isCancelled() const noexcept;

private:
    friend class CancelScope;
    std::shared_ptr<std::atomic<bool>> pCancelled;
};

// Puts the calls that this thread makes while the scope lives under a token. Each of them ends with
// ZefCancelledException once the token is cancelled, and throws at once if it was before. The getters of Mesh,
// getVersion() and the like are too short to look.
//
// A scope inside another adds a token: either cancels. Scopes end in the reverse order in which they began.
//
// Threads:    one; make and destroy it on the thread that calls. Not while a call runs: neither in update() nor in a
//             receiver of messages
class ZEF_API CancelScope
{
public:
    explicit CancelScope(const CancelToken& token_);
    ~CancelScope();
    CancelScope(const CancelScope&) = delete;
    CancelScope& operator=(const CancelScope&) = delete;

private:
    friend class CancelCheck;
    CancelToken token;
    const CancelScope* pOuter;
};

} // namespace TARN_ZEF

#endif

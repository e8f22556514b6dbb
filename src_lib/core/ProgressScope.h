#ifndef ZEF_PROGRESSSCOPE_H
#define ZEF_PROGRESSSCOPE_H

#include "core/Progress.h"

#include <type_traits>

namespace TARN_ZEF
{
// The tree of progress for the time of a public call.
//
// Invariant:  however the call ends, the thread's tree is unused afterwards, unless an outer call owns it.
// Threads:    that of the call.
class ProgressScope
{
public:
    // A call that always reports in a tree of its own.
    explicit ProgressScope(const char* rootName)
        : ProgressScope(true)
    {
        prepareProgress(rootName);
    }
    // A call that reports in the tree of an outer call if there is one; prepare makes its own otherwise.
    template <typename Prepare>
    requires std::is_invocable_v<Prepare>
    explicit ProgressScope(Prepare prepare)
        : ProgressScope(ownsProgress())
    {
        if (bOwnProgress)
            prepare();
    }
    // After an exception nothing is reported, but the tree must not look taken.
    ~ProgressScope()
    {
        if (bOwnProgress)
            pRoot->reset();
    }
    ProgressScope(const ProgressScope&) = delete;
    ProgressScope& operator=(const ProgressScope&) = delete;

    // Reports that the call is through.
    void finish()
    {
        if (bOwnProgress)
            finishProgress();
        bOwnProgress = false;
    }

private:
    // The public ones delegate to it, so that the destructor also clears up after a tree made in part.
    explicit ProgressScope(bool bOwnProgress_)
        : bOwnProgress(bOwnProgress_)
        , pRoot(getRootProgress())
    {
    }

    bool bOwnProgress;
    Progress* pRoot; // of the thread; asking for it can need memory
};

} // namespace TARN_ZEF

#endif

#ifndef ZEF_JOBGROUP_H
#define ZEF_JOBGROUP_H

#include "core/cancel.h"
#include "parallel/WorkerPool.h"

#include <cstddef>
#include <future>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// The jobs that one caller has in the process's pool at a time.
//
// Invariant:  no job outlives the group, so jobs may refer to the caller's locals that were made before it.
// Cancelling: jobs stand under the token of the caller's call; those that have not begun when it is cancelled end at
//             once with its exception.
// Threads:    one caller; never inside a job.
class JobGroup
{
public:
    JobGroup() = default;
    // Waits; exceptions of jobs that nobody asked for vanish.
    ~JobGroup() { waitAll(); }
    JobGroup(const JobGroup&) = delete;
    JobGroup& operator=(const JobGroup&) = delete;

    void reserve(std::size_t num) { vHandles.reserve(num); }

    // f takes no argument.
    template <typename F>
    void push(F f)
    {
        // The place first: a future that finds none would lose its job out of sight.
        std::future<void>& handle = vHandles.emplace_back();
        handle = getWorkerPool().push(
            [f = std::move(f), pScope = pCancelScope](int) mutable
            {
                const CancelAdoption adoption(pScope);
                checkCancelled();
                f();
            });
    }

    // Waits for every job, then rethrows the exception of the first one in order of push() that failed. The
    // group is empty afterwards.
    void finish()
    {
        waitAll();
        std::vector<std::future<void>> vDone;
        vDone.swap(vHandles);
        for (std::future<void>& handle : vDone)
        {
            if (handle.valid())
                handle.get();
        }
        checkCancelled();
    }

private:
    void waitAll() noexcept
    {
        for (const std::future<void>& handle : vHandles)
        {
            if (handle.valid())
                handle.wait();
        }
    }

    std::vector<std::future<void>> vHandles;
};

} // namespace TARN_ZEF

#endif

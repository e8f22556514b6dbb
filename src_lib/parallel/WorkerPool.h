#ifndef ZEF_WORKERPOOL_H
#define ZEF_WORKERPOOL_H

#include <atomic>
#include <cstddef>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace TARN_ZEF
{
// Threads that take jobs from one queue, first come, first served. A job gets the index of the worker that
// runs it.
//
// Ownership:  the pool owns its threads; what they share (queue, flags) lives until the last of them, so
//             that a worker that resize() let go may finish its job at any time.
// Invariant:  a pushed job runs exactly once, or its future reports std::future_errc::broken_promise
//             because stop(false) dropped it.
// Threads:    all operations from any thread. A job must not wait for another job.
class WorkerPool
{
public:
    using Job = std::function<void(int)>;

    explicit WorkerPool(int numThreads);
    // Finishes the queue.
    ~WorkerPool();
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    // An exception of the job passes through the future. In a stopped pool, or one that could start no
    // thread, the job runs at once on the caller's thread, with index 0.
    [[nodiscard]] std::future<void> push(Job job);

    // Ends all threads for good. With bWait the waiting jobs run first; without, they are dropped and each
    // worker ends after the job in hand.
    void stop(bool bWait);

    // Changes the number of threads, at least 1. Surplus workers finish the job in hand on their own. Does
    // nothing in a stopped pool.
    void resize(int n);

    [[nodiscard]] int size() const;

private:
    struct Shared;

    void shrinkTo(std::size_t num);
    void growTo(std::size_t num);

    std::vector<std::thread> vThreads;
    std::vector<std::shared_ptr<std::atomic<bool>>> vStopFlags;
    std::shared_ptr<Shared> pShared;
    // Over vThreads and vStopFlags.
    mutable std::mutex threadsMtx;
};

// The pool of the process, made at first use with getNumThreads() threads, stopped at process exit.
[[nodiscard]] WorkerPool& getWorkerPool();

// Whether the calling thread is a worker of any pool: such a thread must not wait for jobs.
[[nodiscard]] bool isWorkerThread();

// How many threads sorts and parallel loops use. The hardware concurrency, or the environment variable
// ZEF_THREADS (1 to 256) as read at first use, or what setNumThreads() said last.
[[nodiscard]] int getNumThreads();

// Takes 1 to 256; anything else counts as the nearest of these. Not while a sort or loop runs on another
// thread if the timing of that one matters; results never depend on it.
void setNumThreads(int n);

} // namespace TARN_ZEF

#endif

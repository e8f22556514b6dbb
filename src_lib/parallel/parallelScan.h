#ifndef ZEF_PARALLELSCAN_H
#define ZEF_PARALLELSCAN_H

#include "parallel/JobGroup.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// Numbers things in chunks that are walked in order: for each chunk, count(chunk) tells how many things are in
// it, and fill(chunk, first) follows at once on the same thread, while the chunk is in its cache, with the number
// of things in all chunks before. Returns the number of all. The same for every number of threads.
//
// Both may run on any worker of the pool, count() of one chunk beside calls for others. They must not throw, and do
// not stand under the token of the call: a cancelled one passes over the chunks that are left, and throws at the end.
template <typename Count, typename Fill>
std::size_t parallelScan(std::size_t numChunks, Count count, Fill fill)
{
    checkCancelled();
    const auto numThreads = static_cast<std::size_t>(getNumThreads());
    if (numChunks < 2 || numThreads < 2 || isWorkerThread())
    {
        std::size_t num = 0;
        for (std::size_t chunk = 0; chunk < numChunks; ++chunk)
        {
            checkCancelled();
            const std::size_t first = num;
            num += count(chunk);
            fill(chunk, first);
        }
        return num;
    }
    constexpr std::uint64_t unknown = ~std::uint64_t{0};
    std::vector<std::atomic<std::uint64_t>> vBefore(numChunks + 1); // things before each chunk
    for (std::size_t chunk = 1; chunk <= numChunks; ++chunk)
        vBefore[chunk].store(unknown, std::memory_order_relaxed);
    // Chunks are taken in order, and the lowest one under way waits for nobody.
    std::atomic<std::size_t> next = 0;
    const CancelScope* const pScope = pCancelScope;
    const auto work = [&]() noexcept
    {
        const CancelAdoption adoption(nullptr);
        for (std::size_t chunk = next++; chunk < numChunks; chunk = next++)
        {
            const bool bCancelled = CancelCheck::isCancelled(pScope);
            const std::uint64_t num = bCancelled ? 0 : count(chunk);
            vBefore[chunk].wait(unknown, std::memory_order_acquire);
            const std::uint64_t first = vBefore[chunk].load(std::memory_order_acquire);
            vBefore[chunk + 1].store(first + num, std::memory_order_release);
            vBefore[chunk + 1].notify_one();
            if (!bCancelled)
                fill(chunk, static_cast<std::size_t>(first));
        }
    };
    JobGroup jobs;
    for (std::size_t i = 0; i < numThreads; ++i)
        jobs.push(work);
    jobs.finish();
    checkCancelled();
    return static_cast<std::size_t>(vBefore[numChunks].load(std::memory_order_acquire));
}

} // namespace TARN_ZEF

#endif

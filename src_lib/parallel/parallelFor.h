#ifndef ZEF_PARALLELFOR_H
#define ZEF_PARALLELFOR_H

#include "parallel/JobGroup.h"

#include <algorithm>
#include <cstddef>

namespace TARN_ZEF
{
// Calls f for [from, to): at once, or, where the call may be cancelled, piece by piece with a look after each.
template <typename F>
void runInPieces(std::size_t from, std::size_t to, std::size_t minPiece, F& f)
{
    constexpr std::size_t maxPieces = 64; // a second's work is looked after each 16 milliseconds
    const std::size_t piece = std::max((to - from + maxPieces - 1) / maxPieces, minPiece);
    for (; pCancelScope != nullptr && to - from > piece; from += piece)
    {
        f(from, from + piece);
        checkCancelled();
    }
    f(from, to);
}

// Calls f(from, to) on chunks that cover [0, n) without overlap, on the workers of the pool, and returns
// when all are done. f must write to slots of its own chunk only, so that the result is the same for every
// number of threads.
//
// minChunk  the fewest elements worth a job; only the last chunk can be smaller
// Runs on the caller's thread as f(0, n) if n is small, with one thread, and inside a job. Where the call may be
// cancelled, chunks are cut into pieces of at least minChunk. The exception of the first chunk that failed is
// rethrown after all have ended.
template <typename F>
void parallelFor(std::size_t n, std::size_t minChunk, F f)
{
    // A few chunks a thread even out chunks of unequal cost.
    constexpr std::size_t chunksPerThread = 4;
    const std::size_t numThreads = static_cast<std::size_t>(getNumThreads());
    const std::size_t wanted = numThreads * chunksPerThread;
    const std::size_t chunk = std::max({minChunk, (n + wanted - 1) / wanted, std::size_t{1}});
    if (n <= chunk || numThreads < 2 || isWorkerThread())
    {
        checkCancelled();
        if (n > 0)
            runInPieces(0, n, std::max(minChunk, std::size_t{1}), f);
        return;
    }
    JobGroup jobs;
    jobs.reserve((n + chunk - 1) / chunk);
    for (std::size_t from = 0; from < n; from += chunk)
        jobs.push([&f, from, to = std::min(from + chunk, n), minPiece = std::max(minChunk, std::size_t{1})]
                  { runInPieces(from, to, minPiece, f); });
    jobs.finish();
}

// Calls f(i) for each i in [0, n), as above: f must write to slots of its own index only.
template <typename F>
void forEachIndexMT(int n, std::size_t minChunk, F f)
{
    parallelFor(static_cast<std::size_t>(n), minChunk,
                [&f](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                        f(static_cast<int>(i));
                });
}

} // namespace TARN_ZEF

#endif

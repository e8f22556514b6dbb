#ifndef ZEF_PRODUCEINORDER_H
#define ZEF_PRODUCEINORDER_H

#include "parallel/JobGroup.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
// A pipeline of two stages: produce(slot, i) fills a slot for item i on the workers of the pool, ahead of the
// caller's thread, which takes the items in order by consume(slot). For work whose second stage must be
// serial. The result is the same for every number of threads if produce() depends on i alone.
//
// vSlots  room for the items under way, at least one; slots are used again without being cleared
// Runs on the caller's thread alone with one thread, and inside a job. An exception of either stage passes out
// after all jobs have ended.
template <typename Slot, typename Produce, typename Consume>
void produceInOrder(std::vector<Slot>& vSlots, std::size_t num, Produce produce, Consume consume)
{
    if (num < 2 || getNumThreads() < 2 || isWorkerThread())
    {
        for (std::size_t i = 0; i < num; ++i)
        {
            checkCancelled();
            produce(vSlots.front(), i);
            consume(vSlots.front());
        }
        return;
    }
    std::vector<JobGroup> vJobs(vSlots.size());
    const auto start = [&](std::size_t i)
    {
        const std::size_t place = i % vSlots.size();
        vJobs[place].push([&produce, &slot = vSlots[place], i] { produce(slot, i); });
    };
    for (std::size_t i = 0; i < std::min(vSlots.size(), num); ++i)
        start(i);
    for (std::size_t i = 0; i < num; ++i)
    {
        checkCancelled();
        vJobs[i % vSlots.size()].finish();
        consume(vSlots[i % vSlots.size()]);
        if (i + vSlots.size() < num)
            start(i + vSlots.size());
    }
}

// The same for the elements of [0, num), of which each item is the next perPart: produce(slot, from, to), where the
// slot still holds what it held last. Parts are the same for every number of threads.
template <typename Slot, typename Produce, typename Consume>
void produceRangesInOrder(std::size_t num, std::size_t perPart, Produce produce, Consume consume)
{
    constexpr std::size_t numPartsAhead = 4;
    std::vector<Slot> vSlots(numPartsAhead);
    produceInOrder(
        vSlots, (num + perPart - 1) / perPart,
        [&](Slot& slot, std::size_t i) { produce(slot, i * perPart, std::min((i + 1) * perPart, num)); },
        consume);
}

} // namespace TARN_ZEF

#endif

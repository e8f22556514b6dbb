// The parallel sort of all large vectors.
//
// sortMT is a quicksort in levels: ranges are parted at sampled pivots until there are as many as threads,
// then each is sorted on a worker. Large arrays of unsigned numbers, or of pairs with one in front, in
// their natural order are sorted by radix in its place, with the same result.
//
// The order must be total on the elements, or the order among equal ones changes with the number of
// threads. sortByFirstMT is stable and knows no such limit.
//
// Threads:  one caller waits for its own jobs; several callers share the pool. Never inside a job: asserted.
// Cost:     n log n comparisons over the threads; the pivot costs at most some 2000 samples a range.
// Errors:   an exception of the comparator passes to the caller, who finds the elements in any order.
#ifndef ZEF_SORTMT2_H
#define ZEF_SORTMT2_H

#include "core/definitions.h"
#include "parallel/JobGroup.h"
#include "parallel/WorkerPool.h"
#include "parallel/parallelFor.h"
#include "parallel/radixSort2.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// A job: sorts one range.
template <typename Iterator, typename Compare>
struct SortTask2
{
    Iterator first;
    Iterator last;
    Compare cmp;

    void run() { std::sort(first, last, cmp); }
};

// A job: parts one range at a value; result is the first element that is not below it.
template <typename Iterator, typename Compare>
struct PartitionTask2
{
    using T = typename std::iterator_traits<Iterator>::value_type;

    T mid;
    Iterator first;
    Iterator last;
    Iterator result;
    Compare cmp;

    PartitionTask2(T mid_, Iterator first_, Iterator last_, Compare cmp_)
        : mid(std::move(mid_))
        , first(first_)
        , last(last_)
        , result(last_)
        , cmp(cmp_)
    {
    }
    void run()
    {
        result = std::partition(first, last, [this](const T& x) { return cmp(x, mid); });
    }
};

// About the median of a range: that of evenly spread samples, 1000 to 1999 of them from 1000 elements on.
// first must be an element even if the range is empty.
template <typename Iterator, typename Compare>
[[nodiscard]] typename std::iterator_traits<Iterator>::value_type estimateMid2(Iterator first, Iterator last,
                                                                               Compare cmp)
{
    if (first == last)
        return *first;
    const auto size = last - first;
    constexpr std::ptrdiff_t numSamples = 1000;
    const auto step = std::max<std::ptrdiff_t>(size / numSamples, 1);
    std::vector<typename std::iterator_traits<Iterator>::value_type> vSample;
    vSample.reserve(static_cast<std::size_t>((size + step - 1) / step));
    for (std::ptrdiff_t i = 0; i < size; i += step)
        vSample.push_back(first[i]);
    std::sort(vSample.begin(), vSample.end(), cmp);
    ASSEX(!vSample.empty());
    return vSample[vSample.size() / 2];
}

// The parts of sortMT. Ranges are pairs of indices (from, to).
namespace SORT_MT_PARTS
{
using Level = std::vector<std::pair<std::ptrdiff_t, std::ptrdiff_t>>;

// Below this, starting jobs costs more than it saves.
inline constexpr std::ptrdiff_t MIN_SIZE_FOR_THREADS = 1000;
// Below this, the radix sort's counters cost more than comparing.
inline constexpr std::ptrdiff_t MIN_SIZE_FOR_RADIX = 2000;

// Parts each range at its pivot: two ranges for one, empty ones included.
template <typename Iterator, typename Compare>
[[nodiscard]] Level makeNextLevel(Iterator first, const Level& level, Compare cmp)
{
    std::vector<PartitionTask2<Iterator, Compare>> vTasks;
    vTasks.reserve(level.size());
    JobGroup jobs;
    for (const auto& [from, to] : level)
    {
        // An empty range has no element to copy as pivot, and nothing to part.
        if (from == to)
            continue;
        auto mid = estimateMid2(first + from, first + to, cmp);
        auto& task = vTasks.emplace_back(std::move(mid), first + from, first + to, cmp);
        jobs.push([&task] { task.run(); });
    }
    jobs.finish();
    Level nextLevel;
    nextLevel.reserve(2 * level.size());
    auto pTask = vTasks.begin();
    for (const auto& [from, to] : level)
    {
        const std::ptrdiff_t midIdx = from == to ? from : pTask++->result - first;
        nextLevel.emplace_back(from, midIdx);
        nextLevel.emplace_back(midIdx, to);
    }
    return nextLevel;
}

template <typename Iterator, typename Compare>
void sortRanges(Iterator first, const Level& level, std::ptrdiff_t vectorSize, Compare cmp)
{
    JobGroup jobs;
    jobs.reserve(level.size());
    std::ptrdiff_t sumSize = 0;
    for (const auto& [from, to] : level)
    {
        if (from == to)
            continue;
        jobs.push([task = SortTask2<Iterator, Compare>{first + from, first + to, cmp}]() mutable
                  { task.run(); });
        sumSize += to - from;
    }
    jobs.finish();
    ASSEX(sumSize == vectorSize);
}

template <typename Iterator, typename Compare>
void quickSort(Iterator first, Iterator last, Compare cmp)
{
    const std::size_t numThreads = static_cast<std::size_t>(getNumThreads());
    const std::ptrdiff_t vectorSize = last - first;
    if (numThreads < 2 || vectorSize < MIN_SIZE_FOR_THREADS)
    {
        std::sort(first, last, cmp);
        return;
    }
    std::vector<Level> vvFromTo = {{{0, vectorSize}}};
    // A sort that may be cancelled is cut smaller, since nobody looks within a range.
    const std::size_t numRanges =
        pCancelScope == nullptr ? numThreads : std::max(numThreads, std::size_t{16});
    while (vvFromTo.back().size() < numRanges)
        vvFromTo.push_back(makeNextLevel(first, vvFromTo.back(), cmp));
    sortRanges(first, vvFromTo.back(), vectorSize, cmp);
}

// After a sort by the first member: brings every run of equal first members in order.
template <typename T>
void sortRuns(T* pFirst, std::size_t num)
{
    std::vector<std::size_t> vStarts = {0};
    constexpr std::size_t minStride = 50'000;
    const std::size_t stride = std::max(num / (4 * static_cast<std::size_t>(getNumThreads())), minStride);
    for (std::size_t i = stride; i < num; i += stride)
    {
        while (i < num && pFirst[i].first == pFirst[i - 1].first)
            ++i;
        vStarts.push_back(i);
    }
    if (vStarts.back() != num)
        vStarts.push_back(num);
    const auto sortPart = [pFirst](std::size_t from, std::size_t to)
    {
        while (from < to)
        {
            std::size_t end = from + 1;
            while (end < to && pFirst[end].first == pFirst[from].first)
                ++end;
            if (end - from > 1)
                std::sort(pFirst + from, pFirst + end);
            from = end;
        }
    };
    parallelFor(vStarts.size() - 1, 1,
                [&](std::size_t from, std::size_t to) { sortPart(vStarts[from], vStarts[to]); });
}

// Whether cmp is the natural order of T, so that the radix sort may stand in.
template <typename T, typename Compare>
inline constexpr bool isNatural =
    std::is_same_v<Compare, std::less<T>> || std::is_same_v<Compare, std::less<void>>;

// False, with the elements in any order, if the radix sort does not apply or finds no memory.
template <typename Iterator, typename Compare>
[[nodiscard]] bool sortByRadix(Iterator first, Iterator last, const Compare&)
{
    using T = typename std::iterator_traits<Iterator>::value_type;
    if constexpr (std::contiguous_iterator<Iterator> && isNatural<T, Compare>)
    {
        if (last - first < MIN_SIZE_FOR_RADIX)
            return false;
        T* const pFirst = std::to_address(first);
        const std::size_t num = static_cast<std::size_t>(last - first);
        if constexpr (RadixNumber<T>)
        {
            return RadixSort2(pFirst, num, [](const T& x) { return static_cast<u64>(x); }).run();
        }
        else if constexpr (isRadixPair<T>)
        {
            if (!RadixSort2(pFirst, num, [](const T& x) { return static_cast<u64>(x.first); }).run())
                return false;
            sortRuns(pFirst, num);
            return true;
        }
    }
    return false;
}

// Stretches sorted on the workers, then merged two by two.
template <typename Iterator, typename Compare>
void mergeSort(Iterator first, Iterator last, Compare cmp)
{
    const std::ptrdiff_t num = last - first;
    const std::ptrdiff_t numThreads = getNumThreads();
    if (numThreads < 2 || num < MIN_SIZE_FOR_THREADS)
    {
        std::stable_sort(first, last, cmp);
        return;
    }
    const std::ptrdiff_t stretch = (num + numThreads - 1) / numThreads;
    const auto at = [first, num](std::ptrdiff_t i) { return first + std::min(i, num); };
    JobGroup jobs;
    for (std::ptrdiff_t i = 0; i < num; i += stretch)
        jobs.push([=] { std::stable_sort(at(i), at(i + stretch), cmp); });
    jobs.finish();
    for (std::ptrdiff_t width = stretch; width < num; width *= 2)
    {
        for (std::ptrdiff_t i = 0; i + width < num; i += 2 * width)
            jobs.push([=] { std::inplace_merge(at(i), at(i + width), at(i + 2 * width), cmp); });
        jobs.finish();
    }
}

} // namespace SORT_MT_PARTS

template <typename Iterator, typename Compare = std::less<>>
void sortMT(Iterator first, Iterator last, Compare cmp = Compare())
{
    ASSEX(!isWorkerThread());
    if (!SORT_MT_PARTS::sortByRadix(first, last, cmp))
        SORT_MT_PARTS::quickSort(first, last, cmp);
}

// Pairs by their first member; those that are equal there keep their order.
template <typename Iterator, typename Compare = std::less<>>
void sortByFirstMT(Iterator first, Iterator last, Compare cmp = Compare())
{
    ASSEX(!isWorkerThread());
    using T = typename std::iterator_traits<Iterator>::value_type;
    if constexpr (std::contiguous_iterator<Iterator> && isRadixPair<T> &&
                  SORT_MT_PARTS::isNatural<typename T::first_type, Compare>)
    {
        const std::ptrdiff_t num = last - first;
        if (num >= SORT_MT_PARTS::MIN_SIZE_FOR_RADIX)
        {
            const auto getKey = [](const T& x) { return static_cast<u64>(x.first); };
            if (RadixSort2(std::to_address(first), static_cast<std::size_t>(num), getKey).run())
                return;
        }
    }
    SORT_MT_PARTS::mergeSort(first, last, [cmp](const T& a, const T& b) { return cmp(a.first, b.first); });
}

} // namespace TARN_ZEF

#endif

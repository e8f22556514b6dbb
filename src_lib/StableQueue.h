#ifndef ZEF_STABLEQUEUE_H
#define ZEF_STABLEQUEUE_H

#include "definitions.h"
#include "tools.h"

#include <algorithm>
#include <cstddef>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// A priority queue whose equal elements leave in the order in which they came.
//
// Made for many elements that come sorted and few that come alone: the sorted ones stay in their arrays,
// which are merged while they leave, so that memory is read from front to back.
//
// KeyOf      gives the key of a T, a double; the smallest key leaves first, NaN after all numbers
// Ownership:  holds its elements by value; an array is freed when its last element has left.
// Invariant:  vRuns and vSingles are heaps by (key, order of coming) of their first elements.
// Threads:    none.
// Cost:       pop() is logarithmic in the number of arrays, plus in the number of single elements.
template <typename T, typename KeyOf>
class StableQueue
{
public:
    void add(const T& value)
    {
        vSingles.push_back({Rank{KeyOf()(value), numComings++}, value});
        std::push_heap(vSingles.begin(), vSingles.end(), Later());
        ++numElements;
    }

    // v ascends by key.
    void addSorted(std::vector<T> v)
    {
        if (v.empty())
            return;
        numElements += v.size();
        const double key = KeyOf()(v.front());
        vRuns.push_back({Rank{key, numComings++}, 0, std::move(v)});
        std::push_heap(vRuns.begin(), vRuns.end(), Later());
    }

    [[nodiscard]] bool empty() const noexcept { return numElements == 0; }
    [[nodiscard]] std::size_t size() const noexcept { return numElements; }
    // Not of an empty queue; the reference is good until the next change.
    [[nodiscard]] const T& front() const
    {
        ASSEX(!empty());
        return isSingleFirst() ? vSingles.front().value : vRuns.front().v[vRuns.front().next];
    }

    void pop()
    {
        ASSEX(!empty());
        --numElements;
        if (isSingleFirst())
        {
            std::pop_heap(vSingles.begin(), vSingles.end(), Later());
            vSingles.pop_back();
        }
        else
        {
            advanceFirstRun();
        }
    }

private:
    struct Rank
    {
        double key;
        u64 order;

        [[nodiscard]] bool isBefore(const Rank& other) const noexcept
        {
            if (key < other.key)
                return true;
            if (other.key < key)
                return false;
            if (key == other.key) [[likely]]
                return order < other.order;
            return isNaN(key) == isNaN(other.key) ? order < other.order : isNaN(other.key);
        }
    };
    struct Single
    {
        Rank rank;
        T value;
    };
    struct Run
    {
        Rank rank; // of the next element; all elements of a run came together
        std::size_t next;
        std::vector<T> v;
    };
    struct Later
    {
        template <typename U>
        bool operator()(const U& a, const U& b) const noexcept
        {
            return b.rank.isBefore(a.rank);
        }
    };

    [[nodiscard]] bool isSingleFirst() const noexcept
    {
        return vRuns.empty() || (!vSingles.empty() && vSingles.front().rank.isBefore(vRuns.front().rank));
    }

    void advanceFirstRun()
    {
        Run& run = vRuns.front();
        if (++run.next == run.v.size())
        {
            std::pop_heap(vRuns.begin(), vRuns.end(), Later());
            vRuns.pop_back();
            return;
        }
        run.rank.key = KeyOf()(run.v[run.next]);
        sinkFirstRun();
    }

    // Mostly the same run stays first: two comparisons.
    void sinkFirstRun()
    {
        for (std::size_t i = 0;;)
        {
            std::size_t child = 2 * i + 1;
            if (child >= vRuns.size())
                return;
            if (child + 1 < vRuns.size() && vRuns[child + 1].rank.isBefore(vRuns[child].rank))
                ++child;
            if (!vRuns[child].rank.isBefore(vRuns[i].rank))
                return;
            std::swap(vRuns[i], vRuns[child]);
            i = child;
        }
    }

    std::vector<Run> vRuns;
    std::vector<Single> vSingles;
    std::size_t numElements = 0;
    u64 numComings = 0;
};

} // namespace TARN_ZEF

#endif

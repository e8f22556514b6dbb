#ifndef ZEF_STABLEQUEUE_H
#define ZEF_STABLEQUEUE_H

#include "core/definitions.h"
#include "core/numbers.h"

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
// Invariant:  vRuns and vSingles are heaps by (key, order of coming) of their first elements. What is at hand
//             comes before all of them.
// Threads:    none.
// Cost:       pop() is logarithmic in the number of arrays, plus in the number of single elements.
template <typename T, typename KeyOf>
class StableQueue
{
public:
    void add(const T& value)
    {
        const Single single{Rank{KeyOf()(value), numComings++}, value};
        ++numElements;
        if (handNext < vHand.size() && single.rank.isBefore(vHand.back().rank))
            vHand.insert(
                std::upper_bound(vHand.begin() + static_cast<std::ptrdiff_t>(handNext), vHand.end(), single,
                                 [](const Single& a, const Single& b) { return a.rank.isBefore(b.rank); }),
                single);
        else
            addToHeap(single);
    }

    // v ascends by key.
    void addSorted(std::vector<T> v)
    {
        if (v.empty())
            return;
        // The run may belong between the elements at hand.
        for (; handNext < vHand.size(); ++handNext)
            addToHeap(vHand[handNext]);
        numElements += v.size();
        const double key = KeyOf()(v.front());
        const u64 order = numComings;
        numComings += v.size();
        vRuns.push_back({Rank{key, order}, 0, std::move(v)});
        std::push_heap(vRuns.begin(), vRuns.end(), Later());
    }

    [[nodiscard]] bool empty() const noexcept { return numElements == 0; }
    [[nodiscard]] std::size_t size() const noexcept { return numElements; }
    // Not of an empty queue; the reference is good until the next change.
    [[nodiscard]] const T& front() const
    {
        ASSEX(!empty());
        if (handNext < vHand.size())
            return vHand[handNext].value;
        return isSingleFirst() ? vSingles.front().value : vRuns.front().v[vRuns.front().next];
    }

    // Looks ahead: calls f on the next num elements in the order in which they leave if nothing comes in
    // between, so that what they need can be brought near. False, and nothing done, while elements of the last
    // look ahead still wait.
    template <typename F>
    bool lookAhead(std::size_t num, F f)
    {
        if (handNext < vHand.size())
            return false;
        vHand.clear();
        handNext = 0;
        for (; num > 0 && (!vRuns.empty() || !vSingles.empty()); --num)
            moveFirstToHand();
        for (const Single& single : vHand)
            f(single.value);
        return true;
    }

    void pop()
    {
        ASSEX(!empty());
        --numElements;
        if (handNext < vHand.size())
            ++handNext;
        else
            dropFirst();
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
        Rank rank; // of the next element; each came right after the one before it
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

    void addToHeap(const Single& single)
    {
        vSingles.push_back(single);
        std::push_heap(vSingles.begin(), vSingles.end(), Later());
    }

    void moveFirstToHand()
    {
        if (isSingleFirst())
            vHand.push_back(vSingles.front());
        else
            vHand.push_back({vRuns.front().rank, vRuns.front().v[vRuns.front().next]});
        dropFirst();
    }

    // Of the elements that are not at hand.
    void dropFirst()
    {
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

    void advanceFirstRun()
    {
        Run& run = vRuns.front();
        if (++run.next == run.v.size())
        {
            std::pop_heap(vRuns.begin(), vRuns.end(), Later());
            vRuns.pop_back();
            return;
        }
        run.rank = {KeyOf()(run.v[run.next]), run.rank.order + 1};
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
    std::vector<Single> vHand; // taken out by lookAhead(), ascending; gone up to handNext
    std::size_t handNext = 0;
    std::size_t numElements = 0;
    u64 numComings = 0;
};

} // namespace TARN_ZEF

#endif

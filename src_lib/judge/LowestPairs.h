#ifndef ZEF_LOWESTPAIRS_H
#define ZEF_LOWESTPAIRS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// The lowest of the pairs of numbers that are added, up to a number of them; a pair is ordered by its first.
class LowestPairs
{
public:
    using Pair = std::pair<std::uint32_t, std::uint32_t>;

    explicit LowestPairs(std::size_t maxPairs_ = 0)
        : maxPairs(maxPairs_)
    {
    }

    void add(const Pair& pair)
    {
        if (vHeap.size() == maxPairs)
        {
            if (vHeap.empty() || vHeap.front() <= pair)
                return;
            std::pop_heap(vHeap.begin(), vHeap.end());
            vHeap.pop_back();
        }
        vHeap.push_back(pair);
        std::push_heap(vHeap.begin(), vHeap.end());
    }
    void append(const LowestPairs& other)
    {
        for (const Pair& pair : other.vHeap)
            add(pair);
    }
    [[nodiscard]] std::vector<Pair> getSorted() const
    {
        std::vector<Pair> vResult = vHeap;
        std::sort(vResult.begin(), vResult.end());
        return vResult;
    }

private:
    std::size_t maxPairs;
    std::vector<Pair> vHeap; // the highest in front
};

} // namespace TARN_ZEF

#endif

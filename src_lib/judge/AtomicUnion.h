#ifndef ZEF_ATOMICUNION_H
#define ZEF_ATOMICUNION_H

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// Disjoint sets that threads may unite at the same time. How many unions succeed depends on what is united, not
// on the order.
//
// Invariant:  an element's parent is no higher than itself, so there is no circle at any time.
// Source:     R. J. Anderson and H. Woll, Wait-free parallel algorithms for the union-find problem, 1991; linked by
//             number, not by rank.
class AtomicUnion
{
public:
    explicit AtomicUnion(std::size_t num)
        : vParents(num)
    {
        for (std::size_t i = 0; i < num; ++i)
            vParents[i].store(static_cast<std::uint32_t>(i), std::memory_order_relaxed);
    }

    // False if both are in one set already.
    bool unite(std::uint32_t a, std::uint32_t b)
    {
        while (true)
        {
            a = findRoot(a);
            b = findRoot(b);
            if (a == b)
                return false;
            if (a < b)
                std::swap(a, b);
            std::uint32_t expected = a;
            if (vParents[a].compare_exchange_strong(expected, b, std::memory_order_relaxed))
                return true;
        }
    }

    // The lowest of its set, once all are united.
    [[nodiscard]] std::uint32_t findRoot(std::uint32_t i)
    {
        while (true)
        {
            std::uint32_t parent = vParents[i].load(std::memory_order_relaxed);
            if (parent == i)
                return i;
            const std::uint32_t next = vParents[parent].load(std::memory_order_relaxed);
            if (next != parent)
                vParents[i].compare_exchange_weak(parent, next, std::memory_order_relaxed);
            i = next;
        }
    }

private:
    std::vector<std::atomic<std::uint32_t>> vParents;
};

} // namespace TARN_ZEF

#endif

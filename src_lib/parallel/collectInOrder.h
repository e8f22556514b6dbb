#ifndef ZEF_COLLECTINORDER_H
#define ZEF_COLLECTINORDER_H

#include "parallel/produceInOrder.h"

#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
// What is found among num elements by search(from, to, vFound), which looks through [from, to) and appends to
// vFound; in the order of the elements. The workers of the pool search; the result is the same for every number
// of threads. For a search that is quick and finds little.
//
// T  of what is found
template <typename T, typename Search>
[[nodiscard]] std::vector<T> collectInOrder(std::size_t num, Search search)
{
    constexpr std::size_t perPart = 1 << 16; // some 100 microseconds of work
    std::vector<T> vResult;
    produceRangesInOrder<std::vector<T>>(
        num, perPart,
        [&](std::vector<T>& vFound, std::size_t from, std::size_t to)
        {
            vFound.clear();
            search(from, to, vFound);
        },
        [&vResult](const std::vector<T>& vFound)
        { vResult.insert(vResult.end(), vFound.begin(), vFound.end()); });
    return vResult;
}

} // namespace TARN_ZEF

#endif

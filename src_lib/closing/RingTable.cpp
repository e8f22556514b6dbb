#include "closing/RingTable.h"

#include "core/cancel.h"

#include <algorithm>
#include <utility>

namespace TARN_ZEF
{
RingTable::RingTable(const std::vector<int>& vCorners, const std::vector<char>& vIsWanted)
{
    for (std::size_t i = 0; i < vCorners.size(); ++i)
    {
        checkCancelledAt(i);
        if (vIsWanted[static_cast<std::size_t>(vCorners[i])] == 0)
            continue;
        for (const std::size_t other : {i % 3 == 2 ? i - 2 : i + 1, i % 3 == 0 ? i + 2 : i - 1})
            vPairs.emplace_back(vCorners[i], vCorners[other]);
    }
    std::sort(vPairs.begin(), vPairs.end());
    vPairs.erase(std::unique(vPairs.begin(), vPairs.end()), vPairs.end());
    vNeighbours.reserve(vPairs.size());
    for (const auto& [vertex, neighbour] : vPairs)
        vNeighbours.push_back(neighbour);
}

std::span<const int> RingTable::get(int v) const
{
    const auto isBelow = [](const auto& pair, int wanted) { return pair.first < wanted; };
    const auto first = std::lower_bound(vPairs.begin(), vPairs.end(), v, isBelow);
    const auto last = std::lower_bound(first, vPairs.end(), v + 1, isBelow);
    return std::span<const int>(vNeighbours)
        .subspan(static_cast<std::size_t>(first - vPairs.begin()), static_cast<std::size_t>(last - first));
}

} // namespace TARN_ZEF

#include "finish/EdgeTable.h"

#include <algorithm>

namespace TARN_ZEF
{
// A vertex has few edges: the half-edges are dealt out by the lower of their ends, then each small heap is sorted.
EdgeTable::EdgeTable(const FlatMesh& mesh)
    : vEntries(mesh.vCorners.size())
{
    std::vector<Index> vNext(mesh.vPoints.size() + 1, 0);
    const auto num = static_cast<Index>(mesh.vCorners.size());
    for (Index h = 0; h < num; ++h)
        ++vNext[std::min(mesh.from(h), mesh.to(h)) + std::size_t{1}];
    for (std::size_t v = 1; v < vNext.size(); ++v)
        vNext[v] += vNext[v - 1];
    for (Index h = 0; h < num; ++h)
    {
        const auto [low, high] = std::minmax({mesh.from(h), mesh.to(h)});
        vEntries[vNext[low]++] = {u64{low} << 32 | high, h};
    }
    vStarts.reserve(vEntries.size() / 2 + 2);
    std::size_t start = 0;
    for (std::size_t v = 0; v + 1 < vNext.size(); ++v)
    {
        const std::size_t end = vNext[v];
        std::sort(vEntries.begin() + static_cast<std::ptrdiff_t>(start),
                  vEntries.begin() + static_cast<std::ptrdiff_t>(end));
        for (std::size_t i = start; i < end; ++i)
            if (i == start || vEntries[i].first != vEntries[i - 1].first)
                vStarts.push_back(i);
        start = end;
    }
    vStarts.push_back(vEntries.size());
}

} // namespace TARN_ZEF

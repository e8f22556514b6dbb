#include "finish/EdgeTable.h"

#include "parallel/parallelFor.h"

#include <algorithm>
#include <tuple>

namespace TARN_ZEF
{
// A vertex has few edges: the half-edges are dealt out by the lower of their ends, then each small heap is sorted.
EdgeTable::EdgeTable(const FlatMesh& mesh)
    : vEntries(mesh.vCorners.size())
    , vEnds(mesh.vPoints.size() + 1, 0)
{
    const auto num = static_cast<Index>(mesh.vCorners.size());
    std::vector<Index> vNext(vEnds.size(), 0);
    for (Index h = 0; h < num; ++h)
        ++vNext[std::min(mesh.from(h), mesh.to(h)) + std::size_t{1}];
    for (std::size_t v = 1; v < vNext.size(); ++v)
        vNext[v] += vNext[v - 1];
    std::copy(vNext.begin(), vNext.end(), vEnds.begin());
    for (Index h = 0; h < num; ++h)
    {
        const auto [low, high] = std::minmax({mesh.from(h), mesh.to(h)});
        vEntries[vNext[low]++] = {high, h};
    }
    constexpr std::size_t minChunk = 10'000;
    parallelFor(getNumVertices(), minChunk,
                [this](std::size_t from, std::size_t to)
                {
                    for (std::size_t v = from; v < to; ++v)
                        std::sort(vEntries.begin() + vEnds[v], vEntries.begin() + vEnds[v + 1],
                                  [](const Entry& a, const Entry& b)
                                  { return std::tie(a.end, a.h) < std::tie(b.end, b.h); });
                });
}

} // namespace TARN_ZEF

#include "finish/EdgeTable.h"

#include "parallel/parallelFor.h"
#include "parallel/sortMT2.h"

#include <algorithm>

namespace TARN_ZEF
{
EdgeTable::EdgeTable(const FlatMesh& mesh)
    : vEntries(mesh.vCorners.size())
{
    constexpr std::size_t minChunk = 20'000;
    parallelFor(vEntries.size(), minChunk,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                    {
                        const auto h = static_cast<Index>(i);
                        const auto [low, high] = std::minmax({mesh.from(h), mesh.to(h)});
                        vEntries[i] = {u64{low} << 32 | high, h};
                    }
                });
    sortMT(vEntries.begin(), vEntries.end());
    vStarts.reserve(vEntries.size() / 2 + 2);
    for (std::size_t i = 0; i < vEntries.size(); ++i)
        if (i == 0 || vEntries[i].first != vEntries[i - 1].first)
            vStarts.push_back(i);
    vStarts.push_back(vEntries.size());
}

} // namespace TARN_ZEF

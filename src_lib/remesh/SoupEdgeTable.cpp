#include "remesh/SoupEdgeTable.h"

#include "core/cancel.h"
#include "core/largeVectors.h"
#include "remesh/FlatSoup.h"

#include <algorithm>

namespace TARN_ZEF
{
// Sorted into the buckets of the low ends first; the buckets are short.
SoupEdgeTable::SoupEdgeTable(std::size_t numVertices, const std::vector<int>& vCorners)
{
    const auto endsOf = [&vCorners](int c) { return std::minmax(vCorners[c], vCorners[FlatSoup::next(c)]); };
    const int num = static_cast<int>(vCorners.size());
    CancelStride cancel;
    std::vector<int> vStart(numVertices + 1, 0);
    for (int c = 0; c < num; ++c)
    {
        cancel.step();
        ++vStart[endsOf(c).first + 1];
    }
    for (std::size_t v = 0; v < numVertices; ++v)
        vStart[v + 1] += vStart[v];
    checkCancelled();
    std::vector<int> vNext(vStart.begin(), vStart.end() - 1);
    std::vector<std::pair<int, int>> vHigh; // high end, corner
    growTo(vHigh, vCorners.size());
    for (int c = 0; c < num; ++c)
    {
        cancel.step();
        vHigh[vNext[endsOf(c).first]++] = {endsOf(c).second, c};
    }
    vKey.reserve(vCorners.size());
    vCornerOf.reserve(vCorners.size());
    for (std::size_t v = 0; v < numVertices; ++v)
    {
        checkCancelledAt(v);
        std::sort(vHigh.begin() + vStart[v], vHigh.begin() + vStart[v + 1]);
        for (int i = vStart[v]; i < vStart[v + 1]; ++i)
        {
            vKey.emplace_back(static_cast<int>(v), vHigh[i].first);
            vCornerOf.push_back(vHigh[i].second);
        }
    }
}

} // namespace TARN_ZEF

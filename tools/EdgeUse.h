#ifndef ZEF_TOOLS_EDGEUSE_H
#define ZEF_TOOLS_EDGEUSE_H

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <vector>

namespace TARN_TOOL
{
// Calls f(a, b), a below b, for each edge of each triangle. Three entries of vCorners are one triangle.
template <typename F>
void forEachTriangleEdge(const std::vector<int>& vCorners, F f)
{
    for (std::size_t i = 0; i + 2 < vCorners.size(); i += 3)
        for (std::size_t k = 0; k < 3; ++k)
        {
            const int a = vCorners[i + k];
            const int b = vCorners[i + (k + 1) % 3];
            f(std::min(a, b), std::max(a, b));
        }
}

// Calls f(a, b, num) for each edge once, by rising a and b: how many triangles have it. All corners are below
// numVertices. Time is linear, without an allocation for each element.
template <typename F>
void forEachEdgeUse(std::size_t numVertices, const std::vector<int>& vCorners, F f)
{
    // The edges in buckets of their lower vertex: vHigher[vBegin[a] .. vBegin[a + 1]) are its higher ends.
    std::vector<std::size_t> vBegin(numVertices + 1, 0);
    forEachTriangleEdge(vCorners, [&](int a, int) { ++vBegin[a + 1]; });
    std::partial_sum(vBegin.begin(), vBegin.end(), vBegin.begin());
    std::vector<int> vHigher(vBegin.back());
    std::vector<std::size_t> vNext(vBegin.begin(), vBegin.end() - 1);
    forEachTriangleEdge(vCorners, [&](int a, int b) { vHigher[vNext[a]++] = b; });

    for (std::size_t a = 0; a < numVertices; ++a)
    {
        const auto end = vHigher.begin() + static_cast<std::ptrdiff_t>(vBegin[a + 1]);
        auto it = vHigher.begin() + static_cast<std::ptrdiff_t>(vBegin[a]);
        std::sort(it, end);
        while (it != end)
        {
            const auto next = std::upper_bound(it, end, *it);
            f(static_cast<int>(a), *it, static_cast<std::size_t>(next - it));
            it = next;
        }
    }
}

} // namespace TARN_TOOL

#endif

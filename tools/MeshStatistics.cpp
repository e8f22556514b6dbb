#include "MeshStatistics.h"

#include <algorithm>
#include <numeric>

namespace TARN_TOOL
{
namespace
{
template <typename F>
void forEachEdge(const std::vector<int>& vCorners, F f)
{
    for (std::size_t i = 0; i + 2 < vCorners.size(); i += 3)
        for (std::size_t k = 0; k < 3; ++k)
        {
            const int a = vCorners[i + k];
            const int b = vCorners[i + (k + 1) % 3];
            f(std::min(a, b), std::max(a, b));
        }
}

int findRoot(std::vector<int>& vParent, int i)
{
    while (vParent[i] != i)
    {
        vParent[i] = vParent[vParent[i]];
        i = vParent[i];
    }
    return i;
}

std::size_t countComponents(std::size_t numVertices, const std::vector<int>& vCorners)
{
    std::vector<int> vParent(numVertices);
    std::iota(vParent.begin(), vParent.end(), 0);
    std::size_t numJoins = 0;
    std::vector<char> vUsed(numVertices, 0);
    forEachEdge(vCorners,
                [&](int a, int b)
                {
                    vUsed[a] = vUsed[b] = 1;
                    const int rootA = findRoot(vParent, a);
                    const int rootB = findRoot(vParent, b);
                    if (rootA == rootB)
                        return;
                    vParent[std::max(rootA, rootB)] = std::min(rootA, rootB);
                    ++numJoins;
                });
    return static_cast<std::size_t>(std::count(vUsed.begin(), vUsed.end(), 1)) - numJoins;
}
} // namespace

MeshStatistics::MeshStatistics(std::size_t numVertices_, const std::vector<int>& vCorners)
    : numVertices(numVertices_)
    , numTriangles(vCorners.size() / 3)
    , numComponents(countComponents(numVertices_, vCorners))
{
    // The edges in buckets of their lower vertex: vHigher[vBegin[a] .. vBegin[a + 1]) are its higher ends.
    std::vector<std::size_t> vBegin(numVertices + 1, 0);
    forEachEdge(vCorners, [&](int a, int) { ++vBegin[a + 1]; });
    std::partial_sum(vBegin.begin(), vBegin.end(), vBegin.begin());
    std::vector<int> vHigher(vBegin.back());
    std::vector<std::size_t> vNext(vBegin.begin(), vBegin.end() - 1);
    forEachEdge(vCorners, [&](int a, int b) { vHigher[vNext[a]++] = b; });

    for (std::size_t a = 0; a < numVertices; ++a)
    {
        const auto end = vHigher.begin() + static_cast<std::ptrdiff_t>(vBegin[a + 1]);
        auto it = vHigher.begin() + static_cast<std::ptrdiff_t>(vBegin[a]);
        std::sort(it, end);
        while (it != end)
        {
            const auto next = std::upper_bound(it, end, *it);
            numBorderEdges += next - it == 1;
            numNonManifoldEdges += next - it > 2;
            it = next;
        }
    }
}

} // namespace TARN_TOOL

#include "meshPieces.h"

#include <algorithm>
#include <numeric>

#include "EdgeUse.h"

namespace TARN_TOOL
{
namespace
{
int findRoot(std::vector<int>& vParent, int i)
{
    while (vParent[i] != i)
    {
        vParent[i] = vParent[vParent[i]];
        i = vParent[i];
    }
    return i;
}

// The lowest vertex of each one's piece; -1 for one without a triangle.
std::vector<int> findLowest(std::size_t numVertices, const std::vector<int>& vCorners)
{
    std::vector<int> vParent(numVertices);
    std::iota(vParent.begin(), vParent.end(), 0);
    std::vector<char> vUsed(numVertices, 0);
    forEachTriangleEdge(vCorners,
                        [&](int a, int b)
                        {
                            vUsed[a] = vUsed[b] = 1;
                            const int rootA = findRoot(vParent, a);
                            const int rootB = findRoot(vParent, b);
                            vParent[std::max(rootA, rootB)] = std::min(rootA, rootB);
                        });
    std::vector<int> vLowest(numVertices);
    for (std::size_t i = 0; i < numVertices; ++i)
        vLowest[i] = vUsed[i] != 0 ? findRoot(vParent, static_cast<int>(i)) : -1;
    return vLowest;
}
} // namespace

std::vector<int> findPieces(std::size_t numVertices, const std::vector<int>& vCorners)
{
    const std::vector<int> vLowest = findLowest(numVertices, vCorners);
    std::vector<int> vPieces(numVertices, -1);
    int numPieces = 0;
    for (std::size_t i = 0; i < numVertices; ++i)
        if (vLowest[i] >= 0)
            vPieces[i] = vLowest[i] == static_cast<int>(i) ? numPieces++ : vPieces[vLowest[i]];
    return vPieces;
}

} // namespace TARN_TOOL

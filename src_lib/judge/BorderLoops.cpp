#include "judge/BorderLoops.h"

#include "judge/AtomicUnion.h"
#include "parallel/sortMT2.h"

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
double lengthOf(const JudgedMesh& mesh, std::uint32_t halfEdge)
{
    const Vector3 way = mesh.getPoint(JudgedMesh::getNext(halfEdge)) - mesh.getPoint(halfEdge);
    const double largest = std::max({std::fabs(way.x()), std::fabs(way.y()), std::fabs(way.z())});
    if (!std::isfinite(way * Vector3(0.0, 0.0, 0.0)) || largest == 0.0)
        return 0.0;
    // By a power of two, so that squares neither overflow nor vanish, and no bit changes.
    const int exponent = std::ilogb(largest);
    const Vector3 scaled(std::ldexp(way.x(), -exponent), std::ldexp(way.y(), -exponent),
                         std::ldexp(way.z(), -exponent));
    return std::ldexp(scaled.length(), exponent);
}
} // namespace

BorderLoops::BorderLoops(const JudgedMesh& mesh, std::vector<std::uint32_t> vBorder,
                         const std::vector<std::pair<std::uint32_t, std::uint32_t>>& vJoints)
{
    sortMT(vBorder.begin(), vBorder.end());
    const auto indexOf = [&](std::uint32_t halfEdge)
    {
        return static_cast<std::uint32_t>(std::lower_bound(vBorder.begin(), vBorder.end(), halfEdge) -
                                          vBorder.begin());
    };
    AtomicUnion loops(vBorder.size());
    for (const auto& [a, b] : vJoints)
        loops.unite(indexOf(a), indexOf(b));

    std::vector<double> vLengths(vBorder.size(), 0.0); // at the first edge of each loop
    std::vector<std::size_t> vNumEdges(vBorder.size(), 0);
    for (std::uint32_t i = 0; i < vBorder.size(); ++i)
    {
        const std::uint32_t first = loops.findRoot(i);
        const double edgeLength = lengthOf(mesh, vBorder[i]);
        length += edgeLength;
        vLengths[first] += edgeLength;
        ++vNumEdges[first];
    }
    for (std::size_t i = 0; i < vBorder.size(); ++i)
    {
        numLoops += vNumEdges[i] > 0;
        if (std::pair(vLengths[i], vNumEdges[i]) > std::pair(longestLength, numLongestEdges))
        {
            longestLength = vLengths[i];
            numLongestEdges = vNumEdges[i];
        }
    }
}

} // namespace TARN_ZEF

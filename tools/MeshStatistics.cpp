#include "MeshStatistics.h"

#include <algorithm>

#include "EdgeUse.h"
#include "meshPieces.h"

namespace TARN_TOOL
{
namespace
{
std::size_t countComponents(std::size_t numVertices, const std::vector<int>& vCorners)
{
    const std::vector<int> vPieces = findPieces(numVertices, vCorners);
    return vPieces.empty() ? 0
                           : static_cast<std::size_t>(*std::max_element(vPieces.begin(), vPieces.end()) + 1);
}
} // namespace

MeshStatistics::MeshStatistics(std::size_t numVertices_, const std::vector<int>& vCorners)
    : numVertices(numVertices_)
    , numTriangles(vCorners.size() / 3)
    , numComponents(countComponents(numVertices_, vCorners))
{
    forEachEdgeUse(numVertices, vCorners,
                   [&](int, int, std::size_t num)
                   {
                       numBorderEdges += num == 1;
                       numNonManifoldEdges += num > 2;
                   });
}

} // namespace TARN_TOOL

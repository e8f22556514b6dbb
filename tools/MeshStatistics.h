#ifndef ZEF_TOOLS_MESHSTATISTICS_H
#define ZEF_TOOLS_MESHSTATISTICS_H

#include <cstddef>
#include <vector>

namespace TARN_TOOL
{
// Counts of an indexed triangle mesh.
struct MeshStatistics
{
    std::size_t numVertices = 0;
    std::size_t numTriangles = 0;
    std::size_t numBorderEdges = 0;      // edges of exactly one triangle
    std::size_t numNonManifoldEdges = 0; // edges of three or more triangles
    std::size_t numComponents = 0; // pieces that share no vertex; vertices without a triangle do not count

    MeshStatistics() = default;
    // Three consecutive entries of vCorners, all below numVertices_, are one triangle. O(n), no allocation
    // for each element.
    MeshStatistics(std::size_t numVertices_, const std::vector<int>& vCorners);
};

} // namespace TARN_TOOL

#endif

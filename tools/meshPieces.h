#ifndef ZEF_TOOLS_MESHPIECES_H
#define ZEF_TOOLS_MESHPIECES_H

#include <cstddef>
#include <vector>

namespace TARN_TOOL
{
// Of each vertex the number of its piece: pieces share no vertex, and are numbered by their first vertex. -1 for a
// vertex without a triangle. All corners, three for each triangle, are below numVertices.
[[nodiscard]] std::vector<int> findPieces(std::size_t numVertices, const std::vector<int>& vCorners);

} // namespace TARN_TOOL

#endif

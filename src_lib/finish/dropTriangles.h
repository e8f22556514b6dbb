#ifndef ZEF_FINISH_DROPTRIANGLES_H
#define ZEF_FINISH_DROPTRIANGLES_H

#include "surface/HalfEdgeMesh.h"

#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// Takes the triangles t with vDrop[t] != 0 out of a mesh. It is built anew, as what stays can have several fans at a
// vertex: triangles are numbered without gaps, in their order, and keep their labels; kinds and features are forgotten.
// vOrigin tells the number before of each vertex.
void dropTriangles(HalfEdgeMesh& mesh, const std::vector<std::uint8_t>& vDrop,
                   std::vector<int>* pOrigin = nullptr);

} // namespace TARN_ZEF

#endif

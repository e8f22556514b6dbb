#ifndef ZEF_FINISH_FILLLOOPS_H
#define ZEF_FINISH_FILLLOOPS_H

#include "surface/HalfEdgeMesh.h"

#include <cstddef>
#include <functional>

namespace TARN_ZEF
{
// Closes the border loops of at most maxEdges edges that have a vertex v with mayFill(v), each by the triangles of
// least area without a vertex of their own. A loop that would need an edge which the mesh has already stays open.
// Numbers of triangles stay; new ones come behind. Returns the number of loops that were closed.
std::size_t fillLoops(HalfEdgeMesh& mesh, std::size_t maxEdges, const std::function<bool(int)>& mayFill);

} // namespace TARN_ZEF

#endif

#ifndef ZEF_BENCHMARKS_MAKETORUS_H
#define ZEF_BENCHMARKS_MAKETORUS_H

#include "rmesh/RMesh.h"

#include <cstddef>

namespace TARN_ZEF
{
// A closed torus of about numVertices and twice as many triangles. Its radii are 2r and r, its edges about one
// unit long, each coordinate off by up to roughness units at random.
[[nodiscard]] RMeshSource makeTorus(std::size_t numVertices, double roughness);

} // namespace TARN_ZEF

#endif

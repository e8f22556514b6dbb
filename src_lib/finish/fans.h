// Half-edges with their mates, and the fans that they make around the vertices.
//
// A mate is the half-edge of the neighbouring triangle on the same edge; mates run opposite ways. A fan is the
// triangles at a vertex that hang together across mates. A mesh is vertex-manifold if each vertex has one.
#ifndef ZEF_FINISH_FANS_H
#define ZEF_FINISH_FANS_H

#include "finish/FlatMesh.h"

#include <vector>

namespace TARN_ZEF
{
using Mates = std::vector<FlatMesh::Index>; // for each half-edge its mate, or FlatMesh::NONE

// The mates by the corners alone: half-edges of an edge that has exactly two, which run opposite ways.
[[nodiscard]] Mates findMates(const FlatMesh& mesh);

// Gives each fan a vertex of its own. The first fan keeps the vertex; a copy at the same place is added for each
// other one. Appends to vOriginals, for each copy, the vertex it was made from. Returns the number of copies.
std::size_t doubleVertices(FlatMesh& mesh, const Mates& vMates,
                           std::vector<FlatMesh::Index>* pOriginals = nullptr);

// Drops triangles until each edge has at most two, which run opposite ways, and gives each fan its vertex. Of more
// triangles at an edge the first opposed two stay. Returns the number of triangles that went.
std::size_t dropToManifold(FlatMesh& mesh);

} // namespace TARN_ZEF

#endif

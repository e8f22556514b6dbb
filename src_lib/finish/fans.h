// Half-edges with their mates, and the fans that they make around the vertices.
//
// A mate is the half-edge of the neighbouring triangle on the same edge; mates run opposite ways. A fan is the
// triangles at a vertex that hang together across mates. A mesh is vertex-manifold if each vertex has one.
#ifndef ZEF_FINISH_FANS_H
#define ZEF_FINISH_FANS_H

#include "finish/FlatMesh.h"

#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
using Mates = std::vector<FlatMesh::Index>; // for each half-edge its mate, or FlatMesh::NONE

// Turns over the triangles t with vTurn[t] != 0: their last two corners change places. With that their first and last
// half-edges do, so that mates have to follow.
void turnTriangles(FlatMesh& mesh, const std::vector<std::uint8_t>& vTurn);
void turnMates(Mates& vMates, const std::vector<std::uint8_t>& vTurn);
[[nodiscard]] constexpr FlatMesh::Index getTurned(FlatMesh::Index h) noexcept
{
    return h - h % 3 + (2 - h % 3);
}

// Gives each fan a vertex of its own. The first fan keeps the vertex; a copy at the same place is added for each
// other one. Appends to vOriginals, for each copy, the vertex it was made from. Returns the number of copies.
std::size_t doubleVertices(FlatMesh& mesh, const Mates& vMates,
                           std::vector<FlatMesh::Index>* pOriginals = nullptr);

} // namespace TARN_ZEF

#endif

// The validators of both meshes, the best oracle of an edit, and counts.
#ifndef ZEF_TESTS_CHECKMESH_H
#define ZEF_TESTS_CHECKMESH_H

#include <cstddef>

namespace TARN_ZEF
{
class CMesh;
class RMesh;

// Links mutual, edge i opposite corner i, counters equal to a recount, nothing alive points to something
// dead, look-ups find what the lists hold. Reports every fault through EXPECT.
void expectConsistent(const CMesh& mesh);
void expectConsistent(const RMesh& mesh);

// Edges of degree 2 whose triangles run along them in the same direction.
[[nodiscard]] std::size_t countDisagreeing(const CMesh& mesh);
[[nodiscard]] std::size_t countDisagreeing(const RMesh& mesh);

// Edges by degree, as getDegN() takes it.
[[nodiscard]] std::size_t countEdges(const CMesh& mesh, int deg);
[[nodiscard]] std::size_t countEdges(const RMesh& mesh, int deg);

} // namespace TARN_ZEF

#endif

// The validators of both meshes: the best oracle of an edit.
#ifndef ZEF_TESTS_CHECKMESH_H
#define ZEF_TESTS_CHECKMESH_H

namespace TARN_ZEF
{
class CMesh;
class RMesh;

// Links mutual, edge i opposite corner i, counters equal to a recount, nothing alive points to something
// dead, look-ups find what the lists hold. Reports every fault through EXPECT.
void expectConsistent(const CMesh& mesh);
void expectConsistent(const RMesh& mesh);

} // namespace TARN_ZEF

#endif

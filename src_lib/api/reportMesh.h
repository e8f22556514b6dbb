#ifndef ZEF_REPORTMESH_H
#define ZEF_REPORTMESH_H

#include <memory>

namespace TARN_ZEF
{
class Mesh;

// Of the mesh that a call has made or changed, if its host wants a report: what it is like. Null is a mesh of nothing.
void reportMesh(const std::shared_ptr<Mesh>& pMesh);

} // namespace TARN_ZEF

#endif

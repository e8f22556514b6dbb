#ifndef ZEF_TOOLSCMESH_H
#define ZEF_TOOLSCMESH_H

#include "core/definitions.h"
#include "geometry/tools.h"

namespace TARN_ZEF
{
class CMesh;

// The unit normal of three corners of the mesh, by their codes. A corner without a position is fatal.
[[nodiscard]] Vector3 getNormalVector(const CMesh* pMesh, u64 i0, u64 i1, u64 i2, bool& bOK);

} // namespace TARN_ZEF

#endif

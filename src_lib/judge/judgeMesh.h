#ifndef ZEF_JUDGEMESH_H
#define ZEF_JUDGEMESH_H

#include "checkMesh.h"

#include <vector>

namespace TARN_ZEF
{
// Whether a mesh is sound, told from points and corner indices alone: nothing here knows what made the mesh, and
// nothing changes it. In come points as they are, out come counts and places of faults; no message is printed.
// The contract is that of checkMesh().
[[nodiscard]] MeshCheck judgeMesh(const std::vector<Point3>& vPoints, const std::vector<int>& vCorners,
                                  const CheckOptions& options);

// Only what the shapes of triangles tell: NOT_FINITE, FLAT, DUPLICATE and INTERSECTION. All else stays 0.
[[nodiscard]] MeshCheck judgeShapes(const std::vector<Point3>& vPoints, const std::vector<int>& vCorners,
                                    const CheckOptions& options);

} // namespace TARN_ZEF

#endif

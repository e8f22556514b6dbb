#include "checkMesh.h"

#include "api/flatMesh.h"
#include "core/CallScope.h"
#include "judge/judgeMesh.h"

namespace TARN_ZEF
{
MeshCheck checkMesh(const std::vector<Point3>& vPoints, const std::vector<int>& vTriangleCorners,
                    const CheckOptions& options)
{
    const CallScope call;
    return judgeMesh(vPoints, vTriangleCorners, options);
}

MeshCheck checkMesh(const Mesh& mesh, const CheckOptions& options)
{
    const CallScope call;
    std::vector<Point3> vPoints;
    std::vector<int> vCorners;
    getFlat(mesh, vPoints, vCorners);
    return judgeMesh(vPoints, vCorners, options);
}

} // namespace TARN_ZEF

#include "checkMesh.h"

#include "Mesh.h"
#include "judge/judgeMesh.h"

namespace TARN_ZEF
{
MeshCheck checkMesh(const std::vector<Point3>& vPoints, const std::vector<int>& vTriangleCorners,
                    const CheckOptions& options)
{
    return judgeMesh(vPoints, vTriangleCorners, options);
}

MeshCheck checkMesh(const Mesh& mesh, const CheckOptions& options)
{
    std::vector<Point3*> vVertices;
    std::vector<int> vCorners;
    mesh.getVertexIndexData(vVertices, vCorners);
    std::vector<Point3> vPoints;
    vPoints.reserve(vVertices.size());
    for (const Point3* pVertex : vVertices)
        vPoints.push_back(*pVertex);
    return judgeMesh(vPoints, vCorners, options);
}

} // namespace TARN_ZEF

#include "api/flatMesh.h"

#include "rmesh/RMesh.h"

#include <utility>

namespace TARN_ZEF
{
void getFlat(const Mesh& mesh, std::vector<Point3>& vPoints, std::vector<int>& vCorners)
{
    std::vector<Point3*> vVertices;
    mesh.getVertexIndexData(vVertices, vCorners);
    vPoints.clear();
    vPoints.reserve(vVertices.size());
    for (const Point3* pVertex : vVertices)
        vPoints.push_back(*pVertex);
}

std::shared_ptr<Mesh> makeMesh(std::vector<Point3> vPoints, std::vector<std::uint32_t> vCorners,
                               double cellSize)
{
    RMeshSource source;
    source.cellSize = cellSize;
    source.vPoints = std::move(vPoints);
    source.vCorners = std::move(vCorners);
    auto pRMesh = std::make_unique<RMesh>(source);
    auto pMesh = std::make_shared<Mesh>(pRMesh.get());
    static_cast<void>(pRMesh.release()); // the mesh owns it now
    return pMesh;
}

} // namespace TARN_ZEF

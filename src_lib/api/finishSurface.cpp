#include "finishSurface.h"

#include "Mesh.h"
#include "finish/Finisher.h"
#include "rmesh/RMesh.h"

namespace TARN_ZEF
{
namespace
{
FlatMesh toFlat(const Mesh& mesh)
{
    std::vector<Point3*> vVertices;
    std::vector<int> vCorners;
    mesh.getVertexIndexData(vVertices, vCorners);
    FlatMesh flat;
    flat.vPoints.reserve(vVertices.size());
    for (const Point3* pVertex : vVertices)
        flat.vPoints.push_back(*pVertex);
    flat.vCorners.assign(vCorners.begin(), vCorners.end());
    return flat;
}

std::shared_ptr<Mesh> toMesh(FlatMesh flat, double cellSize)
{
    RMeshSource source;
    source.cellSize = cellSize;
    source.vPoints = std::move(flat.vPoints);
    source.vCorners = std::move(flat.vCorners);
    auto pRMesh = std::make_unique<RMesh>(source);
    auto pMesh = std::make_shared<Mesh>(pRMesh.get());
    static_cast<void>(pRMesh.release());
    return pMesh;
}
} // namespace

std::shared_ptr<Mesh> finishSurface(const Mesh& mesh, const FinishOptions& options, FinishReport* pReport)
{
    return finishSurface(mesh, {}, options, pReport);
}

std::shared_ptr<Mesh> finishSurface(const Mesh& mesh, const std::vector<Point3>& vCloud,
                                    const FinishOptions& options, FinishReport* pReport)
{
    const double cellSize = mesh.getRMesh()->getCellSize();
    FinishOptions complete = options;
    if (options.cellSize == 0.0)
        complete.cellSize = cellSize;
    FinishReport report;
    FlatMesh flat = toFlat(mesh);
    Finisher(flat, vCloud, complete, report).run();
    if (pReport != nullptr)
        *pReport = report;
    return toMesh(std::move(flat), cellSize);
}

} // namespace TARN_ZEF

#include "finishSurface.h"

#include "api/flatMesh.h"
#include "api/requireMesh.h"
#include "core/CallScope.h"
#include "core/ProgressScope.h"
#include "finish/Finisher.h"
#include "rmesh/RMesh.h"

#include <utility>

namespace TARN_ZEF
{
namespace
{
// pOwned: the mesh if it may go as soon as it is read.
std::shared_ptr<Mesh> finish(const Mesh& mesh, std::shared_ptr<Mesh> pOwned, const std::vector<Point3>& vCloud,
                             const FinishOptions& options, FinishReport* pReport)
{
    const CallScope call;
    ProgressScope progress([] { prepareProgress("Finish"); });
    const double cellSize = mesh.getRMesh()->getCellSize();
    FinishOptions complete = options;
    if (options.cellSize == 0.0)
        complete.cellSize = cellSize;
    FinishReport report;
    FlatMesh flat;
    {
        std::vector<int> vCorners;
        getFlat(mesh, flat.vPoints, vCorners);
        flat.vCorners.assign(vCorners.begin(), vCorners.end());
    }
    pOwned.reset();
    Finisher(flat, vCloud, complete, report).run();
    Progress* const pProgress = getRootProgress()->getChildProgressSetTodo("FI_out", 1);
    std::shared_ptr<Mesh> pResult = makeMesh(std::move(flat.vPoints), std::move(flat.vCorners), cellSize);
    pProgress->setFinished(true);
    progress.finish();
    if (pReport != nullptr)
        *pReport = report;
    return pResult;
}
} // namespace

std::shared_ptr<Mesh> finishSurface(const Mesh& mesh, const FinishOptions& options, FinishReport* pReport)
{
    return finish(mesh, nullptr, {}, options, pReport);
}

std::shared_ptr<Mesh> finishSurface(const Mesh& mesh, const std::vector<Point3>& vCloud,
                                    const FinishOptions& options, FinishReport* pReport)
{
    return finish(mesh, nullptr, vCloud, options, pReport);
}

std::shared_ptr<Mesh> finishSurface(std::shared_ptr<Mesh> pMesh, const std::vector<Point3>& vCloud,
                                    const FinishOptions& options, FinishReport* pReport)
{
    requireMesh(pMesh);
    const Mesh& mesh = *pMesh;
    return finish(mesh, std::move(pMesh), vCloud, options, pReport);
}

} // namespace TARN_ZEF

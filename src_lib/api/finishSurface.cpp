#include "finishSurface.h"

#include "api/flatMesh.h"
#include "core/CallScope.h"
#include "core/ProgressScope.h"
#include "finish/Finisher.h"
#include "geometry/NearFrame.h"
#include "rmesh/RMesh.h"

namespace TARN_ZEF
{
std::shared_ptr<Mesh> finishSurface(const Mesh& mesh, const FinishOptions& options, FinishReport* pReport)
{
    return finishSurface(mesh, {}, options, pReport);
}

std::shared_ptr<Mesh> finishSurface(const Mesh& mesh, const std::vector<Point3>& vCloud,
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
    std::vector<int> vCorners;
    getFlat(mesh, flat.vPoints, vCorners);
    flat.vCorners.assign(vCorners.begin(), vCorners.end());
    // Floats are those of the caller's coordinates, and no others can be rounded to.
    const NearFrame frame = options.bRoundToFloat ? NearFrame() : NearFrame::around(flat.vPoints, cellSize);
    frame.enter(flat.vPoints);
    std::vector<Point3> vCopies;
    Finisher(flat, frame.enter(vCloud, vCopies), complete, report).run();
    frame.leave(flat.vPoints);
    Progress* const pProgress = getRootProgress()->getChildProgressSetTodo("FI_out", 1);
    std::shared_ptr<Mesh> pResult = makeMesh(std::move(flat.vPoints), std::move(flat.vCorners), cellSize);
    pProgress->setFinished(true);
    progress.finish();
    if (pReport != nullptr)
        *pReport = report;
    return pResult;
}

} // namespace TARN_ZEF

#include "finishSurface.h"

#include "api/flatMesh.h"
#include "core/CallScope.h"
#include "core/ProgressScope.h"
#include "finish/Finisher.h"
#include "geometry/NearFrame.h"
#include "judge/judgeMesh.h"
#include "rmesh/RMesh.h"

#include <utility>

namespace TARN_ZEF
{
namespace
{
struct Finished
{
    FlatMesh flat;
    FinishReport report;
};

Finished finishIn(const NearFrame& frame, const Mesh& mesh, const std::vector<Point3>& vCloud,
                  const FinishOptions& options)
{
    Finished result;
    std::vector<int> vCorners;
    getFlat(mesh, result.flat.vPoints, vCorners);
    result.flat.vCorners.assign(vCorners.begin(), vCorners.end());
    frame.enter(result.flat.vPoints);
    std::vector<Point3> vCopies;
    Finisher(result.flat, frame.enter(vCloud, vCopies), options, result.report).run();
    frame.leave(result.flat.vPoints);
    return result;
}

bool areShapesSound(const FlatMesh& flat)
{
    CheckOptions options;
    options.maxPlaces = 0;
    const MeshCheck check = judgeShapes(flat.vPoints, {flat.vCorners.begin(), flat.vCorners.end()}, options);
    return check.isSound();
}

// In the frame near the mesh, unless the caller's coordinates have too few digits for what comes out there to stay
// sound: then, as where floats of the caller are wanted, in these.
Finished finish(const Mesh& mesh, const std::vector<Point3>& vCloud, const FinishOptions& options)
{
    NearFrame frame;
    if (!options.bRoundToFloat)
        frame = NearFrame::around([&mesh](const auto& f) { mesh.getRMesh()->forEachVertex(f); },
                                  mesh.getRMesh()->getCellSize());
    Finished result = finishIn(frame, mesh, vCloud, options);
    if (frame.isShifted() && !areShapesSound(result.flat))
        result = finishIn(NearFrame(), mesh, vCloud, options);
    return result;
}
} // namespace

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
    Finished result = finish(mesh, vCloud, complete);
    Progress* const pProgress = getRootProgress()->getChildProgressSetTodo("FI_out", 1);
    std::shared_ptr<Mesh> pResult =
        makeMesh(std::move(result.flat.vPoints), std::move(result.flat.vCorners), cellSize);
    pProgress->setFinished(true);
    progress.finish();
    if (pReport != nullptr)
        *pReport = result.report;
    return pResult;
}

} // namespace TARN_ZEF

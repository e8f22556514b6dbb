#include "finishSurface.h"

#include "api/flatMesh.h"
#include "api/reportMesh.h"
#include "api/requireMesh.h"
#include "core/CallScope.h"
#include "core/ProgressScope.h"
#include "finish/Finisher.h"
#include "geometry/NearFrame.h"
#include "geometry/isFinite.h"
#include "rmesh/RMesh.h"

#include <algorithm>
#include <utility>

namespace TARN_ZEF
{
namespace
{
void reportPoints(const std::vector<Point3>& vCloud)
{
    CallReport* const pReport = getCallReport();
    if (pReport == nullptr)
        return;
    pReport->numPoints = vCloud.size();
    pReport->numUsedPoints = static_cast<std::size_t>(std::count_if(vCloud.begin(), vCloud.end(), isFinite));
    pReport->numNotFinite = pReport->numPoints - pReport->numUsedPoints;
}

// What the stage counts of its triangles, and as a last pass what it does not: collapses and splits of edges.
void reportPasses(const FinishReport& done, std::size_t numBefore, std::size_t numAfter)
{
    CallReport* const pReport = getCallReport();
    if (pReport == nullptr)
        return;
    pReport->numRawT = numBefore;
    pReport->numHolesClosed = done.numFilledHoles + done.numFilledCuts;
    pReport->vPasses = {
        {"unusable triangles", 0, done.numUnusableT},
        {"flat triangles", 0, done.numFlatT},
        {"doubled triangles", 0, done.numDuplicateT},
        {"wraps", 0, done.numWrapT},
        {"fins", 0, done.numFinT},
        {"debris", 0, done.numDebrisT},
        {"notches", done.numNotches, 0},
        {"teeth", 0, done.numTeeth},
        {"cut folds", 0, done.numFoldT},
    };
    std::size_t numCounted = numBefore;
    for (const PassReport& pass : pReport->vPasses)
        numCounted += pass.numAddedT - pass.numKilledT;
    pReport->vPasses.push_back({"edges", numAfter > numCounted ? numAfter - numCounted : 0,
                                numCounted > numAfter ? numCounted - numAfter : 0});
}

// pOwned: the mesh if it may go as soon as it is read.
std::shared_ptr<Mesh> finish(const Mesh& mesh, std::shared_ptr<Mesh> pOwned,
                             const std::vector<Point3>& vCloud, const FinishOptions& options,
                             FinishReport* pReport)
{
    const CallScope call("finishSurface");
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
    const std::size_t numBefore = flat.getNumT();
    // Floats are those of the caller's coordinates, and no others can be rounded to.
    const NearFrame frame = options.bRoundToFloat ? NearFrame() : NearFrame::around(flat.vPoints, cellSize);
    frame.enter(flat.vPoints);
    std::vector<Point3> vCopies;
    {
        const StageScope stage("finish");
        Finisher(flat, frame.enter(vCloud, vCopies), complete, report, frame).run();
    }
    frame.leave(flat.vPoints);
    reportPoints(vCloud);
    reportPasses(report, numBefore, flat.getNumT());
    Progress* const pProgress = getRootProgress()->getChildProgressSetTodo("FI_out", 1);
    std::shared_ptr<Mesh> pResult = makeMesh(std::move(flat.vPoints), std::move(flat.vCorners), cellSize);
    pProgress->setFinished(true);
    progress.finish();
    reportMesh(pResult);
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

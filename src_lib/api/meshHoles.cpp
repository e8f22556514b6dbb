#include "meshHoles.h"

#include "api/flatMesh.h"
#include "api/reportMesh.h"
#include "closing/EdgeMates.h"
#include "closing/HoleCloser.h"
#include "closing/LoopFinder.h"
#include "core/CallScope.h"
#include "geometry/NearFrame.h"
#include "geometry/requireTriangles.h"
#include "judge/judgeMesh.h"
#include "rmesh/RMesh.h"

#include <utility>

namespace TARN_ZEF
{
std::vector<BorderLoop> findBorderLoops(const std::vector<Point3>& vPoints,
                                        const std::vector<int>& vTriangleCorners)
{
    const CallScope call;
    requireTriangles(vPoints.size(), vTriangleCorners);
    std::vector<Point3> vCopies;
    const std::vector<Point3>& vNear = NearFrame::around(vPoints).enter(vPoints, vCopies);
    const EdgeMates mates(vTriangleCorners);
    return LoopFinder(vNear, vTriangleCorners, mates).run();
}

std::vector<BorderLoop> findBorderLoops(const Mesh& mesh)
{
    const CallScope call;
    std::vector<Point3> vPoints;
    std::vector<int> vCorners;
    getFlat(mesh, vPoints, vCorners);
    return findBorderLoops(vPoints, vCorners);
}

namespace
{
struct Filled
{
    std::vector<Point3> vPoints;
    std::vector<int> vCorners;
    std::vector<FillResult> vResults;
};

Filled fillIn(const NearFrame& frame, std::vector<Point3> vPoints, const std::vector<int>& vCorners,
              const std::vector<BorderLoop>& vChosen, const FillOptions& options)
{
    frame.enter(vPoints);
    HoleCloser closer(vPoints, vCorners, vChosen, options);
    Filled filled = {vPoints, vCorners, {}};
    std::vector<int> vNewCorners;
    {
        const StageScope stage("holes");
        closer.run(filled.vPoints, vNewCorners);
    }
    filled.vCorners.insert(filled.vCorners.end(), vNewCorners.begin(), vNewCorners.end());
    frame.leave(filled.vPoints);
    filled.vResults = closer.getResults();
    return filled;
}

std::size_t countShapeFaults(const std::vector<Point3>& vPoints, const std::vector<int>& vCorners)
{
    const MeshCheck check = judgeShapes(vPoints, vCorners, CheckOptions());
    return check.numFlat + check.numDuplicates + check.numIntersections;
}
} // namespace

std::shared_ptr<Mesh> fillHoles(const Mesh& mesh, const std::vector<BorderLoop>& vChosen,
                                const FillOptions& options, std::vector<FillResult>* pResults)
{
    const CallScope call("fillHoles");
    std::vector<Point3> vPoints;
    std::vector<int> vCorners;
    getFlat(mesh, vPoints, vCorners);
    const NearFrame frame = NearFrame::around(vPoints, mesh.getRMesh()->getCellSize());
    Filled filled = fillIn(frame, vPoints, vCorners, vChosen, options);
    // The caller's coordinates may have too few digits for what was made near by.
    if (frame.isShifted() &&
        countShapeFaults(filled.vPoints, filled.vCorners) > countShapeFaults(vPoints, vCorners))
        filled = fillIn(NearFrame(), vPoints, vCorners, vChosen, options);
    if (CallReport* const pReport = getCallReport())
    {
        pReport->numRawT = vCorners.size() / 3;
        pReport->vPasses = {{"holes", (filled.vCorners.size() - vCorners.size()) / 3, 0}};
        for (const FillResult& result : filled.vResults)
            pReport->numHolesClosed += result.bFilled ? 1 : 0;
    }
    std::shared_ptr<Mesh> pMesh =
        makeMesh(std::move(filled.vPoints), {filled.vCorners.begin(), filled.vCorners.end()},
                 mesh.getRMesh()->getCellSize());
    reportMesh(pMesh);
    if (pResults != nullptr)
        *pResults = std::move(filled.vResults);
    return pMesh;
}

} // namespace TARN_ZEF

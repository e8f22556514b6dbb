#include "meshHoles.h"

#include "api/flatMesh.h"
#include "api/reportMesh.h"
#include "closing/EdgeMates.h"
#include "closing/HoleCloser.h"
#include "closing/LoopFinder.h"
#include "core/CallScope.h"
#include "geometry/NearFrame.h"
#include "geometry/requireTriangles.h"
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

std::shared_ptr<Mesh> fillHoles(const Mesh& mesh, const std::vector<BorderLoop>& vChosen,
                                const FillOptions& options, std::vector<FillResult>* pResults)
{
    const CallScope call("fillHoles");
    std::vector<Point3> vPoints;
    std::vector<int> vCorners;
    getFlat(mesh, vPoints, vCorners);
    const NearFrame frame = NearFrame::around(vPoints, mesh.getRMesh()->getCellSize());
    frame.enter(vPoints);
    HoleCloser closer(vPoints, vCorners, vChosen, options);
    std::vector<Point3> vAllPoints = vPoints;
    std::vector<int> vNewCorners;
    {
        const StageScope stage("holes");
        closer.run(vAllPoints, vNewCorners);
    }
    if (CallReport* const pReport = getCallReport())
    {
        pReport->numRawT = vCorners.size() / 3;
        pReport->vPasses = {{"holes", vNewCorners.size() / 3, 0}};
        for (const FillResult& result : closer.getResults())
            pReport->numHolesClosed += result.bFilled ? 1 : 0;
    }
    frame.leave(vAllPoints);
    std::vector<std::uint32_t> vAllCorners(vCorners.begin(), vCorners.end());
    vAllCorners.insert(vAllCorners.end(), vNewCorners.begin(), vNewCorners.end());
    std::shared_ptr<Mesh> pMesh =
        makeMesh(std::move(vAllPoints), std::move(vAllCorners), mesh.getRMesh()->getCellSize());
    reportMesh(pMesh);
    if (pResults != nullptr)
        *pResults = closer.getResults();
    return pMesh;
}

} // namespace TARN_ZEF

#include "meshHoles.h"

#include "api/flatMesh.h"
#include "closing/EdgeMates.h"
#include "closing/HoleCloser.h"
#include "closing/LoopFinder.h"
#include "core/CallScope.h"
#include "core/refuse.h"
#include "rmesh/RMesh.h"

#include <string>
#include <utility>

namespace TARN_ZEF
{
namespace
{
void requireIndices(std::size_t numPoints, const std::vector<int>& vCorners)
{
    if (vCorners.size() % 3 != 0)
        refuse<ZefBadArgument>("three corners for each triangle",
                               std::to_string(vCorners.size()) +
                                   " triangle corners are not a multiple of 3; give three for each triangle");
    for (const int corner : vCorners)
        if (corner < 0 || static_cast<std::size_t>(corner) >= numPoints)
            refuse<ZefBadArgument>("each corner is the index of a point",
                                   "corner index " + std::to_string(corner) + " is none of one of the " +
                                       std::to_string(numPoints) + " points");
}
} // namespace

std::vector<BorderLoop> findBorderLoops(const std::vector<Point3>& vPoints,
                                        const std::vector<int>& vTriangleCorners)
{
    const CallScope call;
    requireIndices(vPoints.size(), vTriangleCorners);
    const EdgeMates mates(vTriangleCorners);
    return LoopFinder(vPoints, vTriangleCorners, mates).run();
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
    const CallScope call;
    std::vector<Point3> vPoints;
    std::vector<int> vCorners;
    getFlat(mesh, vPoints, vCorners);
    HoleCloser closer(vPoints, vCorners, vChosen, options);
    std::vector<Point3> vAllPoints = vPoints;
    std::vector<int> vNewCorners;
    closer.run(vAllPoints, vNewCorners);
    std::vector<std::uint32_t> vAllCorners(vCorners.begin(), vCorners.end());
    vAllCorners.insert(vAllCorners.end(), vNewCorners.begin(), vNewCorners.end());
    std::shared_ptr<Mesh> pMesh =
        makeMesh(std::move(vAllPoints), std::move(vAllCorners), mesh.getRMesh()->getCellSize());
    if (pResults != nullptr)
        *pResults = closer.getResults();
    return pMesh;
}

} // namespace TARN_ZEF

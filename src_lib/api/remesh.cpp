#include "remesh.h"

#include "api/flatMesh.h"
#include "api/reportMesh.h"
#include "core/CallScope.h"
#include "core/ProgressScope.h"
#include "core/definitions.h"
#include "core/refuse.h"
#include "geometry/NearFrame.h"
#include "outer/OuterHull.h"
#include "remesh/SoupRemesh.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace TARN_ZEF
{
namespace
{
constexpr int NUM_STEPS = 200; // of progress
constexpr std::size_t MAX_TRIANGLES = std::size_t{1} << 29;
constexpr int FEWEST_MAX_TRIANGLES = 100;
constexpr double LARGEST_WELD_TOLERANCE = 0.1;
constexpr int MOST_BRIDGED = 100;

void reportSoup(std::size_t numCorners, const RemeshReport& found)
{
    CallReport* const pReport = getCallReport();
    if (pReport == nullptr)
        return;
    pReport->numPoints = numCorners;
    pReport->numNotFinite = 3 * static_cast<std::size_t>(found.numNonFinite);
    pReport->numUsedPoints = pReport->numPoints - pReport->numNotFinite;
    pReport->usedSpacing = found.length;
    pReport->numRawT = pReport->numUsedPoints / 3;
    // No triangle stays as it was.
    pReport->vPasses = {{"remesh", static_cast<std::size_t>(found.numTriangles), pReport->numRawT}};
}
} // namespace

std::string RemeshOptions::getFault() const
{
    const auto isPositive = [](double x) { return std::isfinite(x) && x > 0.0; };
    if (length != FOUND && !isPositive(length))
        return "the length must be above 0";
    if (!isPositive(lengthFactor))
        return "the factor on the length must be above 0";
    if (maxTriangles < FEWEST_MAX_TRIANGLES)
        return "the largest number of triangles must be at least 100";
    if (featureAngle != FOUND && !(std::isfinite(featureAngle) && featureAngle >= 0.0))
        return "the feature angle must be at least 0";
    if (!isPositive(tolerance) || tolerance > 1.0)
        return "the tolerance must be above 0 and at most 1";
    if (!(weldTolerance >= 0.0) || weldTolerance > LARGEST_WELD_TOLERANCE)
        return "the weld tolerance must be from 0 to 0.1";
    if (numBridgedCells < 0 || numBridgedCells > MOST_BRIDGED)
        return "the number of bridged cells must be from 0 to 100";
    if (numBridgedCells > 0 && !bOuter)
        return "gaps are bridged for the outer hull only";
    return {};
}

std::shared_ptr<Mesh> remesh(const std::vector<Point3>& vTriCorners, const RemeshOptions& options,
                             RemeshReport* pReport)
{
    const CallScope call("remesh");
    const std::string fault = options.getFault();
    if (!fault.empty())
        refuse<ZefBadArgument>("options.getFault().empty()", fault);
    if (vTriCorners.size() % 3 != 0)
        refuse<ZefBadArgument>("vTriCorners.size() % 3 == 0", "the number of corners is no multiple of 3");
    if (vTriCorners.size() / 3 > MAX_TRIANGLES)
        refuse<ZefBadArgument>("vTriCorners.size() / 3 <= MAX_TRIANGLES", "more than 2^29 triangles");
    ProgressScope progress("Remesh");
    Progress* const pProgress = getRootProgress()->getChildProgressSetTodo("remesh", NUM_STEPS);
    std::uint64_t numTold = 0;
    const auto tell = [&](double part)
    {
        const auto num = static_cast<std::uint64_t>(part * NUM_STEPS);
        if (num > numTold)
            pProgress->increment(num - numTold);
        numTold = std::max(num, numTold);
    };
    SoupRemesh soupRemesh(options);
    RemeshReport hullReport;
    const auto takeHull = [&](FlatSoup& soup, double length)
    {
        OuterHull hull(length, options.numBridgedCells);
        hull.run(soup);
        hullReport.numSealed = hull.getNumSealed();
        hullReport.bFromLattice = hull.isFromLattice();
    };
    const NearFrame frame = NearFrame::around(vTriCorners);
    std::vector<Point3> vCopies;
    bool bAny = false;
    {
        const StageScope stage("remesh");
        bAny = soupRemesh.run(frame.enter(vTriCorners, vCopies), tell,
                              options.bOuter ? SoupRemesh::Reshape(takeHull) : nullptr);
    }
    progress.finish();
    std::shared_ptr<Mesh> pMesh;
    const FlatSoup& flat = soupRemesh.getResult();
    if (bAny)
    {
        std::vector<Point3> vPoints = flat.vPoints;
        frame.leave(vPoints);
        pMesh = makeMesh(std::move(vPoints), {flat.vCorners.begin(), flat.vCorners.end()},
                         soupRemesh.getReport().length);
    }
    else
        warningMessage("remesh", "no triangle has a height");
    reportSoup(vTriCorners.size(), soupRemesh.getReport());
    reportMesh(pMesh);
    if (pReport != nullptr)
    {
        *pReport = soupRemesh.getReport();
        pReport->numSealed = hullReport.numSealed;
        pReport->bFromLattice = hullReport.bFromLattice;
    }
    return pMesh;
}

} // namespace TARN_ZEF

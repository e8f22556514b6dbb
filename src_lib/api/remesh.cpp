#include "remesh.h"

#include "api/flatMesh.h"
#include "core/CallScope.h"
#include "core/ProgressScope.h"
#include "core/definitions.h"
#include "core/refuse.h"
#include "geometry/NearFrame.h"
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
    return {};
}

std::shared_ptr<Mesh> remesh(const std::vector<Point3>& vTriCorners, const RemeshOptions& options,
                             RemeshReport* pReport)
{
    const CallScope call;
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
    const NearFrame frame = NearFrame::around(vTriCorners);
    std::vector<Point3> vCopies;
    const bool bAny = soupRemesh.run(frame.enter(vTriCorners, vCopies), tell);
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
    if (pReport != nullptr)
        *pReport = soupRemesh.getReport();
    return pMesh;
}

} // namespace TARN_ZEF

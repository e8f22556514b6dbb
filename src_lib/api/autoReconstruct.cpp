#include "autoReconstruct.h"

#include "api/flatMesh.h"
#include "api/reportMesh.h"
#include "choice/CloudMeasure.h"
#include "choice/FactorLadder.h"
#include "choice/countTrialFaults.h"
#include "core/CallScope.h"
#include "core/ProgressScope.h"
#include "core/memoryLimit.h"
#include "core/zefRand.h"
#include "geometry/NearFrame.h"
#include "geometry/isFinite.h"
#include "intake/Cloud.h"
#include "sheets/FacingBodies.h"
#include "zef_api_functions.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <optional>
#include <utility>

namespace TARN_ZEF
{
namespace
{
// What looking for bodies takes at most.
constexpr std::size_t BYTES_A_POINT_OF_BODIES = 2'500;

void countFaults(const Mesh& mesh, std::size_t mostEdgesOfHole, AutoTrial& trial)
{
    std::vector<Point3> vPoints;
    std::vector<int> vCorners;
    getFlat(mesh, vPoints, vCorners);
    countTrialFaults(vPoints, vCorners, mostEdgesOfHole, trial);
}

// A trial has a report of its own, if the call has one.
std::shared_ptr<Mesh> makeTrial(const char* name, std::vector<Point3>& vPoints, bool bSmooth, double factor,
                                CallReport& figures)
{
    const StageScope stage(name);
    std::optional<ReportScope> scope;
    if (getCallReport() != nullptr)
        scope.emplace(figures);
    return reconstruct_auto(vPoints, bSmooth, factor);
}

// The call takes over what is told of its mesh; time and memory are its own.
void reportChoice(const CallReport& plain, CallReport chosen)
{
    CallReport* const pReport = getCallReport();
    if (pReport == nullptr)
        return;
    chosen.call = pReport->call;
    chosen.bFinished = false; // not yet
    // Later trials get the usable points alone.
    chosen.numPoints = plain.numPoints;
    chosen.numNotFinite = plain.numNotFinite;
    chosen.seconds = pReport->seconds;
    chosen.bytesAtStart = pReport->bytesAtStart;
    chosen.peakBytes = pReport->peakBytes;
    chosen.vStages = pReport->vStages;
    *pReport = std::move(chosen);
}

// The mesh of the bodies that the points face away from; null if they bound none.
std::shared_ptr<Mesh> makeBodies(const std::vector<Point3>& vFinite, double spacing)
{
    const StageScope stage("bodies by facing");
    ProgressScope progress("Bodies");
    const NearFrame frame = NearFrame::around(vFinite, spacing);
    std::vector<Point3> vCopies;
    FacingBodies bodies(frame.enter(vFinite, vCopies), spacing);
    const bool bFound = bodies.run();
    progress.finish();
    if (!bFound)
        return nullptr;
    std::vector<Point3> vVertices = bodies.getVertices();
    frame.leave(vVertices);
    return makeMesh(std::move(vVertices), {bodies.getCorners().begin(), bodies.getCorners().end()}, spacing);
}

bool isPlain(const AutoReport& report)
{
    return report.factor == 1.0 && !report.bSmooth && !report.bByFacing;
}

// Where plain defaults stay with their faults.
bool mayBoundBodies(const std::vector<Point3>& vFinite, const AutoReport& report)
{
    return isPlain(report) && report.vTrials.front().getNumFaults() > 0 &&
           vFinite.size() <= memoryLimit / BYTES_A_POINT_OF_BODIES;
}

std::shared_ptr<Mesh> tryBodies(const std::vector<Point3>& vFinite, const AutoOptions& options,
                                AutoReport& report)
{
    if (!options.bTellSheetsApart || !mayBoundBodies(vFinite, report))
        return nullptr;
    std::shared_ptr<Mesh> pBodies = makeBodies(vFinite, report.cloud.spacing);
    if (!pBodies)
        return nullptr;
    AutoTrial trial;
    trial.bByFacing = true;
    countFaults(*pBodies, options.mostEdgesOfHole, trial);
    report.vTrials.push_back(trial);
    report.bByFacing = true;
    report.reason =
        "no factor makes a sound surface; by the way that they face, the points bound closed bodies";
    return pBodies;
}

CloudFigures measureCloud(const std::vector<Point3>& vFinite)
{
    ProgressScope progress("Density Estimation");
    Cloud cloud("cloud on trial", -1.0, 1.0, false, SpacingBy::FACTOR);
    cloud.setPoints(vFinite);
    cloud.estimateResolution();
    std::vector<Point3> vCopies;
    const std::vector<Point3>& vNear = cloud.getFrame().enter(vFinite, vCopies);
    const CloudFigures figures = CloudMeasure(vNear, cloud.getSpacing()).measure();
    progress.finish();
    return figures;
}
} // namespace

std::shared_ptr<Mesh> autoReconstruct(std::vector<Point3>& vPoints, const AutoOptions& options,
                                      AutoReport* pReport)
{
    const CallScope call("autoReconstruct");
    const FactorLadder ladder(options);
    AutoReport report;
    // Every trial starts from it, also where calls share state: what comes out does not depend on the trials before.
    const ZefRandom random = threadRandom();
    // First, as it refuses what cannot be measured.
    CallReport plainFigures;
    CallReport lastFigures;
    const std::shared_ptr<Mesh> pPlain = makeTrial("first mesh", vPoints, false, 1.0, plainFigures);
    std::shared_ptr<Mesh> pLast;
    if (pPlain)
    {
        AutoTrial plain;
        countFaults(*pPlain, options.mostEdgesOfHole, plain);
        // The others are left out with a warning each time.
        std::vector<Point3> vFinite;
        vFinite.reserve(vPoints.size());
        std::copy_if(vPoints.begin(), vPoints.end(), std::back_inserter(vFinite), isFinite);
        report.cloud = measureCloud(vFinite);
        ladder.climb(
            plain,
            [&](AutoTrial& trial)
            {
                threadRandom() = random;
                pLast = makeTrial("more meshes", vFinite, trial.bSmooth, trial.factor, lastFigures);
                if (pLast)
                    countFaults(*pLast, options.mostEdgesOfHole, trial);
                return pLast != nullptr;
            },
            report);
        if (std::shared_ptr<Mesh> pBodies = tryBodies(vFinite, options, report))
            pLast = std::move(pBodies);
    }
    const bool bPlain = isPlain(report);
    reportChoice(plainFigures, bPlain || report.bByFacing ? plainFigures : lastFigures);
    if (report.bByFacing)
        reportMesh(pLast);
    if (pReport != nullptr)
        *pReport = report;
    return bPlain ? pPlain : pLast;
}

} // namespace TARN_ZEF

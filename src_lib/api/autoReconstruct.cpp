#include "autoReconstruct.h"

#include "api/flatMesh.h"
#include "choice/CloudMeasure.h"
#include "choice/FactorLadder.h"
#include "choice/countTrialFaults.h"
#include "core/CallScope.h"
#include "core/ProgressScope.h"
#include "core/zefRand.h"
#include "geometry/isFinite.h"
#include "intake/Cloud.h"
#include "zef_api_functions.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace TARN_ZEF
{
namespace
{
void countFaults(const Mesh& mesh, std::size_t mostEdgesOfHole, AutoTrial& trial)
{
    std::vector<Point3> vPoints;
    std::vector<int> vCorners;
    getFlat(mesh, vPoints, vCorners);
    countTrialFaults(vPoints, vCorners, mostEdgesOfHole, trial);
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
    const CallScope call;
    const FactorLadder ladder(options);
    AutoReport report;
    // Every trial starts from it, also where calls share state: what comes out does not depend on the trials before.
    const ZefRandom random = threadRandom();
    // First, as it refuses what cannot be measured.
    const std::shared_ptr<Mesh> pPlain = reconstruct_auto(vPoints, false, 1.0);
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
                pLast = reconstruct_auto(vFinite, trial.bSmooth, trial.factor);
                if (pLast)
                    countFaults(*pLast, options.mostEdgesOfHole, trial);
                return pLast != nullptr;
            },
            report);
    }
    if (pReport != nullptr)
        *pReport = report;
    return report.factor == 1.0 && !report.bSmooth ? pPlain : pLast;
}

} // namespace TARN_ZEF

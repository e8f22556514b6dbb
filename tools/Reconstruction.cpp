#include "Reconstruction.h"

#include "Stopwatch.h"
#include "ToolError.h"
#include "inputChecks.h"

#include <utility>

namespace TARN_TOOL
{
namespace
{
// Open surfaces of at most this many triangles are taken for frayed pieces and removed.
constexpr int SMALLEST_OPEN_SURFACE = 100;
// The library names the arguments by their words.
constexpr const char* HINT = " (spacing: -a, factor: -f)";
} // namespace

void Reconstruction::read(Report& report)
{
    const Stopwatch stopwatch;
    vPoints = context.reader.readPoints().vPoints;
    report.numPoints = vPoints.size();
    report.readSeconds = stopwatch.getSeconds();
    requireUsable(context.options, vPoints);
    requireExtent(context.options, vPoints);
    requireSpacing(context.options, vPoints);
    offset = CommonOffset(vPoints);
    offset.takeOff(vPoints);
}

std::shared_ptr<TARN_ZEF::Mesh> Reconstruction::make(Report& report)
{
    std::shared_ptr<TARN_ZEF::Mesh> pMesh = reconstruct(report);
    return context.options.bPlain ? pMesh : finish(std::move(pMesh), report);
}

std::shared_ptr<TARN_ZEF::Mesh> Reconstruction::reconstruct(Report& report)
{
    const Stopwatch stopwatch;
    std::shared_ptr<TARN_ZEF::Mesh> pMesh;
    try
    {
        pMesh = context.calls.run([&] { return reconstructAsAsked(report); }, HINT);
    }
    catch (const TARN_ZEF::ZefBugException&)
    {
        throw ToolError("the points cannot be reconstructed at this spacing; try another one with -a");
    }
    report.computeSeconds = stopwatch.getSeconds();
    if (isEmpty(pMesh))
        throw ToolError(
            "no surface found at this spacing; try another one with -a or -f (an open surface of at most " +
            std::to_string(SMALLEST_OPEN_SURFACE) + " triangles is taken for debris and removed)");
    context.calls.forgetMessages();
    return pMesh;
}

std::shared_ptr<TARN_ZEF::Mesh> Reconstruction::reconstructAsAsked(Report& report)
{
    const Options& options = context.options;
    if (options.bAuto)
    {
        report.choice.emplace();
        return TARN_ZEF::autoReconstruct(vPoints, TARN_ZEF::AutoOptions(), &*report.choice);
    }
    if (options.spacingAbs > 0.0)
        return TARN_ZEF::reconstruct_abs(vPoints, options.bSmooth, options.spacingAbs);
    return TARN_ZEF::reconstruct_auto(vPoints, options.bSmooth, options.spacingFactor);
}

std::shared_ptr<TARN_ZEF::Mesh> Reconstruction::finish(std::shared_ptr<TARN_ZEF::Mesh> pMesh, Report& report)
{
    const Stopwatch stopwatch;
    // The PLY that is written holds floats.
    TARN_ZEF::FinishOptions finishOptions;
    finishOptions.bRoundToFloat = true;
    // Who leaves all to the tool expects a closed object to come out closed.
    if (context.options.bAuto)
        finishOptions.longestHole = TARN_ZEF::AutoOptions().mostEdgesOfHole;
    pMesh = context.calls.run(
        [&] { return TARN_ZEF::finishSurface(std::move(pMesh), vPoints, finishOptions); }, HINT);
    report.finishSeconds = stopwatch.getSeconds();
    report.computeSeconds += report.finishSeconds;
    if (isEmpty(pMesh))
        throw ToolError("no sound surface is left at this spacing; try another one with -a or -f");
    context.calls.forgetMessages();
    return pMesh;
}

double Reconstruction::getCell(const TARN_ZEF::Mesh&, Report& report)
{
    const Options& options = context.options;
    if (options.spacingAbs > 0.0)
        return options.spacingAbs;
    if (report.spacing < 0.0)
        report.spacing = report.choice ? report.choice->cloud.spacing * report.choice->factor
                                       : detectSpacing(context.calls, vPoints) * options.spacingFactor;
    return report.spacing;
}

void Reconstruction::putBack(const TARN_ZEF::Mesh& mesh)
{
    offset.putBack(mesh);
    offset.putBack(vPoints);
    offset = CommonOffset();
}

double detectSpacing(LibraryCalls& calls, std::vector<TARN_ZEF::Point3>& vPoints)
{
    const double detected = calls.run([&] { return TARN_ZEF::estimateAvgSpacing(vPoints); }, HINT);
    calls.forgetMessages();
    return detected;
}

} // namespace TARN_TOOL

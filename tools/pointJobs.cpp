#include "pointJobs.h"

#include "Reconstruction.h"
#include "Remeshing.h"
#include "Stopwatch.h"
#include "Targets.h"
#include "ToolError.h"
#include "formatNames.h"
#include "inputChecks.h"
#include "numberText.h"
#include "platform.h"

namespace TARN_TOOL
{
using TARN_ZEF::Point3;

namespace
{
void print(const JobContext& context, const Report& report)
{
    if (context.options.bJson)
        context.console.print(report.getJson(context.options));
    else if (!context.options.bQuiet)
        context.console.print(report.getSummary(context.options));
}

TARN_ZEF::ForecastCall forecastCallOf(const Options& options)
{
    using Call = TARN_ZEF::ForecastCall;
    if (options.task == Task::SAMPLE)
        return Call::TO_CLOUD;
    if (options.task == Task::REMESH)
        return Call::MELT;
    if (options.spacingAbs > 0.0)
        return options.bSmooth ? Call::RECONSTRUCT_ABS_SMOOTHED : Call::RECONSTRUCT_ABS;
    return options.bSmooth ? Call::RECONSTRUCT_AUTO_SMOOTHED : Call::RECONSTRUCT_AUTO;
}
} // namespace

void SpacingJob::run()
{
    std::vector<Point3> vPoints = context.reader.readPoints().vPoints;
    requireUsable(options, vPoints);
    requireExtent(options, vPoints);
    Report report;
    report.numPoints = vPoints.size();
    report.spacing = detectSpacing(context.calls, vPoints);
    context.console.print(report.getSpacing(options));
}

void ForecastJob::run()
{
    Report report;
    std::vector<Point3> vPoints;
    if (options.hasTriangles())
        vPoints = readSoup(context, report);
    else
    {
        vPoints = context.reader.readPoints().vPoints;
        requireUsable(options, vPoints);
        requireExtent(options, vPoints);
        requireSpacing(options, vPoints);
        report.numPoints = vPoints.size();
    }
    const bool bGiven = options.spacingAbs > 0.0;
    report.forecastBytes = context.calls.run(
        [&]
        {
            return TARN_ZEF::estimateMemory(vPoints, bGiven ? options.spacingAbs : options.spacingFactor,
                                            forecastCallOf(options));
        });
    context.console.print(report.getForecast(options));
}

void DrawJob::run()
{
    Targets targets(context);
    const std::vector<Point3> vPoints = context.reader.readPoints().vPoints;
    requireUsable(options, vPoints);
    Report report;
    report.numPoints = vPoints.size();
    report.pictures = targets.getPictures().draw(nullptr, vPoints);
    print(context, report);
    targets.commit();
}

void SampleJob::run()
{
    Targets targets(context);
    Report report;
    std::vector<Point3> vTriCorners = readSoup(context, report);
    Stopwatch stopwatch;
    TARN_ZEF::PointData data;
    data.vPoints = sample(vTriCorners);
    report.computeSeconds = stopwatch.getSeconds();
    report.numPoints = data.vPoints.size();
    report.spacing = options.spacingAbs;
    stopwatch = Stopwatch();
    targets.write(data, options.spacingAbs);
    report.writeSeconds = stopwatch.getSeconds();
    report.peakMegabytes = peakMegabytesOfProcess();
    report.vCalls = context.calls.takeReports();
    report.pictures = targets.getPictures().draw(nullptr, data.vPoints);
    print(context, report);
    targets.commit();
}

std::vector<Point3> SampleJob::sample(std::vector<Point3>& vTriCorners)
{
    std::vector<Point3> vSamples;
    try
    {
        context.calls.run(
            [&]
            { TARN_ZEF::toCloud(vTriCorners, options.spacingAbs, options.getCellFeatureAngle(), vSamples); },
            " (spacing: -a)");
    }
    catch (const TARN_ZEF::ZefBugException&)
    {
        throw ToolError("the triangles cannot be sampled at this spacing; try another one with -a");
    }
    if (vSamples.empty())
        throw ToolError("no points came out: are all triangles degenerate?");
    context.calls.forgetMessages();
    return vSamples;
}

bool ConvertJob::wantsTriangles()
{
    const std::string name = options.getOutFormatName();
    const TARN_ZEF::FormatUse use = TARN_ZEF::getFormatUse(name);
    if (use.bWritesTriangles && use.bWritesPoints)
        return context.reader.holdTriangles();
    if (use.bWritesTriangles && !context.reader.holdTriangles())
        throw ToolError(options.getInputText() + " holds no triangles, which " + extensionOf(name) +
                        " is for; to make a surface of points leave out --convert");
    return use.bWritesTriangles;
}

void ConvertJob::run()
{
    Targets targets(context);
    std::string what;
    std::size_t num = 0;
    if (wantsTriangles())
    {
        const TARN_ZEF::TriangleData data = context.reader.readTriangles();
        num = data.vCorners.size() / 3;
        what = "triangles";
        targets.write(data);
    }
    else
    {
        const TARN_ZEF::PointData data = context.reader.readPoints();
        num = data.vPoints.size();
        what = "points";
        targets.write(data, 0.0);
    }
    JsonLine line = startJson(options);
    line.add(what.c_str(), num);
    const std::string target = options.isToStandardOutput() ? "standard output" : options.outName;
    if (options.bJson)
        context.console.print(line.getText() + "\n");
    else if (!options.bQuiet)
        context.console.print(options.getInputText() + ": " + std::to_string(num) + " " + what + "\n" +
                              target + ": written\n");
    targets.commit();
}

} // namespace TARN_TOOL

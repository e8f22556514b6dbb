#include "Job.h"

#include "CompareJob.h"
#include "MeshJob.h"
#include "ToolError.h"
#include "checkOptions.h"
#include "pointJobs.h"

namespace TARN_TOOL
{
namespace
{
// A file of triangles is a mesh already. PLY is left out: scans often come with faces, and have always been taken for
// their points.
bool isMesh(const JobContext& context)
{
    if (!context.reader.holdTriangles())
        return false;
    if (!context.reader.isPly())
        return true;
    context.console.note(
        context.options.getInputText() +
        " holds triangles, too; the surface is made anew from its points, --mesh takes it as "
        "it is");
    return false;
}

void requireNoCloudOptions(const Options& options)
{
    if (options.spacingAbs > 0.0 || options.spacingFactor != 1.0 || options.bSmooth || options.bAuto ||
        options.bPlain)
        throw UsageError(
            options.getInputText() +
            " holds triangles: -a, -f, -s, --auto and --plain are for points; to make even triangles "
            "use --fmelt (-m)");
    if (options.view.paint == Paint::DISTANCE)
        throw UsageError(options.getInputText() + " holds triangles: " + NO_DISTANCE);
}
} // namespace

std::unique_ptr<Job> Job::create(Options& options, LibraryCalls& calls, const Console& console,
                                 InputReader& reader)
{
    const JobContext context{options, calls, console, reader};
    if (options.bTaskByContent && isMesh(context))
    {
        requireNoCloudOptions(options);
        options.task = Task::MESH;
    }
    if (options.bDryRun)
        return std::make_unique<ForecastJob>(context);
    switch (options.task)
    {
    case Task::SPACING:
        return std::make_unique<SpacingJob>(context);
    case Task::DRAW:
        return std::make_unique<DrawJob>(context);
    case Task::COMPARE:
        return std::make_unique<CompareJob>(context);
    case Task::SAMPLE:
        return std::make_unique<SampleJob>(context);
    case Task::CONVERT:
        return std::make_unique<ConvertJob>(context);
    default:
        return std::make_unique<MeshJob>(context);
    }
}

} // namespace TARN_TOOL

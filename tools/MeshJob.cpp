#include "MeshJob.h"

#include <algorithm>

#include "Stopwatch.h"
#include "ToolError.h"
#include "platform.h"

namespace TARN_TOOL
{
MeshJob::MeshJob(const JobContext& context_)
    : Job(context_)
    , pSource(MeshSource::create(context_))
{
}

void MeshJob::run()
{
    Targets targets(context);
    pSource->read(report);
    pMesh = pSource->make(report);
    improve();
    pSource->putBack(*pMesh);
    takeStatistics();
    judge();
    write(targets);
    report.pictures = targets.getPictures().draw(pMesh.get(), pSource->getPoints());
    tell();
    targets.commit();
}

void MeshJob::improve()
{
    if (options.vSteps.empty())
        return;
    const bool bNeedsCell = std::any_of(options.vSteps.begin(), options.vSteps.end(),
                                        [](const Step& s) { return s.needsSpacing(); });
    const double cell = bNeedsCell ? pSource->getCell(*pMesh, report) : 0.0;
    report.anglesBefore = TriangleAngles(*pMesh);
    for (const Step& step : options.vSteps)
        apply(step, cell);
}

void MeshJob::apply(const Step& step, double cell)
{
    const Stopwatch stopwatch;
    std::string remark;
    try
    {
        remark = context.calls.run([&] { return step.apply(pMesh, cell); });
    }
    catch (const TARN_ZEF::ZefBugException&)
    {
        throw ToolError("--" + step.getText() + " failed on this mesh; leave it out or try other values");
    }
    const double seconds = stopwatch.getSeconds();
    report.computeSeconds += seconds;
    report.vSteps.push_back({step.getText(), remark, TriangleAngles(*pMesh), seconds});
    if (report.vSteps.back().angles.numTriangles == 0)
        throw ToolError("--" + step.getText() + " left no triangle; try smaller values");
    context.calls.forgetMessages();
}

void MeshJob::takeStatistics()
{
    std::vector<TARN_ZEF::Point3*> vVertices;
    std::vector<int> vCorners;
    pMesh->getVertexIndexData(vVertices, vCorners);
    report.statistics = MeshStatistics(vVertices.size(), vCorners);
}

// In the precision of the library; the file may hold less.
void MeshJob::judge()
{
    if (options.bHoles)
        report.borders = context.calls.run([&] { return TARN_ZEF::findBorderLoops(*pMesh); });
    if (!options.bCheck)
        return;
    TARN_ZEF::CheckOptions checkOptions;
    checkOptions.maxPlaces = 3;
    report.check = context.calls.run([&] { return pSource->check(*pMesh, checkOptions); });
}

void MeshJob::write(Targets& targets)
{
    if (targets.hasOut())
    {
        const Stopwatch stopwatch;
        targets.write(pMesh, std::max(0.0, options.spacingAbs));
        report.writeSeconds = stopwatch.getSeconds();
    }
    report.peakMegabytes = peakMegabytesOfProcess();
    report.vCalls = context.calls.takeReports();
    if (!options.bQuiet || options.bJson)
        report.spacing = pSource->getCell(*pMesh, report);
}

void MeshJob::tell()
{
    if (options.bJson)
        context.console.print(report.getJson(options));
    else if (!options.bQuiet)
        context.console.print(report.getSummary(options));
}

} // namespace TARN_TOOL

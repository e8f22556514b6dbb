#include "Remeshing.h"

#include "Stopwatch.h"
#include "ToolError.h"
#include "inputChecks.h"

namespace TARN_TOOL
{
namespace
{
// Of a remesh at a spacing that was asked for: about 4 GB.
constexpr int MOST_REMESHED = 20000000;
// The library names the argument by its word.
constexpr const char* HINT = " (spacing: -a)";

TARN_ZEF::RemeshOptions remeshOptions(const Options& options)
{
    TARN_ZEF::RemeshOptions result;
    if (options.spacingAbs > 0.0)
    {
        result.length = options.spacingAbs;
        result.maxTriangles = MOST_REMESHED;
    }
    result.lengthFactor = options.spacingFactor;
    if (options.featureAngle >= 0.0)
        result.featureAngle = options.featureAngle;
    result.bOuter = options.bOuter;
    result.numBridgedCells = options.numBridgedCells;
    return result;
}
} // namespace

std::vector<TARN_ZEF::Point3> readSoup(const JobContext& context, Report& report)
{
    const Stopwatch stopwatch;
    const TARN_ZEF::TriangleData data = context.reader.readTriangles();
    std::vector<TARN_ZEF::Point3> vTriCorners = getFiniteCorners(data);
    const std::size_t numDropped = (data.vCorners.size() - vTriCorners.size()) / 3;
    if (numDropped != 0)
        context.console.note("triangles left out for a NaN or infinite coordinate: " +
                             std::to_string(numDropped));
    report.numInputTriangles = vTriCorners.size() / 3;
    report.numPoints = vTriCorners.size();
    report.readSeconds = stopwatch.getSeconds();
    requireUsable(context.options, vTriCorners);
    requireExtent(context.options, vTriCorners);
    requireSpacing(context.options, vTriCorners);
    requireCells(context.options, vTriCorners);
    return vTriCorners;
}

void Remeshing::read(Report& report)
{
    vPoints = readSoup(context, report);
}

std::shared_ptr<TARN_ZEF::Mesh> Remeshing::make(Report& report)
{
    const Stopwatch stopwatch;
    std::shared_ptr<TARN_ZEF::Mesh> pMesh;
    try
    {
        pMesh = context.options.isRemesh() ? remesh(report) : melt(report);
    }
    catch (const TARN_ZEF::ZefBugException&)
    {
        throw ToolError("the triangles cannot be remeshed at this spacing; try another one with -a");
    }
    report.computeSeconds = stopwatch.getSeconds();
    context.calls.forgetMessages();
    return pMesh;
}

std::shared_ptr<TARN_ZEF::Mesh> Remeshing::melt(Report&)
{
    const Options& options = context.options;
    std::shared_ptr<TARN_ZEF::Mesh> pMesh = context.calls.run(
        [&] { return TARN_ZEF::melt(vPoints, options.spacingAbs, options.getCellFeatureAngle()); }, HINT);
    if (isEmpty(pMesh))
        throw ToolError("no surface came out at this spacing; try a smaller one with -a");
    return pMesh;
}

// The length in force becomes the spacing, found or given.
std::shared_ptr<TARN_ZEF::Mesh> Remeshing::remesh(Report& report)
{
    TARN_ZEF::RemeshReport found;
    std::shared_ptr<TARN_ZEF::Mesh> pMesh = context.calls.run(
        [&] { return TARN_ZEF::remesh(vPoints, remeshOptions(context.options), &found); }, HINT);
    if (isEmpty(pMesh))
        throw ToolError("no surface came out: no triangle has a height");
    report.spacing = found.length;
    report.featureAngle = found.featureAngle;
    tell(found);
    return pMesh;
}

void Remeshing::tell(const TARN_ZEF::RemeshReport& found) const
{
    if (found.numParted != 0)
        context.console.note("edges of more than two triangles, parted: " + std::to_string(found.numParted));
    if (context.options.bOuter)
        context.console.note("outer hull " +
                             std::string(found.bFromLattice ? "from a lattice" : "of the parts as they are") +
                             ", borders closed: " + std::to_string(found.numSealed));
    if (found.numFarPlaces != 0)
        context.console.note("places farther off the triangles than the tolerance: " +
                             std::to_string(found.numFarPlaces));
}

double Remeshing::getCell(const TARN_ZEF::Mesh&, Report& report)
{
    return context.options.spacingAbs > 0.0 ? context.options.spacingAbs : report.spacing;
}

} // namespace TARN_TOOL

#include "MeshReading.h"

#include "PointBox.h"
#include "Stopwatch.h"
#include "ToolError.h"
#include "inputChecks.h"

namespace TARN_TOOL
{
void MeshReading::read(Report& report)
{
    const Stopwatch stopwatch;
    data = context.reader.readTriangles();
    report.numInputTriangles = data.vCorners.size() / 3;
    report.readSeconds = stopwatch.getSeconds();
    vPoints = data.vPoints;
    std::erase_if(vPoints, [](const TARN_ZEF::Point3& p) { return !isFinite(p); });
    if (data.vCorners.empty())
        vPoints.clear();
    requireUsable(context.options, vPoints);
}

std::shared_ptr<TARN_ZEF::Mesh> MeshReading::make(Report& report)
{
    std::shared_ptr<TARN_ZEF::Mesh> pMesh = context.calls.run([&] { return TARN_ZEF::makeMesh(data); });
    if (!context.options.bCheck || !context.options.vSteps.empty())
        data = {};
    if (isEmpty(pMesh))
        throw ToolError("all triangles in " + context.options.getInputText() +
                        " have two corners in one place; give a mesh with an extent");
    context.calls.forgetMessages();
    const std::size_t numLost = report.numInputTriangles - TriangleAngles(*pMesh).numTriangles;
    if (numLost != 0)
        context.console.note("triangles left out, not finite or with two corners in one place: " +
                             std::to_string(numLost));
    return pMesh;
}

TARN_ZEF::MeshCheck MeshReading::check(const TARN_ZEF::Mesh& mesh,
                                       const TARN_ZEF::CheckOptions& options) const
{
    if (data.vCorners.empty())
        return MeshSource::check(mesh, options);
    TARN_ZEF::CheckOptions soupOptions = options;
    soupOptions.bJoinEqualPoints = true;
    const std::vector<int> vCorners(data.vCorners.begin(), data.vCorners.end());
    return TARN_ZEF::checkMesh(data.vPoints, vCorners, soupOptions);
}

double MeshReading::getCell(const TARN_ZEF::Mesh& mesh, Report& report)
{
    if (report.spacing < 0.0)
        report.spacing = mesh.getAverageEdgeLength();
    return report.spacing;
}

} // namespace TARN_TOOL

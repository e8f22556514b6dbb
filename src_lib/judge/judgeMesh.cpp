#include "judge/judgeMesh.h"

#include "core/definitions.h"
#include "judge/ConnectionJudge.h"
#include "judge/CornerNumbering.h"
#include "judge/FaultList.h"
#include "judge/JudgedMesh.h"
#include "judge/ShapeJudge.h"

#include <algorithm>
#include <cstddef>

namespace TARN_ZEF
{
namespace
{
void refuseBadCorners(std::size_t numPoints, const std::vector<int>& vCorners)
{
    ASSEX_TEXT(vCorners.size() % 3 == 0, "three corners for each triangle");
    const auto isIndex = [numPoints](int corner)
    { return corner >= 0 && static_cast<std::size_t>(corner) < numPoints; };
    ASSEX_TEXT(std::all_of(vCorners.begin(), vCorners.end(), isIndex), "each corner is the index of a point");
}

std::vector<int> joinEqualPoints(const std::vector<int>& vCorners, const CornerNumbering& numbering)
{
    std::vector<int> vResult(vCorners.size());
    std::transform(vCorners.begin(), vCorners.end(), vResult.begin(),
                   [&](int corner)
                   { return static_cast<int>(numbering.vNumbers[static_cast<std::size_t>(corner)]); });
    return vResult;
}
} // namespace

MeshCheck judgeMesh(const std::vector<Point3>& vPoints, const std::vector<int>& vCorners,
                    const CheckOptions& options)
{
    refuseBadCorners(vPoints.size(), vCorners);
    const JudgedMesh mesh(vPoints, vCorners);
    const UnitFrame frame(vPoints);
    const CornerNumbering numbering(vPoints, frame);
    MeshCheck check;
    FaultList faults(options.maxPlaces);
    check.numTriangles = mesh.getNumTriangles();
    if (options.bJoinEqualPoints)
    {
        const std::vector<int> vJoined = joinEqualPoints(vCorners, numbering);
        ConnectionJudge(mesh, vJoined).run(vPoints.size(), options.maxPlaces, check, faults);
    }
    else
        ConnectionJudge(mesh, vCorners).run(vPoints.size(), options.maxPlaces, check, faults);
    ShapeJudge(mesh, numbering).run(frame, options, check, faults);
    check.vFaults = faults.getAll();
    return check;
}

} // namespace TARN_ZEF

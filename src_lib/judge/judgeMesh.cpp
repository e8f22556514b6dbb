#include "judge/judgeMesh.h"

#include "core/refuse.h"
#include "geometry/requireTriangles.h"
#include "judge/ConnectionJudge.h"
#include "judge/CornerNumbering.h"
#include "judge/FaultList.h"
#include "judge/JudgedMesh.h"
#include "judge/ShapeJudge.h"

#include <algorithm>
#include <cstddef>
#include <string>

namespace TARN_ZEF
{
namespace
{
std::vector<int> joinEqualPoints(const std::vector<int>& vCorners, const CornerNumbering& numbering)
{
    std::vector<int> vResult(vCorners.size());
    std::transform(vCorners.begin(), vCorners.end(), vResult.begin(),
                   [&](int corner)
                   { return static_cast<int>(numbering.vNumbers[static_cast<std::size_t>(corner)]); });
    return vResult;
}

void judgeConnections(const JudgedMesh& mesh, const std::vector<Point3>& vPoints,
                      const std::vector<int>& vCorners, const CornerNumbering& numbering,
                      const CheckOptions& options, MeshCheck& check, FaultList& faults)
{
    if (!options.bJoinEqualPoints)
    {
        ConnectionJudge(mesh, vCorners).run(vPoints.size(), options.maxPlaces, check, faults);
        return;
    }
    const std::vector<int> vJoined = joinEqualPoints(vCorners, numbering);
    ConnectionJudge(mesh, vJoined).run(vPoints.size(), options.maxPlaces, check, faults);
}

MeshCheck judge(const std::vector<Point3>& vPoints, const std::vector<int>& vCorners,
                const CheckOptions& options, bool bConnections)
{
    requireTriangles(vPoints.size(), vCorners);
    const JudgedMesh mesh(vPoints, vCorners);
    const UnitFrame frame(vPoints);
    const CornerNumbering numbering(vPoints, frame);
    MeshCheck check;
    FaultList faults(options.maxPlaces);
    check.numTriangles = mesh.getNumTriangles();
    if (bConnections)
        judgeConnections(mesh, vPoints, vCorners, numbering, options, check, faults);
    ShapeJudge(mesh, numbering).run(frame, options, check, faults);
    check.vFaults = faults.getAll();
    return check;
}
} // namespace

MeshCheck judgeMesh(const std::vector<Point3>& vPoints, const std::vector<int>& vCorners,
                    const CheckOptions& options)
{
    return judge(vPoints, vCorners, options, true);
}

MeshCheck judgeShapes(const std::vector<Point3>& vPoints, const std::vector<int>& vCorners,
                      const CheckOptions& options)
{
    return judge(vPoints, vCorners, options, false);
}

} // namespace TARN_ZEF

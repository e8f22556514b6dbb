#include "api/reportMesh.h"

#include "api/flatMesh.h"
#include "core/CallRecorder.h"
#include "judge/judgeMesh.h"

namespace TARN_ZEF
{
void reportMesh(const std::shared_ptr<Mesh>& pMesh)
{
    CallReport* const pReport = getCallReport();
    if (pReport == nullptr || !pMesh)
        return;
    const StageScope stage("look at the mesh");
    std::vector<Point3> vPoints;
    std::vector<int> vCorners;
    getFlat(*pMesh, vPoints, vCorners);
    CheckOptions options;
    options.maxPlaces = 0;
    options.bFindIntersections = false;
    const MeshCheck check = judgeMesh(vPoints, vCorners, options);
    pReport->numT = check.numTriangles;
    pReport->numBorderEdges = check.numBorderEdges;
    pReport->numBorderLoops = check.numBorderLoops;
    pReport->numNonManifoldEdges = check.numNonManifoldEdges;
    pReport->numPieces = check.numPieces;
    pReport->eulerNumber = check.eulerNumber;
}

} // namespace TARN_ZEF

#include "zef.h"

int main()
{
    std::string cloud = "scan.xyz";
    std::vector<TARN_ZEF::Point3> points;
    if (!TARN_ZEF::readPoints_auto(cloud, points))
        return 1;
    std::shared_ptr<TARN_ZEF::Mesh> pMesh = TARN_ZEF::reconstruct_auto(points, false, 1.0);
    if (pMesh)
        pMesh = TARN_ZEF::finishSurface(*pMesh, points);
    return pMesh && TARN_ZEF::writeMesh_auto("mesh.ply", pMesh, true) ? 0 : 1;
}

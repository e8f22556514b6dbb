#include "finish/dropTriangles.h"

#include "core/definitions.h"

namespace TARN_ZEF
{
void dropTriangles(HalfEdgeMesh& mesh, const std::vector<std::uint8_t>& vDrop, std::vector<int>* pOrigin)
{
    std::vector<Point3> vPoints;
    vPoints.reserve(static_cast<std::size_t>(mesh.endVertices()));
    for (int v = 0; v < mesh.endVertices(); ++v)
        vPoints.push_back(mesh.point(v));
    std::vector<int> vCorners;
    std::vector<int> vLabels;
    for (int t = 0; t < mesh.endTriangles(); ++t)
    {
        if (!mesh.isAlive(t) || vDrop[static_cast<std::size_t>(t)] != 0)
            continue;
        for (int h = 4 * t; h < 4 * t + 3; ++h)
            vCorners.push_back(mesh.from(h));
        vLabels.push_back(mesh.label(t));
    }
    ASSEX(mesh.build(vPoints, vCorners, pOrigin));
    for (std::size_t t = 0; t < vLabels.size(); ++t)
        mesh.setLabel(static_cast<int>(t), vLabels[t]);
}

} // namespace TARN_ZEF

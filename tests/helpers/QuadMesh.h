// Triangles on one edge, anywhere in space, for tests of edges.
#ifndef ZEF_TESTS_QUADMESH_H
#define ZEF_TESTS_QUADMESH_H

#include "geometry/tools.h"
#include "helpers/SheetMesh.h"

#include <cmath>
#include <vector>

namespace TARN_ZEF
{
// The triangles (v0, v1, a) and (v1, v0, b); v0 at the origin.
struct QuadMesh : SheetMesh
{
    QuadMesh(const Point3& p1, const Point3& pa, const Point3& pb)
        : v0(cellAt(1, 1, 1, Point3(0, 0, 0)))
        , v1(cellAt(2, 1, 1, p1))
        , a(cellAt(1, 2, 1, pa))
        , b(cellAt(1, 1, 2, pb))
    {
        add(v0, v1, a);
        add(v1, v0, b);
        pCE = mesh.getCE(v0, v1);
    }
    u64 v0, v1, a, b;
    CEdge* pCE;
};

// A fan of flat triangles on the edge a-b, whose third corners stand around it at the given angles.
struct Fan : SheetMesh
{
    explicit Fan(const std::vector<double>& vDegrees)
        : a(cellAt(8, 8, 8, Point3(0, 0, 0)))
        , b(cellAt(8, 8, 9, Point3(0, 0, 2)))
    {
        for (std::size_t i = 0; i < vDegrees.size(); ++i)
        {
            const double phi = vDegrees[i] / DEGREES_PER_RAD;
            const u64 third = cellAt(9, static_cast<int>(i), 9, Point3(std::cos(phi), std::sin(phi), 1));
            vT.push_back(i % 2 == 0 ? add(a, b, third) : add(b, a, third));
        }
        pCE = mesh.getCE(a, b);
    }
    u64 a, b;
    std::vector<CTriangle*> vT;
    CEdge* pCE;
};

// (bend * length)^0.3 of an edge of degree 2, whatever the orientation of its triangles; 0.0 for any other.
inline double getBendEnergy(const CMesh& mesh, const CEdge* pCE)
{
    const double angle = pCE->getDihedralAngle(&mesh); // 180: flat
    const double length = std::sqrt(sqDistance(*mesh.getVtx(pCE->v0), *mesh.getVtx(pCE->v1)));
    return angle > 180.0 ? 0.0 : std::pow((1.0 + std::cos(angle / DEGREES_PER_RAD)) * length, 0.3);
}

} // namespace TARN_ZEF

#endif

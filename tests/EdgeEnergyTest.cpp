#include "EdgeEnergy.h"

#include "helpers/LatticeMesh.h"
#include "helpers/RepairedMesh.h"
#include "helpers/SheetMesh.h"
#include "tools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
using Pair = std::pair<u64, u64>;

// (bend * length)^0.3 of one edge of degree 2, whatever the orientation; 0.0 for any other.
double energyOf(const CMesh& mesh, const CEdge* pCE)
{
    if (pCE == nullptr || pCE->getDegree() != 2)
        return 0.0;
    const double dihedral = pCE->getDihedralAngle(&mesh); // 180: flat
    const double bend = 1.0 + std::cos(dihedral / DEGREES_PER_RAD);
    const double length = std::sqrt(sqDistance(*mesh.getVtx(pCE->v0), *mesh.getVtx(pCE->v1)));
    return std::pow(bend * length, 0.3);
}

// The four outer edges of the quadrilateral around an edge of degree 2.
std::array<Pair, 4> outerEdges(const CEdge& edge)
{
    const u64 a = edge.vCT[0]->getThirdCCD(edge.v0, edge.v1);
    const u64 b = edge.vCT[1]->getThirdCCD(edge.v0, edge.v1);
    return {Pair{a, edge.v0}, Pair{a, edge.v1}, Pair{b, edge.v0}, Pair{b, edge.v1}};
}

double energyOf(const CMesh& mesh, const std::array<Pair, 4>& aOuter, const CEdge* pDiagonal)
{
    double sum = energyOf(mesh, pDiagonal);
    for (const auto& [v0, v1] : aOuter)
        sum += energyOf(mesh, mesh.getCE(v0, v1));
    return sum;
}

// Two triangles on the edge (0,0,0) - (2,0,0); a third one that brings the new diagonal if asked.
struct Quad : SheetMesh
{
    Quad(const Point3& pa, const Point3& pb, bool bDiagonal)
    {
        const u64 v0 = cellAt(1, 1, 1, Point3(0, 0, 0));
        const u64 v1 = cellAt(2, 1, 1, Point3(2, 0, 0));
        const u64 a = cellAt(1, 2, 1, pa);
        const u64 b = cellAt(1, 1, 2, pb);
        add(v0, v1, a);
        add(v1, v0, b);
        if (bDiagonal)
            add(a, b, cellAt(4, 4, 4, Point3(1, 0, 5)));
        pCE = mesh.getCE(v0, v1);
    }
    CEdge* pCE;
};
} // namespace

TEST(EdgeEnergy, isWhatTheFlipGainsOnPipelineMeshes)
{
    RepairedMesh repaired(sphereCloud(3000, 0.02));
    CMesh& mesh = repaired.mesh();
    std::vector<CEdge*> vDeg2;
    mesh.getDegN(2, vDeg2);
    int numChecked = 0;
    for (CEdge* pCE : vDeg2)
    {
        if (pCE->getDegree() != 2)
            continue;
        EdgeEnergy ee(&mesh, pCE);
        const double gain = ee.getImprovement();
        if (gain == LOWEST_DBL)
            continue;
        pCE->vCT[1]->flipOrientation(); // a disagreeing pair is turned first
        ee.compute();
        ASSERT_EQ(ee.getImprovement(), gain);
        const std::array<Pair, 4> aOuter = outerEdges(*pCE);
        const double before = energyOf(mesh, aOuter, pCE);
        const CEdge* pNewCE = pCE->flipEdge(&mesh, nullptr, nullptr);
        // A dihedral angle near 180 degrees keeps half of the digits, and the power takes a third of these.
        ASSERT_NEAR(before - energyOf(mesh, aOuter, pNewCE), gain, 0.02) << "edge " << pCE->getNumber();
        ++numChecked;
    }
    EXPECT_GT(numChecked, 5000);
}

TEST(EdgeEnergy, refusals)
{
    const struct
    {
        const char* name;
        Point3 pa, pb;
        bool bDiagonal;
        bool bRefused;
    } aCases[] = {
        {"planar square", Point3(1, 1, 0), Point3(1, -1, 0), false, false},
        {"the new diagonal exists", Point3(1, 1, 0), Point3(1, -1, 0.5), true, true},
        {"planar, a corner of 166 degrees instead of 97", Point3(-0.8, 0.9, 0), Point3(0.2, -0.8, 0), false,
         true},
        {"flat pair to a fold", Point3(3, 1, 0), Point3(4, -0.01, 0), false, true},
        {"corners on one place", Point3(1, 1, 0), Point3(1, 1, 0), false, false},
    };
    for (const auto& c : aCases)
    {
        SCOPED_TRACE(c.name);
        Quad quad(c.pa, c.pb, c.bDiagonal);
        EdgeEnergy ee(&quad.mesh, quad.pCE);
        EXPECT_EQ(ee.getImprovement() == LOWEST_DBL, c.bRefused) << ee.getImprovement();
        EXPECT_NE(*quad.pCE->vCT[0]->getVtx(&quad.mesh, 2), *quad.pCE->vCT[1]->getVtx(&quad.mesh, 2));
    }
    Quad planar(Point3(1, 1, 0), Point3(1, -1, 0), false);
    EXPECT_LT(EdgeEnergy(&planar.mesh, planar.pCE).getImprovement(), 0.01);
    EdgeEnergy border(&planar.mesh, planar.pCE->vCT[0]->getCEdge(0));
    EXPECT_EQ(border.getImprovement(), LOWEST_DBL);
}

TEST(EdgeEnergy, widestAngle)
{
    Quad quad(Point3(1, 1, 0), Point3(1, -1, 0), false);
    const EdgeEnergy ee(&quad.mesh, quad.pCE);
    const Point3 p0(0, 0, 0), p1(2, 0, 0), p2(0, 3, 0), flat(1, 0.01, 0);
    const Point3* aCorners[3] = {&p0, &p1, &p2};
    for (int i = 0; i < 3; ++i) // the right angle, at any corner
        EXPECT_NEAR(ee.getMinCosPhi(aCorners[i], aCorners[(i + 1) % 3], aCorners[(i + 2) % 3]), 0.0, 1e-15);
    EXPECT_LT(ee.getMinCosPhi(&p0, &flat, &p1), -0.99);
    EXPECT_THROW((void)ee.getMinCosPhi(&p0, &p0, &p2), ZefBugException);
}

} // namespace TARN_ZEF

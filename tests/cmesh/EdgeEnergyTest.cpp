#include "cmesh/EdgeEnergy.h"

#include "helpers/PipelineMesh.h"
#include "helpers/QuadMesh.h"
#include "helpers/StreamCapture.h"

#include <gtest/gtest.h>

#include <array>

namespace TARN_ZEF
{
namespace
{
using Pair = std::pair<u64, u64>;

// The four outer edges of the quadrilateral around an edge of degree 2.
std::array<Pair, 4> outerEdges(const CEdge& edge)
{
    const u64 a = edge.vCT[0]->getThirdCCD(edge.v0, edge.v1);
    const u64 b = edge.vCT[1]->getThirdCCD(edge.v0, edge.v1);
    return {Pair{a, edge.v0}, Pair{a, edge.v1}, Pair{b, edge.v0}, Pair{b, edge.v1}};
}

double energyOf(const CMesh& mesh, const std::array<Pair, 4>& aOuter, const CEdge* pDiagonal)
{
    double sum = getBendEnergy(mesh, pDiagonal);
    for (const auto& [v0, v1] : aOuter)
        sum += getBendEnergy(mesh, mesh.getCE(v0, v1));
    return sum;
}
} // namespace

TEST(EdgeEnergy, isWhatTheFlipGainsOnPipelineMeshes)
{
    const StreamCapture quiet;
    PipelineMesh repaired(makeCloud(3000, 0.0, 0.3), true);
    CMesh& mesh = repaired.mesh();
    std::vector<CEdge*> vDeg2;
    mesh.getDegN(DEG_INNER, vDeg2);
    int numChecked = 0;
    for (CEdge* pCE : vDeg2)
    {
        if (!pCE->isInner())
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
    EXPECT_GT(numChecked, 3000);
}

TEST(EdgeEnergy, refusals)
{
    const StreamCapture quiet;
    const struct
    {
        const char* name;
        Point3 pa, pb;
        bool bDiagonal;
        bool bRefused;
    } aCases[] = {
        {"planar square", Point3(1, 1, 0), Point3(1, -1, 0), false, false},
        {"the new diagonal exists", Point3(1, 1, 0), Point3(1, -1, 0.5), true, true},
        {"planar, a corner of 172 degrees instead of 119", Point3(-0.5, 0.9, 0), Point3(0.6, -0.8, 0), false,
         true},
        {"planar, a corner of 156 degrees instead of 103", Point3(-0.2, 0.9, 0), Point3(0.6, -0.8, 0), false,
         true},
        {"bent, a corner of 142 degrees instead of 103", Point3(-0.2, 0.9, 0), Point3(0.6, -0.8, 0.4), false,
         false},
        {"planar, a corner of 120 degrees", Point3(0.5, 0.9, 0), Point3(0.4, -0.8, 0), false, false},
        {"flat pair to a fold", Point3(3, 1, 0), Point3(4, -0.01, 0), false, true},
        {"corners on one place", Point3(1, 1, 0), Point3(1, 1, 0), false, false},
    };
    for (const auto& c : aCases)
    {
        SCOPED_TRACE(c.name);
        QuadMesh quad(Point3(2, 0, 0), c.pa, c.pb);
        if (c.bDiagonal)
            quad.add(quad.a, quad.b, quad.cellAt(4, 4, 4, Point3(1, 0, 5)));
        EdgeEnergy ee(&quad.mesh, quad.pCE);
        EXPECT_EQ(ee.getImprovement() == LOWEST_DBL, c.bRefused) << ee.getImprovement();
        EXPECT_NE(*quad.pCE->vCT[0]->getVtx(&quad.mesh, 2), *quad.pCE->vCT[1]->getVtx(&quad.mesh, 2));
    }
    QuadMesh planar(Point3(2, 0, 0), Point3(1, 1, 0), Point3(1, -1, 0));
    const EdgeEnergy ee(&planar.mesh, planar.pCE);
    EXPECT_LT(ee.getImprovement(), 0.01);
    const Point3 p0(0, 0, 0), p1(2, 0, 0), flat(1, 0.01, 0);
    EXPECT_LT(ee.getMinCosPhi(&p0, &flat, &p1), -0.99);
    EXPECT_THROW((void)ee.getMinCosPhi(&p0, &p0, &p1), ZefBugException);
    EdgeEnergy border(&planar.mesh, planar.pCE->vCT[0]->getCEdge(0));
    EXPECT_EQ(border.getImprovement(), LOWEST_DBL);
}

} // namespace TARN_ZEF

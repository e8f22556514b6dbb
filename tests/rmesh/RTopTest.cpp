#include "rmesh/RTop.h"

#include "geometry/tools.h"
#include "helpers/finishedMeshes.h"
#include "helpers/meshShapes.h"

#include <gtest/gtest.h>

#include <cmath>

namespace TARN_ZEF
{
namespace
{
std::size_t countCaps(const RMesh& mesh)
{
    const std::vector<Point3> v = getCorners(mesh);
    std::size_t num = 0;
    for (std::size_t i = 0; i < v.size(); i += 3)
    {
        double smallest = 0.0;
        double largest = 0.0;
        getCornerAngles(v[i], v[i + 1], v[i + 2], smallest, largest);
        num += largest > 170.0 ? 1 : 0;
    }
    return num;
}

// A stretched plane whose odd rows have slid by half a cell: every second diagonal is the long one.
RMeshSource planeWithCaps(int n)
{
    RMeshSource source = planeSource(n);
    for (Point3& p : source.vPoints)
        p = Point3(12.0 * p.x() + (std::fmod(p.y(), 2.0) > 0.5 ? 6.0 : 0.0), p.y(), 0.0);
    return jittered(source, 0.02, 51);
}
} // namespace

TEST(RTop, capsAreFlippedAway)
{
    RMesh mesh(planeWithCaps(12));
    const Topology before(mesh);
    const std::size_t numBefore = countCaps(mesh);
    EXPECT_GT(RTop(&mesh).flipExtremeCaps(), 0);
    EXPECT_LT(countCaps(mesh), numBefore);
    expectSound(mesh, before);
}

TEST(RTop, aFlipIsRefusedForEachReason)
{
    RMesh mesh(planeSource(2)); // vertices 0 1 2 / 3 4 5 / 6 7 8, diagonals from lower left to upper right
    std::vector<Point3*> v;
    mesh.getPoints(v);
    const RTop top(&mesh);
    EXPECT_TRUE(top.canFlip(v[0], v[4], v[1], v[3], 10.0));
    EXPECT_FALSE(top.canFlip(v[4], v[0], v[1], v[3], 10.0)) << "ends out of order";
    EXPECT_FALSE(top.canFlip(v[0], v[1], v[4], v[3], 10.0)) << "degree 1";
    EXPECT_FALSE(top.canFlip(v[0], v[8], v[1], v[3], 10.0)) << "no edge";
    EXPECT_FALSE(top.canFlip(v[0], v[4], v[1], v[5], 10.0)) << "the new diagonal exists";
    EXPECT_FALSE(top.canFlip(v[0], v[4], v[1], v[1], 10.0)) << "equal vertices";
    EXPECT_FALSE(top.canFlip(v[0], v[4], v[6], v[3], 10.0)) << "flat";
    v[4]->set(1.0, 1.0, 1.0);
    EXPECT_FALSE(top.canFlip(v[0], v[4], v[1], v[3], 10.0)) << "bends too far";
}

TEST(RTop, edgesThatBendAreThoseOfTheCube)
{
    const int n = 5;
    RMesh mesh(cubeSource(n, false));
    std::vector<REdge*> vRE;
    RTop(&mesh).getEdgesForOptimization(80.0, vRE);
    EXPECT_EQ(vRE.size(), static_cast<std::size_t>(12 * n));
    vRE.clear();
    RTop(&mesh).getEdgesForOptimization(100.0, vRE);
    EXPECT_TRUE(vRE.empty());
}

TEST(RTop, collapsesAreSoundOrLeaveTheMeshAlone)
{
    for (const bool bMid : {false, true})
    {
        SCOPED_TRACE(bMid);
        RMesh mesh(jittered(cubeSource(8, true), 0.1, 52));
        const Topology before(mesh);
        RTop top(&mesh);
        const double maxSqLen = 2.0;
        std::multimap<double, REdge*> mmPrioq;
        std::size_t numDone = 0;
        std::size_t numRefused = 0;
        const std::vector<REdge*> vRE = mesh.getAllRE();
        for (const REdge* pRE : vRE)
        {
            if (!pRE->isAlive())
                continue;
            const Point3& a = *pRE->getVtx0();
            const Point3& b = *pRE->getVtx1();
            const Point3 mid(0.5 * (a.x() + b.x()), 0.5 * (a.y() + b.y()), 0.5 * (a.z() + b.z()));
            const std::vector<Point3> vCorners = getCorners(mesh);
            const bool bDone =
                bMid ? top.tryCollapseMid(pRE, mid, maxSqLen, 25.0, mmPrioq)
                     : top.tryCollapseEnd(pRE, static_cast<int>(numDone % 2), maxSqLen, 25.0, mmPrioq);
            (bDone ? numDone : numRefused) += 1;
            EXPECT_EQ(getCorners(mesh) == vCorners, !bDone);
        }
        EXPECT_GT(numDone, 20u);
        EXPECT_GT(numRefused, 20u);
        expectSound(mesh, before);
        EXPECT_EQ(getEulerNumber(mesh), 2);
        for (const auto& [sqLength, pRE] : mmPrioq)
            EXPECT_LT(sqLength, maxSqLen);
    }
}

TEST(RTop, membersRunTheSameLoops)
{
    const RMeshSource source = jittered(cubeSource(8, true), 0.2, 53);
    const PreparedTree tree;
    RMesh mesh(source);
    const Topology before(mesh);
    RTop top(&mesh);
    const double energy = getEnergySum(mesh);
    top.optimizeAnnealed();
    EXPECT_LT(getEnergySum(mesh), energy);
    expectSound(mesh, before);
    const double area = mesh.getArea();
    top.laplacianSmoothing(2);
    EXPECT_LT(mesh.getArea(), area);
    expectSound(mesh, before);
}

} // namespace TARN_ZEF

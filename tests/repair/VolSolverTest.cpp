#include "repair/VolSolver.h"

#include "helpers/PipelineMesh.h"
#include "helpers/SheetMesh.h"
#include "helpers/StreamCapture.h"
#include "helpers/checkMesh.h"

#include <gtest/gtest.h>

#include <cmath>

namespace TARN_ZEF
{
namespace
{
// A closed cube and a box on it; the face between carries the given numbers of triangle pairs, with the one
// diagonal or the other.
struct BumpedCube : SheetMesh
{
    BumpedCube(int numA, int numB)
    {
        addCube(6, [](int side, int u, int v) { return side == 5 && u == 2 && v == 2; });
        for (int i = 0; i < 4; ++i)
            addSquare(base(i), base(i + 1), top(i + 1), top(i));
        addSquare(top(0), top(1), top(2), top(3));
        for (int i = 0; i < numA; ++i)
            addSquare(base(0), base(1), base(2), base(3));
        for (int i = 0; i < numB; ++i)
            addSquare(base(1), base(2), base(3), base(0));
    }
    u64 base(int i) { return cell(10 + (i % 4 == 1 || i % 4 == 2), 10 + (i % 4 >= 2), 14); }
    u64 top(int i) { return cell(10 + (i % 4 == 1 || i % 4 == 2), 10 + (i % 4 >= 2), 15); }
};

} // namespace

TEST(VolSolver, weakPatchesDieWhereTheyShareAllEdges)
{
    struct Case
    {
        const char* name;
        int numA, numB;
        std::size_t numDead;
    };
    for (const Case& c : {Case{"no face", 0, 0, 0}, Case{"one face", 1, 0, 0}, Case{"two faces", 1, 1, 4}})
    {
        SCOPED_TRACE(c.name);
        BumpedCube cube(c.numA, c.numB);
        const std::size_t numT = cube.mesh.getNumAliveT();
        const StreamCapture capture;
        VolSolver solver(&cube.mesh, &cube.calc);
        solver.presolveBubbles();
        expectConsistent(cube.mesh);
        EXPECT_EQ(cube.mesh.getNumAliveT(), numT - c.numDead);
        EXPECT_EQ(solver.getKilled().size() * 2, c.numDead);
        for (const VolSolver::Victim& victim : solver.getKilled())
            EXPECT_EQ(victim.vAdjPatches.size(), 3u) << "cube, box and the other face";
        EXPECT_TRUE(solver.getIndivBorders().empty()) << "cube and box share what borders they have";
        solver.integrateDanglingAndKill();
        EXPECT_EQ(capture.contains("Uh, degree is 2"), c.numDead != 0) << "cube and box have met";
        EXPECT_EQ(solver.getDeg3CE().size(), c.numA == 1 && c.numB == 0 ? 4u : 0u);
        EXPECT_EQ(cube.mesh.getNumAliveT(), numT - c.numDead) << "nothing dangles";
    }
}

TEST(VolSolver, danglingTrianglesDieWhereTheStrongPatchIsGone)
{
    BumpedCube cube(1, 0);
    const StreamCapture capture;
    VolSolver solver(&cube.mesh, &cube.calc);
    solver.presolveBubbles();
    std::vector<CTriangle*> vIncT;
    cube.mesh.getIncT(cube.base(1), vIncT);
    for (CTriangle* pCT : vIncT)
        if (solver.getStrongPatches().count(pCT->getPatch()) != 0)
            pCT->kill(&cube.mesh);
    const std::size_t numT = cube.mesh.getNumAliveT();
    solver.integrateDanglingAndKill();
    expectConsistent(cube.mesh);
    EXPECT_EQ(cube.mesh.getNumAliveT(), numT - 1) << "the half of the face at that corner";
}

TEST(VolSolver, strongPatchesSurviveOnWhatThePipelineMakes)
{
    for (const NamedCloud& cloud : getClouds())
    {
        SCOPED_TRACE(cloud.name);
        const StreamCapture capture;
        PipelineMesh pm(cloud.vPoints, false);
        const std::size_t numT = pm.mesh().getNumAliveT();
        const std::size_t numPatches = cutOriented(pm.mesh()).size();
        VolSolver solver(&pm.mesh(), pm.pCalc);
        solver.presolveBubbles();
        expectConsistent(pm.mesh());
        EXPECT_EQ(solver.getPatches().size(), numPatches);
        std::size_t numLeft = 0;
        for (CPatch* pPatch : solver.getPatches())
        {
            numLeft += pPatch->getSize();
            const bool bStrong = solver.getStrongPatches().count(pPatch) != 0;
            EXPECT_TRUE(pPatch->isAlive() || !bStrong);
        }
        EXPECT_EQ(numLeft, pm.mesh().getNumAliveT()) << "patches die as a whole";
        EXPECT_EQ(solver.getKilled().empty(), numLeft == numT);
        solver.integrateDanglingAndKill();
        expectConsistent(pm.mesh());
        EXPECT_EQ(pm.mesh().getNumAliveT(), numLeft) << "a strong patch stands at its own border";
    }
}

TEST(VolSolver, takesTheNearerEdgeThatLeadsToAStrongPatch)
{
    BumpedCube cube(1, 0);
    const StreamCapture capture;
    VolSolver solver(&cube.mesh, &cube.calc);
    solver.presolveBubbles();
    // From one half of the face over its diagonal: both further edges of the other half lead to cube and box.
    const CEdge* pDiagonal = cube.mesh.getCE(cube.base(0), cube.base(2));
    CTriangle* pHalf = pDiagonal->vCT[0];
    const int ici = pHalf->getICI(pDiagonal->v0, pDiagonal->v1);
    const u64 far = pDiagonal->vCT[1]->getThirdCCD(pDiagonal->v0, pDiagonal->v1);
    double dist = -1.0;
    for (const int k : {0, 2})
        EXPECT_EQ(solver.adaptCE(cube.base(k), pHalf, ici, dist), cube.mesh.getCE(cube.base(k), far));
    EXPECT_EQ(dist, 0.0);
    static_cast<void>(solver.adaptCE(cube.cell(14, 14, 14), pHalf, ici, dist));
    EXPECT_NEAR(dist, std::sqrt(18.0), 1e-12) << "to the segment, not to its line";
    CEdge* pOwnCE = cube.mesh.getCE(cube.base(0), pHalf->getCorner(ici));
    EXPECT_EQ(solver.adaptCE(far, pHalf, pHalf->getICI(pOwnCE->v0, pOwnCE->v1), dist), pOwnCE) << "degree 3";
}

} // namespace TARN_ZEF

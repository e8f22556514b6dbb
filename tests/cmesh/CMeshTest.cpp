#include "cmesh/CMesh.h"

#include "helpers/LatticeMesh.h"
#include "helpers/checkMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace TARN_ZEF
{
namespace
{
// Of the edges, those of a degree as getDegN() takes it, and of the triangles those at a corner; in order.
void expectQueriesRight(const CMesh& mesh, const std::vector<u64>& vCells)
{
    std::vector<CEdge*> vAllCE;
    mesh.getAllCE(vAllCE);
    for (const int deg : {1, 2, 3, -1, -5, -99})
    {
        std::vector<CEdge*> vCE, vExpected;
        mesh.getDegN(deg, vCE);
        std::copy_if(vAllCE.begin(), vAllCE.end(), std::back_inserter(vExpected),
                     [deg](const CEdge* pCE)
                     {
                         const int degree = pCE->getDegree();
                         return deg == -1    ? degree > 2
                                : deg == -5  ? degree == 1 || degree >= 3
                                : deg == -99 ? degree > 0
                                             : degree == deg;
                     });
        EXPECT_EQ(vCE, vExpected) << "degree " << deg;
    }
    std::vector<CTriangle*> vAlive;
    mesh.getAliveT(vAlive);
    EXPECT_EQ(vAlive.size(), mesh.getNumAliveT());
    for (const u64 ccd : vCells)
    {
        std::vector<CTriangle*> vIncT, vExpected;
        mesh.getIncT(ccd, vIncT);
        std::copy_if(vAlive.begin(), vAlive.end(), std::back_inserter(vExpected),
                     [ccd](const CTriangle* pCT) { return pCT->hasCorner(ccd); });
        EXPECT_EQ(vIncT, vExpected);
    }
}
} // namespace

TEST(CMesh, randomEditsKeepAllLinks)
{
    std::mt19937 rng(5);
    for (int run = 0; run < 20; ++run)
    {
        SCOPED_TRACE(run);
        LatticeMesh lm;
        std::vector<CTriangle*> vAlive;
        std::vector<u64> vCells;
        for (int i = 0; i < 27; ++i)
            vCells.push_back(lm.cell(20 + i % 3, 20 + i / 3 % 3, 20 + i / 9));
        std::vector<u64> vPrepared(vCells.begin(), vCells.begin() + 14);
        std::sort(vPrepared.begin(), vPrepared.end());
        if (run % 2 == 0) // the other half makes its corners one by one
            lm.mesh.prepareCorners(vPrepared);
        for (int step = 0; step < 200; ++step)
        {
            if (vAlive.empty() || rng() % 3 != 0)
            {
                const u64 a = vCells[rng() % 27], b = vCells[rng() % 27], c = vCells[rng() % 27];
                if (a != b && b != c && a != c)
                    vAlive.push_back(lm.mesh.createT(a, b, c, 0, 0));
            }
            else
            {
                std::swap(vAlive[rng() % vAlive.size()], vAlive.back());
                vAlive.back()->kill(&lm.mesh);
                vAlive.pop_back();
            }
            if (!vAlive.empty() && rng() % 4 == 0)
                vAlive[rng() % vAlive.size()]->flipOrientation();
        }
        expectConsistent(lm.mesh);
        EXPECT_EQ(lm.mesh.getNumAliveT(), vAlive.size());
        expectQueriesRight(lm.mesh, vCells);
    }
}

TEST(CMesh, clearAllLeavesBundlesAndTakesNewTriangles)
{
    LatticeMesh lm;
    const u64 a = lm.cell(10, 10, 10), b = lm.cell(11, 10, 10), c = lm.cell(10, 11, 10);
    const u64 extra = lm.calc.getCCD(Point3(30.5, 30.5, 30.5));
    lm.mesh.createT(a, b, c, 0, 0);
    lm.mesh.addBundle(extra);
    lm.mesh.addBundle(extra);
    EXPECT_EQ(lm.mesh.getExtraBundles().size(), 1u) << "a cell that has a bundle is left alone";
    lm.mesh.clearAll();
    expectConsistent(lm.mesh);
    EXPECT_EQ(lm.mesh.getCE(a, b), nullptr);
    EXPECT_EQ(*lm.mesh.getVtx(extra), lm.calc.getMid(extra));
    lm.mesh.createT(c, b, extra, 0, 0);
    expectConsistent(lm.mesh);
    EXPECT_TRUE(lm.mesh.isExtraVtx(lm.mesh.getVtx(extra)));
}

TEST(CMesh, orphanEdgeIsFoundButCountsAsAbsent)
{
    LatticeMesh lm;
    const u64 a = lm.cell(10, 10, 10), b = lm.cell(11, 10, 10), c = lm.cell(10, 11, 10);
    CTriangle* pCT = lm.mesh.createT(a, b, c, 7, 23);
    CEdge* pCE = lm.mesh.getCE(b, a);
    EXPECT_TRUE(lm.mesh.hasEdge(a, b));
    pCT->kill(&lm.mesh);
    EXPECT_FALSE(lm.mesh.hasEdge(a, b));
    EXPECT_EQ(lm.mesh.getCE(a, b), pCE);
    std::vector<u64> vUsed;
    lm.mesh.getUsedCCDs(vUsed);
    EXPECT_TRUE(vUsed.empty());
    // The dead triangle stays readable.
    EXPECT_TRUE(pCT->getC0() == a && pCT->getC1() == b && pCT->getC2() == c);
    EXPECT_EQ(pCT->getGeneratingVCD(), 7u);
    EXPECT_THROW(pCT->kill(&lm.mesh), ZefBugException);
    EXPECT_THROW(lm.mesh.createT(a, a, c, 0, 0), ZefBugException);
    EXPECT_THROW(static_cast<void>(lm.mesh.hasEdge(a, a)), ZefBugException);
    EXPECT_THROW(static_cast<void>(lm.mesh.getVtx(lm.calc.getCCD(Point3(40, 40, 40)))), ZefBugException);
}

// Two triangles on the edge ab, with one fault planted: each check finds what it is for, and nothing else.
TEST(CMesh, selfChecksFindThePlantedFault)
{
    struct Row
    {
        const char* name;
        int xOfThird; // of the second triangle; 10 is the corner of the first
        double y;     // where that corner stands; the one of the first stands at 11.5
        bool bNoDups, bNoAdjGeomDups, bNoDegenerate;
    };
    const Row rows[] = {
        {"clean", 11, 8.5, true, true, true},
        {"folded on a triangle of another shape", 11, 12.5, true, true, true},
        {"other corner on the same place", 11, 11.5, true, false, true},
        {"same corners, so the same place too", 10, 11.5, false, false, true},
        {"no area: it stands on a", 11, 10.5, true, true, false},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        LatticeMesh lm;
        const u64 a = lm.cell(10, 10, 10), b = lm.cell(11, 10, 10), c = lm.cell(10, 11, 10);
        const u64 d = lm.cell(row.xOfThird, 11, 10);
        lm.mesh.createT(a, b, c, 0, 0);
        lm.mesh.createT(b, a, d, 0, 0);
        lm.mesh.getVtx(d)->set(10.5, row.y, 10.5);
        EXPECT_EQ(lm.mesh.checkNoDups("test"), row.bNoDups);
        EXPECT_EQ(lm.mesh.checkNoAdjGeomDups("test"), row.bNoAdjGeomDups);
        EXPECT_EQ(lm.mesh.checkNoDegenerate("test"), row.bNoDegenerate);
    }
}

TEST(CTriangle, devAngleTellsDegenerateFromTurned)
{
    LatticeMesh lm;
    const u64 a = lm.cell(10, 10, 10), b = lm.cell(11, 10, 10), c = lm.cell(10, 11, 10);
    CTriangle* pCT = lm.mesh.createT(a, b, c, 0, 0);
    const Point3 pB = lm.mesh.getAvgPoint(b);
    EXPECT_NEAR(pCT->getDevAngle(&lm.mesh, 2, pB + Vector3(-1.0, 0.0, 1.0)), 90.0, 1e-6);
    EXPECT_EQ(pCT->getDevAngle(&lm.mesh, 2, pB), 360.0) << "the moved triangle is degenerate";
    const Point3 proper = lm.mesh.getAvgPoint(c);
    *lm.mesh.getVtx(c) = pB;
    EXPECT_TRUE(pCT->isDegenerate(&lm.mesh));
    EXPECT_EQ(pCT->getDevAngle(&lm.mesh, 2, proper), -1.0) << "only the present one is";
}

} // namespace TARN_ZEF

#include "CMesh.h"

#include "helpers/LatticeMesh.h"
#include "helpers/checkMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <map>
#include <random>

namespace TARN_ZEF
{
namespace
{
using Corners = std::array<u64, 3>;

Corners cornersOf(const CTriangle* pCT)
{
    return {pCT->getC0(), pCT->getC1(), pCT->getC2()};
}

// The mesh's answers recomputed from nothing but the list of alive triangles.
struct NaiveMesh
{
    std::map<std::pair<u64, u64>, int> mDegree; // every pair that ever had a triangle
    std::vector<const CTriangle*> vAlive;       // in order of creation

    void add(const CTriangle* pCT)
    {
        vAlive.push_back(pCT);
        count(pCT, 1);
    }
    void remove(const CTriangle* pCT)
    {
        vAlive.erase(std::find(vAlive.begin(), vAlive.end(), pCT));
        count(pCT, -1);
    }
    void count(const CTriangle* pCT, int by)
    {
        const Corners c = cornersOf(pCT);
        for (int i = 0; i < 3; ++i)
            mDegree[std::minmax(c[static_cast<std::size_t>(i)], c[static_cast<std::size_t>((i + 1) % 3)])] +=
                by;
    }
};

void expectSameAnswers(const CMesh& mesh, const NaiveMesh& naive, const std::vector<u64>& vCells)
{
    std::vector<CTriangle*> vAlive;
    mesh.getAliveT(vAlive);
    EXPECT_TRUE(std::equal(vAlive.begin(), vAlive.end(), naive.vAlive.begin(), naive.vAlive.end()));
    for (const int deg : {1, 2, 3, -1, -5, -99})
    {
        std::vector<CEdge*> vCE;
        mesh.getDegN(deg, vCE);
        std::vector<std::pair<u64, u64>> vExpected;
        for (const auto& [ends, degree] : naive.mDegree)
        {
            const bool bFits = deg == -1    ? degree > 2
                               : deg == -5  ? degree == 1 || degree >= 3
                               : deg == -99 ? degree > 0
                                            : degree == deg;
            if (bFits)
                vExpected.push_back(ends);
        }
        ASSERT_EQ(vCE.size(), vExpected.size()) << "degree " << deg;
        for (std::size_t i = 0; i < vCE.size(); ++i)
            EXPECT_EQ(std::make_pair(vCE[i]->v0, vCE[i]->v1), vExpected[i]) << "degree " << deg;
    }
    for (const u64 ccd : vCells)
    {
        std::vector<CTriangle*> vIncT;
        mesh.getIncT(ccd, vIncT);
        std::vector<const CTriangle*> vExpected;
        std::copy_if(naive.vAlive.begin(), naive.vAlive.end(), std::back_inserter(vExpected),
                     [ccd](const CTriangle* pCT) { return pCT->hasCorner(ccd); });
        EXPECT_TRUE(std::equal(vIncT.begin(), vIncT.end(), vExpected.begin(), vExpected.end()));
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
        NaiveMesh naive;
        std::vector<u64> vCells;
        for (int i = 0; i < 27; ++i)
            vCells.push_back(lm.cell(20 + i % 3, 20 + i / 3 % 3, 20 + i / 9));
        std::vector<u64> vPrepared(vCells.begin(), vCells.begin() + 14);
        std::sort(vPrepared.begin(), vPrepared.end());
        if (run % 2 == 0) // the other half makes its corners one by one
            lm.mesh.prepareCorners(vPrepared);
        for (int step = 0; step < 200; ++step)
        {
            if (naive.vAlive.empty() || rng() % 3 != 0)
            {
                const u64 a = vCells[rng() % 27], b = vCells[rng() % 27], c = vCells[rng() % 27];
                if (a != b && b != c && a != c)
                    naive.add(lm.mesh.createT(a, b, c, 0, 0));
            }
            else
            {
                CTriangle* pCT = const_cast<CTriangle*>(naive.vAlive[rng() % naive.vAlive.size()]);
                naive.remove(pCT);
                pCT->kill(&lm.mesh);
            }
            if (!naive.vAlive.empty() && rng() % 4 == 0)
                const_cast<CTriangle*>(naive.vAlive[rng() % naive.vAlive.size()])->flipOrientation();
        }
        expectConsistent(lm.mesh);
        expectSameAnswers(lm.mesh, naive, vCells);
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
    EXPECT_EQ(cornersOf(pCT), (Corners{a, b, c}));
    EXPECT_EQ(pCT->getGeneratingVCD(), 7u);
    EXPECT_THROW(pCT->kill(&lm.mesh), ZefBugException);
    EXPECT_THROW(lm.mesh.createT(a, a, c, 0, 0), ZefBugException);
    EXPECT_THROW(static_cast<void>(lm.mesh.hasEdge(a, a)), ZefBugException);
    EXPECT_THROW(static_cast<void>(lm.mesh.getVtx(lm.calc.getCCD(Point3(40, 40, 40)))), ZefBugException);
}

TEST(CTriangle, cornerArithmeticHasItsQuirks)
{
    LatticeMesh lm;
    const u64 c0 = lm.cell(10, 10, 10), c1 = lm.cell(11, 10, 10), c2 = lm.cell(10, 11, 10);
    CTriangle* pCT = lm.mesh.createT(c0, c1, c2, 0, 0);
    struct Row
    {
        u64 ccd, a, b;
    };
    for (const Row& row : {Row{c0, c1, c2}, Row{c1, c0, c2} /* against the cycle */, Row{c2, c1, c0}})
    {
        u64 a = 0, b = 0;
        pCT->getOtherCCDs(row.ccd, a, b);
        EXPECT_EQ(a, row.a);
        EXPECT_EQ(b, row.b);
    }
    CTriangle* pNeigT = lm.mesh.createT(c1, c2, lm.cell(11, 11, 10), 0, 0); // runs c1 to c2 as well
    EXPECT_TRUE(pCT->needFlip(pNeigT));
    pNeigT->flipOrientation();
    EXPECT_FALSE(pCT->needFlip(pNeigT));
    EXPECT_FALSE(pNeigT->needFlip(pCT));
    expectConsistent(lm.mesh);
    EXPECT_EQ(lm.mesh.getCE(c1, c2)->getNeigT(pCT), pNeigT);

    Vector3 coarse;
    pCT->getCoarseNormal(coarse);
    EXPECT_EQ(coarse.z(), 1.0);
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

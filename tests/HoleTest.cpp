#include "HoleFiller.h"
#include "HoleToCCD.h"

#include "Chain.h"
#include "ChainMgr.h"
#include "Loop.h"
#include "VcdEdgeMap.h"
#include "helpers/SheetMesh.h"
#include "helpers/StreamCapture.h"
#include "helpers/checkMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <set>
#include <tuple>

namespace TARN_ZEF
{
namespace
{
using Corners = std::multiset<std::tuple<u64, u64, u64>>;

Corners getCorners(const CMesh& mesh)
{
    std::vector<CTriangle*> vT;
    mesh.getAliveT(vT);
    Corners corners;
    for (const CTriangle* pCT : vT)
    {
        u64 c[3] = {pCT->getC0(), pCT->getC1(), pCT->getC2()};
        std::sort(c, c + 3);
        corners.emplace(c[0], c[1], c[2]);
    }
    return corners;
}
} // namespace

TEST(HoleToCCD, fillsSmallHolesOfASheet)
{
    struct Case
    {
        const char* name;
        bool (*isHole)(int x, int y);
        std::size_t numFillT;
        std::size_t numOpen; // border edges left, of 88 around the sheet
        double openArea;
    };
    const Case cases[] = {
        {"no hole", [](int, int) { return false; }, 0, 88, 0},
        {"30 edges", [](int x, int y) { return x >= 5 && x < 12 && y >= 5 && y < 13; }, 28, 88, 0},
        {"50 edges", [](int x, int y) { return x >= 4 && x < 16 && y >= 4 && y < 17; }, 48, 88, 0},
        {"52 edges", [](int x, int y) { return x >= 4 && x < 17 && y >= 4 && y < 17; }, 0, 140, 169},
        {"two in a corner", [](int x, int y) { return (x == 4 && y == 4) || (x == 5 && y == 5); }, 4, 88, 0},
        {"three in a row", [](int x, int y) { return x == y && x > 3 && x < 7; }, 6, 88, 0},
        {"hole at the rim", [](int x, int y) { return x == 0 && y == 5; }, 0, 90, 1}, // a notch, no hole
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.name);
        SheetMesh m;
        m.addSheet(22, c.isHole);
        HoleToCCD holes(&m.mesh, &m.calc);
        std::vector<Point3> vPixels;
        EXPECT_FALSE(holes.run(vPixels));

        expectConsistent(m.mesh);
        EXPECT_EQ(holes.getFillT().size(), c.numFillT);
        EXPECT_EQ(m.getBorders().size(), c.numOpen);
        EXPECT_TRUE(m.isManifold());
        EXPECT_TRUE(m.orient());
        EXPECT_NEAR(m.mesh.getArea() + c.openArea, 22.0 * 22.0, 1e-9);
    }
}

// 50 edges of a rectangle and one more where a triangle of the sheet is missing.
TEST(HoleToCCD, leavesFiftyOneEdgesOpen)
{
    SheetMesh m;
    m.addSheet(22, [](int x, int y) { return x >= 4 && x < 16 && y >= 4 && y < 17; });
    std::vector<CTriangle*> vAt;
    m.mesh.getIncT(m.cell(8, 4, 8), vAt);
    for (CTriangle* pCT : vAt)
        if (pCT->hasCorner(m.cell(9, 4, 8)))
            pCT->kill(&m.mesh);
    ASSERT_EQ(m.getBorders().size(), 88u + 51u);
    const Corners before = getCorners(m.mesh);
    HoleToCCD holes(&m.mesh, &m.calc);
    holes.fillAll();
    EXPECT_EQ(getCorners(m.mesh), before);
    expectConsistent(m.mesh);
}

TEST(HoleToCCD, closesAllHolesOfACube)
{
    SheetMesh m;
    m.addCube(12, [](int side, int u, int v) { return u % 4 == side % 3 + 1 && v % 3 == 1; });
    ASSERT_FALSE(m.getBorders().empty());
    HoleToCCD holes(&m.mesh, &m.calc);
    holes.fillAll();
    EXPECT_TRUE(m.getBorders().empty());
    EXPECT_TRUE(m.isManifold());
    EXPECT_TRUE(m.orient());
    EXPECT_NEAR(m.mesh.getArea(), 6 * 12 * 12, 1e-9);
    expectConsistent(m.mesh);

    // A second pass over the closed mesh finds nothing.
    HoleToCCD again(&m.mesh, &m.calc);
    again.fillAll();
    EXPECT_TRUE(again.getFillT().empty());
}

TEST(HoleToCCD, untwistsARingAndLeavesItsRimsAlone)
{
    SheetMesh m;
    m.addRing(16, true);
    HoleToCCD holes(&m.mesh, &m.calc);
    holes.fillAll();
    expectConsistent(m.mesh);
    EXPECT_TRUE(m.orient());
    EXPECT_TRUE(m.isManifold());
}

TEST(HoleToCCD, worksOnACopyOfTheSurroundings)
{
    SheetMesh m;
    m.addSheet(22, [](int x, int y) { return x >= 5 && x < 8 && y == 5; });
    const Corners before = getCorners(m.mesh);
    const ChainMgr mgr(&m.mesh, VcdEdgeMap(m.getBorders()), true);
    HoleToCCD holes(&m.mesh, &m.calc);
    for (std::size_t i = 0; i < mgr.getNumChains(); ++i)
    {
        const Chain* pChain = mgr.getChain(i);
        if (pChain->size() != 8)
            continue;
        std::vector<CEdge*> vBorderCE;
        const auto pBorderMesh = holes.createBorderMesh(pChain, vBorderCE);
        ASSERT_NE(pBorderMesh, nullptr);
        ASSERT_EQ(vBorderCE.size(), 8u);
        for (std::size_t e = 0; e < vBorderCE.size(); ++e)
        {
            EXPECT_EQ(vBorderCE[e]->v0, pChain->getEdges()[e]->v0);
            EXPECT_EQ(vBorderCE[e]->v1, pChain->getEdges()[e]->v1);
            EXPECT_EQ(vBorderCE[e]->getDegree(), 1);
        }
        // Eight corners with 28 triangles around, whatever the size of the sheet.
        EXPECT_LT(pBorderMesh->mesh.getNumAliveT(), 40u);
        const auto pLoop = HoleToCCD::createLoop(&pBorderMesh->mesh, vBorderCE);
        EXPECT_TRUE(pLoop->solve());
        EXPECT_EQ(pLoop->getNumNewT(), 6u);
        expectConsistent(pBorderMesh->mesh);
    }
    EXPECT_EQ(getCorners(m.mesh), before);
    expectConsistent(m.mesh);
}

TEST(HoleFiller, fillsHolesOfAnySize)
{
    SheetMesh m;
    m.addCube(
        20, [](int side, int u, int v)
        { return (side == 5 && u >= 2 && u < 16 && v >= 3 && v < 17) || (side == 0 && u == 4 && v == 4); });
    HoleFiller filler(&m.mesh);
    filler.run();
    EXPECT_TRUE(m.getBorders().empty());
    EXPECT_TRUE(m.isManifold());
    EXPECT_TRUE(m.isOriented());
    expectConsistent(m.mesh);
}

// Two holes that touch in a corner become one ring; the bridge takes the place of two border edges.
TEST(HoleFiller, bridgesPinchedCorners)
{
    SheetMesh m;
    m.addCube(12, [](int side, int u, int v) { return side == 5 && (u == v) && (u == 4 || u == 5); });
    ASSERT_EQ(m.getBorders().size(), 8u);
    const std::size_t numT = m.mesh.getNumAliveT();
    VcdEdgeMap mmVCD2CE(m.getBorders());
    std::vector<u64> vPinched;
    mmVCD2CE.getJunctions(vPinched);
    ASSERT_EQ(vPinched.size(), 1u);

    HoleFiller probe(&m.mesh);
    probe.solveMultiVCD(vPinched[0], mmVCD2CE);
    EXPECT_EQ(m.mesh.getNumAliveT(), numT + 1);
    EXPECT_EQ(mmVCD2CE.count(vPinched[0]), 2u);
    std::vector<CEdge*> vLeft;
    mmVCD2CE.getAllEdges(vLeft);
    EXPECT_EQ(std::set<CEdge*>(vLeft.begin(), vLeft.end()).size(), m.getBorders().size());
    for (const CEdge* pCE : vLeft)
        EXPECT_EQ(pCE->getDegree(), 1);

    HoleFiller(&m.mesh).run();
    EXPECT_TRUE(m.getBorders().empty());
    EXPECT_TRUE(m.isManifold());
    EXPECT_TRUE(m.isOriented());
    expectConsistent(m.mesh);
}

// Any pattern of holes, pinched corners included: the filler ends, and what it leaves is sound.
TEST(HoleFiller, endsOnRandomPatterns)
{
    for (unsigned int pattern = 1; pattern < 60; ++pattern)
    {
        SCOPED_TRACE(pattern);
        SheetMesh m;
        m.addCube(6, [pattern](int side, int u, int v)
                  { return ((side * 36 + u * 6 + v + 7) * pattern * 2654435761u >> 28) % 5 == 0; });
        {
            const StreamCapture warnings(std::cout); // of corners with more than two fans
            HoleFiller(&m.mesh).run();
        }
        expectConsistent(m.mesh);
    }
}

} // namespace TARN_ZEF

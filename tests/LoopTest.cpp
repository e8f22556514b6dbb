#include "Loop.h"

#include "Chain.h"
#include "ChainMgr.h"
#include "VcdEdgeMap.h"
#include "ZefBugException.h"
#include "helpers/SheetMesh.h"
#include "helpers/checkMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace TARN_ZEF
{
namespace
{
// The one border of the mesh with this many edges.
std::vector<CEdge*> getBorder(SheetMesh& m, std::size_t numEdges)
{
    const ChainMgr mgr(&m.mesh, VcdEdgeMap(m.getBorders()), false);
    for (std::size_t i = 0; i < mgr.getNumChains(); ++i)
        if (mgr.getChain(i)->size() == numEdges)
            return mgr.getChain(i)->getEdges();
    ADD_FAILURE() << "no border of " << numEdges << " edges";
    return {};
}

struct HoleCase
{
    const char* name;
    bool (*isHole)(int x, int y);
    std::size_t numEdges;
};

const HoleCase HOLES[] = {
    {"one square", [](int x, int y) { return x == 5 && y == 5; }, 4},
    {"slit", [](int x, int y) { return x == 5 && y >= 3 && y < 15; }, 26},
    {"rectangle", [](int x, int y) { return x >= 4 && x < 11 && y >= 4 && y < 12; }, 30},
    {"disc", [](int x, int y) { return (x - 8) * (x - 8) + (y - 8) * (y - 8) < 17; }, 36},
    {"L", [](int x, int y) { return x >= 3 && y >= 3 && x < 11 && y < 11 && (x < 5 || y < 5); }, 32},
    {"U", [](int x, int y) { return x >= 3 && x < 12 && y >= 3 && y < 10 && (x < 5 || y < 5 || x > 9); }, 42},
};
} // namespace

TEST(Loop, fillsFlatHolesWhateverTheOrientationBefore)
{
    std::mt19937 rng(2);
    for (const HoleCase& c : HOLES)
        for (int round = 0; round < 3; ++round)
        {
            SCOPED_TRACE(c.name);
            SheetMesh m;
            m.addSheet(18, c.isHole);
            const double sheetArea = m.mesh.getArea();
            for (CTriangle* pCT : m.mesh.getAllT())
                if (round != 0 && rng() % 2 == 0)
                    pCT->flipOrientation();
            const std::vector<CEdge*> vRing = getBorder(m, c.numEdges);
            VcdEdgeMap mmVCD2CE(vRing);
            Loop loop(mmVCD2CE, &m.mesh);
            EXPECT_TRUE(mmVCD2CE.empty());
            ASSERT_TRUE(loop.isClosed());
            ASSERT_TRUE(loop.solve());

            expectConsistent(m.mesh);
            EXPECT_EQ(loop.getNumNewT(), c.numEdges - 2);
            EXPECT_TRUE(m.isManifold());
            EXPECT_TRUE(m.isOriented());
            std::vector<CEdge*> vOpen;
            loop.getBorderCE(vOpen);
            EXPECT_TRUE(vOpen.empty());
            // A flat filling that does not overlap itself covers exactly the hole.
            EXPECT_NEAR(m.mesh.getArea(), 18.0 * 18.0, 1e-9) << "the sheet alone has " << sheetArea;
        }
}

TEST(Loop, refusesTheOutside)
{
    SheetMesh sheet;
    sheet.addSheet(5, [](int x, int y) { return x == 2 && y == 2; });
    SheetMesh single;
    single.add(single.cell(0, 0, 0), single.cell(1, 0, 0), single.cell(0, 1, 0));
    const std::pair<SheetMesh*, std::size_t> cases[] = {{&sheet, 20}, {&single, 3}};
    for (const auto& [pMesh, numEdges] : cases)
    {
        SCOPED_TRACE(numEdges);
        const std::size_t numT = pMesh->mesh.getAllT().size();
        VcdEdgeMap mmVCD2CE(getBorder(*pMesh, numEdges));
        Loop loop(mmVCD2CE, &pMesh->mesh);
        EXPECT_FALSE(loop.solve());
        EXPECT_EQ(pMesh->mesh.getAllT().size(), numT);
    }
}

TEST(Loop, cutsOneEarOfThree)
{
    SheetMesh m;
    m.addSheet(5, [](int, int) { return false; });
    const u64 a = m.cell(2, 2, 8), b = m.cell(3, 2, 8), c = m.cell(3, 3, 8);
    std::vector<CTriangle*> vAt;
    m.mesh.getIncT(a, vAt);
    for (CTriangle* pCT : vAt)
        if (pCT->hasCorner(b) && pCT->hasCorner(c))
            pCT->kill(&m.mesh);
    VcdEdgeMap mmVCD2CE(getBorder(m, 3));
    Loop loop(mmVCD2CE, &m.mesh);
    EXPECT_TRUE(loop.solve());
    EXPECT_EQ(loop.getNumNewT(), 1u);
    EXPECT_TRUE(m.isOriented());
    EXPECT_EQ(m.getBorders().size(), 20u);
    expectConsistent(m.mesh);
}

TEST(Loop, leavesACollinearRingAlone)
{
    SheetMesh m;
    m.addSheet(5, [](int x, int y) { return x == 2 && y == 2; });
    for (int i = 0; i < 4; ++i)
        m.cellAt(2 + i % 2, 2 + i / 2, 8, Point3(2.0 + i, 2.5, 8.5));
    VcdEdgeMap mmVCD2CE(getBorder(m, 4));
    Loop loop(mmVCD2CE, &m.mesh);
    EXPECT_TRUE(loop.solve());
    EXPECT_EQ(loop.getNumNewT(), 0u);
    expectConsistent(m.mesh);
}

// The hole runs over an edge of the cube, so that corners across it wait for the others.
TEST(Loop, fillsAHoleAroundAFold)
{
    SheetMesh m;
    m.addCube(8,
              [](int side, int u, int v) {
                  return (side == 1 && u >= 2 && u < 5 && v >= 6) || (side == 5 && u >= 6 && v >= 2 && v < 5);
              });
    ASSERT_EQ(m.getBorders().size(), 14u);
    VcdEdgeMap mmVCD2CE(m.getBorders());
    Loop loop(mmVCD2CE, &m.mesh);
    ASSERT_TRUE(loop.solve());
    EXPECT_EQ(loop.getNumNewT(), 12u);
    EXPECT_TRUE(m.getBorders().empty());
    EXPECT_TRUE(m.isManifold());
    EXPECT_TRUE(m.isOriented());
    expectConsistent(m.mesh);
}

// One ring around two holes that touch visits their common corner twice: no ear may join it to itself.
TEST(Loop, takesARingThatTouchesItself)
{
    SheetMesh m;
    m.addSheet(8, [](int x, int y) { return (x == y) && (x == 2 || x == 3); });
    std::vector<CEdge*> vCE;
    for (CEdge* pCE : m.getBorders())
        if (m.calc.getMid(pCE->v0).x() > 1 && m.calc.getMid(pCE->v0).x() < 7)
            if (m.calc.getMid(pCE->v0).y() > 1 && m.calc.getMid(pCE->v0).y() < 7)
                vCE.push_back(pCE);
    ASSERT_EQ(vCE.size(), 8u);
    VcdEdgeMap mmVCD2CE(vCE);
    std::size_t numRings = 0;
    for (; !mmVCD2CE.empty(); ++numRings)
    {
        Loop loop(mmVCD2CE, &m.mesh);
        ASSERT_TRUE(loop.isClosed());
        EXPECT_TRUE(loop.solve());
        expectConsistent(m.mesh);
        EXPECT_TRUE(m.isManifold());
        EXPECT_TRUE(m.isOriented());
    }
    EXPECT_GE(numRings, 1u);
}

TEST(Loop, openRingMustNotBeSolved)
{
    SheetMesh m;
    m.addSheet(4, [](int, int) { return false; });
    std::vector<CEdge*> vCE = m.getBorders();
    vCE.pop_back();
    VcdEdgeMap mmVCD2CE(vCE);
    Loop loop(mmVCD2CE, &m.mesh);
    EXPECT_FALSE(loop.isClosed());
    EXPECT_THROW((void)loop.solve(), ZefBugException);
}

// Rough surfaces: whatever the ring looks like, what was cut is consistent, and a refusal leaves nothing.
TEST(Loop, keepsTheMeshSoundOnRoughHoles)
{
    std::mt19937 rng(17);
    std::uniform_real_distribution<double> jitter(-0.6, 0.6);
    for (int round = 0; round < 60; ++round)
    {
        SCOPED_TRACE(round);
        const HoleCase& c = HOLES[round % std::size(HOLES)];
        SheetMesh m;
        m.addSheet(18, c.isHole);
        for (int x = 0; x <= 18; ++x)
            for (int y = 0; y <= 18; ++y)
                m.cellAt(x, y, 8, Point3(x + jitter(rng) / 2, y + jitter(rng) / 2, 8 + jitter(rng)));
        const std::size_t numT = m.mesh.getNumAliveT();
        VcdEdgeMap mmVCD2CE(getBorder(m, c.numEdges));
        Loop loop(mmVCD2CE, &m.mesh);
        const bool bStays = loop.solve();
        expectConsistent(m.mesh);
        EXPECT_EQ(m.mesh.getNumAliveT(), bStays ? numT + loop.getNumNewT() : numT);
        EXPECT_TRUE(m.isOriented());
    }
}

} // namespace TARN_ZEF

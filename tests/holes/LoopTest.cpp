#include "holes/Loop.h"

#include "helpers/SheetMesh.h"
#include "helpers/checkMesh.h"
#include "holes/Chain.h"
#include "holes/ChainMgr.h"
#include "holes/VcdEdgeMap.h"

#include <gtest/gtest.h>

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
            EXPECT_NEAR(m.mesh.getArea(), 18.0 * 18.0, 1e-9);
        }
}

TEST(Loop, ofEqualAnglesTheFirstOnTheRingIsCut)
{
    SheetMesh m;
    m.addSheet(8, HOLES[0].isHole);
    VcdEdgeMap mmVCD2CE(getBorder(m, HOLES[0].numEdges));
    const u64 first = mmVCD2CE.getFirstVCD();
    Loop loop(mmVCD2CE, &m.mesh);
    ASSERT_TRUE(loop.solve());
    std::vector<CTriangle*> vNewT;
    loop.getNewT(vNewT);
    ASSERT_EQ(vNewT.size(), 2u);
    EXPECT_TRUE(vNewT[0]->hasCorner(first));
    EXPECT_FALSE(vNewT[1]->hasCorner(first));
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

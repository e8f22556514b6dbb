#include "holes/HoleFiller.h"
#include "holes/HoleToCCD.h"

#include "helpers/SheetMesh.h"
#include "helpers/StreamCapture.h"
#include "helpers/checkMesh.h"

#include <gtest/gtest.h>

namespace TARN_ZEF
{
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
            const StreamCapture warnings; // of corners with more than two fans
            HoleFiller(&m.mesh).run();
        }
        expectConsistent(m.mesh);
    }
}

} // namespace TARN_ZEF

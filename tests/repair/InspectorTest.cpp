#include "repair/Inspector.h"

#include "helpers/PipelineMesh.h"
#include "helpers/SheetMesh.h"
#include "helpers/StreamCapture.h"
#include "helpers/checkMesh.h"

#include <gtest/gtest.h>

namespace TARN_ZEF
{
namespace
{
// A strip of squares along x, one wide: triangles 2i and 2i + 1 share square i.
struct Strip : SheetMesh
{
    explicit Strip(int num)
    {
        for (int x = 0; x < num; ++x)
            addSquare(cell(x, 8, 8), cell(x + 1, 8, 8), cell(x + 1, 9, 8), cell(x, 9, 8));
        vPatches = cutOriented(mesh);
    }
    [[nodiscard]] CPatch* patch() const { return vPatches.front(); }
    [[nodiscard]] CTriangle* t(std::size_t i) const { return mesh.getAllT()[i]; }

    std::vector<CPatch*> vPatches;
};

std::size_t countAliveIn(const SheetMesh& sm, std::size_t begin, std::size_t end)
{
    std::size_t num = 0;
    for (std::size_t i = begin; i < end; ++i)
        num += sm.mesh.getAllT()[i]->isAlive() ? 1 : 0;
    return num;
}
} // namespace

TEST(Inspector, knownBorderStopsTheFlood)
{
    Strip strip(10);
    for (std::size_t i = 0; i < 20; i += 2)
        strip.t(i)->flipOrientation();
    const CTriangle* pStop = strip.t(8); // beside square 5
    CPatch other(&strip.mesh, &strip.calc);
    const StreamCapture capture;
    {
        Inspector inspector(&strip.mesh, strip.vPatches);
        inspector.keepGoodPartForKnownBorder(strip.patch(), strip.t(2),
                                             {pStop->getC0(), pStop->getC1(), pStop->getC2()});
        EXPECT_TRUE(capture.contains("split: REMOVING 10 triangles from pTestPatch"));
        EXPECT_EQ(strip.patch()->getSize(), 10u);
        EXPECT_EQ(strip.mesh.getNumAliveT(), 20u) << "they live as long as the inspector";
        for (std::size_t i = 0; i < 20; ++i)
            EXPECT_EQ(strip.patch()->isMember(strip.t(i)), i < 10) << i;
        other.addT(strip.t(15));
    }
    expectConsistent(strip.mesh);
    EXPECT_EQ(countAliveIn(strip, 0, 10), 10u);
    EXPECT_EQ(countAliveIn(strip, 10, 20), 1u) << "the one that another patch has taken up";
    EXPECT_TRUE(strip.isOriented());
}

TEST(Inspector, splitRemovesTheDisagreeingPartElseTheSmallerOne)
{
    struct Case
    {
        const char* name;
        int wall;          // between these squares runs the border
        int fin;           // square on which a triangle stands that disagrees, -1: none
        std::size_t begin; // of the triangles that stay
        std::size_t end;
    };
    for (const Case& c :
         {Case{"tie", 3, -1, 6, 20}, Case{"tie, other side", 8, -1, 0, 16},
          Case{"larger part disagrees", 3, 6, 0, 6}, Case{"smaller part disagrees", 3, 1, 6, 20}})
        for (const bool bSwap : {false, true})
        {
            SCOPED_TRACE(c.name);
            Strip strip(10);
            const u64 a = strip.cell(c.wall, 8, 8), b = strip.cell(c.wall, 9, 8);
            const std::multimap<u64, u64> mm = {{bSwap ? a : b, bSwap ? b : a}};
            if (c.fin >= 0) // beside the strip, along its lower edge, and the same way
                strip.add(strip.cell(c.fin, 8, 8), strip.cell(c.fin + 1, 8, 8), strip.cell(c.fin, 7, 8));
            const StreamCapture capture;
            {
                Inspector inspector(&strip.mesh, strip.vPatches);
                CTriangle* pSeedA = strip.t(bSwap ? 19 : 0);
                CTriangle* pSeedB = strip.t(bSwap ? 0 : 19);
                inspector.splitFromT(mm, strip.patch(), pSeedA, pSeedB);
                EXPECT_EQ(inspector.getGroupA().size() + inspector.getGroupB().size(), 20u);
            }
            expectConsistent(strip.mesh);
            EXPECT_EQ(countAliveIn(strip, c.begin, c.end), c.end - c.begin);
            EXPECT_EQ(countAliveIn(strip, 0, 20), c.end - c.begin);
            EXPECT_EQ(strip.patch()->getSize(), c.end - c.begin);
        }
}

} // namespace TARN_ZEF

#include "occupancy/RemoveDecider.h"

#include "lattice/CellIndex.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <set>

using namespace TARN_ZEF;

namespace
{
// Cells around one in the middle of a small lattice, by their index in the block of 27.
class RemoveDeciderTest : public ::testing::Test
{
protected:
    RemoveDeciderTest() { calc.completeArray27(centre, block); }

    const Calc calc{0.0, 0.0, 0.0, 16.0, 16.0, 16.0, 4};
    const CCD centre = calc.getCCD(Point3(7.5, 7.5, 7.5));
    CCD block[27];
};

// The decision by its definition, on a plain bit mask.
bool decide(u64 mask)
{
    const auto has = [mask](int i) { return (mask >> i & 1) != 0; };
    const auto offset = [](int i, int axis) { return i / (axis == 0 ? 1 : axis == 1 ? 3 : 9) % 3 - 1; };
    if (mask == (u64{1} << 27) - 1)
        return false;
    int freeFaces = 6;
    for (const int i : {22, 5, 14, 16, 12, 10})
        freeFaces -= has(i) ? 1 : 0;
    if (freeFaces < 3)
        return false;
    for (int i = 0; i < 27; ++i)
    {
        std::vector<int> vFaces; // the faces between the cell and an edge neighbour
        for (int axis = 0; axis < 3; ++axis)
            if (offset(i, axis) != 0)
                vFaces.push_back(13 + offset(i, axis) * (axis == 0 ? 1 : axis == 1 ? 3 : 9));
        if (vFaces.size() == 2 && has(i) && !has(vFaces[0]) && !has(vFaces[1]))
            return false;
    }
    const bool open[3] = {!has(12) && !has(14), !has(10) && !has(16), !has(4) && !has(22)};
    const bool full[3] = {has(12) && has(14), has(10) && has(16), has(4) && has(22)};
    for (int axis = 0; axis < 3; ++axis)
        if (open[axis] && full[(axis + 1) % 3] && full[(axis + 2) % 3])
            return false;
    return true;
}
} // namespace

TEST_F(RemoveDeciderTest, agreesWithTheDefinitionOnRandomBlocks)
{
    std::mt19937_64 random(11);
    for (int n = 0; n < 4000; ++n)
    {
        u64 mask = random() & ((u64{1} << 27) - 1);
        if (n % 2 == 0)
            mask &= random();
        mask |= u64{1} << 13;
        u64 doomed = n % 3 == 0 ? random() & random() & ~(u64{1} << 13) : 0;
        std::vector<CCD> vCells;
        for (int i = 0; i < 27; ++i)
            if (mask >> i & 1)
                vCells.push_back(block[i]);
        std::sort(vCells.begin(), vCells.end());
        const CellIndex index(vCells);
        RemoveDecider byVector(&vCells, &calc);
        RemoveDecider byIndex(&index, &calc);
        for (int i = 0; i < 27; ++i)
        {
            if ((doomed >> i & 1) == 0)
                continue;
            byVector.addDoomed(block[i]);
            byIndex.addDoomed(block[i]);
        }
        ASSERT_EQ(byVector.canRemove(centre), decide(mask & ~doomed));
        ASSERT_EQ(byIndex.canRemove(centre), decide(mask & ~doomed));
    }
}

TEST(CellSetTest, agreesWithAnOrderedSet)
{
    std::mt19937_64 random(12);
    CellSet cells;
    std::set<u64> expected;
    for (int i = 0; i < 20000; ++i)
    {
        // Codes near each other, far out ones, and the one that marks a free slot.
        const u64 code = i % 5 == 0 ? random() : i % 1000 == 7 ? ~u64{0} : random() % 8000;
        ASSERT_EQ(cells.contains(code), expected.count(code) != 0);
        ASSERT_EQ(cells.insert(code), expected.insert(code).second);
        ASSERT_EQ(cells.size(), expected.size());
    }
}

#include "lattice/CellIndex.h"
#include "core/zefRand.h"
#include "lattice/Calc.h"
#include "lattice/CubeWalk.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <vector>

namespace TARN_ZEF
{
namespace
{
struct CellCase
{
    const char* name;
    u64 low, size; // indices of the cells: low .. low + size - 1 on each axis
    int numCells;
    bool bRimsOnly; // indices just beside the bounds of blocks
};

const CellCase CASES[] = {
    {"one cell", 100, 1, 1, false},         {"sparse", 1, 2000, 3000, false},
    {"dense", 20, 12, 1500, false},         {"full block", 64, 8, 5000, false},
    {"rims of blocks", 8, 400, 3000, true}, {"lower rim of the lattice", 0, 10, 600, false},
};

std::vector<CCD> makeCells(const Calc& calc, const CellCase& c)
{
    ZefRandom random(7);
    const auto draw = [&]
    {
        const u64 index = c.low + static_cast<u64>(random.next() << 15 | random.next()) % c.size;
        return c.bRimsOnly ? (index & ~u64{7}) + (random.next() % 2 == 0 ? 0 : 7) : index;
    };
    std::vector<CCD> v;
    for (int i = 0; i < c.numCells; ++i)
    {
        CCD ccd = calc.numberToSparse(draw(), AXTRIBIT_X);
        ccd |= calc.numberToSparse(draw(), AXTRIBIT_Y);
        v.push_back(ccd | calc.numberToSparse(draw(), AXTRIBIT_Z));
    }
    std::sort(v.begin(), v.end());
    v.erase(std::unique(v.begin(), v.end()), v.end());
    return v;
}

const Calc LATTICE(0.0, 0.0, 0.0, 4096.0, 4096.0, 4096.0, 12);
} // namespace

TEST(CellIndex, RankIsThePlaceInTheSortedVector)
{
    for (const CellCase& c : CASES)
    {
        SCOPED_TRACE(c.name);
        const std::vector<CCD> vCells = makeCells(LATTICE, c);
        const CellIndex index(vCells);
        ASSERT_EQ(index.size(), vCells.size());
        for (const CCD cell : vCells)
            for (const CCD ccd : {cell, cell + 1, cell - 1, cell ^ 0x1FF, cell + 512, cell ^ (u64{1} << 35)})
            {
                const auto it = std::lower_bound(vCells.begin(), vCells.end(), ccd);
                const bool bThere = it != vCells.end() && *it == ccd;
                ASSERT_EQ(index.contains(ccd), bThere);
                ASSERT_EQ(index.rank(ccd),
                          bThere ? static_cast<std::uint32_t>(it - vCells.begin()) : CellIndex::ABSENT);
            }
    }
    EXPECT_FALSE(CellIndex({}).contains(5));
    EXPECT_THROW(CellIndex({3, 3}), ZefBugException);
}

// Judge: each cell enters the eight cubes that it belongs to, at the corner where it stands in the cube.
TEST(CubeWalk, VisitsAllCubesInOrderWithTheirMembers)
{
    for (const CellCase& c : CASES)
    {
        SCOPED_TRACE(c.name);
        const std::vector<CCD> vCells = makeCells(LATTICE, c);
        std::map<CCD, std::map<int, std::uint32_t>> mCubeToMembers;
        for (std::size_t rank = 0; rank < vCells.size(); ++rank)
        {
            // The bases in the order of steps up from the cell; the corner is the cell as seen from the base.
            CCD bases[8] = {vCells[rank]};
            LATTICE.completeArray8Up(bases);
            constexpr int corners[8] = {5, 4, 7, 6, 1, 0, 3, 2};
            for (int i = 0; i < 8; ++i)
                mCubeToMembers[bases[i]][corners[i]] = static_cast<std::uint32_t>(rank);
        }
        const CellIndex index(vCells);
        CubeWalk walk(index);
        auto itExpected = mCubeToMembers.begin();
        walk.walk(
            [&](const CubeWalk::Cube& cube)
            {
                ASSERT_NE(itExpected, mCubeToMembers.end());
                ASSERT_EQ(cube.getBase(), itExpected->first);
                int cfg = 0;
                for (const auto& [corner, rank] : itExpected->second)
                {
                    cfg |= 1 << corner;
                    ASSERT_EQ(cube.getRank(corner), rank);
                }
                ASSERT_EQ(cube.getCfg(), cfg);
                ++itExpected;
            });
        EXPECT_EQ(itExpected, mCubeToMembers.end());
    }
}

TEST(CubeWalk, PartsAddUpToTheWhole)
{
    const std::vector<CCD> vCells = makeCells(LATTICE, CASES[1]);
    const CellIndex index(vCells);
    const CubeWalk model(index);
    CubeWalk whole(model);
    std::vector<CCD> vExpected;
    whole.walk([&](const CubeWalk::Cube& cube) { vExpected.push_back(cube.getBase()); });
    std::vector<CCD> vFound;
    for (std::size_t from = 0; from < whole.getNumBlocks(); from += 7)
        CubeWalk(model).walk(from, std::min(from + 7, whole.getNumBlocks()),
                             [&](const CubeWalk::Cube& cube) { vFound.push_back(cube.getBase()); });
    EXPECT_EQ(vFound, vExpected);
}

} // namespace TARN_ZEF

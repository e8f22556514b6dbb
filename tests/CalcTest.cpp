#include "Calc.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <set>

using namespace TARN_ZEF;

namespace
{
// A lattice with unit cells at the origin.
Calc makeUnitCalc(int numLevels)
{
    const double len = static_cast<double>(u64{1} << numLevels);
    return Calc(0.0, 0.0, 0.0, len, len, len, numLevels);
}

CCD makeCCD(const Calc& calc, u64 x, u64 y, u64 z)
{
    return calc.numberToSparse(x, 4) | calc.numberToSparse(y, 2) | calc.numberToSparse(z, 1);
}

struct Cell
{
    u64 x, y, z;
    bool operator==(const Cell& other) const { return x == other.x && y == other.y && z == other.z; }
};

Cell getCell(const Calc& calc, CCD ccd)
{
    Cell cell{};
    calc.getXYZ(ccd, cell.x, cell.y, cell.z);
    return cell;
}

// The definitions of the operations, bit by bit.
u64 rippleStep(u64 sparse, u64 axTriBit, int numLevels, bool bIncrease)
{
    for (int i = 0; i < numLevels; ++i)
    {
        const u64 m = axTriBit << (3 * i);
        const bool bSet = (sparse & m) != 0;
        sparse ^= m;
        if (bSet != bIncrease)
            return sparse;
    }
    throw std::out_of_range("all bits");
}

CCD interleaveByNibbles(u64 x, u64 y, u64 z)
{
    u64 table[16] = {};
    for (u64 i = 0; i < 16; ++i)
        for (int k = 0; k < 4; ++k)
            table[i] |= (i >> k & 1) << (3 * k);
    CCD result = 0;
    for (int step = 0; step < 6 && (x | y | z) != 0; ++step)
    {
        result += (table[x & 15] * 4 | table[y & 15] * 2 | table[z & 15]) << (12 * step);
        x >>= 4;
        y >>= 4;
        z >>= 4;
    }
    return result;
}

// A random code that stays off the lattice's rim.
CCD makeInnerCCD(const Calc& calc, std::mt19937_64& random)
{
    std::uniform_int_distribution<u64> index(1, calc.getNumCells() - 2);
    const u64 x = index(random);
    const u64 y = index(random);
    return makeCCD(calc, x, y, index(random));
}
} // namespace

TEST(CalcCodes, spreadAndCompactAreInverse)
{
    std::mt19937_64 random(1);
    for (int i = 0; i < 1000; ++i)
    {
        const u64 number = random() >> (i % 64);
        u64 spread = 0;
        for (int bit = 0; bit < MAXLEVELS; ++bit)
            spread |= (number >> bit & 1) << (3 * bit);
        ASSERT_EQ(spreadBits3(number), spread);
        ASSERT_EQ(compactBits3(spread | ~SPARSE_Z), number & 0x1FFFFF);
    }
    EXPECT_EQ(getMask(0), 0x4924924924924924u);
    EXPECT_EQ(getMask(1), 0x2492492492492492u);
    EXPECT_EQ(getMask(2), 0x1249249249249249u);
    EXPECT_THROW((void)getMask(3), ZefBugException);
}

TEST(CalcCodes, packedAndInterleavedCodesAgree)
{
    std::mt19937_64 random(2);
    std::uniform_real_distribution<double> coordinate(-50.0, 50.0);
    for (const int numLevels : {3, 10, 21})
    {
        const Calc calc(-50.0, -51.0, -52.0, 104.0, 104.0, 104.0, numLevels);
        for (int i = 0; i < 500; ++i)
        {
            const Point3 p(coordinate(random), coordinate(random), coordinate(random));
            const CCD ccd = calc.getCCD(p);
            ASSERT_EQ(calc.ccdToRCD(ccd), calc.getRCD(p));
            u64 x, y, z;
            splitRCD(calc.getRCD(p), x, y, z);
            ASSERT_EQ(interleaveByNibbles(x, y, z), ccd);
            ASSERT_EQ(makeCCD(calc, x, y, z), ccd);
            ASSERT_EQ(makeRCD(x, y, z), calc.getRCD(p));
            ASSERT_EQ(calc.getCCD(p, 0.5), calc.getCCD(Point3(p.x() + 0.5, p.y() + 0.5, p.z() + 0.5)));
        }
    }
}

TEST(CalcCodes, pointsOutsideHaveDefinedCells)
{
    struct Case
    {
        const char* name;
        double z;
        u64 index; // as an unlimited index along z
    };
    constexpr double inf = std::numeric_limits<double>::infinity();
    const Case cases[] = {
        {"just below the box", -0.5, 0},
        {"one cell below", -1.0, u64{1} << 63},
        {"far below", -1e300, u64{1} << 63},
        {"past the last cell", 4096.25, 4096},
        {"past 21 bits", 3.0e6, 3000000},
        {"past 24 bits", 2.0e7, 20000000},
        {"past 63 bits", 9223372036854775808.0 + 4096.0, (u64{1} << 63) + 4096},
        {"past 64 bits", 1e30, u64{1} << 63},
        {"infinite", inf, u64{1} << 63},
        {"not a number", std::nan(""), u64{1} << 63},
    };
    const Calc calc = makeUnitCalc(12);
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(calc.getCCD(Point3(3.5, 2.5, c.z)), interleaveByNibbles(3, 2, c.index));
        EXPECT_EQ(calc.getRCD(Point3(3.5, 2.5, c.z)), makeRCD(3, 2, c.index));
    }
}

TEST(CalcPoints, referenceIsTheRunningSumOverLevels)
{
    std::mt19937_64 random(3);
    std::uniform_real_distribution<double> real(-1000.0, 1000.0);
    for (int i = 0; i < 300; ++i)
    {
        const int numLevels = 1 + i % MAXLEVELS;
        const double len = 1.0 + std::fabs(real(random));
        const double low[3] = {real(random), i % 7 == 0 ? -0.0 : real(random), real(random)};
        const Calc calc(low[0], low[1], low[2], len, len, len, numLevels);
        const CCD ccd = random() & ~(u64{1} << 63);
        double sum[3] = {low[0], low[1], low[2]};
        double weight = calc.getCellSizeX();
        for (int level = 0; level < numLevels; ++level, weight *= 2.0)
            for (int axis = 0; axis < 3; ++axis)
                if (ccd >> (3 * level + 2 - axis) & 1)
                    sum[axis] += weight;
        const Point3 ref = calc.getRef(ccd);
        const double result[3] = {ref.x(), ref.y(), ref.z()};
        for (int axis = 0; axis < 3; ++axis)
            ASSERT_EQ(std::bit_cast<u64>(result[axis]), std::bit_cast<u64>(sum[axis]));
        const double half = 0.5 * calc.getCellSizeX();
        ASSERT_EQ(calc.getMid(ccd), Point3(ref.x() + half, ref.y() + half, ref.z() + half));
    }
}

TEST(CalcPoints, centresLieInTheirCells)
{
    std::mt19937_64 random(4);
    const Calc calc(-3.7, 11.3, 5e6, 102.4, 102.4, 102.4, 10);
    std::vector<CCD> vCCD;
    for (int i = 0; i < 500; ++i)
        vCCD.push_back(makeInnerCCD(calc, random));
    std::vector<Point3> vMids(1);
    calc.getMids(vCCD, vMids);
    std::vector<Point3> vRefs(1);
    calc.getRefs(vCCD, vRefs);
    ASSERT_EQ(vMids.size(), vCCD.size() + 1);
    ASSERT_EQ(vRefs.size(), vCCD.size() + 1);
    for (std::size_t i = 0; i < vCCD.size(); ++i)
    {
        const RCD rcd = calc.ccdToRCD(vCCD[i]);
        ASSERT_EQ(calc.getCCD(vMids[i + 1]), vCCD[i]);
        ASSERT_EQ(calc.getRCD(calc.getMidOfRCD(rcd)), rcd);
        ASSERT_NEAR((vMids[i + 1] - calc.getMidOfRCD(rcd)).length(), 0.0, 1e-8);
        ASSERT_NEAR((vRefs[i + 1] - calc.getRefOfRCD(rcd)).length(), 0.0, 1e-8);
    }
}

TEST(CalcStep, equalsTheRippleCarry)
{
    std::mt19937_64 random(5);
    for (int i = 0; i < 3000; ++i)
    {
        const int numLevels = 1 + i % MAXLEVELS;
        const Calc calc = makeUnitCalc(numLevels);
        const u64 axTriBit = u64{1} << (i % 3);
        // Long runs of equal bits make the carry run; bits of the other axes must stay.
        const u64 code = (i & 1 ? random() | random() : random() & random()) & ~(u64{1} << 63);
        for (const bool bIncrease : {true, false})
        {
            CCD moved = code;
            u64 expected = 0;
            try
            {
                expected = rippleStep(code, axTriBit, numLevels, bIncrease);
            }
            catch (const std::out_of_range&)
            {
                ASSERT_FALSE(calc.manipOneAxis(moved, bIncrease, axTriBit));
                ASSERT_EQ(moved, ~u64{0});
                ASSERT_THROW(
                    (void)(bIncrease ? calc.incSparse(code, axTriBit) : calc.decSparse(code, axTriBit)),
                    ZefBugException);
                continue;
            }
            ASSERT_EQ(bIncrease ? calc.incSparse(code, axTriBit) : calc.decSparse(code, axTriBit), expected);
            ASSERT_TRUE(calc.manipOneAxis(moved, bIncrease, axTriBit));
            ASSERT_EQ(moved, expected);
        }
    }
}

TEST(CalcStep, offsetsStopAtTheRim)
{
    struct Case
    {
        const char* name;
        u64 y;
        int offset;
        int result; // -1: refused
    };
    const Case cases[] = {
        {"stay", 5, 0, 5},          {"down to the first cell", 5, -5, 0}, {"below", 5, -6, -1},
        {"far below", 5, -100, -1}, {"up to the last cell", 5, 250, 255}, {"above", 5, 251, -1},
    };
    const Calc calc = makeUnitCalc(8);
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.name);
        const CCD ccd = makeCCD(calc, 77, c.y, 200);
        if (c.result < 0)
        {
            EXPECT_THROW((void)calc.getOffVal(ccd, c.offset, 2), ZefBugException);
        }
        else
        {
            EXPECT_EQ(calc.getOffVal(ccd, c.offset, 2), makeCCD(calc, 77, static_cast<u64>(c.result), 200));
        }
    }
}

TEST(CalcConstruction, levelsAreLimited)
{
    const Calc calc = makeUnitCalc(21);
    const CCD last = calc.getCCD(Point3(2097151.5, 2097151.5, 2097151.5));
    EXPECT_EQ(last, (u64{1} << 63) - 1);
    EXPECT_THROW(makeUnitCalc(22), ZefBugException);
    EXPECT_THROW((void)calc.numberToSparse(1, 8), ZefBugException);
    EXPECT_THROW((void)calc.sparseToNumber(1, 8), ZefBugException);
    // Bits beyond the lattice's levels are dropped in both directions.
    const Calc small = makeUnitCalc(4);
    EXPECT_EQ(small.sparseToNumber(small.numberToSparse(0x7F, 4), 4), 0xFu);
    EXPECT_EQ(small.sparseToNumber(calc.numberToSparse(0x7F, 2), 2), 0xFu);
}

TEST(CalcNeighbours, cubesFollowTheirTables)
{
    constexpr int kUp[3][8] = {{0, 1, 1, 0, 0, 1, 1, 0}, {0, 0, 0, 0, 1, 1, 1, 1}, {0, 0, 1, 1, 0, 0, 1, 1}};
    constexpr int kDown[3][8] = {
        {-1, 0, 0, -1, -1, 0, 0, -1}, {-1, -1, -1, -1, 0, 0, 0, 0}, {0, 0, -1, -1, 0, 0, -1, -1}};
    std::mt19937_64 random(6);
    const Calc calc = makeUnitCalc(9);
    for (int n = 0; n < 100; ++n)
    {
        const CCD base = makeInnerCCD(calc, random);
        const Cell cell = getCell(calc, base);
        CCD up[8] = {base};
        calc.completeArray8Up(up);
        CCD down[8] = {};
        down[5] = base;
        calc.completeArray8Down(down);
        for (std::size_t i = 0; i < 8; ++i)
        {
            const auto shifted = [&](const int(&offsets)[3][8])
            {
                return Cell{cell.x + static_cast<u64>(offsets[0][i]),
                            cell.y + static_cast<u64>(offsets[1][i]),
                            cell.z + static_cast<u64>(offsets[2][i])};
            };
            ASSERT_EQ(getCell(calc, up[i]), shifted(kUp));
            ASSERT_EQ(getCell(calc, down[i]), shifted(kDown));
        }
    }
}

TEST(CalcNeighbours, blocksHaveTheirOrder)
{
    std::mt19937_64 random(7);
    const Calc calc = makeUnitCalc(9);
    const CCD base = makeInnerCCD(calc, random);
    const Cell cell = getCell(calc, base);
    CCD block[27];
    calc.completeArray27(base, block);
    RCD neighbours[26];
    calc.completeArray26_RCD(calc.ccdToRCD(base), neighbours);
    std::size_t numNeighbours = 0;
    for (u64 dx = 0; dx < 3; ++dx)
        for (u64 dy = 0; dy < 3; ++dy)
            for (u64 dz = 0; dz < 3; ++dz)
            {
                const Cell expected = {cell.x + dx - 1, cell.y + dy - 1, cell.z + dz - 1};
                EXPECT_EQ(getCell(calc, block[dz * 9 + dy * 3 + dx]), expected);
                if (dx != 1 || dy != 1 || dz != 1)
                {
                    EXPECT_EQ(neighbours[numNeighbours++], makeRCD(expected.x, expected.y, expected.z));
                }
            }
    EXPECT_THROW(calc.completeArray27(0, block), ZefBugException);
    EXPECT_THROW(calc.completeArray27(makeCCD(calc, 5, 511, 5), block), ZefBugException);
    EXPECT_THROW(calc.completeArray26_RCD(makeRCD(4, 0, 4), neighbours), ZefBugException);
}

TEST(CalcNeighbours, ringsWalkOnceAround)
{
    // The varying axes (a, b) by plane; the cell's index on all axes is 50.
    constexpr int kAxes[3][2] = {{1, 2}, {0, 2}, {1, 0}};
    constexpr int kRing[8][2] = {{-1, -1}, {0, -1}, {1, -1}, {1, 0}, {1, 1}, {0, 1}, {-1, 1}, {-1, 0}};
    const Calc calc = makeUnitCalc(7);
    CCD ring[8];
    for (int plane = 0; plane < 3; ++plane)
    {
        SCOPED_TRACE(plane);
        calc.getPlaneCCD8(makeCCD(calc, 50, 50, 50), plane, ring);
        for (int i = 0; i < 8; ++i)
        {
            u64 expected[3] = {50, 50, 50};
            expected[kAxes[plane][0]] += static_cast<u64>(kRing[i][0]);
            expected[kAxes[plane][1]] += static_cast<u64>(kRing[i][1]);
            EXPECT_EQ(ring[i], makeCCD(calc, expected[0], expected[1], expected[2]));
        }
    }
    EXPECT_THROW(calc.getPlaneCCD8(makeCCD(calc, 50, 50, 50), 3, ring), ZefBugException);
}

TEST(CalcCompare, axesThatDiffer)
{
    struct Case
    {
        const char* name;
        Cell other;
        NeigTyp type;
        int same;
        int different;
    };
    const Case cases[] = {
        {"x", {11, 20, 30}, NT_FACE, -1, 0},      {"y, far", {10, 90, 30}, NT_FACE, -1, 1},
        {"z", {10, 20, 29}, NT_FACE, -1, 2},      {"y and z", {10, 21, 31}, NT_EDGE, 0, -1},
        {"x and z", {9, 20, 31}, NT_EDGE, 1, -1}, {"x and y, far on y", {11, 1020, 30}, NT_EDGE, 2, -1},
        {"all", {9, 19, 31}, NT_CORNER, -1, -1},
    };
    const Calc calc = makeUnitCalc(11);
    const CCD base = makeCCD(calc, 10, 20, 30);
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.name);
        const CCD other = makeCCD(calc, c.other.x, c.other.y, c.other.z);
        EXPECT_EQ(calc.getNeigType(base, other), c.type);
        EXPECT_EQ(calc.getUniqueSameComponent(base, other), c.same);
        EXPECT_EQ(calc.getUniqueSameComponent(base, other, base), c.same);
        EXPECT_EQ(calc.getUniqueDifferentComponent(base, other), c.different);
    }
    EXPECT_EQ(calc.getUniqueSameComponent(base, makeCCD(calc, 11, 20, 30), makeCCD(calc, 10, 20, 31)), 1);
    EXPECT_THROW((void)calc.getNeigType(base, base), ZefBugException);
}

TEST(CalcCompare, smallTables)
{
    constexpr u64 kOrtho[3][3] = {{1, 4, 2}, {2, 4, 1}, {4, 2, 1}};
    u64 a = 0;
    u64 b = 0;
    for (const auto& [axis, first, second] : kOrtho)
    {
        Calc::getOrthoTribs(axis, a, b);
        EXPECT_EQ(a, first);
        EXPECT_EQ(b, second);
    }
    EXPECT_THROW(Calc::getOrthoTribs(3, a, b), ZefBugException);
    for (int val = 0; val < 256; ++val)
        ASSERT_EQ(Calc::getNumSet8(val), std::popcount(static_cast<unsigned>(val)));
    EXPECT_THROW((void)Calc::getNumSet8(256), ZefBugException);
}

#include "lattice/Calc.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>

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
        {"past the last cell", 4096.25, 4096},
        {"past 24 bits", 2.0e7, 20000000},
        {"past 63 bits", 9223372036854775808.0 + 4096.0, (u64{1} << 63) + 4096},
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
    ASSERT_EQ(vMids.size(), vCCD.size() + 1);
    for (std::size_t i = 0; i < vCCD.size(); ++i)
    {
        const RCD rcd = calc.ccdToRCD(vCCD[i]);
        ASSERT_EQ(calc.getCCD(vMids[i + 1]), vCCD[i]);
        ASSERT_EQ(calc.getRCD(calc.getMidOfRCD(rcd)), rcd);
        ASSERT_NEAR((vMids[i + 1] - calc.getMidOfRCD(rcd)).length(), 0.0, 1e-8);
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
                continue;
            }
            ASSERT_EQ(bIncrease ? calc.incSparse(code, axTriBit) : calc.decSparse(code, axTriBit), expected);
            ASSERT_TRUE(calc.manipOneAxis(moved, bIncrease, axTriBit));
            ASSERT_EQ(moved, expected);
        }
    }
}

TEST(CalcNeighbours, blocksHaveTheirOrder)
{
    std::mt19937_64 random(7);
    const Calc calc = makeUnitCalc(9);
    const CCD base = makeInnerCCD(calc, random);
    u64 x, y, z;
    calc.getXYZ(base, x, y, z);
    CCD block[27];
    calc.completeArray27(base, block);
    RCD neighbours[26];
    calc.completeArray26_RCD(calc.ccdToRCD(base), neighbours);
    for (u64 i = 0; i < 27; ++i) // z runs fastest
    {
        const u64 dx = i / 9, dy = i / 3 % 3, dz = i % 3;
        EXPECT_EQ(block[dz * 9 + dy * 3 + dx], makeCCD(calc, x + dx - 1, y + dy - 1, z + dz - 1));
        EXPECT_TRUE(i == 13 ||
                    neighbours[i - (i > 13 ? 1 : 0)] == makeRCD(x + dx - 1, y + dy - 1, z + dz - 1))
            << i;
    }
    constexpr int RING_AXES[3][2] = {{1, 2}, {0, 2}, {1, 0}};
    constexpr int RING[8][2] = {{-1, -1}, {0, -1}, {1, -1}, {1, 0}, {1, 1}, {0, 1}, {-1, 1}, {-1, 0}};
    for (int plane = 0; plane < 3; ++plane)
    {
        CCD ring[8];
        calc.getPlaneCCD8(base, plane, ring);
        for (int i = 0; i < 8; ++i)
        {
            u64 xyz[3] = {x, y, z};
            for (int k = 0; k < 2; ++k)
                xyz[RING_AXES[plane][k]] += static_cast<u64>(RING[i][k]);
            EXPECT_EQ(ring[i], makeCCD(calc, xyz[0], xyz[1], xyz[2])) << plane << ", " << i;
        }
    }
    EXPECT_THROW(calc.completeArray27(makeCCD(calc, 5, 511, 5), block), ZefBugException);
    EXPECT_THROW(calc.completeArray26_RCD(makeRCD(4, 0, 4), neighbours), ZefBugException);
}

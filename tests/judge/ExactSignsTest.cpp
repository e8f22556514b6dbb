// Signs of determinants against whole numbers of 128 bits, where rounding leaves nothing to go by.
#include "judge/ExactSigns.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace TARN_ZEF
{
namespace
{
__extension__ typedef __int128 Whole;
using WholePlace = std::array<std::int64_t, 3>;

Whole minorOf(const WholePlace& u, const WholePlace& v, std::size_t axis)
{
    const std::size_t i = (axis + 1) % 3;
    const std::size_t k = (axis + 2) % 3;
    return Whole{u[i]} * v[k] - Whole{u[k]} * v[i];
}

int signOf(Whole x)
{
    return x > 0 ? 1 : x < 0 ? -1 : 0;
}

WholePlace minus(const WholePlace& p, const WholePlace& q)
{
    return {p[0] - q[0], p[1] - q[1], p[2] - q[2]};
}

Place scaled(const WholePlace& p, int exponent)
{
    return {std::ldexp(static_cast<double>(p[0]), exponent), std::ldexp(static_cast<double>(p[1]), exponent),
            std::ldexp(static_cast<double>(p[2]), exponent)};
}

double largestOf(std::initializer_list<Place> places)
{
    double result = 0.0;
    for (const Place& p : places)
        for (const double x : p)
            result = std::max(result, std::fabs(x));
    return result;
}

// d and e lie in the plane and on the line of ab, or off by a few units.
struct NearMiss
{
    explicit NearMiss(std::mt19937_64& rng)
    {
        const auto random = [&rng](int bits) { return static_cast<std::int64_t>(rng() >> (64 - bits)); };
        for (std::size_t i = 0; i < 3; ++i)
            a[i] = random(34);
        const std::int64_t far = random(8);
        WholePlace u;
        WholePlace v;
        for (std::size_t i = 0; i < 3; ++i)
        {
            u[i] = random(26) - (1 << 25);
            v[i] = random(26) - (1 << 25);
            b[i] = a[i] + 3 * u[i];
            c[i] = a[i] + 7 * v[i];
            d[i] = a[i] + far * u[i] + random(8) % 2 * v[i];
            e[i] = a[i] - far * u[i];
        }
        const auto which = static_cast<std::size_t>(rng() % 3);
        d[which] += random(2) - 1;
        e[which] += random(2) - 1;
    }
    WholePlace a = {};
    WholePlace b = {};
    WholePlace c = {};
    WholePlace d = {};
    WholePlace e = {};
};
} // namespace

TEST(ExactSigns, agreeWithWholeNumbersAtEverySize)
{
    std::mt19937_64 rng(1);
    int numZero = 0;
    for (int n = 0; n < 20'000; ++n)
    {
        const NearMiss m(rng);
        // From where the least bit is the smallest double to where sums nearly overflow; by integers beyond the
        // range of expansions.
        const int exponents[] = {0, -34, -1074, -345, 320, 980};
        const int exponent = exponents[n % 6];
        const Place a = scaled(m.a, exponent);
        const Place b = scaled(m.b, exponent);
        const Place c = scaled(m.c, exponent);
        const Place d = scaled(m.d, exponent);
        const Place e = scaled(m.e, exponent);
        const ExactSigns signs(largestOf({a, b, c, d, e}));
        Whole side = 0;
        for (std::size_t axis = 0; axis < 3; ++axis)
            side += minorOf(minus(m.b, m.a), minus(m.c, m.a), axis) * minus(m.d, m.a)[axis];
        numZero += side == 0;
        ASSERT_EQ(signs.getSide(a, b, c, d), signOf(side)) << n;
        int firstAxis = -1;
        for (int axis = 2; axis >= 0; --axis)
        {
            const Whole turn = minorOf(minus(m.b, m.a), minus(m.e, m.a), static_cast<std::size_t>(axis));
            ASSERT_EQ(signs.getTurn(axis, a, b, e), signOf(turn)) << n;
            firstAxis = turn != 0 ? axis : firstAxis;
        }
        ASSERT_EQ(signs.findViewAxis(a, b, e), firstAxis) << n;
    }
    EXPECT_GT(numZero, 1000);
    EXPECT_LT(numZero, 19'000);
}

// Sides and turns as their comments tell them, where a wrong handedness would hide in pairs.
TEST(ExactSigns, positiveIsCounterClockwise)
{
    const ExactSigns signs(1.0);
    const Place o = {0, 0, 0};
    const Place x = {1, 0, 0};
    const Place y = {0, 1, 0};
    EXPECT_EQ(signs.getSide(o, x, y, {0, 0, 1}), 1);
    EXPECT_EQ(signs.getTurn(2, o, x, y), 1);
    EXPECT_EQ(signs.getTurn(0, o, y, {0, 0, 1}), 1);
}

// Numbers whose sizes lie too far apart for any sum of doubles.
TEST(ExactSigns, decideAcrossTheWholeRangeOfDoubles)
{
    const double least = std::numeric_limits<double>::denorm_min();
    const double most = std::numeric_limits<double>::max();
    const ExactSigns signs(most);
    const Place a = {-most, -most, 0};
    const Place b = {most, most, 0};
    const Place c = {-most, most, 1};
    EXPECT_EQ(signs.getSide(a, b, c, {0, 0, 0}), 0);
    EXPECT_EQ(signs.getSide(a, b, c, {0, 0, least}), 1);
    EXPECT_EQ(signs.getSide(a, b, c, {0, 0, -least}), -1);
    EXPECT_EQ(signs.getTurn(2, a, b, {0, least, 0}), 1);
    EXPECT_EQ(signs.getTurn(2, a, b, {least, least, 0}), 0);
}

} // namespace TARN_ZEF

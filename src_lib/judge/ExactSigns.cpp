#include "judge/ExactSigns.h"

#include "judge/Expansion.h"
#include "judge/WideInteger.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace TARN_ZEF
{
namespace
{
using Difference = Expansion<2>;

// In units of a relative rounding error, 2^-53: (7 + 56 * 2^-53) and (3 + 16 * 2^-53), rounded up.
constexpr double SIDE_BOUND = 8.0 * 0x1p-53;
constexpr double TURN_BOUND = 4.0 * 0x1p-53;

// Within these, products of three differences neither overflow nor have bits below the smallest double.
bool isInExpansionRange(const Place& p)
{
    return std::all_of(p.begin(), p.end(),
                       [](double x)
                       {
                           const double size = std::fabs(x);
                           return size == 0.0 || (size >= 0x1p-297 && size <= 0x1p338);
                       });
}

// Of the least bit of any coordinate.
int findUnit(std::initializer_list<const Place*> places)
{
    constexpr int smallest = -1074;
    int unit = std::numeric_limits<int>::max();
    for (const Place* p : places)
        for (const double x : *p)
            if (x != 0.0)
                unit = std::min(unit, std::max(std::ilogb(x) - 52, smallest));
    return unit;
}

template <typename Number>
using Vector = std::array<Number, 3>;

Vector<Difference> subtract(const Place& p, const Place& q)
{
    return {Difference::difference(p[0], q[0]), Difference::difference(p[1], q[1]),
            Difference::difference(p[2], q[2])};
}

Vector<WideInteger> subtract(const Place& p, const Place& q, int unit)
{
    Vector<WideInteger> result;
    for (std::size_t i = 0; i < 3; ++i)
        result[i] = WideInteger(p[i], unit) - WideInteger(q[i], unit);
    return result;
}

Expansion<16> makeMinor(const Vector<Difference>& u, const Vector<Difference>& v, std::size_t axis)
{
    const std::size_t i = (axis + 1) % 3;
    const std::size_t k = (axis + 2) % 3;
    Expansion<16> minor;
    minor.addProduct(u[i], v[k]);
    minor.addProduct(u[k], v[i], -1.0);
    return minor;
}

WideInteger makeMinor(const Vector<WideInteger>& u, const Vector<WideInteger>& v, std::size_t axis)
{
    const std::size_t i = (axis + 1) % 3;
    const std::size_t k = (axis + 2) % 3;
    return u[i] * v[k] - u[k] * v[i];
}

int sideByExpansion(const Place& a, const Place& b, const Place& c, const Place& d)
{
    const Vector<Difference> u = subtract(b, a);
    const Vector<Difference> v = subtract(c, a);
    const Vector<Difference> w = subtract(d, a);
    Expansion<192> sum;
    for (std::size_t axis = 0; axis < 3; ++axis)
        sum.addProduct(makeMinor(u, v, axis), w[axis]);
    return sum.getSign();
}

int sideByInteger(const Place& a, const Place& b, const Place& c, const Place& d)
{
    const int unit = findUnit({&a, &b, &c, &d});
    const Vector<WideInteger> u = subtract(b, a, unit);
    const Vector<WideInteger> v = subtract(c, a, unit);
    const Vector<WideInteger> w = subtract(d, a, unit);
    WideInteger sum;
    for (std::size_t axis = 0; axis < 3; ++axis)
        sum = sum + makeMinor(u, v, axis) * w[axis];
    return sum.getSign();
}

int turnByInteger(std::size_t axis, const Place& a, const Place& b, const Place& c)
{
    const int unit = findUnit({&a, &b, &c});
    return makeMinor(subtract(b, a, unit), subtract(c, a, unit), axis).getSign();
}

int signOf(double value, double bound)
{
    return value > bound ? 1 : value < -bound ? -1 : 0;
}

// The four points share a coordinate, so they lie in one plane.
bool areLevel(const Place& u, const Place& v, const Place& w)
{
    for (std::size_t i = 0; i < 3; ++i)
        if (u[i] == 0.0 && v[i] == 0.0 && w[i] == 0.0)
            return true;
    return false;
}

Place roundedDifference(const Place& p, const Place& q)
{
    return {p[0] - q[0], p[1] - q[1], p[2] - q[2]};
}
} // namespace

// Differences are up to 2^61, so a product that vanishes takes at most 2^-1074 times three of them.
ExactSigns::ExactSigns(double largest)
    : underflowBound(largest <= LARGEST_PLAIN ? 0x1p-880 : std::numeric_limits<double>::infinity())
{
}

int ExactSigns::getSide(const Place& a, const Place& b, const Place& c, const Place& d) const
{
    const Place u = roundedDifference(b, a);
    const Place v = roundedDifference(c, a);
    const Place w = roundedDifference(d, a);
    double sum = 0.0;
    double size = 0.0;
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        const double plus = u[(axis + 1) % 3] * v[(axis + 2) % 3];
        const double minus = u[(axis + 2) % 3] * v[(axis + 1) % 3];
        sum += (plus - minus) * w[axis];
        size += (std::fabs(plus) + std::fabs(minus)) * std::fabs(w[axis]);
    }
    const int sign = signOf(sum, SIDE_BOUND * size + underflowBound);
    if (sign != 0)
        return sign;
    if (areLevel(u, v, w))
        return 0;
    const bool bInRange =
        isInExpansionRange(a) && isInExpansionRange(b) && isInExpansionRange(c) && isInExpansionRange(d);
    return bInRange ? sideByExpansion(a, b, c, d) : sideByInteger(a, b, c, d);
}

int ExactSigns::getTurn(int axis, const Place& a, const Place& b, const Place& c) const
{
    const auto index = static_cast<std::size_t>(axis);
    const std::size_t i = (index + 1) % 3;
    const std::size_t k = (index + 2) % 3;
    const double plus = (b[i] - a[i]) * (c[k] - a[k]);
    const double minus = (b[k] - a[k]) * (c[i] - a[i]);
    const int sign = signOf(plus - minus, TURN_BOUND * (std::fabs(plus) + std::fabs(minus)) + underflowBound);
    if (sign != 0)
        return sign;
    if ((b[i] == a[i] || c[k] == a[k]) && (b[k] == a[k] || c[i] == a[i]))
        return 0;
    if (isInExpansionRange(a) && isInExpansionRange(b) && isInExpansionRange(c))
        return makeMinor(subtract(b, a), subtract(c, a), index).getSign();
    return turnByInteger(index, a, b, c);
}

int ExactSigns::findViewAxis(const Place& a, const Place& b, const Place& c) const
{
    for (int axis = 0; axis < 3; ++axis)
        if (getTurn(axis, a, b, c) != 0)
            return axis;
    return -1;
}

} // namespace TARN_ZEF

#include "judge/TrianglePair.h"

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
// Relative to the sum of the magnitudes that go in. Differences, products and sums below err by less than 16
// roundings of 2^-53 together.
constexpr double ROUNDING = 32.0 * 0x1p-53;

Place operator-(const Place& p, const Place& q)
{
    return {p[0] - q[0], p[1] - q[1], p[2] - q[2]};
}

Place operator+(const Place& p, const Place& q)
{
    return {p[0] + q[0], p[1] + q[1], p[2] + q[2]};
}

double dot(const Place& p, const Place& q)
{
    return p[0] * q[0] + p[1] * q[1] + p[2] * q[2];
}

double sumOfSizes(const Place& p)
{
    return std::fabs(p[0]) + std::fabs(p[1]) + std::fabs(p[2]);
}

bool areOnOneSide(int first, int second)
{
    return first == second && first != 0;
}

// Corners of two triangles, the common ones first and in the same order.
struct CornerOrder
{
    std::uint8_t numCommon = 0;
    std::array<std::uint8_t, 3> first = {};
    std::array<std::uint8_t, 3> second = {};
};

// Bit 3 * i + k of the index: corner i of the first triangle is corner k of the second. A table, as the branches of
// a search would be hard to foretell.
constexpr std::array<CornerOrder, 512> makeCornerOrders()
{
    std::array<CornerOrder, 512> result;
    for (std::size_t equal = 0; equal < result.size(); ++equal)
    {
        CornerOrder& order = result[equal];
        std::array<bool, 3> bFirst = {};
        std::array<bool, 3> bSecond = {};
        for (std::size_t bit = 0; bit < 9; ++bit)
            if ((equal >> bit & 1) != 0 && !bFirst[bit / 3] && !bSecond[bit % 3])
            {
                bFirst[bit / 3] = bSecond[bit % 3] = true;
                order.first[order.numCommon] = static_cast<std::uint8_t>(bit / 3);
                order.second[order.numCommon++] = static_cast<std::uint8_t>(bit % 3);
            }
        std::size_t endFirst = order.numCommon;
        std::size_t endSecond = order.numCommon;
        for (std::uint8_t k = 0; k < 3; ++k)
        {
            if (!bFirst[k])
                order.first[endFirst++] = k;
            if (!bSecond[k])
                order.second[endSecond++] = k;
        }
    }
    return result;
}
constexpr std::array<CornerOrder, 512> CORNER_ORDERS = makeCornerOrders();

// A cross product and, for its rounding, the same with all terms positive.
struct SizedCross
{
    SizedCross(const Place& u, const Place& v)
    {
        for (std::size_t axis = 0; axis < 3; ++axis)
        {
            const double plus = u[(axis + 1) % 3] * v[(axis + 2) % 3];
            const double minus = u[(axis + 2) % 3] * v[(axis + 1) % 3];
            value[axis] = plus - minus;
            size[axis] = std::fabs(plus) + std::fabs(minus);
        }
    }
    Place value;
    Place size;
};
} // namespace

TrianglePair::TrianglePair(const ExactSigns& signs_, const Place* pPlaces, const CornerNumbers& first,
                           const CornerNumbers& second)
    : signs(signs_)
{
    sortCorners(pPlaces, first, second);
}

void TrianglePair::sortCorners(const Place* pPlaces, const CornerNumbers& first, const CornerNumbers& second)
{
    unsigned equal = 0;
    for (unsigned i = 0; i < 3; ++i)
        for (unsigned k = 0; k < 3; ++k)
            equal |= static_cast<unsigned>(first[i] == second[k]) << (3 * i + k);
    const CornerOrder& order = CORNER_ORDERS[equal];
    numCommon = order.numCommon;
    for (std::size_t i = 0; i < 3; ++i)
    {
        a[i] = pPlaces + first[order.first[i]];
        b[i] = pPlaces + second[order.second[i]];
    }
}

bool TrianglePair::isIntersecting() const
{
    return numCommon == 2 ? meetBeyondEdge() : numCommon == 1 ? meetBeyondCorner() : meet();
}

// Only if the third corners lie in one plane with the edge, on the same side of it.
bool TrianglePair::meetBeyondEdge() const
{
    if (openWide() || signs.getSide(*a[0], *a[1], *a[2], *b[2]) != 0)
        return false;
    const int axis = signs.findViewAxis(*a[0], *a[1], *a[2]);
    return signs.getTurn(axis, *a[0], *a[1], *a[2]) == signs.getTurn(axis, *a[0], *a[1], *b[2]);
}

// Surely more than a right angle between the triangles.
bool TrianglePair::openWide() const
{
    const Place edge = *a[1] - *a[0];
    const SizedCross m(edge, *a[2] - *a[0]);
    const SizedCross n(edge, *b[2] - *a[0]);
    return dot(m.value, n.value) < -(ROUNDING * dot(m.size, n.size) + signs.getUnderflowBound());
}

bool TrianglePair::meetBeyondCorner() const
{
    if (partAtCorner() || !conesOverlapInView())
        return false;
    const int sideB1 = signs.getSide(*a[0], *a[1], *a[2], *b[1]);
    const int sideB2 = signs.getSide(*a[0], *a[1], *a[2], *b[2]);
    if (areOnOneSide(sideB1, sideB2))
        return false;
    if (sideB1 == 0 && sideB2 == 0)
        return true;
    return coneIsHit(a, b, sideB1, sideB2);
}

// Whether a plane through the corner, square to the way between the middles of the opposite edges, surely has
// one triangle on each side.
bool TrianglePair::partAtCorner() const
{
    const Place a1 = *a[1] - *a[0];
    const Place a2 = *a[2] - *a[0];
    const Place b1 = *b[1] - *a[0];
    const Place b2 = *b[2] - *a[0];
    const Place way = (b1 + b2) - (a1 + a2);
    const double largest =
        std::max(std::max(sumOfSizes(a1), sumOfSizes(a2)), std::max(sumOfSizes(b1), sumOfSizes(b2)));
    const double bound = ROUNDING * sumOfSizes(way) * largest + signs.getUnderflowBound();
    return dot(way, b1) > bound && dot(way, b2) > bound && dot(way, a1) < -bound && dot(way, a2) < -bound;
}

// Whether the edge of the other triangle that lies opposite the common corner meets the wedge of this one.
// Its ends are on different sides of the plane, or one is in it; not both.
bool TrianglePair::coneIsHit(const Corners& cone, const Corners& other, int sideFirst, int sideSecond) const
{
    const bool bFirstAbove = sideFirst > sideSecond;
    const Place& above = bFirstAbove ? *other[1] : *other[2];
    const Place& below = bFirstAbove ? *other[2] : *other[1];
    return signs.getSide(*cone[0], *cone[1], above, below) <= 0 &&
           signs.getSide(*cone[0], *cone[2], above, below) >= 0;
}

// Seen along an axis from which the first is no line. If they do not there, they share nothing in space, and in one
// plane that is all there is to it. A second one that is seen as a line counts as overlapping.
bool TrianglePair::conesOverlapInView() const
{
    const int axis = signs.findViewAxis(*a[0], *a[1], *a[2]);
    return isInCone(axis, a, *b[1]) || isInCone(axis, a, *b[2]) || isInCone(axis, b, *a[1]) ||
           isInCone(axis, b, *a[2]);
}

bool TrianglePair::isInCone(int axis, const Corners& cone, const Place& p) const
{
    const int turn = signs.getTurn(axis, *cone[0], *cone[1], *cone[2]);
    return turn * signs.getTurn(axis, *cone[0], *cone[1], p) >= 0 &&
           turn * signs.getTurn(axis, *cone[0], p, *cone[2]) >= 0;
}

// If anything is common, an end of it lies on an edge of one of the two.
bool TrianglePair::meet() const
{
    if (partAlongCentres() || !overlapInView())
        return false;
    const Sides sidesOfB = getSides(a, b);
    if (areOnOneSide(sidesOfB[0], sidesOfB[1]) && areOnOneSide(sidesOfB[1], sidesOfB[2]))
        return false;
    if (sidesOfB == Sides{0, 0, 0})
        return true;
    const Sides sidesOfA = getSides(b, a);
    if (areOnOneSide(sidesOfA[0], sidesOfA[1]) && areOnOneSide(sidesOfA[1], sidesOfA[2]))
        return false;
    return edgeHits(a, b, sidesOfB) || edgeHits(b, a, sidesOfA);
}

// Whether a plane square to the way between the centres surely has one triangle on each side.
bool TrianglePair::partAlongCentres() const
{
    const Place& origin = *a[0];
    const std::array<Place, 2> vA = {*a[1] - origin, *a[2] - origin};
    const std::array<Place, 3> vB = {*b[0] - origin, *b[1] - origin, *b[2] - origin};
    const Place way = ((vB[0] + vB[1]) + vB[2]) - (vA[0] + vA[1]);
    const double largest =
        std::max(std::max(sumOfSizes(vA[0]), sumOfSizes(vA[1])),
                 std::max(std::max(sumOfSizes(vB[0]), sumOfSizes(vB[1])), sumOfSizes(vB[2])));
    const double farthestOfA = std::max({0.0, dot(way, vA[0]), dot(way, vA[1])});
    const double nearestOfB = std::min({dot(way, vB[0]), dot(way, vB[1]), dot(way, vB[2])});
    return nearestOfB - farthestOfA > 4.0 * ROUNDING * sumOfSizes(way) * largest + signs.getUnderflowBound();
}

TrianglePair::Sides TrianglePair::getSides(const Corners& plane, const Corners& other) const
{
    Sides result;
    for (std::size_t i = 0; i < 3; ++i)
        result[i] = signs.getSide(*plane[0], *plane[1], *plane[2], *other[i]);
    return result;
}

// An edge within the plane of the triangle is left to the edges that cross it and to those of the other one.
bool TrianglePair::edgeHits(const Corners& triangle, const Corners& other, const Sides& sides) const
{
    for (std::size_t i = 0; i < 3; ++i)
    {
        const std::size_t k = (i + 1) % 3;
        if (sides[i] == sides[k]) // both beside the plane, or both in it
            continue;
        if (sides[i] > sides[k] ? segmentHits(triangle, *other[i], *other[k])
                                : segmentHits(triangle, *other[k], *other[i]))
            return true;
    }
    return false;
}

// The line from above to below passes each edge on the inner side or on the edge.
bool TrianglePair::segmentHits(const Corners& triangle, const Place& above, const Place& below) const
{
    for (std::size_t i = 0; i < 3; ++i)
        if (signs.getSide(*triangle[i], *triangle[(i + 1) % 3], above, below) > 0)
            return false;
    return true;
}

// As conesOverlapInView() is to be understood.
bool TrianglePair::overlapInView() const
{
    const int axis = signs.findViewAxis(*a[0], *a[1], *a[2]);
    return !edgeParts(axis, a, b) && !edgeParts(axis, b, a);
}

// Whether the line of an edge has the triangle on one side and all of the other beyond.
bool TrianglePair::edgeParts(int axis, const Corners& triangle, const Corners& other) const
{
    const int turn = signs.getTurn(axis, *triangle[0], *triangle[1], *triangle[2]);
    if (turn == 0)
        return false;
    for (std::size_t i = 0; i < 3; ++i)
    {
        const auto isBeyond = [&](const Place* p)
        { return signs.getTurn(axis, *triangle[i], *triangle[(i + 1) % 3], *p) == -turn; };
        if (std::all_of(other.begin(), other.end(), isBeyond))
            return true;
    }
    return false;
}

} // namespace TARN_ZEF

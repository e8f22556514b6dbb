// The slow and obvious judge of triangle pairs, for small whole coordinates.
//
// What two triangles share is the hull of finitely many points: corners, points where an edge meets the other
// plane, points where two edges meet. They are computed as fractions, those that are in both triangles are kept,
// and the pair intersects if one of them is off the common corners and the common edge.
#ifndef ZEF_TESTS_SLOWINTERSECTIONS_H
#define ZEF_TESTS_SLOWINTERSECTIONS_H

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace TARN_ZEF
{
struct IntVector
{
    std::int64_t x = 0;
    std::int64_t y = 0;
    std::int64_t z = 0;

    IntVector operator-(const IntVector& o) const { return {x - o.x, y - o.y, z - o.z}; }
    IntVector operator+(const IntVector& o) const { return {x + o.x, y + o.y, z + o.z}; }
    IntVector operator*(std::int64_t f) const { return {f * x, f * y, f * z}; }
    std::int64_t dot(const IntVector& o) const { return x * o.x + y * o.y + z * o.z; }
    IntVector cross(const IntVector& o) const
    {
        return {y * o.z - z * o.y, z * o.x - x * o.z, x * o.y - y * o.x};
    }
    bool operator==(const IntVector& o) const = default;
    auto operator<=>(const IntVector& o) const = default;
};

using IntTriangle = std::array<IntVector, 3>;

inline IntVector normalOf(const IntTriangle& t)
{
    return (t[1] - t[0]).cross(t[2] - t[0]);
}

inline bool isFlat(const IntTriangle& t)
{
    return normalOf(t) == IntVector();
}

// The point at / below, below > 0.
struct Fraction
{
    IntVector at;
    std::int64_t below = 1;
};

inline bool isIn(const IntTriangle& t, const Fraction& p)
{
    const IntVector normal = normalOf(t);
    if (normal.dot(p.at - t[0] * p.below) != 0)
        return false;
    for (std::size_t i = 0; i < 3; ++i)
        if (normal.dot((t[(i + 1) % 3] - t[i]).cross(p.at - t[i] * p.below)) < 0)
            return false;
    return true;
}

// start + way * above / below
inline Fraction along(const IntVector& start, const IntVector& way, std::int64_t above, std::int64_t below)
{
    return below < 0 ? Fraction{start * -below + way * -above, -below}
                     : Fraction{start * below + way * above, below};
}

inline std::vector<Fraction> findCandidates(const IntTriangle& s, const IntTriangle& t)
{
    std::vector<Fraction> vResult;
    for (const IntVector& corner : s)
        vResult.push_back({corner, 1});
    for (std::size_t i = 0; i < 3; ++i)
    {
        const IntVector way = s[(i + 1) % 3] - s[i];
        const std::int64_t slope = normalOf(t).dot(way);
        if (slope != 0)
            vResult.push_back(along(s[i], way, normalOf(t).dot(t[0] - s[i]), slope));
        for (std::size_t k = 0; k < 3; ++k)
        {
            const IntVector otherWay = t[(k + 1) % 3] - t[k];
            const IntVector cross = way.cross(otherWay);
            if (cross != IntVector())
                vResult.push_back(
                    along(s[i], way, (t[k] - s[i]).cross(otherWay).dot(cross), cross.dot(cross)));
        }
    }
    return vResult;
}

inline bool isOnCommon(const std::vector<IntVector>& vCommon, const Fraction& p)
{
    if (vCommon.empty())
        return false;
    const IntVector fromFirst = p.at - vCommon.front() * p.below;
    const IntVector fromLast = p.at - vCommon.back() * p.below;
    return fromFirst.cross(fromLast) == IntVector() && fromFirst.dot(fromLast) <= 0;
}

// Neither is flat; they have at most two corners in common.
inline bool intersectSlowly(const IntTriangle& s, const IntTriangle& t)
{
    std::vector<IntVector> vCommon;
    for (const IntVector& corner : s)
        if (std::find(t.begin(), t.end(), corner) != t.end())
            vCommon.push_back(corner);
    std::vector<Fraction> vPoints = findCandidates(s, t);
    const std::vector<Fraction> vMore = findCandidates(t, s);
    vPoints.insert(vPoints.end(), vMore.begin(), vMore.end());
    return std::any_of(vPoints.begin(), vPoints.end(),
                       [&](const Fraction& p)
                       { return isIn(s, p) && isIn(t, p) && !isOnCommon(vCommon, p); });
}

} // namespace TARN_ZEF

#endif

// Geometric functions that the whole library shares. None keeps state or allocates, sortRing() excepted.
//
// Points and lengths are in units of the caller's data; angles as the names tell. Coordinates are compared
// exactly (-0.0 equals 0.0). In flat form three consecutive entries are one triangle.
#ifndef ZEF_TOOLS_H
#define ZEF_TOOLS_H

#include "Point3.h"
#include "Vector3.h"
#include "core/definitions.h"
#include "core/numbers.h"
#include "geometry/Plane.h"
#include "geometry/Segment3.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace TARN_ZEF
{
// Degrees in one radian. Truncated: a right angle measures 89.99999999987 degrees, and limits on angles
// are tuned to that.
inline constexpr double DEGREES_PER_RAD = 57.295779513;

// --- Numbers ---
[[nodiscard]] constexpr double getMax(double a, double b, double c) noexcept
{
    const double maxAB = a < b ? b : a;
    return maxAB < c ? c : maxAB;
}
[[nodiscard]] constexpr int getMax(int a, int b) noexcept
{
    return a < b ? b : a;
}

// The smallest range [lo, hi] that holds both ranges; the ends of each come in any order.
void unionRange(double a0, double a1, double b0, double b1, double& lo, double& hi) noexcept;
// The overlap of both ranges. Touching ranges give one point; disjoint ones a warning, lo the largest
// double and hi the lowest.
void commonRange(double a0, double a1, double b0, double b1, double& lo, double& hi);

// --- Vectors and points ---
[[nodiscard]] constexpr Vector3 crossProduct(const Vector3& a, const Vector3& b) noexcept
{
    return {a.y() * b.z() - a.z() * b.y(), a.z() * b.x() - a.x() * b.z(), a.x() * b.y() - a.y() * b.x()};
}
[[nodiscard]] constexpr double sqDistance(const Point3& a, const Point3& b) noexcept
{
    const double dx = a.x() - b.x();
    const double dy = a.y() - b.y();
    const double dz = a.z() - b.z();
    return dx * dx + dy * dy + dz * dz;
}
[[nodiscard]] constexpr bool isEqual(const Point3& a, const Point3& b) noexcept
{
    return a.x() == b.x() && a.y() == b.y() && a.z() == b.z();
}
// normalize() without the call on the good path; bit for bit the same result.
[[nodiscard]] inline Vector3 normalizeInline(const Vector3& v)
{
    const double len = v.length();
    if (len > 0.0) [[likely]]
        return v / len;
    return normalize(v);
}
// Drops one coordinate: 0 gives (y,z,0), 1 gives (x,z,0), 2 gives (x,y,0). The axes keep their order, so the
// image for 1 is mirrored with respect to the others. Any other index is fatal.
[[nodiscard]] Point3 project2D(const Point3& p, int skipIndex);

// --- Lines ---
// Foot of the perpendicular from q onto the line p0-p1; it may lie outside the segment. Ends closer than
// 1e-10 give p0, equal ends are fatal.
[[nodiscard]] Point3 getFootPoint3D(const Point3& p0, const Point3& p1, const Point3& q);
[[nodiscard]] double getDistanceToLine(const Point3& p0, const Point3& p1, const Point3& q);

// --- Angles, between vectors of length 1 ---
namespace detail
{
void checkUnitLengths(const char* caller, const Vector3& a, const Vector3& b);

// A length that is off by more than 0.1 is fatal. The squares decide nearly always; checkUnitLengths()
// measures exactly.
inline void requireUnitLengths(const char* caller, const Vector3& a, const Vector3& b)
{
    const double sqA = a.sqLength();
    const double sqB = b.sqLength();
    if (!(sqA > 0.82 && sqA < 1.2 && sqB > 0.82 && sqB < 1.2)) [[unlikely]]
        checkUnitLengths(caller, a, b);
}

// The value of computeArea() where the root cannot be taken: 0.0, or fatal for NaN.
[[nodiscard]] double areaWithoutRoot(double halfCircf, double sqArea, double len0, double len1, double len2);
} // namespace detail

[[nodiscard]] inline double getAngleDegree(const Vector3& a, const Vector3& b)
{
    detail::requireUnitLengths("getAngleDegree", a, b);
    const double cosine = a * b;
    if (cosine > 1.0)
        return 0.0;
    if (cosine < -1.0)
        return 180.0;
    return std::acos(cosine) * DEGREES_PER_RAD;
}
// Mind the value for opposite vectors whose product falls below -1.0 by rounding: it is a full turn.
[[nodiscard]] inline double getAngleRad(const Vector3& a, const Vector3& b)
{
    detail::requireUnitLengths("getAngleDegree", a, b);
    const double cosine = a * b;
    if (cosine > 1.0)
        return 0.0;
    if (cosine < -1.0)
        return 6.283185307;
    return std::acos(cosine);
}

// Cosine of the angle: the dot product, clamped to -1..1.
[[nodiscard]] inline double getCosPhi(const Vector3& a, const Vector3& b)
{
    detail::requireUnitLengths("getCosPhi", a, b);
    return std::clamp(a * b, -1.0, 1.0);
}

// --- Triangles ---
// Heron's formula. Lengths that no triangle has give 0.0, with a warning if far off; NaN is fatal.
[[nodiscard]] inline double computeArea(double len0, double len1, double len2)
{
    const double halfCircf = (len0 + len1 + len2) / 2.0;
    const double sqArea = halfCircf * (halfCircf - len0) * (halfCircf - len1) * (halfCircf - len2);
    if (sqArea > 0.0) [[likely]]
        return std::sqrt(sqArea);
    return detail::areaWithoutRoot(halfCircf, sqArea, len0, len1, len2);
}
[[nodiscard]] inline double getArea(const Point3& a, const Point3& b, const Point3& c)
{
    return computeArea(std::sqrt(sqDistance(a, b)), std::sqrt(sqDistance(b, c)), std::sqrt(sqDistance(c, a)));
}
// Never fatal, and keeps a thin triangle's area where Heron's formula cancels it.
[[nodiscard]] double getAreaByCross(const Point3& a, const Point3& b, const Point3& c) noexcept;

// Unit normal, counter-clockwise triangle seen from its tip. bOK is false, and the result (0,0,0), for
// corners that coincide or stand on one line, whatever the size of the triangle.
[[nodiscard]] inline Vector3 getNormalVector(const Point3* a, const Point3* b, const Point3* c, bool& bOK)
{
    const Vector3 vec01 = *b - *a;
    const Vector3 vec02 = *c - *a;
    bOK = false;
    if (vec01.isDegenerate() || vec02.isDegenerate())
        return {};
    const Vector3 cp = crossProduct(normalizeInline(vec01), normalizeInline(vec02));
    if (cp.length() == 0.0)
        return cp;
    bOK = true;
    return normalizeInline(cp);
}

// Smallest and largest corner angle in degrees. Corners must not coincide.
void getCornerAngles(const Point3& p0, const Point3& p1, const Point3& p2, double& minAngle,
                     double& maxAngle);
// A degenerate triangle gives infinite or NaN coordinates.
[[nodiscard]] Point3 getCircumCenter(const Point3& a, const Point3& b, const Point3& c) noexcept;
// The plane through the edge opposite corner idx (0 to 2), at right angles on the triangle. The third corner
// lies on its positive side. Degenerate triangles are fatal.
[[nodiscard]] Plane getEdgePlane(const Point3* p0, const Point3* p1, const Point3* p2, int idx);

// --- Sets ---
// Least-squares plane: its unit normal (of either sign) and the mean of the points. False, and nothing
// written, for fewer than three points or where all determinants vanish.
[[nodiscard]] bool estimateNNV(const std::vector<Point3*>& vPoints, Vector3& nv, Point3& centroid);
// Signed volume of a closed surface in flat form; positive if the triangles are counter-clockwise seen from
// outside. Empty input gives 0.0.
[[nodiscard]] double computeVolume(const std::vector<Point3*>& vCorners);
[[nodiscard]] double computeVolume(const std::vector<Point3>& vCorners);
// Replaces the segments by the closed ring that starts with the first one: in order, each turned so that
// its source is the target of its predecessor. Segments off that ring are dropped. False, with a message
// and the input untouched, where no ring closes.
[[nodiscard]] bool sortRing(std::vector<Segment3>& vSegments);

} // namespace TARN_ZEF

#endif

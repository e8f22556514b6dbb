#include "geometry/tools.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <utility>

namespace TARN_ZEF
{
namespace
{
constexpr double MAX_DBL = std::numeric_limits<double>::max();

// The six different sums of a 3x3 covariance matrix.
struct Covariance
{
    double xx = 0.0, xy = 0.0, xz = 0.0, yy = 0.0, yz = 0.0, zz = 0.0;
};

Point3 getMean(const std::vector<Point3*>& vPoints)
{
    double x = 0.0, y = 0.0, z = 0.0;
    for (const Point3* pPoint : vPoints)
        pPoint->addOwnCoords(x, y, z);
    const double num = static_cast<double>(vPoints.size());
    return {x / num, y / num, z / num};
}

Covariance getCovariance(const std::vector<Point3*>& vPoints, const Point3& mean)
{
    Covariance cov;
    for (const Point3* pPoint : vPoints)
    {
        const Vector3 offset = *pPoint - mean;
        cov.xx += offset.x() * offset.x();
        cov.xy += offset.x() * offset.y();
        cov.xz += offset.x() * offset.z();
        cov.yy += offset.y() * offset.y();
        cov.yz += offset.y() * offset.z();
        cov.zz += offset.z() * offset.z();
    }
    return cov;
}

// The direction across the best plane, from the row of the adjugate matrix with the largest diagonal entry:
// that one is farthest from cancellation.
Vector3 getPlaneDirection(const Covariance& cov)
{
    const auto& [xx, xy, xz, yy, yz, zz] = cov;
    const double detX = yy * zz - yz * yz;
    const double detY = xx * zz - xz * xz;
    const double detZ = xx * yy - xy * xy;
    if (detX >= detY && detX >= detZ)
        return {detX, xz * yz - xy * zz, xy * yz - xz * yy};
    if (detY >= detX && detY >= detZ)
        return {xz * yz - xy * zz, detY, xy * xz - yz * xx};
    ASSEX_TEXT(detZ >= detX && detZ >= detY, "detZ>=detX && detZ>=detY");
    return {xy * yz - xz * yy, xy * xz - yz * xx, detZ};
}

// One end of a segment, for looking up which segments touch a point.
struct RingEnd
{
    Point3 point;
    Segment3* pSegment;
};

bool lessNaNLast(double a, double b)
{
    return isNaN(b) ? !isNaN(a) : a < b;
}

// The order of Point3, made total for NaN.
bool lessPoint(const Point3& a, const Point3& b)
{
    if (lessNaNLast(a.x(), b.x()) || lessNaNLast(b.x(), a.x()))
        return lessNaNLast(a.x(), b.x());
    if (lessNaNLast(a.y(), b.y()) || lessNaNLast(b.y(), a.y()))
        return lessNaNLast(a.y(), b.y());
    return lessNaNLast(a.z(), b.z());
}

struct LessRingEnd
{
    bool operator()(const RingEnd& a, const RingEnd& b) const { return lessPoint(a.point, b.point); }
    bool operator()(const RingEnd& a, const Point3& b) const { return lessPoint(a.point, b); }
    bool operator()(const Point3& a, const RingEnd& b) const { return lessPoint(a, b.point); }
};

// Both ends of each segment, sorted by position.
std::vector<RingEnd> collectRingEnds(std::vector<Segment3>& vSegments)
{
    std::vector<RingEnd> vEnds;
    vEnds.reserve(2 * vSegments.size());
    for (Segment3& segment : vSegments)
    {
        vEnds.push_back({segment.getSource(), &segment});
        vEnds.push_back({segment.getTarget(), &segment});
    }
    std::stable_sort(vEnds.begin(), vEnds.end(), LessRingEnd());
    return vEnds;
}

bool failRing(const char* text)
{
    warningMessage("sortRing()", text);
    return false;
}
} // namespace

void unionRange(double a0, double a1, double b0, double b1, double& lo, double& hi) noexcept
{
    lo = std::min(std::min(a0, a1), std::min(b0, b1));
    hi = std::max(std::max(a0, a1), std::max(b0, b1));
}

void commonRange(double a0, double a1, double b0, double b1, double& lo, double& hi)
{
    lo = std::max(std::min(a0, a1), std::min(b0, b1));
    hi = std::min(std::max(a0, a1), std::max(b0, b1));
    if (lo > hi)
    {
        warningMessage("commonRange()", "empty range, unexpected, returning +DBL_MAX,-DBL_MAX");
        lo = MAX_DBL;
        hi = -MAX_DBL;
    }
}

Point3 project2D(const Point3& p, int skipIndex)
{
    switch (skipIndex)
    {
    case 0:
        return {p.y(), p.z(), 0.0};
    case 1:
        return {p.x(), p.z(), 0.0};
    case 2:
        return {p.x(), p.y(), 0.0};
    default:
        warningMessage(ZEF_HERE, "wrong skipIndex");
        ASSEX(false);
    }
}

Point3 getFootPoint3D(const Point3& p0, const Point3& p1, const Point3& q)
{
    ASSEX_TEXT(p0.x() != p1.x() || p0.y() != p1.y() || p0.z() != p1.z(),
               "p0.x()!=p1.x() || p0.y()!=p1.y() || p0.z()!=p1.z()");
    const double len = std::sqrt(sqDistance(p0, p1));
    if (1e-10 > len)
        return p0;
    const Vector3 dir = (p1 - p0) / len;
    const double t = (q - p0) * dir;
    return p0 + dir * t;
}

double getDistanceToLine(const Point3& p0, const Point3& p1, const Point3& q)
{
    return (q - getFootPoint3D(p0, p1, q)).length();
}

namespace detail
{
void checkUnitLengths(const char* caller, const Vector3& a, const Vector3& b)
{
    const double len0 = a.length();
    const double len1 = b.length();
    if (std::fabs(len0 - 1.0) > 0.1 || std::fabs(len1 - 1.0) > 0.1)
    {
        printErrorFailure(std::string(caller) +
                          " has been called for vectors with length!=1.0:\n  Lengths are: len0=" +
                          toText(len0) + "   len1=" + toText(len1) + "\n");
        ASSEX(false);
    }
}

double areaWithoutRoot(double halfCircf, double sqArea, double len0, double len1, double len2)
{
    if (isNaN(sqArea))
    {
        warningMessage("computeArea()", "invalid value, no area for this triangle");
        printText("ownHalfCircf=" + toText(halfCircf) + "\nlen0=" + toText(len0) + "\nlen1=" + toText(len1) +
                  "\nlen2=" + toText(len2) + "\n");
        ASSEX(false);
    }
    if (sqArea < -1.0)
        warningMessage("Numeric issue in Triangle::getArea()", "sqArea=" + toText(sqArea));
    return 0.0;
}
} // namespace detail

double getAreaByCross(const Point3& a, const Point3& b, const Point3& c) noexcept
{
    double ax, ay, az, bx, by, bz, cx, cy, cz;
    a.xyz(ax, ay, az);
    b.xyz(bx, by, bz);
    c.xyz(cx, cy, cz);
    const double x = (by - ay) * (cz - az) - (bz - az) * (cy - ay);
    const double y = (bz - az) * (cx - ax) - (bx - ax) * (cz - az);
    const double z = (bx - ax) * (cy - ay) - (by - ay) * (cx - ax);
    return 0.5 * std::sqrt(x * x + y * y + z * z);
}

void getCornerAngles(const Point3& p0, const Point3& p1, const Point3& p2, double& minAngle, double& maxAngle)
{
    const Vector3 vec01 = normalize(p1 - p0);
    const Vector3 vec12 = normalize(p2 - p1);
    const Vector3 vec20 = normalize(p0 - p2);
    const double angle0 = getAngleDegree(vec01, vec20 * -1.0);
    const double angle1 = getAngleDegree(vec12, vec01 * -1.0);
    const double angle2 = getAngleDegree(vec20, vec12 * -1.0);
    minAngle = std::min({angle0, angle1, angle2});
    maxAngle = std::max({angle0, angle1, angle2});
}

Point3 getCircumCenter(const Point3& a, const Point3& b, const Point3& c) noexcept
{
    const Vector3 ac = c - a;
    const Vector3 ab = b - a;
    const Vector3 abXac = crossProduct(ab, ac);
    const Vector3 cp1 = crossProduct(abXac, ab);
    const Vector3 cp2 = crossProduct(ac, abXac);
    const Vector3 toCircumCenter = (cp1 * ac.sqLength() + cp2 * ab.sqLength()) / (2.0 * abXac.sqLength());
    return a + toCircumCenter;
}

Plane getEdgePlane(const Point3* p0, const Point3* p1, const Point3* p2, int idx)
{
    ASSEX_TEXT(p0 != p1, "p0!=p1");
    ASSEX_TEXT(p1 != p2, "p1!=p2");
    ASSEX_TEXT(p2 != p0, "p2!=p0");
    if (idx < 0 || idx > 2)
        ASSEX(false);
    const std::array<const Point3*, 3> corners = {p0, p1, p2};
    const auto first = static_cast<std::size_t>(idx);
    const Point3& a = *corners[first];
    const Point3& b = *corners[(first + 1) % 3];
    const Point3& c = *corners[(first + 2) % 3];

    const Vector3 vecAB = normalize(b - a);
    const Vector3 vecAC = normalize(c - a);
    const Vector3 nv = normalize(crossProduct(vecAB, vecAC));
    ASSEX(!vecAB.isDegenerate());
    ASSEX(!vecAC.isDegenerate());
    ASSEX(!nv.isDegenerate());
    return {b, b + nv, c};
}

bool estimateNNV(const std::vector<Point3*>& vPoints, Vector3& nv, Point3& centroid)
{
    if (vPoints.size() < 3)
        return false;
    const Point3 mean = getMean(vPoints);
    const Vector3 direction = getPlaneDirection(getCovariance(vPoints, mean));
    if (direction.isDegenerate())
        return false;
    nv = normalize(direction);
    centroid = mean;
    return true;
}

double computeVolume(const std::vector<Point3*>& vCorners)
{
    ASSEX(vCorners.size() % 3 == 0);
    double volume = 0.0;
    for (std::size_t i = 0; i < vCorners.size(); i += 3)
    {
        const Point3* c0 = vCorners[i];
        const Point3* c1 = vCorners[i + 1];
        const Point3* c2 = vCorners[i + 2];
        // A degenerate triangle has a null normal and adds nothing.
        bool bOK = false;
        const Vector3 nnv = getNormalVector(c0, c1, c2, bOK);
        const double height = (*c0 - *vCorners.front()) * nnv;
        volume += getArea(*c0, *c1, *c2) * height / 3.0;
    }
    return volume;
}

double computeVolume(const std::vector<Point3>& vCorners)
{
    std::vector<Point3*> vPointers;
    vPointers.reserve(vCorners.size());
    // Nothing is written through these pointers.
    for (const Point3& corner : vCorners)
        vPointers.push_back(const_cast<Point3*>(&corner));
    return computeVolume(vPointers);
}

bool sortRing(std::vector<Segment3>& vSegments)
{
    if (vSegments.empty())
        return false;
    const std::vector<RingEnd> vEnds = collectRingEnds(vSegments);
    std::vector<bool> vUsed(vSegments.size(), false);
    const auto indexOf = [&vSegments](const Segment3* pSegment)
    { return static_cast<std::size_t>(pSegment - vSegments.data()); };

    std::vector<Segment3> vRing = {vSegments.front()};
    vUsed.front() = true;
    while (vRing.back().getTarget() != vRing.front().getSource())
    {
        const Point3 connector = vRing.back().getTarget();
        const auto [first, last] = std::equal_range(vEnds.begin(), vEnds.end(), connector, LessRingEnd());
        if (last - first != 2)
        {
            printText("Distance=" + std::to_string(last - first) + "\n");
            return failRing("Not a ring1");
        }
        const Segment3* pNext = vUsed[indexOf(first->pSegment)] ? (first + 1)->pSegment : first->pSegment;
        if (vUsed[indexOf(pNext)])
            return failRing("Not a ring2");
        vUsed[indexOf(pNext)] = true;
        vRing.push_back(*pNext);
        if (vRing.back().getSource() != connector)
            vRing.back().swap();
        if (vRing.back().getSource() != connector)
            return failRing("Not a ring3");
    }
    vSegments.swap(vRing);
    return true;
}

} // namespace TARN_ZEF

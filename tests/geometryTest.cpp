#include "Plane.h"
#include "Segment3.h"
#include "helpers/StreamCapture.h"
#include "testDataGenerators.h"
#include "tools.h"
#include "zefRand.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <iostream>
#include <limits>
#include <tuple>

namespace TARN_ZEF
{
namespace
{
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double INFINITE = std::numeric_limits<double>::infinity();

std::vector<Point3> randomPoints(std::size_t num, unsigned int seed)
{
    std::vector<Point3> vPoints;
    generateRandomPoints3D(-1.0, 1.0, num, seed, vPoints);
    return vPoints;
}

std::vector<Point3*> pointersTo(std::vector<Point3>& vPoints)
{
    std::vector<Point3*> vPointers;
    for (Point3& point : vPoints)
        vPointers.push_back(&point);
    return vPointers;
}

std::tuple<double, double, double> tupleOf(const Point3& p)
{
    return {p.x(), p.y(), p.z()};
}

// The unit cube as twelve triangles, counter-clockwise seen from outside, moved by the offset.
std::vector<Point3> makeCube(const Vector3& offset)
{
    constexpr int CORNERS[36] = {0, 2, 3, 0, 3, 1, 4, 5, 7, 4, 7, 6, 0, 1, 5, 0, 5, 4,
                                 2, 6, 7, 2, 7, 3, 0, 4, 6, 0, 6, 2, 1, 3, 7, 1, 7, 5};
    std::vector<Point3> vCorners;
    for (const int corner : CORNERS)
        vCorners.push_back(Point3(corner & 1, (corner >> 1) & 1, (corner >> 2) & 1) + offset);
    return vCorners;
}

std::vector<Segment3> makePolygon(int numCorners)
{
    const auto corner = [numCorners](int i)
    { return Point3(std::cos(6.28 * (i % numCorners) / numCorners), i % numCorners, 0.0); };
    std::vector<Segment3> vSegments;
    for (int i = 0; i < numCorners; ++i)
        vSegments.emplace_back(corner(i), corner(i + 1));
    return vSegments;
}
} // namespace

TEST(Point3, OrdersLikeATuple)
{
    const std::array<double, 4> values = {-1.0, -0.0, 0.0, 2.0};
    std::vector<Point3> vPoints;
    for (const double x : values)
        for (const double y : values)
            for (const double z : values)
                vPoints.emplace_back(x, y, z);
    for (const Point3& a : vPoints)
        for (const Point3& b : vPoints)
        {
            ASSERT_EQ(a < b, tupleOf(a) < tupleOf(b)) << a << b;
            ASSERT_EQ(a == b, tupleOf(a) == tupleOf(b)) << a << b;
            ASSERT_EQ(a > b, std::pair(a.x(), a.y()) > std::pair(b.x(), b.y())) << a << b;
        }
    const Point3 odd(0.0, NOT_A_NUMBER, 0.0);
    EXPECT_TRUE(odd != odd);
}

TEST(Vector3, ClassifiesComponentsAndLength)
{
    const struct
    {
        Vector3 v;
        int maxAbsIndex;
        double maxAbs;
        double max;
        bool bNV;
    } rows[] = {
        {{-2, 2, 2}, 0, 2, 2, false},
        {{1, 2, -2}, 1, 2, 2, false},
        {{0, -1, -3}, 2, 3, 0, false},
        {{std::sqrt(1.0099), 0, 0}, 0, std::sqrt(1.0099), std::sqrt(1.0099), true},
        {{1, 0.1, 0}, 0, 1, 1, false}, // squared length 1.01
        {{0, -1, 0}, 1, 1, 0, true},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(testing::Message() << row.v);
        EXPECT_EQ(row.v.getMaxAbsIndex(), row.maxAbsIndex);
        EXPECT_EQ(row.v.getMaxAbsComponent(), row.maxAbs);
        EXPECT_EQ(row.v.getMaxComponent(), row.max);
        EXPECT_EQ(row.v.isNV(), row.bNV);
        EXPECT_EQ(std::fabs(row.v.getCartesian(row.maxAbsIndex)), row.maxAbs);
    }
}

TEST(Vector3, ReportsBadCallsOnTheErrorStream)
{
    const StreamCapture errors(std::cerr);
    EXPECT_TRUE(normalize(Vector3()).isDegenerate());
    EXPECT_TRUE(errors.contains("\n\n** warning: normalize(const Vector3& other), Null length vector!"));
    EXPECT_EQ(Vector3(1, 2, 3).getCartesian(3), std::numeric_limits<double>::max());
    EXPECT_TRUE(errors.contains("getCartesian for i=3"));
}

TEST(Segment3, EqualInEitherOrientation)
{
    const Point3 a(1, 2, 3), b(3, 2, 1);
    Segment3 turned(a, b);
    turned.swap();
    EXPECT_TRUE(turned.getSource() == b && turned.getTarget() == a);
    EXPECT_TRUE(turned == Segment3(a, b));
    EXPECT_FALSE(Segment3(a, a) == Segment3(a, b));
    EXPECT_EQ(turned.getSqLen(), 8.0);
    EXPECT_EQ(Segment3().getTarget().z(), LOWEST_DBL);
}

TEST(Tools, NumberTestsAgreeWithTheStandard)
{
    const double values[] = {0.0,
                             -0.0,
                             1.0,
                             5e-324,
                             LOWEST_DBL,
                             INFINITE,
                             -INFINITE,
                             NOT_A_NUMBER,
                             -NOT_A_NUMBER,
                             std::bit_cast<double>(u64(0x7ff0000000000001)),
                             std::bit_cast<double>(u64(0xfff8000000000000)),
                             std::bit_cast<double>(u64(0x7ff0000100000000))};
    for (const double value : values)
    {
        EXPECT_EQ(isNaN(value), std::isnan(value)) << value;
        EXPECT_EQ(isInf(value), std::isinf(value)) << value;
    }
    EXPECT_EQ(getMax(1.0, 3.0, 2.0), 3.0);
    EXPECT_EQ(toText(1e-7 / 3), "3.33333e-08");
}

TEST(Tools, RangesUniteAndIntersect)
{
    double lo = 0.0, hi = 0.0;
    unionRange(3, 1, -2, 2, lo, hi);
    EXPECT_EQ(std::pair(lo, hi), std::pair(-2.0, 3.0));
    const StreamCapture out(std::cout);
    commonRange(3, 1, -2, 2, lo, hi);
    EXPECT_EQ(std::pair(lo, hi), std::pair(1.0, 2.0));
    commonRange(0, 1, 2, 1, lo, hi);
    EXPECT_EQ(std::pair(lo, hi), std::pair(1.0, 1.0));
    EXPECT_EQ(out.text(), "");
    commonRange(0, 1, 2, 3, lo, hi);
    EXPECT_EQ(std::pair(lo, hi), std::pair(-LOWEST_DBL, LOWEST_DBL));
    EXPECT_TRUE(out.contains("commonRange(), WARNING: empty range, unexpected, returning +DBL_MAX,-DBL_MAX"));
}

TEST(Tools, Project2DKeepsTheOrderOfAxes)
{
    const Point3 p(1, 2, 3);
    EXPECT_EQ(project2D(p, 0), Point3(2, 3, 0));
    EXPECT_EQ(project2D(p, 1), Point3(1, 3, 0));
    EXPECT_EQ(project2D(p, 2), Point3(1, 2, 0));
    const StreamCapture out(std::cout);
    EXPECT_THROW((void)project2D(p, 3), ZefBugException);
    EXPECT_TRUE(out.contains(", WARNING: wrong skipIndex\n"));
}

TEST(Tools, FootPointIsNearestOnTheLine)
{
    const std::vector<Point3> vPoints = randomPoints(300, 1);
    for (std::size_t i = 0; i + 2 < vPoints.size(); i += 3)
    {
        const Point3& p0 = vPoints[i];
        const Point3& p1 = vPoints[i + 1];
        const Point3& q = vPoints[i + 2];
        const Point3 foot = getFootPoint3D(p0, p1, q);
        EXPECT_NEAR((q - foot) * (p1 - p0), 0.0, 1e-13);
        EXPECT_NEAR(crossProduct(foot - p0, p1 - p0).length(), 0.0, 1e-13);
        EXPECT_NEAR(getDistanceToLine(p0, p1, q), 2.0 * getAreaByCross(p0, p1, q) / (p1 - p0).length(),
                    1e-12);
    }
    EXPECT_EQ(getFootPoint3D({}, {1e-11, 0, 0}, {5, 5, 5}), Point3());
    const StreamCapture out(std::cout);
    EXPECT_THROW((void)getFootPoint3D({1, 0, 0}, {1, -0.0, 0}, {5, 5, 5}), ZefBugException);
    EXPECT_TRUE(out.contains("Condition [ p0.x()!=p1.x() || p0.y()!=p1.y() || p0.z()!=p1.z() failed ]"));
}

TEST(Tools, AnglesOfUnitVectors)
{
    const Vector3 x(1, 0, 0);
    EXPECT_LT(getAngleDegree(x, {0, 1, 0}), 90.0); // the constant is truncated
    EXPECT_NEAR(getAngleDegree(x, {0, 1, 0}), 90.0, 1e-9);
    EXPECT_EQ(getAngleDegree(x, {1.0000001, 0, 0}), 0.0);
    EXPECT_EQ(getAngleRad(x, {1.0000001, 0, 0}), 0.0);
    EXPECT_EQ(getAngleDegree(x, {-1.0000001, 0, 0}), 180.0);
    EXPECT_EQ(getAngleRad(x, {-1.0000001, 0, 0}), 6.283185307);
    EXPECT_TRUE(isNaN(getAngleDegree(x, {NOT_A_NUMBER, 0, 0})));

    for (const double len : {0.9001, 0.95, 1.0999})
        EXPECT_NO_THROW((void)getAngleDegree(x, {0, len, 0})) << len;
    const StreamCapture out(std::cout);
    const StreamCapture errors(std::cerr);
    for (const double len : {0.0, 0.8999, 1.1001, INFINITE})
    {
        EXPECT_THROW((void)getAngleDegree(x, {0, len, 0}), ZefBugException) << len;
        EXPECT_THROW((void)getAngleRad({0, len, 0}, x), ZefBugException) << len;
    }
    EXPECT_TRUE(errors.contains("  Lengths are: len0=1   len1=0.8999\n"));
}

TEST(Tools, AreaByHeronAgreesWithCrossProduct)
{
    const std::vector<Point3> vPoints = randomPoints(300, 2);
    for (std::size_t i = 0; i + 2 < vPoints.size(); i += 3)
    {
        const double byCross =
            0.5 * crossProduct(vPoints[i + 1] - vPoints[i], vPoints[i + 2] - vPoints[i]).length();
        EXPECT_NEAR(getArea(vPoints[i], vPoints[i + 1], vPoints[i + 2]), byCross, 1e-9);
        EXPECT_NEAR(getAreaByCross(vPoints[i], vPoints[i + 1], vPoints[i + 2]), byCross, 1e-14);
    }
    const StreamCapture out(std::cout);
    EXPECT_EQ(computeArea(1, 1, 2), 0.0);
    EXPECT_EQ(out.text(), "");
    EXPECT_EQ(computeArea(1, 1, 5), 0.0);
    EXPECT_TRUE(out.contains("Numeric issue in Triangle::getArea(), WARNING: sqArea=-32.8125\n"));
    EXPECT_THROW((void)computeArea(1, NOT_A_NUMBER, 1), ZefBugException);
    EXPECT_TRUE(out.contains("\nlen0=1\nlen1=nan\nlen2=1\n"));
}

TEST(Tools, NormalVectorIsIndependentOfSize)
{
    for (const double size : {1e-100, 1.0, 1e100})
    {
        SCOPED_TRACE(size);
        const Point3 a(0, 0, 0), b(size, 0, 0), c(0, 2 * size, 0), onLine(3 * size, 0, 0);
        bool bOK = false;
        EXPECT_NEAR(getNormalVector(&a, &b, &c, bOK).z(), 1.0, 1e-15);
        EXPECT_TRUE(bOK);
        EXPECT_NEAR(getNormalVector(&a, &c, &b, bOK).z(), -1.0, 1e-15);
        EXPECT_TRUE(getNormalVector(&a, &b, &onLine, bOK).isDegenerate());
        EXPECT_FALSE(bOK);
        bOK = true;
        EXPECT_TRUE(getNormalVector(&a, &a, &c, bOK).isDegenerate());
        EXPECT_FALSE(bOK);
    }
}

TEST(Tools, CornerAnglesAndCircumCenterOfRandomTriangles)
{
    const std::vector<Point3> vPoints = randomPoints(300, 3);
    for (std::size_t i = 0; i + 2 < vPoints.size(); i += 3)
    {
        const std::array<Point3, 3> t = {vPoints[i], vPoints[i + 1], vPoints[i + 2]};
        const Point3 center = getCircumCenter(t[0], t[1], t[2]);
        const double radius = (t[0] - center).length();
        EXPECT_NEAR((t[1] - center).length(), radius, 1e-9 * radius);
        EXPECT_NEAR((t[2] - center).length(), radius, 1e-9 * radius);

        double minAngle = 0.0, maxAngle = 0.0;
        getCornerAngles(t[0], t[1], t[2], minAngle, maxAngle);
        // Law of sines: the shortest edge lies opposite the smallest angle.
        const double minLen =
            std::min({(t[1] - t[0]).length(), (t[2] - t[1]).length(), (t[0] - t[2]).length()});
        EXPECT_NEAR(2.0 * radius * std::sin(minAngle / DEGREES_PER_RAD), minLen, 1e-9);
        const double maxLen =
            std::max({(t[1] - t[0]).length(), (t[2] - t[1]).length(), (t[0] - t[2]).length()});
        EXPECT_NEAR(2.0 * radius * std::sin(maxAngle / DEGREES_PER_RAD), maxLen, 1e-9);
        EXPECT_GE(maxAngle, 59.999);
    }
}

TEST(Plane, MeasuresSignedDistances)
{
    const Plane plane({0, 0, 5}, {0, 0, -3});
    EXPECT_EQ(plane.getSignedDistance({7, 8, 3}), 2.0);
    EXPECT_EQ(plane.getDistance({7, 8, 6}), 1.0);
    EXPECT_TRUE(plane.isPositive({0, 0, 4}));
    EXPECT_FALSE(plane.isPositive({1, 1, 5}));

    const std::vector<Point3> vPoints = randomPoints(300, 4);
    for (std::size_t i = 0; i + 2 < vPoints.size(); i += 3)
    {
        const Plane fitted(vPoints[i], vPoints[i + 1], vPoints[i + 2]);
        bool bOK = false;
        const Vector3 nnv = getNormalVector(&vPoints[i], &vPoints[i + 1], &vPoints[i + 2], bOK);
        EXPECT_NEAR(fitted.getNV() * nnv, 1.0, 1e-14);
        for (std::size_t k = i; k < i + 3; ++k)
            EXPECT_NEAR(fitted.getSignedDistance(vPoints[k]), 0.0, 1e-12);
    }
    const StreamCapture out(std::cout);
    EXPECT_THROW((void)Plane({0, 0, 0}, {1, 0, 0}, {2, 0, 0}), ZefBugException);
    EXPECT_TRUE(out.contains("WARNING: Degenerate plane"));
}

TEST(Tools, EdgePlaneStandsOnItsEdge)
{
    const std::array<Point3, 3> t = {Point3(0, 0, 1), Point3(4, 1, 2), Point3(1, 3, -1)};
    bool bOK = false;
    const Vector3 nnv = getNormalVector(&t[0], &t[1], &t[2], bOK);
    for (int idx = 0; idx < 3; ++idx)
    {
        SCOPED_TRACE(idx);
        const Plane plane = getEdgePlane(&t[0], &t[1], &t[2], idx);
        const auto i = static_cast<std::size_t>(idx);
        EXPECT_TRUE(plane.isPositive(t[i]));
        EXPECT_NEAR(plane.getDistance(t[(i + 1) % 3]), 0.0, 1e-14);
        EXPECT_NEAR(plane.getDistance(t[(i + 2) % 3]), 0.0, 1e-14);
        EXPECT_NEAR(plane.getNV() * nnv, 0.0, 1e-14);
    }
    const StreamCapture out(std::cout);
    EXPECT_THROW((void)getEdgePlane(&t[0], &t[1], &t[2], 3), ZefBugException);
    EXPECT_THROW((void)getEdgePlane(&t[0], &t[1], &t[0], 0), ZefBugException);
    EXPECT_TRUE(out.contains("Condition [ p2!=p0 failed ]"));
}

TEST(Tools, EstimatedNormalFindsThePlane)
{
    for (const Vector3& across : {Vector3(1, 0, 0), Vector3(0.1, 1, 0.2), Vector3(1, -1, 5)})
    {
        const Vector3 trueNV = normalize(across);
        std::vector<Point3> vPoints = randomPoints(50, 5);
        Point3 mean;
        for (Point3& p : vPoints)
        {
            const Vector3 v = p - Point3();
            p = p - trueNV * (v * trueNV - 7.0);
            mean = mean + (p - Point3()) / 50.0;
        }
        Vector3 nv;
        Point3 centroid;
        ASSERT_TRUE(estimateNNV(pointersTo(vPoints), nv, centroid));
        EXPECT_NEAR(std::fabs(nv * trueNV), 1.0, 1e-12);
        EXPECT_NEAR((centroid - mean).length(), 0.0, 1e-13);
    }
    Vector3 nv(1, 2, 3);
    Point3 centroid(4, 5, 6);
    std::vector<Point3> vPoints(2);
    EXPECT_FALSE(estimateNNV(pointersTo(vPoints), nv, centroid));
    vPoints = {{1, 0, 0}, {2, 0, 0}, {3, 0, 0}};
    EXPECT_FALSE(estimateNNV(pointersTo(vPoints), nv, centroid));
    EXPECT_EQ(nv.z(), 3.0);
    EXPECT_EQ(centroid, Point3(4, 5, 6));
    vPoints.back().set(NOT_A_NUMBER, 0, 0);
    const StreamCapture out(std::cout);
    EXPECT_THROW((void)estimateNNV(pointersTo(vPoints), nv, centroid), ZefBugException);
}

TEST(Tools, VolumeOfAClosedSurface)
{
    EXPECT_EQ(computeVolume(std::vector<Point3>()), 0.0);
    std::vector<Point3> vCorners = makeCube({10, -20, 30});
    EXPECT_NEAR(computeVolume(vCorners), 1.0, 1e-12);
    EXPECT_EQ(computeVolume(pointersTo(vCorners)), computeVolume(vCorners));
    std::reverse(vCorners.begin(), vCorners.end());
    EXPECT_NEAR(computeVolume(vCorners), -1.0, 1e-12);
    vCorners.insert(vCorners.end(), 3, Point3(99, 99, 99));
    EXPECT_NEAR(computeVolume(vCorners), -1.0, 1e-12);
}

TEST(Tools, SortRingClosesAShuffledPolygon)
{
    for (const int numCorners : {1, 2, 3, 50})
    {
        SCOPED_TRACE(numCorners);
        std::vector<Segment3> vSegments = makePolygon(numCorners);
        zefShuffle(vSegments.begin(), vSegments.end());
        for (Segment3& segment : vSegments)
            if (zefRand() % 2 == 0)
                segment.swap();
        const std::vector<Segment3> vBefore = vSegments;
        ASSERT_TRUE(sortRing(vSegments));
        ASSERT_EQ(vSegments.size(), vBefore.size());
        EXPECT_EQ(vSegments.front().getTarget(), vBefore.front().getTarget());
        for (std::size_t i = 0; i < vSegments.size(); ++i)
            EXPECT_EQ(vSegments[i].getTarget(), vSegments[(i + 1) % vSegments.size()].getSource());
        for (const Segment3& segment : vBefore)
            EXPECT_EQ(std::count(vSegments.begin(), vSegments.end(), segment),
                      std::count(vBefore.begin(), vBefore.end(), segment));
    }
}

TEST(Tools, SortRingRefusesWhatIsNoRing)
{
    std::vector<Segment3> vOpen = makePolygon(6);
    vOpen.pop_back();
    std::vector<Segment3> vBranching = makePolygon(6);
    vBranching.emplace_back(vBranching[2].getTarget(), Point3(9, 9, 9));
    std::vector<Segment3> vWithNaN = makePolygon(3);
    vWithNaN[2] = Segment3(vWithNaN[1].getTarget(), Point3(NOT_A_NUMBER, 0, 0));
    const struct
    {
        const char* name;
        std::vector<Segment3> vSegments;
        const char* message;
    } rows[] = {
        {"empty", {}, ""},
        {"open chain", vOpen, "Distance=1\n\n      [ZEF Message] sortRing(), WARNING: Not a ring1\n\n"},
        {"three at a point", vBranching,
         "Distance=3\n\n      [ZEF Message] sortRing(), WARNING: Not a ring1\n\n"},
        {"ends in NaN", vWithNaN, "Distance=1\n\n      [ZEF Message] sortRing(), WARNING: Not a ring1\n\n"},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.name);
        std::vector<Segment3> vSegments = row.vSegments;
        const StreamCapture out(std::cout);
        EXPECT_FALSE(sortRing(vSegments));
        EXPECT_EQ(out.text(), row.message);
        EXPECT_EQ(vSegments.size(), row.vSegments.size());
    }
}

} // namespace TARN_ZEF

#include "core/zefRand.h"
#include "geometry/Plane.h"
#include "geometry/Segment3.h"
#include "geometry/tools.h"
#include "helpers/StreamCapture.h"
#include "helpers/meshShapes.h"
#include "testDataGenerators.h"

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
}

TEST(Tools, NumberTestsAgreeWithTheStandard)
{
    const double values[] = {
        0.0,       5e-324,       LOWEST_DBL,    INFINITE,
        -INFINITE, NOT_A_NUMBER, -NOT_A_NUMBER, std::bit_cast<double>(u64(0x7ff0000000000001))};
    for (const double value : values)
    {
        EXPECT_EQ(isNaN(value), std::isnan(value)) << value;
        EXPECT_EQ(isInf(value), std::isinf(value)) << value;
    }
}

TEST(Tools, AnglesOfUnitVectorsAndDegenerateInput)
{
    const Vector3 x(1, 0, 0);
    EXPECT_LT(getAngleDegree(x, {0, 1, 0}), 90.0); // the constant is truncated
    EXPECT_NEAR(getAngleDegree(x, {0, 1, 0}), 90.0, 1e-9);
    EXPECT_EQ(getAngleDegree(x, {1.0000001, 0, 0}), 0.0);
    EXPECT_EQ(getAngleRad(x, {1.0000001, 0, 0}), 0.0);
    EXPECT_EQ(getAngleDegree(x, {-1.0000001, 0, 0}), 180.0);
    EXPECT_EQ(getAngleRad(x, {-1.0000001, 0, 0}), 6.283185307);
    EXPECT_TRUE(isNaN(getAngleDegree(x, {NOT_A_NUMBER, 0, 0})));
    const StreamCapture out;
    const StreamCapture errors(std::cerr);
    for (const double len : {0.0, 0.8999, 1.1001, INFINITE})
        EXPECT_THROW((void)getAngleDegree(x, {0, len, 0}), ZefBugException) << len;
    EXPECT_EQ(computeArea(1, 1, 5), 0.0);
    EXPECT_THROW((void)computeArea(1, NOT_A_NUMBER, 1), ZefBugException);
    EXPECT_THROW((void)Plane({0, 0, 0}, {1, 0, 0}, {2, 0, 0}), ZefBugException);
    EXPECT_THROW((void)getFootPoint3D({1, 0, 0}, {1, -0.0, 0}, {5, 5, 5}), ZefBugException);
}

// Each measure by another way to the same number.
TEST(Tools, MeasuresOfRandomTrianglesAgree)
{
    const std::vector<Point3> vPoints = randomPoints(600, 3);
    for (std::size_t i = 0; i + 2 < vPoints.size(); i += 3)
    {
        SCOPED_TRACE(i);
        const Point3& a = vPoints[i];
        const Point3& b = vPoints[i + 1];
        const Point3& c = vPoints[i + 2];
        const Vector3 cross = crossProduct(b - a, c - a);
        EXPECT_NEAR(getArea(a, b, c), 0.5 * cross.length(), 1e-9);
        EXPECT_NEAR(getAreaByCross(a, b, c), 0.5 * cross.length(), 1e-14);
        EXPECT_NEAR(getDistanceToLine(a, b, c), cross.length() / (b - a).length(), 1e-12);
        const Point3 foot = getFootPoint3D(a, b, c);
        EXPECT_NEAR((c - foot) * (b - a), 0.0, 1e-13);
        EXPECT_NEAR(crossProduct(foot - a, b - a).length(), 0.0, 1e-13);

        const Plane plane(a, b, c);
        EXPECT_NEAR(plane.getNV() * normalize(cross), 1.0, 1e-14);
        for (const Point3& corner : {a, b, c})
            EXPECT_NEAR(plane.getSignedDistance(corner), 0.0, 1e-12);

        const Point3 center = getCircumCenter(a, b, c);
        const double radius = (a - center).length();
        EXPECT_NEAR((b - center).length(), radius, 1e-9 * radius);
        EXPECT_NEAR((c - center).length(), radius, 1e-9 * radius);
        // Law of sines: the shortest edge lies opposite the smallest angle.
        double minAngle = 0.0, maxAngle = 0.0;
        getCornerAngles(a, b, c, minAngle, maxAngle);
        const auto [minLen, maxLen] = std::minmax({(b - a).length(), (c - b).length(), (a - c).length()});
        EXPECT_NEAR(2.0 * radius * std::sin(minAngle / DEGREES_PER_RAD), minLen, 1e-9);
        EXPECT_NEAR(2.0 * radius * std::sin(maxAngle / DEGREES_PER_RAD), maxLen, 1e-9);
    }
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
}

TEST(Tools, VolumeOfAClosedSurface)
{
    EXPECT_EQ(computeVolume(std::vector<Point3>()), 0.0);
    std::vector<Point3> vCorners = boxSoup({10, -20, 30}, {1, 1, 1});
    EXPECT_NEAR(computeVolume(vCorners), 1.0, 1e-12);
    EXPECT_EQ(computeVolume(pointersTo(vCorners)), computeVolume(vCorners));
    std::reverse(vCorners.begin(), vCorners.end());
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

TEST(Tools, SortRingLeavesSegmentsWithoutPlaceAside)
{
    const StreamCapture out;
    const Point3 nowhere(NOT_A_NUMBER, NOT_A_NUMBER, NOT_A_NUMBER);
    for (int round = 0; round < 20; ++round)
    {
        std::vector<Segment3> vSegments = makePolygon(40);
        for (int i = 0; i < 15; ++i)
            vSegments.emplace_back(nowhere, nowhere);
        zefShuffle(vSegments.begin() + 1, vSegments.end()); // the first one is of the ring
        EXPECT_TRUE(sortRing(vSegments));
        EXPECT_EQ(vSegments.size(), 40u);
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
    const StreamCapture out;
    for (const std::vector<Segment3>& vNoRing : {std::vector<Segment3>(), vOpen, vBranching, vWithNaN})
    {
        std::vector<Segment3> vSegments = vNoRing;
        EXPECT_FALSE(sortRing(vSegments));
        EXPECT_EQ(vSegments.size(), vNoRing.size());
    }
}

} // namespace TARN_ZEF

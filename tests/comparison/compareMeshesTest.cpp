#include "compareMeshes.h"

#include "Mesh.h"
#include "ZefRefusedException.h"
#include "comparison/TriangleTree.h"
#include "helpers/StreamCapture.h"
#include "parallel/WorkerPool.h"
#include "remesh/triangles.h"
#include "zef_formats.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

namespace TARN_ZEF
{
namespace
{
struct Surface
{
    std::vector<Point3> vPoints;
    std::vector<int> vCorners;
};

// A square in the plane of that height, in num by num cells.
[[nodiscard]] Surface makeSheet(double size, double height, int num)
{
    Surface sheet;
    for (int y = 0; y <= num; ++y)
        for (int x = 0; x <= num; ++x)
            sheet.vPoints.emplace_back(size * x / num, size * y / num, height);
    for (int y = 0; y < num; ++y)
        for (int x = 0; x < num; ++x)
        {
            const int i = y * (num + 1) + x;
            sheet.vCorners.insert(sheet.vCorners.end(), {i, i + 1, i + num + 2, i, i + num + 2, i + num + 1});
        }
    return sheet;
}

[[nodiscard]] Surface makeSoup(int numTriangles, std::mt19937_64& rng)
{
    const auto some = [&rng](double range) { return range * static_cast<double>(rng() % 2000001) / 1e6; };
    Surface soup;
    for (int i = 0; i < numTriangles; ++i)
    {
        const Point3 middle(some(1.0), some(1.0), some(1.0));
        for (int k = 0; k < 3; ++k)
        {
            soup.vCorners.push_back(static_cast<int>(soup.vPoints.size()));
            soup.vPoints.push_back(middle + Vector3(some(0.1), some(0.1), i % 7 == 0 ? 0.0 : some(0.1)));
        }
    }
    return soup;
}

[[nodiscard]] MeshComparison compare(const Surface& a, const Surface& b, std::size_t numSamples = 20000)
{
    CompareOptions options;
    options.numSamples = numSamples;
    return compareMeshes(a.vPoints, a.vCorners, b.vPoints, b.vCorners, options);
}

void expectSame(const SurfaceDistances& a, const SurfaceDistances& b, double factor = 1.0)
{
    EXPECT_EQ(factor * a.mean, b.mean);
    EXPECT_EQ(factor * a.rms, b.rms);
    EXPECT_EQ(factor * a.percentile99, b.percentile99);
    EXPECT_EQ(factor * a.largest, b.largest);
    EXPECT_EQ(Point3() + (a.largestPlace - Point3()) * factor, b.largestPlace);
    ASSERT_EQ(a.vAtPoints.size(), b.vAtPoints.size());
    for (std::size_t i = 0; i < a.vAtPoints.size(); ++i)
        EXPECT_EQ(factor * a.vAtPoints[i], b.vAtPoints[i]);
}
} // namespace

TEST(CompareMeshes, TreeFindsWhatALookAtAllTrianglesFinds)
{
    std::mt19937_64 rng(11);
    for (const int num : {1, 3, 4, 5, 17, 300})
    {
        const Surface soup = makeSoup(num, rng);
        const TriangleTree tree(soup.vPoints, soup.vCorners);
        for (int i = 0; i < 200; ++i)
        {
            const double reach = i % 2 == 0 ? 1.2 : 20.0;
            const auto some = [&] { return reach * static_cast<double>(rng() % 1000001) / 1e6; };
            const Point3 p(some(), some(), some());
            double least = INFINITY;
            for (std::size_t t = 0; t < soup.vCorners.size(); t += 3)
                least = std::min(
                    least,
                    nearestOnTriangle(p, soup.vPoints[t], soup.vPoints[t + 1], soup.vPoints[t + 2]).sqDist);
            EXPECT_NEAR(std::sqrt(tree.find(p).sqDistance), std::sqrt(least), 1e-12) << num << ", " << i;
        }
    }
}

TEST(CompareMeshes, SheetsOneAboveTheOtherAreTheirHeightApart)
{
    const MeshComparison found = compare(makeSheet(4.0, 0.0, 3), makeSheet(4.0, 0.5, 5));
    for (const SurfaceDistances* p : {&found.toSecond, &found.toFirst})
    {
        EXPECT_EQ(p->numSamples, 20000u);
        for (const double value : {p->mean, p->rms, p->percentile99, p->largest})
            EXPECT_NEAR(value, 0.5, 1e-12);
    }
}

// A small sheet lies in the corner of a large one: from it nothing is far, from the large one the other corner is.
TEST(CompareMeshes, WhatOnlyOneHasShowsInOneDirection)
{
    const MeshComparison found = compare(makeSheet(1.0, 0.0, 2), makeSheet(3.0, 0.0, 3));
    EXPECT_NEAR(found.toSecond.largest, 0.0, 1e-12);
    EXPECT_NEAR(found.toFirst.largest, std::sqrt(8.0), 1e-12);
    EXPECT_EQ(found.toFirst.largestPlace, Point3(3.0, 3.0, 0.0));
    EXPECT_EQ(found.toFirst.nearestToThere, Point3(1.0, 1.0, 0.0));
    // Of the nine squares one is covered. From two strips of two squares the way is straight and 1 in the mean; from
    // the other four it leads to the corner, from which a square of edge 2 is so far in the mean:
    const double toCorner = 2.0 * (std::sqrt(2.0) + std::asinh(1.0)) / 3.0;
    EXPECT_NEAR(found.toFirst.mean, (2.0 * 2.0 * 1.0 + 4.0 * toCorner) / 9.0, 2e-3);
}

TEST(CompareMeshes, ThreadsScaleAndDirectionChangeNothing)
{
    std::mt19937_64 rng(5);
    const Surface a = makeSoup(400, rng);
    const Surface b = makeSoup(300, rng);
    const MeshComparison found = compare(a, b);
    expectSame(compare(b, a).toFirst, found.toSecond);
    const int numThreads = getNumThreads();
    setNumThreads(1);
    const MeshComparison alone = compare(a, b);
    setNumThreads(numThreads);
    expectSame(alone.toSecond, found.toSecond);
    expectSame(alone.toFirst, found.toFirst);
    Surface bigA = a;
    Surface bigB = b;
    for (Surface* p : {&bigA, &bigB})
        for (Point3& point : p->vPoints)
            point.set(1024.0 * point.x(), 1024.0 * point.y(), 1024.0 * point.z());
    expectSame(found.toSecond, compare(bigA, bigB).toSecond, 1024.0);
}

TEST(CompareMeshes, OddSurfacesAreMeasuredOrRefused)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Surface sheet = makeSheet(1.0, 0.0, 2);
    // A needle without area, beside a triangle that is not finite.
    const Surface needle{{{0, 0, 2}, {1, 0, 2}, {0.5, 0, 2}, {nan, 0, 0}}, {0, 1, 2, 0, 1, 3}};
    const MeshComparison found = compare(needle, sheet);
    EXPECT_NEAR(found.toSecond.mean, 2.0, 1e-12);
    EXPECT_TRUE(std::isnan(found.toSecond.vAtPoints[3]));
    EXPECT_NEAR(found.toFirst.largest, std::sqrt(5.0), 1e-12);

    const struct
    {
        const char* name;
        Surface surface;
    } refused[] = {
        {"nothing", {}},
        {"no finite triangle", {{{nan, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {0, 1, 2}}},
        {"two corners", {{{0, 0, 0}, {1, 0, 0}}, {0, 1}}},
        {"no such point", {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {0, 1, 3}}},
        {"squares overflow", {{{0, 0, 0}, {1e200, 0, 0}, {0, 1, 0}}, {0, 1, 2}}},
        {"far away", {{{1e200, 0, 0}, {1e200, 1, 0}, {1e200, 0, 1}}, {0, 1, 2}}},
    };
    const StreamCapture quiet;
    for (const auto& c : refused)
    {
        SCOPED_TRACE(c.name);
        EXPECT_THROW(static_cast<void>(compare(c.surface, sheet)), ZefBadArgument);
        EXPECT_THROW(static_cast<void>(compare(sheet, c.surface)), ZefBadArgument);
    }
    EXPECT_THROW(static_cast<void>(compare(sheet, sheet, 0)), ZefBadArgument);
}

TEST(CompareMeshes, MeshesAreComparedAsTheirTriangles)
{
    const Surface sheet = makeSheet(2.0, 0.25, 4);
    TriangleData data;
    data.vPoints = sheet.vPoints;
    data.vCorners.assign(sheet.vCorners.begin(), sheet.vCorners.end());
    const auto pMesh = makeMesh(data);
    for (Point3& p : data.vPoints)
        p.set(p.x(), p.y(), 0.0);
    EXPECT_NEAR(compareMeshes(*pMesh, *makeMesh(data)).toFirst.rms, 0.25, 1e-12);
}

} // namespace TARN_ZEF

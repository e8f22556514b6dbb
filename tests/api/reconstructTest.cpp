// The public calls from end to end: shapes with known answers, refusals, random clouds, repeatability.
#include "zef.h"

#include "geometry/tools.h"
#include "helpers/PipelineMesh.h"
#include "helpers/finishedMeshes.h"
#include "helpers/meshShapes.h"
#include "parallel/WorkerPool.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <thread>

namespace TARN_ZEF
{
namespace
{
using Points = std::vector<Point3>;

const double PI = 3.14159265358979;

// A tilted square lattice of n by n points, 1 apart, with a round hole.
Points patchCloud(int n, double holeRadius)
{
    Points v;
    for (int i = 0; i < n; ++i)
        for (int k = 0; k < n; ++k)
            if (std::hypot(i - n / 2.0, k - n / 2.0) >= holeRadius)
                v.emplace_back(i * 0.96, k, i * 0.28);
    return v;
}

void expectManifold(const RMesh& mesh, long euler)
{
    expectConsistent(mesh);
    EXPECT_EQ(countEdges(mesh, -1), 0u);
    EXPECT_EQ(countDisagreeing(mesh), 0u);
    EXPECT_EQ(getEulerNumber(mesh), euler);
}
} // namespace

TEST(Reconstruct, closedShapesEndClosedAndFaceOutward)
{
    struct Row
    {
        const char* name;
        Points cloud;
        bool bSmooth;
        long euler;
        double volume;
    };
    Points nested = makeCloud(8000, 0.0, 0.0);
    for (const Point3& p : makeCloud(2000, 0.0, 0.0))
        nested.emplace_back(0.5 * p.x(), 0.5 * p.y(), 0.5 * p.z());
    const double ball = 4000.0 / 3.0 * PI;
    // The inner ball of the nested pair faces outward too: each component is judged alone.
    for (Row& row : std::vector<Row>{{"ball", makeCloud(10000, 0.0, 0.0), false, 2, ball},
                                     {"noisy ball, smoothed", makeCloud(10000, 0.0, 0.05), true, 2, ball},
                                     {"torus", makeCloud(10000, 4.0, 0.0), false, 0, 2 * PI * PI * 160.0},
                                     {"nested balls", nested, false, 4, ball * 1.125}})
    {
        SCOPED_TRACE(row.name);
        const std::shared_ptr<Mesh> pMesh = reconstruct_auto(row.cloud, row.bSmooth, 1.0);
        ASSERT_TRUE(pMesh);
        expectManifold(*pMesh->getRMesh(), row.euler);
        EXPECT_EQ(countEdges(*pMesh->getRMesh(), 1), 0u);
        EXPECT_NEAR(computeVolume(getCorners(*pMesh)), row.volume, 0.02 * row.volume);
    }
}

// Uneven samples, noise of a fifth of the spacing on the balls.
TEST(Reconstruct, randomSamplesEndClosedAndManifold)
{
    for (unsigned int seed = 0; seed < 24; ++seed)
    {
        SCOPED_TRACE(seed);
        const bool bBall = seed % 2 == 0;
        std::mt19937 rng(seed);
        std::normal_distribution<double> gauss(0.0, 1.0);
        std::uniform_real_distribution<double> turn(0.0, 2 * PI);
        Points cloud;
        while (cloud.size() < 10000)
        {
            const double a = turn(rng);
            const double b = turn(rng);
            const Vector3 dir = normalize(Vector3(gauss(rng), gauss(rng), gauss(rng)));
            if (bBall)
                cloud.push_back(Point3(0, 0, 0) + dir * (1.0 + 0.007 * gauss(rng)));
            else if (turn(rng) * 1.4 < (1 + 0.4 * std::cos(b)) * 2 * PI)
                cloud.emplace_back((1 + 0.4 * std::cos(b)) * std::cos(a),
                                   (1 + 0.4 * std::cos(b)) * std::sin(a), 0.4 * std::sin(b));
        }
        const std::shared_ptr<Mesh> pMesh = reconstruct_auto(cloud, false, 1.4);
        ASSERT_TRUE(pMesh);
        expectManifold(*pMesh->getRMesh(), bBall ? 2 : 0);
        EXPECT_EQ(countEdges(*pMesh->getRMesh(), 1), 0u);
    }
}

// At a sharp edge cells of both faces lie side by side, and raw sheets touch there in corners and edges.
TEST(Reconstruct, boxesInAnyPositionEndClosedAndManifold)
{
    for (unsigned int seed = 0; seed < 24; ++seed)
    {
        SCOPED_TRACE(seed);
        const bool bLattice = seed % 2 == 0;
        std::mt19937 rng(seed);
        std::normal_distribution<double> gauss(0.0, 1.0);
        std::uniform_real_distribution<double> pick(0.0, 1.0);
        const Vector3 ex = normalize(Vector3(gauss(rng), gauss(rng), gauss(rng)));
        const Vector3 ey = normalize(crossProduct(ex, Vector3(gauss(rng), gauss(rng), gauss(rng))));
        const Vector3 ez = crossProduct(ex, ey);
        int aSize[3];
        for (int& size : aSize)
            size = 20 + static_cast<int>(rng() % 40);
        Points cloud;
        const auto add = [&](double x, double y, double z)
        { cloud.push_back(Point3(0, 0, 0) + ex * x + ey * y + ez * z); };
        for (int x = 0; x <= aSize[0]; ++x)
            for (int y = 0; y <= aSize[1]; ++y)
                for (int z = 0; z <= aSize[2]; ++z)
                {
                    const bool aInside[3] = {x % aSize[0] != 0, y % aSize[1] != 0, z % aSize[2] != 0};
                    if (aInside[0] && aInside[1] && aInside[2])
                        continue;
                    // Off the lattice, but never off a face.
                    double aOff[3] = {};
                    for (int i = 0; !bLattice && i < 3; ++i)
                        aOff[i] = aInside[i] ? pick(rng) - 0.5 : 0.0;
                    add(x + aOff[0], y + aOff[1], z + aOff[2]);
                }
        const std::shared_ptr<Mesh> pMesh = reconstruct_auto(cloud, false, bLattice ? 1.0 : 1.3);
        ASSERT_TRUE(pMesh);
        expectManifold(*pMesh->getRMesh(), 2);
        EXPECT_EQ(countEdges(*pMesh->getRMesh(), 1), 0u);
    }
}

TEST(Reconstruct, openPatchKeepsOneLoopForEachBorder)
{
    struct Row
    {
        const char* name;
        double holeRadius;
        std::size_t numLoops;
    };
    for (const Row& row : {Row{"no hole", 0.0, 1}, Row{"hole of some 30 cells around", 5.0, 1},
                           Row{"hole of some 80 cells around", 13.0, 2}})
    {
        SCOPED_TRACE(row.name);
        Points cloud = patchCloud(60, row.holeRadius);
        const std::shared_ptr<Mesh> pMesh = reconstruct_abs(cloud, false, 1.02);
        ASSERT_TRUE(pMesh);
        expectManifold(*pMesh->getRMesh(), 2 - static_cast<long>(row.numLoops));
        EXPECT_EQ(countBorderLoops(*pMesh->getRMesh()), row.numLoops);
    }
}

TEST(Reconstruct, refusalsAreThoseOfTheTable)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    Points line;
    for (int i = 0; i < 200; ++i)
        line.emplace_back(0.5 * i, 0.5 * i, 0.5 * i);
    enum Answer
    {
        EMPTY,           // an empty pointer
        EMPTY_OR_HOLLOW, // or a mesh without triangles
        REFUSED          // ZefBugException
    };
    struct Row
    {
        const char* name;
        Points cloud;
        Answer automatic;
        Answer spacingOne;
    };
    for (Row& row : std::vector<Row>{
             {"no points", {}, EMPTY, EMPTY},
             {"only NaN and infinity", {{nan, 0, 0}, {0, inf, 0}, {0, 0, -inf}}, EMPTY, EMPTY},
             {"one point", {{1, 2, 3}}, REFUSED, EMPTY_OR_HOLLOW},
             {"identical points", Points(50, Point3(1, 2, 3)), REFUSED, EMPTY_OR_HOLLOW},
             {"two points", {{0, 0, 0}, {5, 0, 0}}, EMPTY_OR_HOLLOW, EMPTY_OR_HOLLOW},
             {"a line", line, EMPTY_OR_HOLLOW, EMPTY_OR_HOLLOW},
             {"far beyond the lattice", {{-1e308, 0, 0}, {1e308, 0, 0}, {0, 1e308, 0}}, REFUSED, REFUSED},
             {"far outlier",
              {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {1, 1, 0}, {1e15, 0, 0}},
              EMPTY_OR_HOLLOW,
              REFUSED},
         })
    {
        SCOPED_TRACE(row.name);
        const auto check = [](Answer answer, const std::function<std::shared_ptr<Mesh>()>& call)
        {
            if (answer == REFUSED)
            {
                EXPECT_THROW(static_cast<void>(call()), ZefBugException);
                return;
            }
            const std::shared_ptr<Mesh> pMesh = call();
            if (answer == EMPTY)
            {
                EXPECT_FALSE(pMesh);
            }
            else
            {
                EXPECT_TRUE(!pMesh || pMesh->getRMesh()->getNumT() == 0);
            }
        };
        check(row.automatic, [&] { return reconstruct_auto(row.cloud, false, 1.0); });
        check(row.spacingOne, [&] { return reconstruct_abs(row.cloud, false, 1.0); });
    }
    Points ball = makeCloud(500, 0.0, 0.0);
    for (const double bad : {0.0, -1.0, nan})
    {
        EXPECT_THROW(static_cast<void>(reconstruct_auto(ball, false, bad)), ZefBugException);
        EXPECT_THROW(static_cast<void>(reconstruct_abs(ball, false, bad)), ZefBugException);
    }
    EXPECT_THROW(static_cast<void>(reconstruct_abs(ball, false, 1e-9)), ZefBugException)
        << "spacing too fine";
    Points none;
    EXPECT_EQ(estimateAvgSpacing(none), -1.0);
    // After a refusal the next call works.
    EXPECT_TRUE(reconstruct_auto(ball, false, 1.0));
}

TEST(Reconstruct, badPointsAndDuplicatesDoNotChangeTheRest)
{
    Points cloud = makeCloud(3000, 0.0, 0.0);
    const std::shared_ptr<Mesh> pClean = reconstruct_abs(cloud, false, 0.8);
    Points spoilt;
    for (const Point3& p : cloud)
    {
        spoilt.push_back(p);
        spoilt.emplace_back(p.x(), std::numeric_limits<double>::quiet_NaN(), p.z());
    }
    const std::shared_ptr<Mesh> pSpoilt = reconstruct_abs(spoilt, false, 0.8);
    EXPECT_EQ(pSpoilt->getRMesh()->getNumT(), pClean->getRMesh()->getNumT());
    Points turned(cloud.rbegin(), cloud.rend());
    const std::shared_ptr<Mesh> pTurned = reconstruct_abs(turned, false, 0.8);
    EXPECT_EQ(pTurned->getRMesh()->getNumT(), pClean->getRMesh()->getNumT())
        << "the order of the points does not matter";
}

TEST(Reconstruct, sameBitsForAnyNumberOfThreads)
{
    // A thread of its own for each run: random states start afresh.
    Points cloud;
    generateSampleSurface(20000, 5, cloud);
    std::vector<Points> vResults;
    const int before = getNumThreads();
    for (const int numThreads : {1, 2, 4, 2})
    {
        setNumThreads(numThreads);
        std::thread([&] { vResults.push_back(getCorners(*reconstruct_auto(cloud, true, 1.0))); }).join();
    }
    setNumThreads(before);
    for (const Points& result : vResults)
        EXPECT_EQ(result, vResults.front());
}

// Mixtures of lattices, lines, planes, duplicates and blobs: no exception, no hang, and a sound mesh.
TEST(Reconstruct, randomCloudsGiveSoundMeshes)
{
    std::mt19937 rng(99);
    const auto unit = [&rng] { return static_cast<double>(rng() % 100000) / 100000.0; };
    for (int run = 0; run < 150; ++run)
    {
        SCOPED_TRACE(run);
        Points cloud{{0.0, 0.0, 0.0}, {10.0, 10.0, 10.0}};
        const auto numParts = 1 + rng() % 4;
        for (unsigned int part = 0; part < numParts; ++part)
        {
            const Point3 at(10 * unit(), 10 * unit(), 10 * unit());
            const double size = 0.5 + 5 * unit();
            const unsigned int num = 1 + rng() % 400;
            const unsigned int kind = rng() % 5;
            for (unsigned int i = 0; i < num; ++i)
            {
                const double a = unit() * size, b = unit() * size, c = unit() * size;
                const Vector3 offset = kind == 0   ? Vector3(std::round(a), std::round(b), std::round(c))
                                       : kind == 1 ? Vector3(a, a, a)
                                       : kind == 2 ? Vector3(a, b, 0.3 * a)
                                       : kind == 3 ? Vector3(0.0, 0.0, 0.0)
                                                   : Vector3(a, b, c);
                cloud.push_back(at + offset);
            }
        }
        const std::shared_ptr<Mesh> pMesh = run % 3 == 0 ? reconstruct_auto(cloud, run % 2 == 0, 1.0 + unit())
                                                         : reconstruct_abs(cloud, run % 2 == 0, 0.2 + unit());
        if (!pMesh)
            continue;
        expectConsistent(*pMesh->getRMesh());
    }
}

TEST(Melt, cubeComesBackEvenAndClosed)
{
    Points soup = boxSoup({0.0, 0.0, 0.0}, {1.0, 1.0, 1.0});
    Points points{{7, 7, 7}};
    toCloud(soup, 0.05, 30.0, points);
    EXPECT_EQ(points.size(), 1u + 6 * 20 * 20 + 2) << "20 cells along an edge; what was there stays";
    EXPECT_EQ(points.front(), Point3(7, 7, 7));

    const std::shared_ptr<Mesh> pMesh = melt(soup, 0.05, 30.0);
    ASSERT_TRUE(pMesh);
    expectManifold(*pMesh->getRMesh(), 2);
    EXPECT_EQ(countEdges(*pMesh->getRMesh(), 1), 0u);
    EXPECT_NEAR(computeVolume(getCorners(*pMesh)), 1.0, 0.01);

    soup.pop_back();
    EXPECT_THROW(static_cast<void>(melt(soup, 0.05, 30.0)), ZefBugException) << "not divisible by 3";
    EXPECT_THROW(static_cast<void>(melt(soup, 0.0, 30.0)), ZefBugException);
}

TEST(Melt, oddSoupsGiveSoundResults)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    struct Row
    {
        const char* name;
        Points soup;
        bool bEmpty;
    };
    const Point3 a(0, 0, 0), b(0, 0, 9);
    const Points threeOnAnEdge = {a, b, {9, 0, 0}, a, b, {-5, 7, 0}, a, b, {-5, -7, 0}};
    for (Row& row : std::vector<Row>{
             {"one triangle", {{0, 0, 0}, {9, 0, 0}, {0, 9, 1}}, false},
             {"needle", {{0, 0, 0}, {60, 0, 0}, {30, 1e-7, 0}}, false},
             {"folded pair", {{0, 0, 0}, {9, 0, 0}, {0, 9, 0}, {0, 0, 0}, {9, 0, 0}, {0, 9, 1e-9}}, false},
             {"long edges", {{5e6, 5e6, 0}, {5e6 + 1000, 5e6, 0.6}, {5e6, 5e6 + 4, 0}}, false},
             {"equal corners only", {{1, 1, 1}, {1, 1, 1}, {2, 2, 2}}, true},
             {"a triangle with NaN", {{nan, 0, 0}, {1, 0, 0}, {0, 1, 0}}, true},
             {"far from the origin", {{5e6, 5e6, 5e6}, {5e6 + 9, 5e6, 5e6}, {5e6, 5e6 + 9, 5e6}}, false},
             {"three on an edge", threeOnAnEdge, false},
         })
    {
        SCOPED_TRACE(row.name);
        const std::shared_ptr<Mesh> pMesh = melt(row.soup, 1.0, 30.0);
        EXPECT_EQ(!pMesh, row.bEmpty);
        if (pMesh)
            expectConsistent(*pMesh->getRMesh());
    }
}

} // namespace TARN_ZEF

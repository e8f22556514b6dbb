// The public calls from end to end: shapes with known answers, refusals, random clouds, repeatability.
#include "zef.h"

#include "RMesh.h"
#include "WorkerPool.h"
#include "helpers/checkMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>
#include <limits>
#include <random>
#include <thread>

namespace TARN_ZEF
{
namespace
{
using Cloud = std::vector<Point3>;

const double PI = 3.14159265358979;

// Evenly spread points on the unit ball, about the square root of (4 pi / num) apart.
Cloud ballCloud(int num, double noise = 0.0)
{
    std::mt19937 rng(1);
    std::normal_distribution<double> gauss(0.0, 1.0);
    Cloud v;
    for (int i = 0; i < num; ++i)
    {
        const double z = 1.0 - (2.0 * i + 1.0) / num;
        const double a = 2.39996322972865 * i;
        const double r = std::sqrt(1.0 - z * z);
        const double scale = noise > 0.0 ? 1.0 + noise * gauss(rng) : 1.0;
        v.emplace_back(scale * r * std::cos(a), scale * r * std::sin(a), scale * z);
    }
    return v;
}

Cloud torusCloud(int numBig, int numSmall)
{
    Cloud v;
    for (int i = 0; i < numBig; ++i)
        for (int k = 0; k < numSmall; ++k)
        {
            const double a = 2 * PI * (i + 0.5 * (k % 2)) / numBig;
            const double b = 2 * PI * k / numSmall;
            v.emplace_back((1 + 0.4 * std::cos(b)) * std::cos(a), (1 + 0.4 * std::cos(b)) * std::sin(a),
                           0.4 * std::sin(b));
        }
    return v;
}

// A tilted square lattice of n by n points, 1 apart, with a round hole.
Cloud patchCloud(int n, double holeRadius)
{
    Cloud v;
    for (int i = 0; i < n; ++i)
        for (int k = 0; k < n; ++k)
            if (std::hypot(i - n / 2.0, k - n / 2.0) >= holeRadius)
                v.emplace_back(i * 0.96, k, i * 0.28);
    return v;
}

struct Figures
{
    long numTriangles = 0;
    long euler = 0;
    std::size_t numBorder = 0;
    std::size_t numNonManifold = 0;
    std::size_t numDisagreeing = 0;
};

Figures figuresOf(const RMesh& mesh)
{
    Figures f;
    std::vector<Point3*> vP;
    mesh.getPoints(vP);
    std::vector<REdge*> vRE;
    mesh.getDegN(-99, vRE);
    for (const REdge* pRE : vRE)
    {
        f.numBorder += pRE->getDegree() == 1 ? 1 : 0;
        f.numNonManifold += pRE->getDegree() > 2 ? 1 : 0;
        RTriangle* pT0 = nullptr;
        RTriangle* pT1 = nullptr;
        f.numDisagreeing += pRE->getTwoT(pT0, pT1, true) && pT0->needFlip(pT1) ? 1 : 0;
    }
    f.numTriangles = static_cast<long>(mesh.getNumT());
    f.euler = static_cast<long>(vP.size()) - static_cast<long>(vRE.size()) + f.numTriangles;
    return f;
}

std::size_t countBorderLoops(const RMesh& mesh)
{
    std::vector<REdge*> vRE;
    mesh.getDegN(1, vRE);
    std::size_t numLoops = 0;
    while (!vRE.empty())
    {
        ++numLoops;
        std::vector<const Point3*> vWork{vRE.back()->getVtx0()};
        while (!vWork.empty())
        {
            const Point3* pVtx = vWork.back();
            vWork.pop_back();
            const auto it =
                std::partition(vRE.begin(), vRE.end(), [=](const REdge* p) { return !p->has(pVtx); });
            for (auto i = it; i != vRE.end(); ++i)
                vWork.push_back((*i)->getOtherPoint(pVtx));
            vRE.erase(it, vRE.end());
        }
    }
    return numLoops;
}

double signedVolume(const Mesh& mesh)
{
    std::vector<Point3*> v;
    mesh.getTriangles(v);
    double volume = 0.0;
    for (std::size_t i = 0; i < v.size(); i += 3)
        volume += (v[i]->x() * (v[i + 1]->y() * v[i + 2]->z() - v[i + 1]->z() * v[i + 2]->y()) +
                   v[i]->y() * (v[i + 1]->z() * v[i + 2]->x() - v[i + 1]->x() * v[i + 2]->z()) +
                   v[i]->z() * (v[i + 1]->x() * v[i + 2]->y() - v[i + 1]->y() * v[i + 2]->x())) /
                  6.0;
    return volume;
}

// All coordinates of all triangles, in order: equal only for the same mesh bit for bit.
std::vector<double> allBits(const Mesh& mesh)
{
    std::vector<Point3*> v;
    mesh.getTriangles(v);
    std::vector<double> vBits;
    for (const Point3* p : v)
        vBits.insert(vBits.end(), {p->x(), p->y(), p->z()});
    return vBits;
}
} // namespace

TEST(Reconstruct, closedShapesEndClosedAndFaceOutward)
{
    struct Row
    {
        const char* name;
        Cloud cloud;
        bool bSmooth;
        long euler;
        double volume;
    };
    Cloud nested = ballCloud(8000);
    for (const Point3& p : ballCloud(2000))
        nested.emplace_back(0.5 * p.x(), 0.5 * p.y(), 0.5 * p.z());
    const double ball = 4.0 / 3.0 * PI;
    // The inner ball of the nested pair faces outward too: each component is judged alone.
    for (Row& row : std::vector<Row>{{"ball", ballCloud(10000), false, 2, ball},
                                     {"noisy ball, smoothed", ballCloud(10000, 0.003), true, 2, ball},
                                     {"torus", torusCloud(160, 64), false, 0, 2 * PI * PI * 0.16},
                                     {"nested balls", nested, false, 4, ball * 1.125}})
    {
        SCOPED_TRACE(row.name);
        const std::shared_ptr<Mesh> pMesh = reconstruct_auto(row.cloud, row.bSmooth, 1.0);
        ASSERT_TRUE(pMesh);
        expectConsistent(*pMesh->getRMesh());
        const Figures f = figuresOf(*pMesh->getRMesh());
        EXPECT_EQ(f.numBorder, 0u);
        EXPECT_EQ(f.numNonManifold, 0u);
        EXPECT_EQ(f.numDisagreeing, 0u);
        EXPECT_EQ(f.euler, row.euler);
        EXPECT_NEAR(signedVolume(*pMesh), row.volume, 0.02 * row.volume);
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
        Cloud cloud;
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
        const Figures f = figuresOf(*pMesh->getRMesh());
        EXPECT_EQ(f.numBorder, 0u);
        EXPECT_EQ(f.numNonManifold, 0u);
        EXPECT_EQ(f.numDisagreeing, 0u);
        EXPECT_EQ(f.euler, bBall ? 2 : 0);
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
        Cloud cloud = patchCloud(60, row.holeRadius);
        const std::shared_ptr<Mesh> pMesh = reconstruct_abs(cloud, false, 1.02);
        ASSERT_TRUE(pMesh);
        const Figures f = figuresOf(*pMesh->getRMesh());
        EXPECT_EQ(f.numNonManifold, 0u);
        EXPECT_EQ(f.numDisagreeing, 0u);
        EXPECT_EQ(countBorderLoops(*pMesh->getRMesh()), row.numLoops);
        EXPECT_EQ(f.euler, 2 - static_cast<long>(row.numLoops));
    }
}

TEST(Reconstruct, refusalsAreThoseOfTheTable)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const double inf = std::numeric_limits<double>::infinity();
    Cloud line;
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
        Cloud cloud;
        Answer automatic;
        Answer spacingOne;
    };
    for (Row& row : std::vector<Row>{
             {"no points", {}, EMPTY, EMPTY},
             {"only NaN and infinity", {{nan, 0, 0}, {0, inf, 0}, {0, 0, -inf}}, EMPTY, EMPTY},
             {"one point", {{1, 2, 3}}, REFUSED, EMPTY_OR_HOLLOW},
             {"identical points", Cloud(50, Point3(1, 2, 3)), REFUSED, EMPTY_OR_HOLLOW},
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
                EXPECT_TRUE(!pMesh || figuresOf(*pMesh->getRMesh()).numTriangles == 0);
            }
        };
        check(row.automatic, [&] { return reconstruct_auto(row.cloud, false, 1.0); });
        check(row.spacingOne, [&] { return reconstruct_abs(row.cloud, false, 1.0); });
    }
    Cloud ball = ballCloud(500);
    for (const double bad : {0.0, -1.0, nan})
    {
        EXPECT_THROW(static_cast<void>(reconstruct_auto(ball, false, bad)), ZefBugException);
        EXPECT_THROW(static_cast<void>(reconstruct_abs(ball, false, bad)), ZefBugException);
    }
    EXPECT_THROW(static_cast<void>(reconstruct_abs(ball, false, 1e-9)), ZefBugException)
        << "spacing too fine";
    Cloud none;
    EXPECT_EQ(estimateAvgSpacing(none), -1.0);
    // After a refusal the next call works.
    EXPECT_TRUE(reconstruct_auto(ball, false, 1.0));
}

TEST(Reconstruct, badPointsAndDuplicatesDoNotChangeTheRest)
{
    Cloud cloud = ballCloud(3000);
    const std::shared_ptr<Mesh> pClean = reconstruct_abs(cloud, false, 0.08);
    Cloud spoilt;
    for (const Point3& p : cloud)
    {
        spoilt.push_back(p);
        spoilt.emplace_back(p.x(), std::numeric_limits<double>::quiet_NaN(), p.z());
    }
    const std::shared_ptr<Mesh> pSpoilt = reconstruct_abs(spoilt, false, 0.08);
    EXPECT_EQ(figuresOf(*pSpoilt->getRMesh()).numTriangles, figuresOf(*pClean->getRMesh()).numTriangles);
    Cloud turned(cloud.rbegin(), cloud.rend());
    const std::shared_ptr<Mesh> pTurned = reconstruct_abs(turned, false, 0.08);
    EXPECT_EQ(figuresOf(*pTurned->getRMesh()).numTriangles, figuresOf(*pClean->getRMesh()).numTriangles)
        << "the order of the points does not matter";
}

TEST(Reconstruct, sameBitsForAnyNumberOfThreads)
{
    // A thread of its own for each run: random states start afresh.
    Cloud cloud;
    generateSampleSurface(20000, 5, cloud);
    std::vector<std::vector<double>> vResults;
    const int before = getNumThreads();
    for (const int numThreads : {1, 2, 4, 2})
    {
        setNumThreads(numThreads);
        std::thread([&] { vResults.push_back(allBits(*reconstruct_auto(cloud, true, 1.0))); }).join();
    }
    setNumThreads(before);
    for (const std::vector<double>& vBits : vResults)
        EXPECT_EQ(vBits, vResults.front());
}

// Mixtures of lattices, lines, planes, duplicates and blobs: no exception, no hang, and a sound mesh.
TEST(Reconstruct, randomCloudsGiveSoundMeshes)
{
    std::mt19937 rng(99);
    const auto unit = [&rng] { return static_cast<double>(rng() % 100000) / 100000.0; };
    for (int run = 0; run < 150; ++run)
    {
        SCOPED_TRACE(run);
        Cloud cloud{{0.0, 0.0, 0.0}, {10.0, 10.0, 10.0}};
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
        for (const double coordinate : allBits(*pMesh))
            ASSERT_TRUE(std::isfinite(coordinate));
    }
}

TEST(Melt, cubeComesBackEvenAndClosed)
{
    Cloud soup;
    const Point3 c[8] = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0},
                         {0, 0, 1}, {1, 0, 1}, {1, 1, 1}, {0, 1, 1}};
    for (const auto& q : {std::array<int, 4>{0, 3, 2, 1},
                          {4, 5, 6, 7},
                          {0, 1, 5, 4},
                          {2, 3, 7, 6},
                          {0, 4, 7, 3},
                          {1, 2, 6, 5}})
        for (const int i : {0, 1, 2, 0, 2, 3})
            soup.push_back(c[q[static_cast<std::size_t>(i)]]);
    Cloud points{{7, 7, 7}};
    toCloud(soup, 0.05, 30.0, points);
    EXPECT_EQ(points.size(), 1u + 6 * 20 * 20 + 2) << "20 cells along an edge; what was there stays";
    EXPECT_EQ(points.front(), Point3(7, 7, 7));

    const std::shared_ptr<Mesh> pMesh = melt(soup, 0.05, 30.0);
    ASSERT_TRUE(pMesh);
    expectConsistent(*pMesh->getRMesh());
    const Figures f = figuresOf(*pMesh->getRMesh());
    EXPECT_EQ(f.numBorder, 0u);
    EXPECT_EQ(f.numNonManifold, 0u);
    EXPECT_EQ(f.euler, 2);
    EXPECT_NEAR(signedVolume(*pMesh), 1.0, 0.01);

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
        Cloud soup;
        bool bEmpty;
    };
    for (Row& row : std::vector<Row>{
             {"one triangle", {{0, 0, 0}, {9, 0, 0}, {0, 9, 1}}, false},
             {"needle", {{0, 0, 0}, {60, 0, 0}, {30, 1e-7, 0}}, false},
             {"folded pair", {{0, 0, 0}, {9, 0, 0}, {0, 9, 0}, {0, 0, 0}, {9, 0, 0}, {0, 9, 1e-9}}, false},
             {"equal corners only", {{1, 1, 1}, {1, 1, 1}, {2, 2, 2}}, true},
             {"a triangle with NaN", {{nan, 0, 0}, {1, 0, 0}, {0, 1, 0}}, true},
             {"far from the origin", {{5e6, 5e6, 5e6}, {5e6 + 9, 5e6, 5e6}, {5e6, 5e6 + 9, 5e6}}, false},
             {"three on an edge",
              {{0, 0, 0},
               {0, 0, 9},
               {9, 0, 0},
               {0, 0, 0},
               {0, 0, 9},
               {-5, 7, 0},
               {0, 0, 0},
               {0, 0, 9},
               {-5, -7, 0}},
              false},
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

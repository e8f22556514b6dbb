#include "finish/SheetFit.h"

#include "core/Progress.h"
#include "finish/PointOwners.h"
#include "geometry/tools.h"
#include "helpers/squareMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace TARN_ZEF
{
namespace
{
constexpr int SIZE = 30;

// A saddle over [0, SIZE]^2.
double getHeight(double x, double y)
{
    return 0.01 * (x - 15.0) * (y - 15.0) + 0.004 * (x - 15.0) * (x - 15.0);
}

// One vertex a unit, each up to the given distance off the saddle.
HalfEdgeMesh makeSaddle(std::mt19937& rng, double off)
{
    std::uniform_real_distribution<double> height(-off, off);
    return makeSquareMesh(SIZE, [&](int x, int y) { return getHeight(x, y) + height(rng); });
}

std::vector<Point3> makeCloud(std::mt19937& rng)
{
    std::uniform_real_distribution<double> place(0.0, SIZE);
    std::vector<Point3> vCloud;
    for (int i = 0; i < 3 * SIZE * SIZE; ++i)
    {
        const double x = place(rng);
        const double y = place(rng);
        vCloud.emplace_back(x, y, getHeight(x, y));
    }
    return vCloud;
}

// Off the saddle, of the vertices that have points on all sides.
double getLargestDistance(const HalfEdgeMesh& mesh)
{
    constexpr double rim = 3.0;
    double largest = 0.0;
    for (int v = 0; v < mesh.endVertices(); ++v)
    {
        const Point3& p = mesh.point(v);
        if (std::min(p.x(), p.y()) > rim && std::max(p.x(), p.y()) < SIZE - rim)
            largest = std::max(largest, std::fabs(p.z() - getHeight(p.x(), p.y())));
    }
    return largest;
}

// A quadric is met by quadrics, but for the slope at which they look at it. Vertices that stray are brought back, those a little way from
// what is known there, those far off from the points.
TEST(SheetFit, aSaddleIsMetAndMetAgain)
{
    std::mt19937 rng(3);
    HalfEdgeMesh mesh = makeSaddle(rng, 0.1);
    const std::vector<Point3> vCloud = makeCloud(rng);
    prepareProgress("Finish");
    Progress& progress = *getRootProgress()->getChildProgressSetTodo("FI_fit", 1);
    SheetFit sheetFit(mesh, vCloud, 1.0, 1.5);
    sheetFit.run(progress);
    EXPECT_LT(getLargestDistance(mesh), 2e-3);
    std::uniform_real_distribution<double> stray(-0.3, 0.3);
    for (int v = 0; v < mesh.endVertices(); ++v)
    {
        const double lift = v % 97 == 0 ? 0.8 : stray(rng);
        mesh.setPoint(v, mesh.point(v) + Vector3(stray(rng), stray(rng), lift));
    }
    sheetFit.repeat(progress);
    finishProgress();
    EXPECT_LT(getLargestDistance(mesh), 2e-2);
}

// What is asked for a few vertices is what is known around them when all is asked for.
TEST(PointOwners, fewVerticesGetThePointsAroundThem)
{
    std::mt19937 rng(5);
    const HalfEdgeMesh mesh = makeSaddle(rng, 0.2);
    const std::vector<Point3> vCloud = makeCloud(rng);
    const PointOwners all(mesh, vCloud, 1.0, 0.0, {});
    constexpr double reach = 3.5;
    std::uniform_int_distribution<int> choose(0, mesh.endVertices() - 1);
    for (int round = 0; round < 20; ++round)
    {
        std::vector<int> vAsked;
        for (int i = 0; i <= round % 4; ++i)
            vAsked.push_back(choose(rng));
        const PointOwners few(mesh, vCloud, 1.0, reach, vAsked);
        std::size_t numPoints = 0;
        for (int t = 0; t < mesh.endTriangles(); ++t)
        {
            const auto points = all.getPoints(t);
            numPoints += few.getPoints(t).size();
            bool bNear = false;
            for (const Point3& p : points)
                for (const int v : vAsked)
                    bNear = bNear || sqDistance(p, mesh.point(v)) < reach * reach;
            ASSERT_TRUE(!bNear || std::ranges::equal(points, few.getPoints(t))) << "triangle " << t;
        }
        EXPECT_LT(numPoints, vCloud.size());
    }
}

} // namespace
} // namespace TARN_ZEF

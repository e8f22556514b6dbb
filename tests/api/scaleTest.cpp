// The unit of the points does not matter: multiplied by a power of two, a cloud or mesh gives what it gave before,
// multiplied, to the last bit.
#include "zef.h"

#include "helpers/PipelineMesh.h"
#include "helpers/finishedMeshes.h"
#include "helpers/meshShapes.h"
#include "helpers/transformed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <random>

namespace TARN_ZEF
{
namespace
{
using Points = std::vector<Point3>;

const int EXPONENTS[] = {-60, -31, -8, 1, 17, 60};

// A public call, with everything that has a length multiplied by unit; points with a length come back.
struct Call
{
    std::string name;
    std::function<Points(double unit)> run;
};

Points cornersOf(const std::shared_ptr<Mesh>& pMesh)
{
    return pMesh == nullptr ? Points() : getCorners(*pMesh);
}

// Triangles of all shapes about the unit cube, needles among them.
Points randomSoup(std::mt19937& rng)
{
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    Points soup;
    for (int i = 0; i < 40; ++i)
    {
        const Point3 a(unit(rng), unit(rng), unit(rng));
        const double thin = std::pow(10.0, -6.0 * unit(rng));
        soup.insert(soup.end(), {a, a + Vector3(unit(rng), unit(rng), unit(rng)),
                                 a + Vector3(unit(rng) * thin, unit(rng) * thin, unit(rng))});
    }
    return soup;
}

std::vector<Call> getCalls(unsigned int seed)
{
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> between(0.7, 1.4);
    // A spacing far from 1, so that no limit meets the value it was chosen for.
    const double size = std::pow(10.0, std::uniform_real_distribution<double>(-3.0, 3.0)(rng));
    const Points cloud = scaled(doubled(makeCloud(600 + seed * 37, 4.0 * (seed % 2), 0.4)), size);
    const Points soup = scaled(seed % 2 == 0 ? boxSoup({0, 0, 0}, {1.1, 0.7, 0.13}) : randomSoup(rng), size);
    const double factor = between(rng);
    const double cell = 0.06 * between(rng) * size;
    const RMeshSource source = jittered(torusSource(24, 12), 0.4, seed);
    const auto improved = [=](const std::function<void(const std::shared_ptr<Mesh>&, double)>& improve)
    {
        return [=](double unit)
        {
            RMeshSource here = source;
            here.vPoints = scaled(source.vPoints, size * unit);
            here.cellSize = size * unit;
            const std::shared_ptr<Mesh> pMesh = makeFinished(here);
            improve(pMesh, size * unit);
            return cornersOf(pMesh);
        };
    };
    return {
        {"reconstruct_auto",
         [=](double unit)
         {
             Points v = scaled(cloud, unit);
             return cornersOf(reconstruct_auto(v, seed % 3 == 0, factor));
         }},
        {"reconstruct_abs",
         [=](double unit)
         {
             Points v = scaled(cloud, unit);
             return cornersOf(reconstruct_abs(v, seed % 3 == 1, factor * size * unit));
         }},
        {"estimateAvgSpacing",
         [=](double unit)
         {
             Points v = scaled(cloud, unit);
             return Points{{estimateAvgSpacing(v), 0.0, 0.0}};
         }},
        {"melt",
         [=](double unit)
         {
             Points v = scaled(soup, unit);
             return cornersOf(melt(v, cell * unit, 30.0));
         }},
        {"toCloud",
         [=](double unit)
         {
             Points v = scaled(soup, unit);
             Points result;
             toCloud(v, cell * unit, 30.0, result);
             return result;
         }},
        {"edgeFlips", improved([](const std::shared_ptr<Mesh>& pMesh, double) { edgeFlips(pMesh); })},
        {"edgeFlipsSimA", improved([](const std::shared_ptr<Mesh>& pMesh, double) { edgeFlipsSimA(pMesh); })},
        {"reduce", improved([](const std::shared_ptr<Mesh>& pMesh, double length)
                            { static_cast<void>(reduce(pMesh, 2.5 * length, 40.0, false)); })},
        {"laplacianSmoothing",
         improved([](const std::shared_ptr<Mesh>& pMesh, double) { laplacianSmoothing(pMesh, 3); })},
        {"getAverageEdgeLength",
         [=](double unit)
         {
             Points v = scaled(cloud, unit);
             return Points{{reconstruct_auto(v, false, factor)->getAverageEdgeLength(), 0.0, 0.0}};
         }},
    };
}

TEST(Scale, powersOfTwoMultiplyWhatComesBack)
{
    setMessageReceiver([](const Message&) {});
    for (unsigned int seed = 0; seed < 6; ++seed)
        for (const Call& call : getCalls(seed))
        {
            const Points once = call.run(1.0);
            ASSERT_FALSE(once.empty()) << call.name << ", seed " << seed;
            for (const int exponent : EXPONENTS)
            {
                const double unit = std::ldexp(1.0, exponent);
                EXPECT_TRUE(call.run(unit) == scaled(once, unit))
                    << call.name << ", seed " << seed << ", 2^" << exponent;
            }
        }
    setMessageReceiver(nullptr);
}

// The judge, of a mesh with faults of all kinds.
TEST(Scale, theJudgeFindsTheSameFaultsInEveryUnit)
{
    std::mt19937 rng(3);
    const Points soup = randomSoup(rng);
    std::vector<int> vCorners;
    for (std::size_t i = 0; i < soup.size(); ++i)
        vCorners.push_back(static_cast<int>(i));
    const MeshCheck once = checkMesh(soup, vCorners);
    EXPECT_GT(once.numIntersections, 0U);
    for (const int exponent : EXPONENTS)
    {
        const MeshCheck scaledCheck = checkMesh(scaled(soup, std::ldexp(1.0, exponent)), vCorners);
        EXPECT_EQ(scaledCheck.numIntersections, once.numIntersections) << exponent;
        EXPECT_EQ(scaledCheck.numFlat, once.numFlat) << exponent;
        EXPECT_EQ(scaledCheck.borderLength, std::ldexp(once.borderLength, exponent));
    }
}

// Map coordinates of a scan, on a grid that both places hold exactly: nothing but the rounding of the numbers, a unit
// in the last place of 5,800,000 being 9.3e-10, may part the two meshes.
TEST(Scale, aFarOriginLosesNoMoreThanTheCoordinates)
{
    const double grid = std::ldexp(1.0, -20);
    const double ulp = std::ldexp(1.0, -30);
    Points near = makeCloud(3000, 4.0, 0.1);
    for (Point3& p : near)
        p.set(std::round(p.x() / grid) * grid, std::round(p.y() / grid) * grid,
              std::round(p.z() / grid) * grid);
    const Point3 origin(500000.0, 5800000.0, 0.0);
    Points far = shifted(near, origin);
    const Points here = cornersOf(reconstruct_auto(near, false, 1.2));
    const Points there = cornersOf(reconstruct_auto(far, false, 1.2));
    ASSERT_EQ(there.size(), here.size());
    double worst = 0.0;
    for (std::size_t i = 0; i < here.size(); ++i)
    {
        const Point3 back(there[i].x() - origin.x(), there[i].y() - origin.y(), there[i].z() - origin.z());
        const Vector3 d = back - here[i];
        worst = std::max({worst, std::fabs(d.x()), std::fabs(d.y()), std::fabs(d.z())});
    }
    EXPECT_LE(worst, 8.0 * ulp) << worst / ulp;
}

} // namespace
} // namespace TARN_ZEF

// Neither the unit of the points nor their place matters: multiplied by a power of two, or shifted by multiples of one
// that lose no digits, a cloud or mesh gives what it gave before, multiplied or shifted, to the last bit.
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

struct Placement
{
    double unit = 1.0;
    Point3 shift; // after the scaling

    [[nodiscard]] Points of(const Points& v) const { return shifted(scaled(v, unit), shift); }
};

// A public call on input that is placed so; points come back, or lengths as such.
struct Call
{
    std::string name;
    std::function<Points(const Placement&)> run;
    bool bLengths = false;
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

// With some thirty digits of the extent, so that there is room for shifts.
Points onGrid(Points v, double extent)
{
    const double grid = std::ldexp(1.0, std::ilogb(extent) - 30);
    for (Point3& p : v)
        p.set(std::round(p.x() / grid) * grid, std::round(p.y() / grid) * grid,
              std::round(p.z() / grid) * grid);
    return v;
}

// The calls on a mesh; improve() gives the mesh to look at.
std::vector<Call> getMeshCalls(unsigned int seed, double size)
{
    RMeshSource source = jittered(torusSource(24, 12), 0.4, seed);
    source.vCorners.resize(source.vCorners.size() - 12); // two holes
    source.vCorners.erase(source.vCorners.begin() + 60, source.vCorners.begin() + 66);
    source.vPoints = onGrid(scaled(source.vPoints, size), 16.0 * size);
    const Points cloud =
        onGrid(scaled(jittered(torusSource(40, 20), 0.4, seed).vPoints, size * 0.6), 16.0 * size);
    using Improve = std::function<std::shared_ptr<Mesh>(const std::shared_ptr<Mesh>&, const Placement&)>;
    const auto improved = [=](const Improve& improve)
    {
        return [=](const Placement& placement)
        {
            RMeshSource here = source;
            here.vPoints = placement.of(source.vPoints);
            here.cellSize = size * placement.unit;
            return cornersOf(improve(makeFinished(here), placement));
        };
    };
    return {
        {"edgeFlips", improved([](const auto& pMesh, const Placement&) { return edgeFlips(pMesh), pMesh; })},
        {"edgeFlipsSimA",
         improved([](const auto& pMesh, const Placement&) { return edgeFlipsSimA(pMesh), pMesh; })},
        {"reduce", improved(
                       [=](const auto& pMesh, const Placement& placement)
                       {
                           static_cast<void>(reduce(pMesh, 2.5 * size * placement.unit, 40.0, false));
                           return pMesh;
                       })},
        {"laplacianSmoothing",
         improved([](const auto& pMesh, const Placement&) { return laplacianSmoothing(pMesh, 3), pMesh; })},
        {"finishSurface", improved([=](const auto& pMesh, const Placement& placement)
                                   { return finishSurface(*pMesh, placement.of(cloud)); })},
        {"fillHoles", improved([](const auto& pMesh, const Placement&)
                               { return fillHoles(*pMesh, findBorderLoops(*pMesh)); })},
        {"findBorderLoops",
         [=](const Placement& placement)
         {
             const std::vector<int> vCorners(source.vCorners.begin(), source.vCorners.end());
             Points v;
             for (const BorderLoop& loop : findBorderLoops(placement.of(source.vPoints), vCorners))
                 v.emplace_back(loop.length, loop.area / placement.unit, 0.0);
             return v;
         },
         true},
    };
}

// A spacing far from 1, so that no limit meets the value it was chosen for.
double getSize(unsigned int seed)
{
    std::mt19937 rng(seed);
    return std::pow(10.0, std::uniform_real_distribution<double>(-3.0, 3.0)(rng));
}

std::vector<Call> getCalls(unsigned int seed)
{
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> between(0.7, 1.4);
    const double size = getSize(seed);
    const Points cloud =
        onGrid(scaled(doubled(makeCloud(600 + seed * 37, 4.0 * (seed % 2), 0.4)), size), 20.0 * size);
    const Points soup = onGrid(
        scaled(seed % 2 == 0 ? boxSoup({0, 0, 0}, {1.1, 0.7, 0.13}) : randomSoup(rng), size), 2.0 * size);
    const double factor = between(rng);
    const double cell = 0.06 * between(rng) * size;
    std::vector<Call> vCalls = {
        {"reconstruct_auto",
         [=](const Placement& placement)
         {
             Points v = placement.of(cloud);
             return cornersOf(reconstruct_auto(v, seed % 3 == 0, factor));
         }},
        {"reconstruct_abs",
         [=](const Placement& placement)
         {
             Points v = placement.of(cloud);
             return cornersOf(reconstruct_abs(v, seed % 3 == 1, factor * size * placement.unit));
         }},
        {"autoReconstruct",
         [=](const Placement& placement)
         {
             Points v = placement.of(cloud);
             return cornersOf(autoReconstruct(v));
         }},
        {"estimateAvgSpacing",
         [=](const Placement& placement)
         {
             Points v = placement.of(cloud);
             return Points{{estimateAvgSpacing(v), 0.0, 0.0}};
         },
         true},
        {"melt",
         [=](const Placement& placement)
         {
             Points v = placement.of(soup);
             return cornersOf(melt(v, cell * placement.unit, 30.0));
         }},
        {"remesh",
         [=](const Placement& placement)
         {
             RemeshOptions options;
             options.length = cell * placement.unit;
             return cornersOf(remesh(placement.of(soup), options));
         }},
        {"toCloud",
         [=](const Placement& placement)
         {
             Points v = placement.of(soup);
             Points result;
             toCloud(v, cell * placement.unit, 30.0, result);
             return result;
         }},
        {"getAverageEdgeLength",
         [=](const Placement& placement)
         {
             // A mesh of rounded coordinates has rounded edges.
             Points v = scaled(cloud, placement.unit);
             return Points{{reconstruct_auto(v, false, factor)->getAverageEdgeLength(), 0.0, 0.0}};
         },
         true},
    };
    for (Call& call : getMeshCalls(seed, size))
        vCalls.push_back(std::move(call));
    return vCalls;
}

TEST(Scale, powersOfTwoMultiplyWhatComesBack)
{
    setMessageReceiver([](const Message&) {});
    for (unsigned int seed = 0; seed < 6; ++seed)
        for (const Call& call : getCalls(seed))
        {
            const Points once = call.run({});
            ASSERT_FALSE(once.empty()) << call.name << ", seed " << seed;
            for (const int exponent : EXPONENTS)
            {
                const double unit = std::ldexp(1.0, exponent);
                EXPECT_TRUE(call.run({unit, {}}) == scaled(once, unit))
                    << call.name << ", seed " << seed << ", 2^" << exponent;
            }
        }
    setMessageReceiver(nullptr);
}

// The result is shifted as the sum of both is rounded: a far place holds no more digits.
TEST(Scale, shiftsThatLoseNoDigitsShiftWhatComesBack)
{
    setMessageReceiver([](const Message&) {});
    std::mt19937 rng(5);
    for (unsigned int seed = 0; seed < 6; ++seed)
    {
        // Above four times the extent of all that is made at this size.
        const double step = std::ldexp(1.0, std::ilogb(getSize(seed)) + 10);
        for (const Call& call : getCalls(seed))
        {
            const Points once = call.run({});
            ASSERT_FALSE(once.empty()) << call.name << ", seed " << seed;
            for (const int farthest : {1, 1, 300, 1 << 14})
            {
                std::uniform_int_distribution<int> steps(-farthest, farthest);
                const Placement there = {1.0, {steps(rng) * step, steps(rng) * step, steps(rng) * step}};
                EXPECT_TRUE(call.run(there) == (call.bLengths ? once : shifted(once, there.shift)))
                    << call.name << ", seed " << seed << ", " << there.shift.x() / step << " "
                    << there.shift.y() / step << " " << there.shift.z() / step;
            }
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

// Map coordinates of a scan, on a grid that both places hold exactly, at an origin that is no multiple of a large power
// of two: nothing but the rounding of the numbers, a unit in the last place of 5,800,000 being 9.3e-10, may part the two
// meshes.
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
    EXPECT_LE(worst, 0.501 * ulp) << worst / ulp;
}

} // namespace
} // namespace TARN_ZEF

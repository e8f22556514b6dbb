// Small clouds and soups of chance: whatever is made of them keeps every promise. ZEF_RANDOM_INPUTS in the environment
// says how many of each, ZEF_RANDOM_FIRST the number of the first: scripts/check_random.sh runs as many as it is told.
#include "zef.h"

#include "helpers/finishedMeshes.h"
#include "helpers/meshHash.h"
#include "rmesh/RMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <random>

namespace TARN_ZEF
{
namespace
{
using Points = std::vector<Point3>;

constexpr unsigned int USUAL_NUMBER = 2000;

unsigned int readEnvironment(const char* name, unsigned int usual)
{
    const char* const text = std::getenv(name); // NOLINT(concurrency-mt-unsafe)
    return text == nullptr ? usual : static_cast<unsigned int>(std::strtoul(text, nullptr, 10));
}

// Draws numbers and makes inputs of them.
class Chance
{
public:
    explicit Chance(unsigned int seed)
        : rng(seed)
    {
    }
    [[nodiscard]] int below(int end) { return std::uniform_int_distribution<int>(0, end - 1)(rng); }
    [[nodiscard]] double between(double low, double high)
    {
        return std::uniform_real_distribution<double>(low, high)(rng);
    }
    [[nodiscard]] bool maybe() { return below(2) == 0; }
    [[nodiscard]] Point3 inBox(double side)
    {
        const double x = between(-side, side);
        const double y = between(-side, side);
        return {x, y, between(-side, side)};
    }
    void shuffle(Points& v) { std::shuffle(v.begin(), v.end(), rng); }

    // Some ten to two hundred points, of a surface as a rule, at any size and place.
    [[nodiscard]] Points makeCloud()
    {
        const int kind = below(8);
        const int num = 10 + below(190);
        const double noise = maybe() ? 0.0 : between(0.0, 0.2);
        Points v;
        for (int i = 0; i < num; ++i)
            v.push_back(inBox(noise) + (makeOnSurface(kind) - Point3()));
        if (below(3) == 0)
            for (int i = below(num); i > 0; --i)
                v.push_back(v[static_cast<std::size_t>(below(num))]);
        return place(v);
    }

    // Up to thirty triangles: a fan, a strip, loose ones, needles, copies, on a coarse grid now and then.
    [[nodiscard]] Points makeSoup()
    {
        const int kind = below(5);
        const int num = 1 + below(30);
        Points v = {inBox(1.0), inBox(1.0), inBox(1.0)};
        for (int i = 1; i < num; ++i)
        {
            const Points last(v.end() - 3, v.end());
            const double thin = std::pow(10.0, between(-8.0, 0.0));
            if (kind == 0)
                v.insert(v.end(), {v[0], last[2], inBox(1.0)});
            else if (kind == 1)
                v.insert(v.end(), {last[2], last[1], inBox(1.0)});
            else if (kind == 2)
                v.insert(v.end(), {last[0], inBox(1.0), last[0] + (inBox(thin) - Point3())});
            else if (kind == 3 && maybe())
                v.insert(v.end(), {last[1], last[2], last[0]});
            else
                v.insert(v.end(), {inBox(1.0), inBox(1.0), inBox(1.0)});
        }
        return place(v);
    }

private:
    // In a cube of side 2 about the origin.
    [[nodiscard]] Point3 makeOnSurface(int kind)
    {
        const Point3 p = inBox(1.0);
        const double length = std::max((p - Point3()).length(), 1e-3);
        switch (kind)
        {
        case 0: // a ball
            return {p.x() / length, p.y() / length, p.z() / length};
        case 1: // a cube
        {
            const double largest = std::max({std::fabs(p.x()), std::fabs(p.y()), std::fabs(p.z()), 1e-3});
            return {p.x() / largest, p.y() / largest, p.z() / largest};
        }
        case 2: // a sheet
            return {p.x(), p.y(), 0.3 * p.x() * p.y()};
        case 3: // two sheets
            return {p.x(), p.y(), maybe() ? 0.0 : 0.2};
        case 4: // a tube
            return {p.x() / std::max(std::hypot(p.x(), p.y()), 1e-3),
                    p.y() / std::max(std::hypot(p.x(), p.y()), 1e-3), p.z()};
        case 5: // a line
            return {p.x(), p.x() * 0.5, p.x() * 0.25};
        case 6: // clusters
            return {std::round(p.x()) + 0.05 * p.y(), std::round(p.y()) + 0.05 * p.z(), 0.05 * p.x()};
        default:
            return p;
        }
    }

    // Of some size, on a grid or not, and near or far.
    [[nodiscard]] Points place(Points v)
    {
        const double size = std::pow(10.0, between(-6.0, 6.0));
        const double grid = below(4) == 0 ? 0.125 : 0.0;
        const bool bFar = below(4) == 0;
        const Point3 shift = inBox(bFar ? 1e5 : 1.0);
        for (Point3& p : v)
        {
            std::array<double, 3> a = {p.x(), p.y(), p.z()};
            if (grid > 0.0)
                for (double& x : a)
                    x = std::round(x / grid) * grid;
            p.set((a[0] + shift.x()) * size, (a[1] + shift.y()) * size, (a[2] + shift.z()) * size);
        }
        return v;
    }

    std::mt19937 rng;
};

struct Extents
{
    explicit Extents(const Points& v)
    {
        for (const Point3& p : v)
            for (std::size_t axis = 0; axis < 3; ++axis)
            {
                const double x = axis == 0 ? p.x() : axis == 1 ? p.y() : p.z();
                aLow[axis] = std::min(aLow[axis], x);
                aHigh[axis] = std::max(aHigh[axis], x);
            }
    }
    // How far other stands out.
    [[nodiscard]] double getExcess(const Extents& other) const
    {
        double excess = 0.0;
        for (std::size_t axis = 0; axis < 3; ++axis)
            excess = std::max({excess, aLow[axis] - other.aLow[axis], other.aHigh[axis] - aHigh[axis]});
        return excess;
    }

    std::array<double, 3> aLow = {1e300, 1e300, 1e300};
    std::array<double, 3> aHigh = {-1e300, -1e300, -1e300};
};

using MakesMesh = std::function<std::shared_ptr<Mesh>()>;

// Nothing for a refusal.
std::shared_ptr<Mesh> tryCall(const MakesMesh& call)
{
    try
    {
        return call();
    }
    catch (const ZefRefusedException&)
    {
        return nullptr;
    }
}

class RandomInput : public ::testing::Test
{
protected:
    RandomInput()
    {
        setMessageReceiver([](const Message&) {});
    }
    ~RandomInput() override
    {
        setMessageReceiver(nullptr);
        // A test that failed ends early.
        EXPECT_TRUE(HasFailure() || 2 * numMeshes > number)
            << "most inputs are of no use: the promises are not tried";
    }

    // Calls f(chance) with a chance of its own for each input.
    template <typename F>
    void forEachInput(F f)
    {
        const unsigned int first = readEnvironment("ZEF_RANDOM_FIRST", 0);
        number = readEnvironment("ZEF_RANDOM_INPUTS", USUAL_NUMBER);
        for (unsigned int i = first; i < first + number && !HasFailure(); ++i)
        {
            SCOPED_TRACE("input " + std::to_string(i));
            Chance chance(i);
            EXPECT_NO_THROW(f(chance)); // so that the input is named, too
        }
    }

    void countMesh() { ++numMeshes; }

    // The mesh of the call, which may not depend on chance, and what is finished of it keep their promises.
    void expectPromises(const MakesMesh& call, const Points& input, const Points& cloud)
    {
        const std::shared_ptr<Mesh> pMesh = tryCall(call);
        EXPECT_EQ(getHash(pMesh), getHash(tryCall(call)));
        if (pMesh == nullptr)
            return;
        countMesh();
        const std::shared_ptr<Mesh> pDone = finishSurface(*pMesh, cloud);
        EXPECT_EQ(getHash(pDone), getHash(finishSurface(*pMesh, cloud)));
        EXPECT_TRUE(checkMesh(*pDone).isSound());
        const double cell = pMesh->getRMesh()->getCellSize();
        for (const Mesh* pAny : {pMesh.get(), pDone.get()})
            EXPECT_LE(Extents(input).getExcess(Extents(getCorners(*pAny))), 2.0 * cell) << cell;
    }

private:
    unsigned int number = 0;
    unsigned int numMeshes = 0;
};

TEST_F(RandomInput, cloudsKeepThePromises)
{
    forEachInput(
        [this](Chance& chance)
        {
            Points cloud = chance.makeCloud();
            const bool bSmooth = chance.maybe();
            const double factor = chance.between(0.6, 2.5);
            expectPromises([&] { return reconstruct_auto(cloud, bSmooth, factor); }, cloud, cloud);
        });
}

// Sums of numbers of thirty digits lose none; of full ones they do, and so only the last bits depend on the order.
Points onGrid(Points v)
{
    double largest = 0.0;
    for (const Point3& p : v)
        largest = std::max({largest, std::fabs(p.x()), std::fabs(p.y()), std::fabs(p.z())});
    const double grid = std::ldexp(1.0, std::ilogb(largest) - 30);
    for (Point3& p : v)
        p.set(std::round(p.x() / grid) * grid, std::round(p.y() / grid) * grid,
              std::round(p.z() / grid) * grid);
    return v;
}

TEST_F(RandomInput, theOrderOfPointsDoesNotMatter)
{
    forEachInput(
        [this](Chance& chance)
        {
            Points cloud = onGrid(chance.makeCloud());
            Points shuffled = cloud;
            chance.shuffle(shuffled);
            const bool bSmooth = chance.maybe();
            const double factor = chance.between(0.6, 2.5);
            const std::shared_ptr<Mesh> pMesh =
                tryCall([&] { return reconstruct_auto(cloud, bSmooth, factor); });
            EXPECT_EQ(getHash(pMesh),
                      getHash(tryCall([&] { return reconstruct_auto(shuffled, bSmooth, factor); })));
            EXPECT_EQ(getHash(tryCall([&] { return autoReconstruct(cloud); })),
                      getHash(tryCall([&] { return autoReconstruct(shuffled); })));
            if (pMesh != nullptr)
                countMesh();
        });
}

TEST_F(RandomInput, soupsKeepThePromises)
{
    forEachInput(
        [this](Chance& chance)
        {
            Points soup = chance.makeSoup();
            const Extents extents(soup);
            double extent = 0.0;
            for (std::size_t axis = 0; axis < 3; ++axis)
                extent = std::max(extent, extents.aHigh[axis] - extents.aLow[axis]);
            const double length = extent * chance.between(0.04, 0.3);
            if (chance.maybe())
                expectPromises([&] { return melt(soup, length, 30.0); }, soup, {});
            else
                expectPromises(
                    [&]
                    {
                        RemeshOptions options;
                        options.length = length;
                        options.maxTriangles = 3000;
                        return remesh(soup, options);
                    },
                    soup, {});
        });
}

} // namespace
} // namespace TARN_ZEF

#include "geometry/tools.h"
#include "testDataGenerators.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
using Generate = void (*)(std::size_t num, unsigned int seed, std::vector<Point3>& vPoints);

const struct
{
    const char* name;
    Generate generate;
} GENERATORS[] = {
    {"square", [](std::size_t num, unsigned int seed, std::vector<Point3>& vPoints)
     { generateRandomPoints(-2.0, 5.0, num, seed, vPoints); }},
    {"cube", [](std::size_t num, unsigned int seed, std::vector<Point3>& vPoints)
     { generateRandomPoints3D(-2.0, 5.0, num, seed, vPoints); }},
    {"sample surface", generateSampleSurface},
};

} // namespace

TEST(TestData, SameSeedSameData)
{
    for (const auto& row : GENERATORS)
    {
        SCOPED_TRACE(row.name);
        const Point3 own(7, 8, 9);
        std::vector<Point3> vFirst = {own}, vSecond, vOther;
        row.generate(1000, 42, vFirst);
        row.generate(1000, 42, vSecond);
        row.generate(1000, 43, vOther);
        ASSERT_EQ(vFirst.size(), 1001u);
        EXPECT_EQ(vFirst.front(), own);
        vFirst.erase(vFirst.begin());
        EXPECT_EQ(vFirst, vSecond);
        for (std::size_t i = 0; i < vFirst.size(); ++i)
            EXPECT_NE(vFirst[i], vOther[i]);
        row.generate(0, 1, vSecond);
        EXPECT_EQ(vSecond.size(), 1000u);
    }
}

TEST(TestData, SampleSurfaceIsClosedAndEven)
{
    constexpr std::size_t NUM = 3000;
    std::vector<Point3> vPoints;
    generateSampleSurface(NUM, SAMPLE_SURFACE_SEED, vPoints);
    for (const Point3& p : vPoints)
    {
        const double radius = (p - Point3()).length();
        const Vector3 d = normalize(p - Point3());
        ASSERT_NEAR(radius,
                    1.0 + 0.1 * std::sin(7 * d.x()) * std::sin(7 * d.y() + 1) * std::sin(7 * d.z() + 2),
                    1e-12);
    }
    // No gap: a point of the surface lies near each direction.
    std::vector<Point3> vProbes;
    generateRandomPoints3D(-1.0, 1.0, 500, 9, vProbes);
    for (const Point3& probe : vProbes)
    {
        const Vector3 direction = normalize(probe - Point3());
        double maxCosine = -1.0;
        for (const Point3& p : vPoints)
            maxCosine = std::max(maxCosine, direction * normalizeInline(p - Point3()));
        EXPECT_LT(std::acos(std::min(1.0, maxCosine)), 1.3 * std::sqrt(4.0 * 3.14159265358979 / NUM));
    }
}

} // namespace TARN_ZEF

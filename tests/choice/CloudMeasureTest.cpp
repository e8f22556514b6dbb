// Figures of clouds of which evenness, noise and layers are known.
#include "choice/CloudMeasure.h"

#include <gtest/gtest.h>

#include <random>

namespace TARN_ZEF
{
namespace
{
// About n by n points, one for each unit square of a tilted plane: on its grid, or anywhere.
std::vector<Point3> makeSheet(int n, bool bRandom, double sigma, double height)
{
    std::mt19937_64 rng(3);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    std::normal_distribution<double> normal(0.0, 1.0);
    std::vector<Point3> v;
    for (int i = 0; i < n * n; ++i)
    {
        const double x = bRandom ? n * unit(rng) : i % n;
        const double y = bRandom ? n * unit(rng) : i / n;
        const double z = height + sigma * normal(rng);
        v.emplace_back(0.96 * x - 0.28 * z, y, 0.28 * x + 0.96 * z);
    }
    return v;
}
} // namespace

TEST(CloudMeasure, tellsEvennessNoiseAndLayers)
{
    struct Row
    {
        const char* name;
        bool bRandom;
        double noise;
        double gap; // to a second sheet; 0: none
    };
    for (const Row& row :
         {Row{"even", false, 0.0, 0.0}, Row{"random", true, 0.0, 0.0}, Row{"noisy", true, 0.2, 0.0},
          Row{"layers", true, 0.0, 1.6}, Row{"layers far apart", true, 0.0, 6.0}})
    {
        SCOPED_TRACE(row.name);
        std::vector<Point3> v = makeSheet(70, row.bRandom, row.noise, 0.0);
        if (row.gap > 0.0)
            for (const Point3& p : makeSheet(70, row.bRandom, row.noise, row.gap))
                v.push_back(p);
        const CloudFigures figures = CloudMeasure(v, 1.2).measure();
        EXPECT_NEAR(figures.evenness, row.bRandom ? 0.48 : 0.98, 0.1);
        EXPECT_NEAR(figures.noise, row.noise, 0.05);
        EXPECT_NEAR(figures.layers, row.gap == 1.6 ? 1.0 : 0.0, 0.25);
        for (Point3& p : v)
            p = Point3(1024.0 * p.x(), 1024.0 * p.y(), 1024.0 * p.z());
        const CloudFigures scaled = CloudMeasure(v, 1.2 * 1024.0).measure();
        EXPECT_EQ(scaled.evenness, figures.evenness);
        EXPECT_EQ(scaled.noise, figures.noise);
        EXPECT_EQ(scaled.layers, figures.layers);
    }
}

// Too little to measure, or nothing that has a plane: no figure, and no crash.
TEST(CloudMeasure, tellsNothingOfTooLittle)
{
    const std::vector<Point3> vFew = makeSheet(4, true, 0.0, 0.0);
    EXPECT_EQ(CloudMeasure(vFew, 1.2).measure().noise, -1.0);
    EXPECT_EQ(CloudMeasure({}, 1.2).measure().evenness, -1.0);
    EXPECT_EQ(CloudMeasure(std::vector<Point3>(500, Point3(1, 2, 3)), 1.0).measure().layers, -1.0);
}

} // namespace TARN_ZEF

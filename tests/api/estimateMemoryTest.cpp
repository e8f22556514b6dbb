// The forecast of memory, and calls that keep to a limit.
#include "zef.h"

#include "helpers/PipelineMesh.h"
#include "helpers/meshShapes.h"

#include <gtest/gtest.h>

#include <limits>

namespace TARN_ZEF
{
namespace
{
using Points = std::vector<Point3>;
} // namespace

TEST(EstimateMemory, aLimitRefusesBeforehandAndNamesWhatFits)
{
    Points cloud = makeCloud(40000, 0.0, 0.0);
    const std::size_t forecast = estimateMemory(cloud, 1.0, ForecastCall::RECONSTRUCT_AUTO);
    const MemoryLimitScope scope(forecast / 2);
    double fitting = 0.0;
    try
    {
        (void)reconstruct_auto(cloud, false, 1.0);
        FAIL() << "not refused";
    }
    catch (const ZefOverMemoryLimit& refused)
    {
        EXPECT_EQ(refused.getForecast(), forecast);
        fitting = refused.getFittingSpacing();
        EXPECT_NE(std::string(refused.what()).find(" would fit, a factor of "), std::string::npos)
            << refused.what();
    }
    EXPECT_LE(estimateMemory(cloud, fitting, ForecastCall::RECONSTRUCT_ABS), forecast / 2);
    EXPECT_TRUE(reconstruct_abs(cloud, false, fitting));
    // Not far beyond what is needed.
    EXPECT_GT(estimateMemory(cloud, 0.8 * fitting, ForecastCall::RECONSTRUCT_ABS), forecast / 2);
}

TEST(EstimateMemory, limitsNestAndEndAndHoldForAllCalls)
{
    Points cloud = makeCloud(5000, 0.0, 0.0);
    Points soup = boxSoup({0.0, 0.0, 0.0}, {7.0, 3.0, 1.0});
    Points samples;
    {
        const MemoryLimitScope wide(std::size_t{1} << 40);
        EXPECT_TRUE(reconstruct_auto(cloud, false, 1.0));
        const MemoryLimitScope narrow(1000);
        const MemoryLimitScope widerWithin(std::size_t{1} << 40);
        EXPECT_THROW((void)reconstruct_auto(cloud, false, 1.0), ZefOverMemoryLimit);
        EXPECT_THROW((void)reconstruct_abs(cloud, true, 0.5), ZefOverMemoryLimit);
        EXPECT_THROW((void)autoReconstruct(cloud), ZefOverMemoryLimit);
        EXPECT_THROW((void)melt(soup, 0.1, 30.0), ZefOverMemoryLimit);
        EXPECT_THROW(toCloud(soup, 0.1, 30.0, samples), ZefOverMemoryLimit);
        try
        {
            toCloud(soup, 0.1, 30.0, samples);
        }
        catch (const ZefOverMemoryLimit& refused)
        {
            EXPECT_EQ(refused.getFittingSpacing(), 0.0); // the points alone are too much
        }
        EXPECT_TRUE(samples.empty());
    }
    EXPECT_TRUE(reconstruct_auto(cloud, false, 1.0));
}

TEST(EstimateMemory, refusesWhatTheCallRefuses)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const Points cloud = makeCloud(500, 0.0, 0.0);
    EXPECT_EQ(estimateMemory({}, 1.0, ForecastCall::RECONSTRUCT_AUTO), 0u);
    EXPECT_EQ(estimateMemory({Point3(nan, 0.0, 0.0)}, 1.0, ForecastCall::RECONSTRUCT_AUTO), 0u);
    EXPECT_THROW((void)estimateMemory(cloud, 0.0, ForecastCall::RECONSTRUCT_AUTO), ZefBadArgument);
    EXPECT_THROW((void)estimateMemory(cloud, nan, ForecastCall::RECONSTRUCT_ABS), ZefBadArgument);
    EXPECT_THROW((void)estimateMemory(cloud, 1e-12, ForecastCall::RECONSTRUCT_ABS), ZefBadArgument);
    EXPECT_THROW((void)estimateMemory(Points(4), 1.0, ForecastCall::MELT), ZefBadArgument);
    EXPECT_THROW((void)estimateMemory(Points(7, Point3(1.0, 1.0, 1.0)), 1.0, ForecastCall::RECONSTRUCT_AUTO),
                 ZefUnusablePoints);
}

} // namespace TARN_ZEF

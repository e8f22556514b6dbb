// The forecast of memory against what calls take, and calls that keep to a limit.
#include "zef.h"

#include "helpers/PipelineMesh.h"
#include "helpers/meshShapes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <random>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

// Sanitizers take memory of their own for every block.
#if defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define HAS_SANITIZER
#endif
#elif defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define HAS_SANITIZER
#endif
#if defined(__linux__) && defined(__GLIBC__) && !defined(HAS_SANITIZER)
#define CAN_MEASURE
#endif

namespace TARN_ZEF
{
namespace
{
using Points = std::vector<Point3>;

#if defined(CAN_MEASURE)
Points randomPlane(std::size_t num)
{
    std::mt19937 random(1);
    Points points;
    const auto draw = [&] { return std::generate_canonical<double, 32>(random); };
    for (std::size_t i = 0; i < num; ++i)
        points.emplace_back(draw(), draw(), 0.0);
    return points;
}

std::size_t measurePeak(const std::function<void()>& call)
{
    // What earlier calls have freed must not hide what this one takes.
    malloc_trim(0);
    CallReport report;
    const ReportScope scope(report);
    call();
    // The look at the mesh is the report's, not the call's.
    std::size_t peak = 0;
    for (const StageReport& stage : report.vStages)
        if (stage.name != "look at the mesh" && stage.name != "other")
            peak = std::max(peak, stage.peakBytes);
    return peak - report.bytesAtStart;
}
#endif
} // namespace

#if defined(CAN_MEASURE)
// Within a third here, where heap and threads of a whole test program are in the way.
TEST(EstimateMemory, isAboutWhatCallsTake)
{
    struct Row
    {
        const char* name;
        Points points;
        double factor;
        bool bSmooth;
    };
    Row rows[] = {
        {"ball", makeCloud(150000, 0.0, 0.0), 1.0, false},
        {"noisy ball", makeCloud(100000, 0.0, 0.1), 1.0, false},
        {"smoothed", makeCloud(150000, 3.0, 0.05), 1.2, true},
        {"plane", randomPlane(100000), 1.0, false},
        {"many points a cell", makeCloud(400000, 0.0, 0.0), 10.0, false},
    };
    for (Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        const auto call =
            row.bSmooth ? ForecastCall::RECONSTRUCT_AUTO_SMOOTHED : ForecastCall::RECONSTRUCT_AUTO;
        const double forecast = static_cast<double>(estimateMemory(row.points, row.factor, call));
        const double peak = static_cast<double>(
            measurePeak([&] { (void)reconstruct_auto(row.points, row.bSmooth, row.factor); }));
        EXPECT_GT(peak, 0.67 * forecast);
        EXPECT_LT(peak, 1.33 * forecast);
    }
}
#endif

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

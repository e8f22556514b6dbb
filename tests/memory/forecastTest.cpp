// The forecast of memory against what calls take. Each test needs a process of its own, as ctest gives it: what earlier
// calls have freed and the system has not taken back would hide what a call takes.
#include "zef.h"

#include "helpers/PipelineMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <ostream>
#include <random>

namespace TARN_ZEF
{
namespace
{
using Points = std::vector<Point3>;

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

struct Work
{
    const char* name;
    std::function<Points()> make;
    double factor;
    bool bSmooth;
};

void PrintTo(const Work& work, std::ostream* pOut)
{
    *pOut << work.name;
}

class Forecast : public testing::TestWithParam<Work>
{
};

} // namespace

// Within a third here, where heap and threads of a whole test program are in the way.
TEST_P(Forecast, isAboutWhatTheCallTakes)
{
    const Work& work = GetParam();
    Points points = work.make();
    const auto call = work.bSmooth ? ForecastCall::RECONSTRUCT_AUTO_SMOOTHED : ForecastCall::RECONSTRUCT_AUTO;
    const auto forecast = static_cast<double>(estimateMemory(points, work.factor, call));
    const auto peak =
        static_cast<double>(measurePeak([&] { (void)reconstruct_auto(points, work.bSmooth, work.factor); }));
    EXPECT_GT(peak, 0.67 * forecast);
    EXPECT_LT(peak, 1.33 * forecast);
}

INSTANTIATE_TEST_SUITE_P(
    Clouds, Forecast,
    testing::Values(Work{"ball", [] { return makeCloud(150000, 0.0, 0.0); }, 1.0, false},
                    Work{"noisyBall", [] { return makeCloud(100000, 0.0, 0.1); }, 1.0, false},
                    Work{"smoothedTorus", [] { return makeCloud(150000, 3.0, 0.05); }, 1.2, true},
                    Work{"plane", [] { return randomPlane(100000); }, 1.0, false},
                    Work{"manyPointsACell", [] { return makeCloud(400000, 0.0, 0.0); }, 10.0, false}),
    [](const auto& row) { return std::string(row.param.name); });

} // namespace TARN_ZEF

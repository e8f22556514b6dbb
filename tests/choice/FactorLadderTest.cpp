// The rule by which a factor is taken, on trials whose counts are made up.
#include "choice/FactorLadder.h"

#include "ZefRefusedException.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace TARN_ZEF
{
namespace
{
struct Counts
{
    std::size_t holes = 0;
    std::size_t badEdges = 0;
    std::size_t badVertices = 0;
    std::size_t border = 0;
    std::size_t loops = 0;
    std::size_t pieces = 1;
    std::size_t rims = 0;
    std::size_t triangles = 400;
};

void setCounts(const Counts& counts, AutoTrial& trial)
{
    trial.numHoles = counts.holes;
    trial.numNonManifoldEdges = counts.badEdges;
    trial.numNonManifoldVertices = counts.badVertices;
    trial.numBorderEdges = counts.border;
    trial.numBorderLoops = counts.loops;
    trial.numPieces = counts.pieces;
    trial.numRims = counts.rims;
    trial.numTriangles = counts.triangles;
}

// Climbs over the counts, the first of them plain; past their end no mesh comes out.
AutoReport climb(const std::vector<Counts>& vCounts, double noise, const AutoOptions& options = AutoOptions())
{
    AutoReport report;
    report.cloud.noise = noise;
    AutoTrial plain;
    setCounts(vCounts.front(), plain);
    std::size_t next = 1;
    FactorLadder(options).climb(
        plain,
        [&](AutoTrial& trial)
        {
            if (next == vCounts.size())
                return false;
            setCounts(vCounts[next++], trial);
            return true;
        },
        report);
    return report;
}
} // namespace

TEST(FactorLadder, takesTheSmallestFactorThatPays)
{
    struct Row
    {
        const char* name;
        std::vector<Counts> vCounts;
        double noise;
        double factor;
        bool bSmooth;
        std::size_t numTrials;
    };
    const Counts sound;
    const Counts open = {0, 0, 0, 200, 1, 1};
    const Row rows[] = {
        {"sound at once", {sound, sound}, 0.1, 1.0, false, 1},
        {"open is no fault", {open, sound}, 0.1, 1.0, false, 1},
        {"the second", {{9}, sound, sound}, 0.1, 1.15, false, 2},
        {"each kind of fault counts", {{9}, {1}, {0, 1}, {0, 0, 1}, sound}, 0.1, 1.6, false, 5},
        {"little gained: the cloud's own", {{9}, {5}, sound}, 0.1, 1.0, false, 2},
        {"the same, few for a large mesh", {{9}, {5, 0, 0, 0, 0, 1, 0, 2000}, sound}, 0.1, 1.3, false, 3},
        {"open: no coarser than 1.3",
         {{9, 0, 0, 99, 9}, {4, 0, 0, 99, 9}, {1, 0, 0, 99, 9, 1, 1}, open},
         0.1,
         1.0,
         false,
         3},
        {"a longer border is none the better", {{9, 0, 0, 20, 9}, {0, 0, 0, 21, 1}}, 0.1, 1.0, false, 2},
        {"nor are more loops", {{1, 0, 0, 99, 1}, {0, 0, 0, 90, 2}}, 0.1, 1.0, false, 2},
        {"nor more pieces", {{9}, {0, 0, 0, 0, 0, 2}}, 0.1, 1.0, false, 2},
        {"up to the largest", {{9}, {1}, {1}, {1}, {1}, {1}, sound}, 0.1, 1.0, false, 6},
        {"noisy: smoothed, though sound", {sound, sound}, 0.4, 1.15, true, 2},
        {"noisy, but smoothing breaks it", {sound, {3}}, 0.4, 1.0, false, 2},
        {"nothing known of the noise", {sound, sound}, -1.0, 1.0, false, 1},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        const AutoReport report = climb(row.vCounts, row.noise);
        EXPECT_EQ(report.factor, row.factor);
        EXPECT_EQ(report.bSmooth, row.bSmooth);
        EXPECT_EQ(report.vTrials.size(), row.numTrials);
        EXPECT_FALSE(report.reason.empty());
    }
}

TEST(FactorLadder, optionsBoundTheSearch)
{
    const std::vector<Counts> vCounts = {{9}, {1}, {}, {}};
    AutoOptions options;
    options.largestFactor = 1.2;
    EXPECT_EQ(climb(vCounts, 0.1, options).factor, 1.0);
    options = AutoOptions();
    options.mostFaultsLeft = 0.0;
    EXPECT_EQ(climb({{9}, {2}, {}}, 0.1, options).vTrials.size(), 2u);
    options = AutoOptions();
    options.bMaySmooth = false;
    EXPECT_FALSE(climb(vCounts, 0.9, options).bSmooth);
    options.largestFactor = 2.5;
    EXPECT_NEAR(climb({{9}, {1}, {1}, {1}, {1}, {1}, {1}, {}}, 0.1, options).factor, 2.278, 0.001);
}

TEST(FactorLadder, refusesOptionsOutOfRange)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double bad : {0.99, nan, std::numeric_limits<double>::infinity()})
        EXPECT_THROW(FactorLadder(AutoOptions{.largestFactor = bad}), ZefBadArgument) << bad;
    EXPECT_THROW(FactorLadder(AutoOptions{.largestFactorOfOpen = 0.9}), ZefBadArgument);
    for (const double bad : {0.0, -1.0, nan})
        EXPECT_THROW(FactorLadder(AutoOptions{.leastNoiseToSmooth = bad}), ZefBadArgument) << bad;
    for (const double bad : {-0.1, 1.1, nan})
        EXPECT_THROW(FactorLadder(AutoOptions{.mostFaultsLeft = bad}), ZefBadArgument) << bad;
}

} // namespace TARN_ZEF

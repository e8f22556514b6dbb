#include "core/Histogram.h"
#include "core/counters.h"
#include "core/definitions.h"
#include "helpers/StreamCapture.h"

#include <gtest/gtest.h>

#include <limits>
#include <thread>

namespace TARN_ZEF
{
TEST(Assertion, ThrowsAndPrintsThePlaceAndTheCondition)
{
    const StreamCapture out;
    const int one = 1;
    EXPECT_NO_THROW(ASSEX(one == 1));
    EXPECT_EQ(out.text(), "");
    EXPECT_THROW(ASSEX(one == 2), ZefBugException);
    EXPECT_TRUE(out.contains(__FILE__) && out.contains("ERROR: Condition [ one == 2 failed ]"));
    EXPECT_THROW(ASSEX_TEXT(one == 2, "other words"), ZefBugException);
    EXPECT_TRUE(out.contains("Condition [ other words failed ]"));
}

TEST(Assertion, ItsExceptionTellsConditionFunctionAndPlace)
{
    const StreamCapture out;
    const int line = __LINE__ + 3;
    try
    {
        ASSEX_TEXT(line == 0, "some words");
    }
    catch (const std::exception& bug)
    {
        const std::string place = std::string(__FILE__) + ":" + std::to_string(line);
        EXPECT_EQ(bug.what(),
                  std::string("condition [ some words ] failed in ") + __PRETTY_FUNCTION__ + ", " + place);
        EXPECT_TRUE(out.contains(place));
    }
    EXPECT_STRNE(ZefBugException().what(), "") << "made without a reason";
}

TEST(Histogram, limitsBelongToTheBinBelowAndTheMedianToTheOneAbove)
{
    Histogram histogram("h");
    for (const double limit : {20.0, 0.5, 1.0})
        histogram.addBin(limit);
    for (const double value : {1.0, 1.0, 0.25, 20.0, 21.0})
        histogram.add(value);
    const StreamCapture out;
    histogram.print();
    EXPECT_EQ(out.text(), "   h (avg=8.65 , min=0.25, max=21)\n"
                          "   0.000 - 0.500: 1\n"
                          "   0.500 - 1.000: 2\n"
                          "     1.0 -  20.0: 1   ( median is 1 )\n"
                          "    20.0 -   max: 1\n");
}

TEST(Histogram, EveryValueHasABin)
{
    Histogram histogram("h");
    histogram.addBin(0.5);
    for (const double value :
         {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN(),
          -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::max()})
        histogram.add(value);
    const StreamCapture out;
    histogram.print();
    EXPECT_TRUE(out.contains(" - 0.500: 2\n"));
    EXPECT_TRUE(out.contains(" -   max: 2"));
}

TEST(Counters, CountFromAllThreads)
{
    std::vector<std::thread> vThreads;
    for (int i = 0; i < 4; ++i)
        vThreads.emplace_back(
            []
            {
                for (int k = 0; k < 500; ++k)
                    getCounters("countersTest b");
                getCounters("countersTest a");
            });
    for (std::thread& thread : vThreads)
        thread.join();
    const StreamCapture out;
    getCounters("GETCOUNTERS");
    EXPECT_EQ(out.text().rfind("Benchmark: ", 0), 0u);
    EXPECT_TRUE(out.contains("countersTest a\t4\ncountersTest b\t2000\n"));
}

} // namespace TARN_ZEF

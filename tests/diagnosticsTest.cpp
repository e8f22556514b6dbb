#include "Histogram.h"
#include "Timer.h"
#include "counters.h"
#include "definitions.h"
#include "helpers/StreamCapture.h"
#include "testDataGenerators.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iomanip>
#include <iostream>
#include <limits>
#include <sstream>
#include <thread>

namespace TARN_ZEF
{
TEST(Messages, KeepTheirForm)
{
    const struct
    {
        const char* name;
        void (*pPrint)(const std::string&, const std::string&);
        const char* label;
        const char* expected;
    } rows[] = {
        {"error", errorMessage, "here", "\n      [ZEF Message] here, ERROR: words\n\n"},
        {"warning", warningMessage, "here", "\n      [ZEF Message] here, WARNING: words\n\n"},
        {"warning, no label", warningMessage, "", "\n      [ZEF Message] , WARNING: words\n\n"},
        {"info", infoMessage, "here", "\n      here, INFO: words\n\n"},
        {"info, no label", infoMessage, "", "\n      [ZEF Message] INFO: words\n\n"},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.name);
        const StreamCapture out(std::cout);
        row.pPrint(row.label, "words");
        EXPECT_EQ(out.text(), row.expected);
    }
    const std::string line = std::to_string(__LINE__ + 1);
    EXPECT_EQ(ZEF_HERE, " ** " + std::string(__PRETTY_FUNCTION__) + ":" + line + " ** ");
}

TEST(Assertion, PrintsThreeLinesAndThrows)
{
    const StreamCapture out(std::cout);
    const int one = 1;
    int line = 0;
    try
    {
        ASSEX(one == 1);
        line = __LINE__ + 1;
        ASSEX(one == 2);
        ADD_FAILURE() << "came through";
    }
    catch (const std::exception& e)
    {
        EXPECT_NE(dynamic_cast<const ZefBugException*>(&e), nullptr);
    }
    const std::string where = std::string("      ") + __FILE__ + ":" + std::to_string(line) + "\n";
    const std::string signature = std::string("      ") + __PRETTY_FUNCTION__ + "\n";
    EXPECT_EQ(out.text(),
              where + signature + "\n      [ZEF Message] ASSEX, ERROR: Condition [ one == 2 failed ]\n\n");
    EXPECT_THROW(ASSEX_TEXT(one == 2, "one==2"), ZefBugException);
    EXPECT_TRUE(out.contains("Condition [ one==2 failed ]"));
}

TEST(DeliberateEndDeathTest, EndsTheProcess)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(deliberateExit("bye"), testing::ExitedWithCode(0), "");
    EXPECT_DEATH(goToHell("bye"), "");
}

TEST(Timer, FreezesOnStop)
{
    Timer timer;
    const double running = timer.getElapsed();
    while (timer.getElapsed() == running)
        std::this_thread::yield();
    const double first = timer.stop();
    EXPECT_GT(first, running);
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_EQ(timer.getElapsed(), first);
    const double second = timer.stop();
    EXPECT_GE(second, first + 0.001);
    EXPECT_EQ(timer.getElapsed(), second);
}

TEST(Histogram, PrintsBinsAndMedian)
{
    const struct
    {
        const char* name;
        std::vector<double> vLimits;
        std::vector<double> vValues;
        const char* expected;
    } rows[] = {
        {"empty", {1.0}, {}, "Empty histogram [ h ]\n"},
        {"catch-all only",
         {},
         {3, 1, 2},
         "   h (avg=2 , min=1, max=3)\n"
         "   0.000 -   max: 3   ( median is 2 )\n"},
        {"limits belong to the bin below, the median to the one above",
         {20.0, 0.5, 1.0},
         {1.0, 1.0, 0.25, 20.0, 21.0},
         "   h (avg=8.65 , min=0.25, max=21)\n"
         "   0.000 - 0.500: 1\n"
         "   0.500 - 1.000: 2\n"
         "     1.0 -  20.0: 1   ( median is 1 )\n"
         "    20.0 -   max: 1\n"},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.name);
        Histogram histogram("h");
        for (const double limit : row.vLimits)
            histogram.addBin(limit);
        for (const double value : row.vValues)
            histogram.add(value);
        const StreamCapture out(std::cout);
        const auto flags = std::cout.flags();
        histogram.print();
        EXPECT_EQ(out.text(), row.expected);
        EXPECT_EQ(std::cout.flags(), flags);
    }
}

TEST(Histogram, EveryValueHasABin)
{
    Histogram histogram("h");
    histogram.addBin(0.5);
    for (const double value :
         {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN(),
          -std::numeric_limits<double>::infinity(), std::numeric_limits<double>::max()})
        histogram.add(value);
    const StreamCapture out(std::cout);
    histogram.print();
    EXPECT_TRUE(out.contains(" - 0.500: 2\n"));
    EXPECT_TRUE(out.contains(" -   max: 2"));
    EXPECT_THROW(histogram.addBin(std::numeric_limits<double>::quiet_NaN()), ZefBugException);
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
    const StreamCapture out(std::cout);
    getCounters("GETCOUNTERS");
    EXPECT_EQ(out.text().rfind("Benchmark: ", 0), 0u);
    EXPECT_TRUE(out.contains("countersTest a\t4\ncountersTest b\t2000\n"));
}

TEST(Counters, DebugNamesAreNumbered)
{
    const int before = incDebugCounter();
    std::ostringstream expected;
    expected << std::setw(5) << std::setfill('0') << before + 1 << "_";
    EXPECT_EQ(getDebugName(), expected.str());
}

} // namespace TARN_ZEF

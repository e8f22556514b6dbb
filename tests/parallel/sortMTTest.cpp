#include "parallel/sortMT2.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace TARN_ZEF
{
namespace
{
class SortMT : public testing::Test
{
protected:
    ~SortMT() override { setNumThreads(numThreadsBefore); }

    const int numThreadsBefore = getNumThreads();
};

constexpr int THREAD_NUMBERS[] = {1, 2, 3, 6};
constexpr std::size_t SIZES[] = {0, 1, 2, 999, 1000, 1999, 2000, 5003};

struct Distribution
{
    const char* name;
    u64 (*draw)(std::mt19937_64& random, std::size_t i);
};
// Large enough for the radix sort to move its parts on several threads.
constexpr std::size_t LARGE_SIZE = 510'000;
constexpr Distribution DISTRIBUTIONS[] = {
    {"random", [](std::mt19937_64& random, std::size_t) -> u64 { return random(); }},
    {"three values", [](std::mt19937_64& random, std::size_t) -> u64 { return random() % 3 << 40; }},
    {"falling", [](std::mt19937_64&, std::size_t i) -> u64 { return ~u64{i}; }},
    {"high and low bits",
     [](std::mt19937_64& random, std::size_t) -> u64 { return random() & 0xF00000000000000Full; }},
    {"one far away", [](std::mt19937_64&, std::size_t i) -> u64 { return i == 500 ? ~u64{0} : 5; }},
};

// f(values) for every number of threads.
template <typename F>
void forEachThreadNumber(const Distribution& distribution, std::size_t size, F f)
{
    std::mt19937_64 random(size);
    std::vector<u64> v(size);
    for (std::size_t i = 0; i < size; ++i)
        v[i] = distribution.draw(random, i);
    for (const int numThreads : THREAD_NUMBERS)
    {
        SCOPED_TRACE(std::string(distribution.name) + ", size " + std::to_string(size) + ", threads " +
                     std::to_string(numThreads));
        setNumThreads(numThreads);
        f(v);
    }
}

template <typename F>
void forEachInput(F f)
{
    for (const Distribution& distribution : DISTRIBUTIONS)
    {
        for (const std::size_t size : SIZES)
            forEachThreadNumber(distribution, size, f);
    }
    forEachThreadNumber(DISTRIBUTIONS[0], LARGE_SIZE, f);
}

TEST_F(SortMT, NumbersComeOutAsFromTheSequentialSort)
{
    forEachInput(
        [](const std::vector<u64>& vInput)
        {
            std::vector<u64> vExpected = vInput;
            std::sort(vExpected.begin(), vExpected.end());
            std::vector<u64> v = vInput;
            sortMT(v.begin(), v.end());
            ASSERT_TRUE(v == vExpected) << "natural order";
            v = vInput;
            sortMT(v.begin(), v.end(), std::greater<>());
            std::reverse(v.begin(), v.end());
            ASSERT_TRUE(v == vExpected) << "falling order";
        });
}

TEST_F(SortMT, PairsAreOrderedByBothMembersOrStablyByTheFirst)
{
    using Pair = std::pair<u64, const u64*>;
    forEachInput(
        [](const std::vector<u64>& vInput)
        {
            std::vector<Pair> vPairs;
            for (std::size_t i = 0; i < vInput.size(); ++i)
                vPairs.emplace_back(vInput[i], vInput.data() + (i ^ 1));
            std::vector<Pair> vExpected = vPairs;
            std::sort(vExpected.begin(), vExpected.end());
            std::vector<Pair> v = vPairs;
            sortMT(v.begin(), v.end(), std::less<Pair>());
            ASSERT_TRUE(v == vExpected) << "both members";

            const auto above = [](u64 a, u64 b) { return a > b; };
            for (const bool bRising : {true, false})
            {
                vExpected = v = vPairs;
                std::stable_sort(vExpected.begin(), vExpected.end(),
                                 [bRising](const Pair& a, const Pair& b)
                                 { return bRising ? a.first < b.first : a.first > b.first; });
                if (bRising)
                    sortByFirstMT(v.begin(), v.end());
                else
                    sortByFirstMT(v.begin(), v.end(), above);
                ASSERT_TRUE(v == vExpected) << "first member, rising " << bRising;
            }
        });
}

TEST_F(SortMT, ThrowingComparatorReachesTheCallerAndLeavesThePoolInOrder)
{
    setNumThreads(2);
    std::vector<double> v(50'000);
    for (std::size_t i = 0; i < v.size(); ++i)
        v[i] = std::sin(static_cast<double>(i));
    const double poison = v[777];
    const auto cmp = [poison](double a, double b)
    {
        if (a == poison || b == poison)
            throw std::runtime_error("poison");
        return a < b;
    };
    EXPECT_THROW(sortMT(v.begin(), v.end(), cmp), std::runtime_error);
    sortMT(v.begin(), v.end());
    EXPECT_TRUE(std::is_sorted(v.begin(), v.end()));
}

TEST_F(SortMT, SeveralCallersShareThePool)
{
    setNumThreads(3);
    std::vector<std::vector<double>> vvData(4);
    std::vector<std::thread> vThreads;
    for (std::size_t k = 0; k < vvData.size(); ++k)
    {
        std::mt19937_64 random(k);
        vvData[k].resize(30'000);
        for (double& x : vvData[k])
            x = static_cast<double>(random());
        vThreads.emplace_back([&v = vvData[k]] { sortMT(v.begin(), v.end()); });
    }
    for (std::thread& thread : vThreads)
        thread.join();
    for (const std::vector<double>& v : vvData)
        EXPECT_TRUE(std::is_sorted(v.begin(), v.end()));
}

TEST_F(SortMT, RefusesToRunInsideAJob)
{
    std::vector<int> v = {2, 1};
    auto handle = getWorkerPool().push([&v](int) { sortMT(v.begin(), v.end()); });
    EXPECT_THROW(handle.get(), ZefBugException);
}

} // namespace
} // namespace TARN_ZEF

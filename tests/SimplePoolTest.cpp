#include "tarn_tools/SimplePool.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <new>
#include <string>
#include <vector>

namespace TARN_ZEF
{
namespace
{
struct Record
{
    std::int64_t number;
    char tail[8];
};

// Sizes of the blocks as their addresses show them, for the slots handed out so far.
template <typename T>
std::vector<std::size_t> getRuns(const std::vector<T*>& vSlots)
{
    std::vector<std::size_t> vRuns;
    for (std::size_t i = 0; i < vSlots.size(); ++i)
    {
        if (i == 0 || vSlots[i] != vSlots[i - 1] + 1)
            vRuns.push_back(0);
        ++vRuns.back();
    }
    return vRuns;
}

TEST(SimplePool, BlocksFollowTheirSizes)
{
    using BigRecord = std::array<char, 10'000'000>;
    static_assert(sizeof(BigRecord) == 10'000'000);
    struct Case
    {
        const char* name;
        int initialSize;
        int increaseSize;
        std::size_t numSlots;
        std::vector<std::size_t> runs;
    };
    const Case cases[] = {
        {"one, then hundreds", 1, 100, 202, {1, 100, 100, 1}},
        {"empty first block", 0, 100, 101, {100, 1}},
        {"half, then doubling", 6, -1, 30, {6, 3, 6, 12, 3}},
        {"half of one is one", 1, -1, 7, {1, 1, 2, 3}},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.name);
        SimplePool<Record> pool;
        pool.init(c.initialSize, c.increaseSize);
        std::vector<Record*> vSlots;
        for (std::size_t i = 0; i < c.numSlots; ++i)
            vSlots.push_back(pool.getNext());
        EXPECT_EQ(getRuns(vSlots), c.runs);
        EXPECT_EQ(pool.size(), c.numSlots);
    }

    SimplePool<BigRecord> bigPool;
    bigPool.init(8, -1);
    std::vector<BigRecord*> vSlots;
    for (int i = 0; i < 32; ++i)
        vSlots.push_back(bigPool.getNext());
    EXPECT_EQ(getRuns(vSlots), (std::vector<std::size_t>{8, 4, 8, 10, 2})) << "100 MB limit";
}

TEST(SimplePool, VisitsAllSlotsInOrderOfCreation)
{
    SimplePool<std::string> pool;
    pool.init(3, 5);
    const int num = 3 + 2 * 5 + 1;
    for (int i = 0; i < num; ++i)
        new (pool.getNext()) std::string(40, static_cast<char>('a' + i));
    int count = 0;
    pool.forEach([&](std::string* p) { EXPECT_EQ(p->front(), static_cast<char>('a' + count++)); });
    EXPECT_EQ(count, num);
    pool.forEach([](std::string* p) { p->~basic_string(); });
}

} // namespace
} // namespace TARN_ZEF

#include "tarn_tools/SimplePool.h"

#include <gtest/gtest.h>

#include <algorithm>
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

// A large block is released in steps while its pages are being mapped; nobody may notice.
TEST(SimplePool, LargeBlocksAreHandedOutWithoutGaps)
{
    const std::size_t num = 3'000'000; // of 16 bytes: a dozen steps
    SimplePool<Record> pool;
    pool.init(static_cast<int>(num) - 1, 100);
    std::vector<Record*> vSlots;
    for (std::size_t i = 0; i < num; ++i)
    {
        vSlots.push_back(pool.getNext());
        vSlots.back()->number = static_cast<std::int64_t>(i);
        ASSERT_EQ(pool.size(), i + 1);
    }
    EXPECT_EQ(getRuns(vSlots), (std::vector<std::size_t>{num - 1, 1}));
    std::int64_t next = 0;
    pool.forEach([&next](const Record* pRecord) { ASSERT_EQ(pRecord->number, next++); });
    EXPECT_EQ(next, static_cast<std::int64_t>(num));
    pool.rewind();
    for (std::size_t i = 0; i < num; ++i)
        ASSERT_EQ(pool.getNext(), vSlots[i]);
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

TEST(SimplePool, RewoundItHandsOutTheSameSlotsAgainThenNewOnes)
{
    SimplePool<Record> pool;
    pool.init(3, 4);
    std::vector<Record*> vFirst;
    for (int i = 0; i < 9; ++i)
        vFirst.push_back(pool.getNext());
    for (const std::size_t num : {std::size_t{5}, std::size_t{14}})
    {
        pool.rewind();
        EXPECT_EQ(pool.size(), 0u);
        std::vector<Record*> vAgain;
        for (std::size_t i = 0; i < num; ++i)
            vAgain.push_back(pool.getNext());
        EXPECT_TRUE(std::equal(vFirst.begin(),
                               vFirst.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(num, 9)),
                               vAgain.begin()));
        EXPECT_EQ(pool.size(), num);
        std::vector<Record*> vVisited;
        pool.forEach([&vVisited](Record* p) { vVisited.push_back(p); });
        EXPECT_EQ(vVisited, vAgain);
    }
}

TEST(SimplePool, MemoryMovesFromOnePoolToTheNext)
{
    SimplePool<Record> donor;
    donor.init(100, -1);
    Record* pFirst = donor.getNext();
    std::vector<StorageBlock> vStorage;
    vStorage.push_back(donor.releaseFirstBlock());
    using Pair = std::array<std::int64_t, 2>;
    const std::size_t bytes = 100 * sizeof(Record);
    EXPECT_EQ(takeFitting(vStorage, bytes / 2).size(), 0u) << "much too large";
    EXPECT_EQ(takeFitting(vStorage, 3 * bytes).size(), 0u) << "much too small";

    SimplePool<Pair> pool;
    pool.init(120, -1, takeFitting(vStorage, 120 * sizeof(Pair)));
    EXPECT_EQ(takeFitting(vStorage, bytes).size(), 0u) << "taken";
    std::vector<Pair*> vSlots;
    for (int i = 0; i < 120; ++i)
        vSlots.push_back(pool.getNext());
    EXPECT_EQ(static_cast<void*>(vSlots[0]), static_cast<void*>(pFirst));
    EXPECT_EQ(getRuns(vSlots), (std::vector<std::size_t>{100, 20}));
}

} // namespace
} // namespace TARN_ZEF

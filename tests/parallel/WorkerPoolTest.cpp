#include "parallel/WorkerPool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "parallel/parallelFor.h"
#include "parallel/parallelScan.h"
#include "parallel/produceInOrder.h"

namespace TARN_ZEF
{
namespace
{
TEST(WorkerPool, RunsEveryJobOnceAndTellsTheWorker)
{
    std::vector<std::atomic<int>> vRuns(500);
    std::atomic<bool> bIndicesGood = true;
    {
        WorkerPool pool(3);
        for (std::atomic<int>& numRuns : vRuns)
            (void)pool.push(
                [&](int index)
                {
                    ++numRuns;
                    if (index < 0 || index >= 3 || !isWorkerThread())
                        bIndicesGood = false;
                });
        // The end of the pool is to finish the queue.
    }
    for (const std::atomic<int>& numRuns : vRuns)
        EXPECT_EQ(numRuns, 1);
    EXPECT_TRUE(bIndicesGood);
    EXPECT_FALSE(isWorkerThread());
}

TEST(WorkerPool, StopWithoutWaitingDropsWhatHasNotStarted)
{
    WorkerPool pool(1);
    std::promise<void> started;
    std::promise<void> release;
    auto running = pool.push(
        [&](int)
        {
            started.set_value();
            release.get_future().wait();
        });
    started.get_future().wait();
    auto waiting = pool.push([](int) {});
    std::thread stopper([&] { pool.stop(false); });
    // Dropped while the worker is still busy.
    EXPECT_THROW(waiting.get(), std::future_error);
    release.set_value();
    stopper.join();
    EXPECT_NO_THROW(running.get());
}

TEST(WorkerPool, ChangesSizeAtWork)
{
    WorkerPool pool(2);
    std::atomic<int> numRuns = 0;
    std::vector<std::future<void>> vHandles;
    for (const int n : {5, 1, 4, 0, 3})
    {
        for (int i = 0; i < 200; ++i)
            vHandles.push_back(pool.push([&](int) { ++numRuns; }));
        pool.resize(n);
        EXPECT_EQ(pool.size(), std::max(n, 1));
    }
    for (auto& handle : vHandles)
        handle.get();
    EXPECT_EQ(numRuns, 1000);
}

class ParallelFor : public testing::Test
{
protected:
    ~ParallelFor() override { setNumThreads(numThreadsBefore); }

    const int numThreadsBefore = getNumThreads();
};

TEST_F(ParallelFor, CoversTheRangeWithChunksThatAreWorthAJob)
{
    for (const int numThreads : {1, 2, 5})
    {
        setNumThreads(numThreads);
        for (const std::size_t n : {0u, 1u, 99u, 100u, 101u, 1000u, 12'345u})
        {
            SCOPED_TRACE(std::to_string(numThreads) + " threads, n " + std::to_string(n));
            std::vector<int> vHits(n, 0);
            std::atomic<bool> bLargeEnough = true;
            parallelFor(n, 100,
                        [&](std::size_t from, std::size_t to)
                        {
                            if (to - from < 100 && to != n)
                                bLargeEnough = false;
                            for (std::size_t i = from; i < to; ++i)
                                ++vHits[i];
                        });
            EXPECT_EQ(vHits, std::vector<int>(n, 1));
            EXPECT_TRUE(bLargeEnough);
        }
    }
}

TEST_F(ParallelFor, RunsSeriallyInsideAJob)
{
    setNumThreads(2);
    std::vector<int> vHits(20'000, 0);
    parallelFor(2, 1,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t k = from; k < to; ++k)
                        parallelFor(10'000, 1,
                                    [&vHits, k](std::size_t innerFrom, std::size_t innerTo)
                                    {
                                        for (std::size_t i = innerFrom; i < innerTo; ++i)
                                            ++vHits[10'000 * k + i];
                                    });
                });
    EXPECT_EQ(vHits, std::vector<int>(20'000, 1));
}

TEST_F(ParallelFor, FirstFailureArrivesAfterAllChunksHaveEnded)
{
    setNumThreads(2);
    std::atomic<std::size_t> numDone = 0;
    try
    {
        parallelFor(800, 100,
                    [&](std::size_t from, std::size_t to)
                    {
                        numDone += to - from;
                        if (from >= 200)
                            throw std::runtime_error(std::to_string(from));
                    });
        ADD_FAILURE() << "no exception";
    }
    catch (const std::runtime_error& error)
    {
        EXPECT_STREQ(error.what(), "200");
    }
    EXPECT_EQ(numDone, 800u);
}

TEST_F(ParallelFor, PipelineTakesItemsInOrderAndReportsFailuresOfBothStages)
{
    for (const int numThreads : {1, 2, 4})
    {
        setNumThreads(numThreads);
        std::vector<std::vector<std::size_t>> vSlots(3);
        std::vector<std::size_t> vTaken;
        const auto produce = [](std::vector<std::size_t>& slot, std::size_t i)
        {
            slot.assign(i % 5, i);
            if (i == 40)
                throw std::runtime_error("40");
        };
        const auto consume = [&vTaken](const std::vector<std::size_t>& slot)
        { vTaken.insert(vTaken.end(), slot.begin(), slot.end()); };
        produceInOrder(vSlots, 40, produce, consume);
        std::vector<std::size_t> vExpected;
        for (std::size_t i = 0; i < 40; ++i)
            vExpected.insert(vExpected.end(), i % 5, i);
        EXPECT_EQ(vTaken, vExpected) << numThreads;
        EXPECT_THROW(produceInOrder(vSlots, 100, produce, consume), std::runtime_error);
        EXPECT_THROW(produceInOrder(vSlots, 30, produce, [](const auto&) { throw std::logic_error("no"); }),
                     std::logic_error);
    }
}

TEST(ParallelScan, EachChunkIsFilledOnceFromTheSumOfThoseBefore)
{
    for (const std::size_t numChunks : {0, 1, 2, 1000})
    {
        std::vector<std::size_t> vFirst(numChunks, ~std::size_t{0});
        const auto count = [](std::size_t chunk) { return chunk * 7 % 5; };
        const std::size_t num = parallelScan(
            numChunks, count, [&vFirst](std::size_t chunk, std::size_t first) { vFirst[chunk] = first; });
        std::size_t expected = 0;
        for (std::size_t chunk = 0; chunk < numChunks; ++chunk)
        {
            ASSERT_EQ(vFirst[chunk], expected);
            expected += count(chunk);
        }
        EXPECT_EQ(num, expected);
    }
}
} // namespace
} // namespace TARN_ZEF

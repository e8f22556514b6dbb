// What cannot go on ends the call, or the process of a host that wants that.
#include "zef.h"

#include "core/definitions.h"
#include "tarn_locate3/RTree.h"
#include "tarn_tools/HilbertSort2.h"
#include "tarn_tools/HilbertSort3.h"
#include "tarn_tools/SimplePool.h"

#include <gtest/gtest.h>

#include <limits>
#include <new>

namespace TARN_ZEF
{
namespace
{
using Pool = SimplePool<std::array<char, 1 << 20>>;

void fillMemory()
{
    Pool pool;
    pool.init(std::numeric_limits<int>::max(), 1); // 2 PB
}

void initTwice()
{
    Pool pool;
    pool.init(1, 1);
    pool.init(1, 1);
}

const struct
{
    const char* words;
    void (*stop)();
    int status; // of the process
} STOPS[] = {
    {"SimplePool::init", initTwice, 1},
    {"RTree::RTree", [] { const TARN_LOCATE3::RTree tree(31); }, 1},
    {"HilbertSort2::HilbertSort2", [] { const HilbertSort2 sort(0, 0, 1, 1, 33); }, 1},
    {"HilbertSort3::HilbertSort3", [] { const HilbertSort3 sort(0, 0, 0, 1, 1, 1, 2); }, 1},
    {"deliberateExit", [] { deliberateExit("here"); }, 0},
};

TEST(HardStops, endTheCallWithAnException)
{
    ASSERT_FALSE(areHardStopsOn());
    for (const auto& row : STOPS)
    {
        SCOPED_TRACE(row.words);
        std::string said;
        setMessageReceiver([&said](const Message& message) { said = message.text; });
        try
        {
            row.stop();
            ADD_FAILURE() << "went on";
        }
        catch (const ZefBugException& e)
        {
            EXPECT_NE(std::string(e.what()).find(row.words), std::string::npos);
        }
        setMessageReceiver(nullptr);
        EXPECT_NE(said.find(row.words), std::string::npos);
    }
    EXPECT_THROW(fillMemory(), std::bad_alloc);
}

TEST(HardStops, endTheProcessIfTheHostWantsThat)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto endProcess = [](void (*stop)())
    {
        setHardStops(true);
        setMessageReceiver([](const Message& message) { std::cerr << message.text; });
        stop();
    };
    for (const auto& row : STOPS)
        EXPECT_EXIT(endProcess(row.stop), ::testing::ExitedWithCode(row.status), row.words);
    EXPECT_EXIT(endProcess(fillMemory), ::testing::ExitedWithCode(1), "Out of memory, sorry");
}

} // namespace
} // namespace TARN_ZEF

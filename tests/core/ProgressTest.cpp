#include "core/Progress.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "core/definitions.h"

namespace TARN_ZEF
{
namespace
{
class Recorder : public ProgressBase
{
public:
    void update(const std::string& name, double fraction) override { vUpdates.emplace_back(name, fraction); }

    // Fractions rise, none comes twice, none leaves 0 to 1.
    void expectProper() const
    {
        double last = -1.0;
        for (const auto& [name, fraction] : vUpdates)
        {
            EXPECT_GT(fraction, last);
            EXPECT_LE(fraction, 1.0);
            last = fraction;
        }
    }

    std::vector<std::pair<std::string, double>> vUpdates;
};

// Each test on a thread of its own: the receiver of a thread goes with it.
template <typename F>
void onNewThread(F f)
{
    std::thread(f).join();
}

TEST(Progress, StepsCountUpToWhatWasAnnouncedAndARepeatedStageKeepsItsFraction)
{
    Progress root("Test", 1.0, nullptr);
    root.createChild("a", 1.0);
    root.createChild("b", 3.0);
    root.getChildProgressSetTodo("a", 4)->increment(10);
    EXPECT_DOUBLE_EQ(root.getProgress(), 0.25);
    root.getChildProgressSetTodo("b", 10)->increment(5);
    Progress* const pB = root.getChildProgressSetTodo("b", 15);
    EXPECT_DOUBLE_EQ(root.getProgress(), 0.25 + 0.75 * 0.5);
    // Ten of twenty are done, ten are to do.
    pB->increment(5);
    EXPECT_DOUBLE_EQ(root.getProgress(), 0.25 + 0.75 * 0.75);
    pB->increment(500);
    EXPECT_EQ(root.getProgress(), 1.0);
}

TEST(Progress, ReceiverSeesOneRisingNumber)
{
    onNewThread(
        []
        {
            Recorder replaced;
            Recorder recorder;
            subscribe(&replaced);
            subscribe(&recorder);
            subscribe(nullptr);
            prepareProgress("Reconstruct");
            for (const std::string& tag : getRootProgress()->getChildNames())
            {
                const u64 numSteps = 100'000;
                Progress* const pProgress = getRootProgress()->getChildProgressSetTodo(tag, numSteps);
                for (u64 i = 0; i < numSteps; ++i)
                    pProgress->increment();
                pProgress->setFinished(true);
            }
            finishProgress();
            EXPECT_TRUE(replaced.vUpdates.empty());
            recorder.expectProper();
            EXPECT_GT(recorder.vUpdates.size(), 150u);
            EXPECT_LT(recorder.vUpdates.size(), 250u);
            EXPECT_EQ(recorder.vUpdates.front().first, "Reconstruct");
            EXPECT_EQ(recorder.vUpdates.back().second, 1.0);
        });
}

TEST(Progress, UntouchedStagesFillUpAtTheEndOfTheCall)
{
    onNewThread(
        []
        {
            Recorder recorder;
            subscribe(&recorder);
            for (const char* name : {"Melt", "ToCloud", "Density Estimation", "EdgeFlips", "Reduce"})
            {
                SCOPED_TRACE(name);
                recorder.vUpdates.clear();
                EXPECT_TRUE(ownsProgress());
                prepareProgress(name);
                EXPECT_FALSE(ownsProgress());
                const std::string tag = getRootProgress()->getChildNames().front();
                getRootProgress()->getChildProgressSetTodo(tag, 2)->increment();
                finishProgress();
                recorder.expectProper();
                ASSERT_FALSE(recorder.vUpdates.empty());
                EXPECT_EQ(recorder.vUpdates.back(), (std::pair<std::string, double>(name, 1.0)));
            }
            EXPECT_TRUE(ownsProgress());
            EXPECT_THROW(prepareProgress("Unheard of"), ZefBugException);
        });
}

TEST(Progress, ThreadLeavesNothingBehind)
{
    Recorder recorder;
    // Ids come again soon; a root found used would show on one of the later threads.
    for (int i = 0; i < 20; ++i)
    {
        onNewThread(
            [&]
            {
                EXPECT_TRUE(ownsProgress());
                prepareProgress("Reduce");
                getRootProgress()->setFinished(true);
                EXPECT_TRUE(recorder.vUpdates.empty());
                subscribe(&recorder);
            });
    }
}

} // namespace
TEST(Progress, destroyedReceiverIsForgotten)
{
    {
        Recorder recorder;
        subscribe(&recorder);
        prepareProgress("Reduce");
        finishProgress();
        EXPECT_FALSE(recorder.vUpdates.empty());
    }
    prepareProgress("Reduce"); // reports to nobody
    finishProgress();
}

} // namespace TARN_ZEF

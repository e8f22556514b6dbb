#include "Progress.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "definitions.h"

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

TEST(Progress, NodesReportByTheirShare)
{
    struct Case
    {
        const char* name;
        double weight;
        double sumWeights;
        u64 todo;
        u64 expected;
    };
    const Case cases[] = {
        {"light child, many steps", 3.0, 300.0, 1000, 500},
        {"light child, some steps", 3.0, 300.0, 100, 50},
        {"light child, few steps", 3.0, 300.0, 10, 5},
        {"more than there are steps", 1.0, 1000.0, 2, 2},
        {"rounded up", 1.0, 3.0, 1000, 15},
        {"no weight, no share", 0.0, 300.0, 1000, 5},
        {"at least every step", 1.0, 1.0, 100, 1},
        {"nothing to do", 1.0, 2.0, 0, 1},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.name);
        Progress root("Test", 1.0, nullptr);
        root.createChild("a", c.weight);
        root.createChild("b", c.sumWeights - c.weight);
        EXPECT_EQ(root.getChildProgressSetTodo("a", c.todo)->getReportEvery(), c.expected);
    }
}

TEST(Progress, UnpreparedTreeTakesNoChildren)
{
    Progress root("empty", 1.0, nullptr);
    EXPECT_THROW(root.createChild("a", 1.0), ZefBugException);
    EXPECT_THROW((void)root.getChildProgressSetTodo("a", 5), ZefBugException);
    root.setName("Test");
    EXPECT_EQ(root.getChildProgressSetTodo("a", 5)->getWeight(), 10.0);
}

TEST(Progress, StepsCountUpToWhatWasAnnounced)
{
    Progress root("Test", 1.0, nullptr);
    root.createChild("a", 1.0);
    root.createChild("b", 3.0);
    Progress* const pA = root.getChildProgressSetTodo("a", 4);
    pA->increment();
    EXPECT_DOUBLE_EQ(root.getProgress(), 0.25 * 0.25);
    for (int i = 0; i < 10; ++i)
        pA->increment();
    EXPECT_DOUBLE_EQ(root.getProgress(), 0.25);
    Progress* const pB = root.getChildProgressSetTodo("b", 100);
    pB->increment(50);
    EXPECT_DOUBLE_EQ(root.getProgress(), 0.25 + 0.75 * 0.5);
    pB->increment(500);
    EXPECT_EQ(root.getProgress(), 1.0);
}

TEST(Progress, RepeatedStageKeepsItsFraction)
{
    Progress root("Test", 1.0, nullptr);
    Progress* pChild = root.getChildProgressSetTodo("a", 10);
    pChild->increment(5);
    pChild = root.getChildProgressSetTodo("a", 15);
    EXPECT_DOUBLE_EQ(root.getProgress(), 0.5);
    // Ten of twenty are done, ten are to do.
    pChild->increment(5);
    EXPECT_DOUBLE_EQ(root.getProgress(), 0.75);
    pChild->setFinished(false);
    pChild = root.getChildProgressSetTodo("a", 1000);
    pChild->increment();
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

TEST(Progress, TreesOfRepeatedPassesHaveAChildForEach)
{
    onNewThread(
        []
        {
            std::vector<double> vTemperatures;
            for (double temperature = 0.02; temperature > 0.001;)
                vTemperatures.push_back(temperature *= 0.9);
            prepareProgressSimA(vTemperatures);
            EXPECT_EQ(getRootProgress()->getChildNames().size(), 32u);
            // The tag is the one that a stream would write.
            EXPECT_EQ(getRootProgress()->getChildProgressSetTodo("RM_gEfCandMT_0.018", 1)->getWeight(), 10.0);
            EXPECT_EQ(getRootProgress()->getChildProgressSetTodo("RM_gEfCandMT_0.000942026", 1)->getWeight(),
                      10.0);
            EXPECT_EQ(getRootProgress()->getChildNames().size(), 32u);

            prepareProgressSmoothing(3);
            const std::vector<std::string> vExpected = {"RM_kdeg", "border", "it%0", "it%1", "it%2", "list"};
            EXPECT_EQ(getRootProgress()->getChildNames(), vExpected);
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
} // namespace TARN_ZEF

#include "core/StableQueue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <vector>

namespace TARN_ZEF
{
namespace
{
struct Entry
{
    double key;
    int id;
};
struct KeyOfEntry
{
    double operator()(const Entry& entry) const { return entry.key; }
};
struct NaNLast
{
    bool operator()(double a, double b) const { return std::isnan(b) ? !std::isnan(a) : a < b; }
};

class QueueAndJudge
{
public:
    explicit QueueAndJudge(unsigned int seed)
        : random(seed)
    {
    }

    void add()
    {
        const Entry entry = makeEntry();
        queue.add(entry);
        judge.emplace(entry.key, entry.id);
    }
    void addSorted()
    {
        std::vector<Entry> v(random() % 20);
        std::generate(v.begin(), v.end(), [this] { return makeEntry(); });
        std::stable_sort(v.begin(), v.end(),
                         [](const Entry& a, const Entry& b) { return NaNLast()(a.key, b.key); });
        for (const Entry& entry : v)
            judge.emplace(entry.key, entry.id);
        queue.addSorted(v);
    }
    void lookAhead()
    {
        auto it = judge.begin();
        queue.lookAhead(random() % 10, [&](const Entry& entry) { ASSERT_EQ(entry.id, (it++)->second); });
    }
    void pop()
    {
        ASSERT_EQ(queue.size(), judge.size());
        ASSERT_EQ(queue.empty(), judge.empty());
        if (judge.empty())
            return;
        ASSERT_EQ(queue.front().id, judge.begin()->second);
        queue.pop();
        judge.erase(judge.begin());
    }
    [[nodiscard]] bool isEmpty() const { return judge.empty(); }

    std::mt19937 random;

private:
    // Few different keys, so that most are equal to others.
    Entry makeEntry()
    {
        const unsigned int draw = random() % 20;
        return {draw == 0 ? std::nan("") : draw, numComings++};
    }

    StableQueue<Entry, KeyOfEntry> queue;
    std::multimap<double, int, NaNLast> judge; // equal keys stay in the order in which they came
    int numComings = 0;
};
} // namespace

TEST(StableQueue, givesWhatAMultimapGivesWhateverComesInBetween)
{
    for (unsigned int seed = 0; seed < 300; ++seed)
    {
        SCOPED_TRACE(seed);
        QueueAndJudge both(seed);
        for (int step = 0; step < 300 && !HasFatalFailure(); ++step)
            switch (both.random() % 8)
            {
            case 0:
                both.addSorted();
                break;
            case 1:
                both.add();
                break;
            case 2:
                both.lookAhead();
                break;
            default:
                both.pop();
            }
        while (!both.isEmpty() && !HasFatalFailure())
            both.pop();
    }
}

} // namespace TARN_ZEF

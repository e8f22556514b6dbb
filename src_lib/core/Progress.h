#ifndef ZEF_PROGRESS_H
#define ZEF_PROGRESS_H

#include "ProgressBase.h"
#include "core/Timer.h"
#include "core/definitions.h"

#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace TARN_ZEF
{
// One node of the tree that turns the steps of the stages into one fraction for the caller. A stage knows
// its own tag only:
//
//     Progress* pProgress = getRootProgress()->getChildProgressSetTodo("RM_cpo", vAllRT.size());
//     pProgress->increment();   // once a step
//     pProgress->setFinished(true);
//
// Ownership:  a node owns its children. A pointer to a child is good until the root is reset.
// Invariant:  a leaf's fraction is steps done over steps to do, at most 1.0; an inner node's is the mean of
//             its children by weight. All nodes together notify about 200 times in a run.
// Threads:    a tree belongs to one thread; only that thread steps it. The tree is locked, a plain step is not. No
//             lock is held while the receiver runs, or it could wait for a thread that waits for the lock.
// Cancelling: what is about to notify looks first whether the call is cancelled. So a step may throw, as it may if
//             the receiver does, and belongs where what the caller handed in is whole.
// Cost:       a step is two additions and two comparisons, but for one in some reportEvery.
class Progress
{
public:
    Progress(const std::string& name_, double weight_, Progress* pParent_);
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // For the root: makes pProgress the receiver, in place of an earlier one. It survives reset().
    void subscribe(ProgressBase* pProgress);
    void unsubscribe();
    void unsubscribe(ProgressBase* pProgress); // if that is the receiver

    // weight is the share among the children of this node. A tag that exists keeps its first weight. Asserts
    // that the node has a name other than "empty".
    void createChild(const std::string& childName, double childWeight);

    // The child of that tag, ready for todo more steps; made with weight 10.0 if the tree was prepared
    // without it. A child that has run before keeps its fraction and goes on from there. The pointer stays
    // owned by this node.
    [[nodiscard]] Progress* getChildProgressSetTodo(const std::string& childName, u64 todo);

    void setName(const std::string& name_);
    // "empty" for a root that no call has prepared.
    [[nodiscard]] std::string getName() const;

    // Drops the children and takes the state of an unused root. Weight and receiver stay.
    void reset();

    // Steps beyond those announced count no further.
    void increment()
    {
        ++sinceLast;
        const bool bReached = numDone < numTodo && ++numDone == numTodo;
        if (sinceLast < reportEvery && !bReached) [[likely]]
            return;
        report();
    }
    void increment(u64 n)
    {
        numDone += n;
        sinceLast += n;
        if (sinceLast < reportEvery && numDone != numTodo) [[likely]]
            return;
        report();
    }

    // Fills up whatever steps are missing, in all children too.
    void setFinished(bool bNotify);

    // 0.0 to 1.0.
    [[nodiscard]] double getProgress();

    [[nodiscard]] u64 getReportEvery() const { return reportEvery; }
    [[nodiscard]] double getWeight() const { return weight; }
    // Tags in alphabetical order.
    [[nodiscard]] std::vector<std::string> getChildNames() const;
    // Seconds since the node was made.
    [[nodiscard]] double getElapsed() const { return timer.getElapsed(); }

private:
    void setTodo(u64 n);
    [[nodiscard]] u64 computeReportEvery(u64 n) const;
    void report();
    // Tells the receiver if the fraction of the whole tree has changed.
    void notify();

    std::map<std::string, std::unique_ptr<Progress>> mNameKids;
    std::string name;
    double weight;
    std::atomic<ProgressBase*> pSubscriber = nullptr;
    Progress* pParent;
    mutable std::recursive_mutex mtx;
    u64 numTodo = 1;
    u64 numDone = 0;
    u64 reportEvery = 1;
    u64 sinceLast = 0;
    double lastFraction = -1.0;
    Timer timer;
};

// The root of the calling thread's tree, made at first use. The root stays until the process ends; when its
// thread ends it is reset and forgets its receiver, since thread ids come again.
[[nodiscard]] Progress* getRootProgress();

// --- Trees of the public calls ----------------------------------------------------------------------------
// A call prepares its tree at its start and finishes it at its end. A call that may run inside another one
// does both only if ownsProgress() was true before.

// Whether the calling thread's tree is unused.
[[nodiscard]] bool ownsProgress();

// Resets the root, names it and creates the children of that call: "Reconstruct", "Melt", "ToCloud",
// "Density Estimation", "EdgeFlips", "Reduce", "Remesh" or "Finish". Asserts that the name is one of these.
void prepareProgress(const std::string& rootName);
// "EdgeFlipsS", with one child for each temperature of the annealing schedule.
void prepareProgressSimA(const std::vector<double>& vTemperatures);
// "Smoothing", with one child for each iteration.
void prepareProgressSmoothing(int numIterations);

// Reports 1.0 to the receiver and leaves the root unused.
void finishProgress();

// The tag of the flip candidates' search at a temperature; 0.0 is the search without annealing.
[[nodiscard]] std::string flipCandidatesTag(double temperature);
// The tag of a smoothing iteration, counted from 0.
[[nodiscard]] std::string smoothingTag(int iteration);

} // namespace TARN_ZEF

#endif

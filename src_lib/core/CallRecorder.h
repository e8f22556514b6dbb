// How code within a call tells its host's report what it does: by addToReport() and the scopes below, each of which
// does next to nothing if nobody has asked.
#ifndef ZEF_CALLRECORDER_H
#define ZEF_CALLRECORDER_H

#include "CallReport.h"
#include "core/PeakSampler.h"
#include "core/Timer.h"

#include <cstddef>
#include <memory>

namespace TARN_ZEF
{
// One call that fills in a report.
//
// Ownership:  the report is the host's.
// Invariant:  exactly one stage runs at any time; time and memory go to it.
// Threads:    that of the call. Workers of the pool have none: what is counted happens on the thread of the call.
class CallRecorder
{
public:
    // A recorder if the thread is under a ReportScope that no outer call fills in already; else null.
    [[nodiscard]] static std::unique_ptr<CallRecorder> startIfAsked(const char* call);
    ~CallRecorder();
    CallRecorder(const CallRecorder&) = delete;
    CallRecorder& operator=(const CallRecorder&) = delete;

    [[nodiscard]] CallReport& getReport() const noexcept { return scope.report; }
    // The stage in force becomes the one of that name, made if it is missing. Returns the earlier one.
    std::size_t enter(const char* name);
    void leaveTo(std::size_t earlier) noexcept;
    void finish() noexcept { scope.report.bFinished = true; }

private:
    friend class ReportScope;
    CallRecorder(ReportScope& scope_, const char* call);
    void settle() noexcept; // of the stage in force, until now

    ReportScope& scope;
    CallRecorder* pOuter;
    PeakSampler sampler;
    Timer timer;
    double settledAt = 0.0; // seconds on the timer
    std::size_t stage = 0;  // in force
};

// Of the innermost call of this thread that fills in a report; null if there is none.
extern thread_local constinit CallRecorder* pCallRecorder;

// Null if nobody asks.
[[nodiscard]] inline CallReport* getCallReport() noexcept
{
    return pCallRecorder != nullptr ? &pCallRecorder->getReport() : nullptr;
}

inline void addToReport(std::size_t CallReport::*pFigure, std::size_t num = 1) noexcept
{
    if (CallReport* const pReport = getCallReport())
        pReport->*pFigure += num;
}

// A stage of the call, as long as it lives. One within another takes its time from that.
class StageScope
{
public:
    explicit StageScope(const char* name)
        : pRecorder(pCallRecorder)
        , earlier(pRecorder != nullptr ? pRecorder->enter(name) : 0)
    {
    }
    ~StageScope()
    {
        if (pRecorder != nullptr)
            pRecorder->leaveTo(earlier);
    }
    StageScope(const StageScope&) = delete;
    StageScope& operator=(const StageScope&) = delete;

private:
    CallRecorder* pRecorder;
    std::size_t earlier;
};

// What a mesh counts of its triangles.
struct TriangleCount
{
    std::size_t numAlive = 0;
    std::size_t numMade = 0;        // alive and dead
    std::size_t numExtractions = 0; // each of which has dropped all that were made before
};

// A stage that makes and kills triangles. count() is asked at both ends; it gives a TriangleCount.
template <typename Count>
class PassScope
{
public:
    PassScope(const char* name_, Count count_)
        : stage(name_)
        , name(name_)
        , count(count_)
        , before(getCallReport() != nullptr ? count() : TriangleCount())
    {
    }
    // A pass that an exception ends leaves no line.
    void finish()
    {
        CallReport* const pReport = getCallReport();
        if (pReport == nullptr)
            return;
        const TriangleCount after = count();
        const bool bAnew = after.numExtractions != before.numExtractions;
        const std::size_t numAdded = bAnew ? after.numAlive : after.numMade - before.numMade;
        pReport->vPasses.push_back({name, numAdded, before.numAlive + numAdded - after.numAlive});
    }

private:
    StageScope stage;
    const char* name;
    Count count;
    TriangleCount before;
};

// work() as a pass of that name.
template <typename Count, typename Work>
void runPass(const char* name, Count count, Work work)
{
    PassScope<Count> pass(name, count);
    work();
    pass.finish();
}

} // namespace TARN_ZEF

#endif

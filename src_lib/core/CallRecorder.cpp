#include "core/CallRecorder.h"

#include "core/residentBytes.h"

#include <algorithm>

namespace TARN_ZEF
{
namespace
{
thread_local constinit ReportScope* pReportScope = nullptr;

constexpr const char* REST = "other";
} // namespace

thread_local constinit CallRecorder* pCallRecorder = nullptr;

ReportScope::ReportScope(CallReport& report_) noexcept
    : report(report_)
    , pOuter(pReportScope)
{
    pReportScope = this;
}

ReportScope::~ReportScope()
{
    pReportScope = pOuter;
}

std::unique_ptr<CallRecorder> CallRecorder::startIfAsked(const char* call)
{
    if (pReportScope == nullptr || pReportScope->bBusy)
        return nullptr;
    return std::unique_ptr<CallRecorder>(new CallRecorder(*pReportScope, call));
}

CallRecorder::CallRecorder(ReportScope& scope_, const char* call)
    : scope(scope_)
    , pOuter(pCallRecorder)
{
    scope.report = CallReport();
    scope.report.call = call;
    scope.report.bytesAtStart = getResidentBytes();
    scope.report.vStages.push_back({REST, 0.0, 0});
    scope.bBusy = true;
    pCallRecorder = this;
}

CallRecorder::~CallRecorder()
{
    settle();
    pCallRecorder = pOuter;
    scope.bBusy = false;
}

std::size_t CallRecorder::enter(const char* name)
{
    std::vector<StageReport>& vStages = scope.report.vStages;
    const auto isSame = [name](const StageReport& one) { return one.name == name; };
    const auto found = std::find_if(vStages.begin(), vStages.end(), isSame);
    const std::size_t next = static_cast<std::size_t>(found - vStages.begin());
    if (next == vStages.size())
        vStages.push_back({name, 0.0, 0});
    settle();
    const std::size_t earlier = stage;
    stage = next;
    return earlier;
}

void CallRecorder::leaveTo(std::size_t earlier) noexcept
{
    settle();
    stage = earlier;
}

void CallRecorder::settle() noexcept
{
    const double now = timer.getElapsed();
    StageReport& current = scope.report.vStages[stage];
    current.seconds += now - settledAt;
    current.peakBytes = std::max(current.peakBytes, sampler.takeHighest());
    scope.report.seconds = now;
    scope.report.peakBytes = std::max(scope.report.peakBytes, current.peakBytes);
    settledAt = now;
}

} // namespace TARN_ZEF

#include "core/CallScope.h"

#include "core/cancel.h"
#include "zef_calls.h"

#include <atomic>
#include <exception>

namespace TARN_ZEF
{
namespace
{
std::atomic<bool> bIndependentCalls{true};

thread_local CallState* pCurrent = nullptr;
} // namespace

void setIndependentCalls(bool bIndependent)
{
    bIndependentCalls = bIndependent;
}

bool areCallsIndependent()
{
    return bIndependentCalls;
}

CallScope::CallScope()
    : pOuter(pCurrent)
    , numExceptions(std::uncaught_exceptions())
{
    checkCancelled();
    pCurrent = areCallsIndependent() ? &state : nullptr;
}

CallScope::CallScope(const char* name)
    : CallScope()
{
    pRecorder = CallRecorder::startIfAsked(name);
}

CallScope::~CallScope()
{
    if (pRecorder && std::uncaught_exceptions() == numExceptions)
        pRecorder->finish();
    pCurrent = pOuter;
}

CallState* CallScope::getState() noexcept
{
    return pCurrent;
}

} // namespace TARN_ZEF

#include "core/CallScope.h"

#include "core/cancel.h"
#include "zef_calls.h"

#include <atomic>

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
{
    checkCancelled();
    pCurrent = areCallsIndependent() ? &state : nullptr;
}

CallScope::~CallScope()
{
    pCurrent = pOuter;
}

CallState* CallScope::getState() noexcept
{
    return pCurrent;
}

} // namespace TARN_ZEF

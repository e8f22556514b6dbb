#include "core/zefRand.h"

#include "core/CallScope.h"

namespace TARN_ZEF
{
ZefRandom& threadRandom() noexcept
{
    if (CallState* pState = CallScope::getState())
        return pState->random;
    thread_local ZefRandom generator;
    return generator;
}

int zefRand() noexcept
{
    return threadRandom().next();
}

} // namespace TARN_ZEF

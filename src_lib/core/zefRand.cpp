#include "core/zefRand.h"

#include "core/CallScope.h"

namespace TARN_ZEF
{
int zefRand() noexcept
{
    if (CallState* pState = CallScope::getState())
        return pState->random.next();
    thread_local ZefRandom generator;
    return generator.next();
}

} // namespace TARN_ZEF

#include "core/zefRand.h"

namespace TARN_ZEF
{
ZefRandom& threadRandom() noexcept
{
    thread_local ZefRandom generator;
    return generator;
}

int zefRand() noexcept
{
    return threadRandom().next();
}

} // namespace TARN_ZEF

#include "core/zefRand.h"

namespace TARN_ZEF
{
int zefRand() noexcept
{
    thread_local ZefRandom generator;
    return generator.next();
}

} // namespace TARN_ZEF

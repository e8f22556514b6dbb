#include "core/Timer.h"

namespace TARN_ZEF
{
double Timer::stop() noexcept
{
    elapsed = secondsSinceStart();
    bStopped = true;
    return elapsed;
}

double Timer::getElapsed() const noexcept
{
    return bStopped ? elapsed : secondsSinceStart();
}

double Timer::secondsSinceStart() const noexcept
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

} // namespace TARN_ZEF

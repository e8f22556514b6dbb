#ifndef ZEF_TIMER_H
#define ZEF_TIMER_H

#include <chrono>

namespace TARN_ZEF
{
// A stop watch on the monotonic clock, in seconds. It runs from its construction.
class Timer
{
public:
    Timer() noexcept
        : start(Clock::now())
    {
    }

    // Freezes getElapsed(). A further call measures anew, again from the construction.
    double stop() noexcept;
    [[nodiscard]] double getElapsed() const noexcept;

private:
    using Clock = std::chrono::steady_clock;

    [[nodiscard]] double secondsSinceStart() const noexcept;

    Clock::time_point start;
    double elapsed = 0.0;
    bool bStopped = false;
};

} // namespace TARN_ZEF

#endif

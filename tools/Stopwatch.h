#ifndef ZEF_TOOLS_STOPWATCH_H
#define ZEF_TOOLS_STOPWATCH_H

#include <chrono>

namespace TARN_TOOL
{
class Stopwatch
{
public:
    [[nodiscard]] double getSeconds() const
    {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }

private:
    std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now();
};

} // namespace TARN_TOOL

#endif

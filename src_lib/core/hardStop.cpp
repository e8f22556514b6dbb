#include "core/hardStop.h"

#include "core/definitions.h"
#include "zef_calls.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace TARN_ZEF
{
namespace
{
std::atomic<bool> bHardStops{false};

[[noreturn]] void endProcess(const char* text, int status) noexcept
{
    try
    {
        printFailure(text);
    }
    catch (const std::bad_alloc&)
    {
        // Then without a word.
    }
    std::exit(status);
}
} // namespace

void setHardStops(bool bOn)
{
    bHardStops = bOn;
}

bool areHardStopsOn()
{
    return bHardStops;
}

void hardStop(const char* text, int status)
{
    if (areHardStopsOn())
        endProcess(text, status);
    printFailure(text);
    throw ZefBugException(text);
}

void stopForMemory(const char* text)
{
    if (areHardStopsOn())
        endProcess(text, EXIT_FAILURE);
    throw std::bad_alloc();
}

} // namespace TARN_ZEF

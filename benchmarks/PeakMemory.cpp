#include "PeakMemory.h"

#include <fstream>
#include <string>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace TARN_ZEF
{
namespace
{
// A figure of /proc/self/status, in bytes.
std::size_t readStatus(const std::string& key)
{
    std::ifstream is("/proc/self/status");
    for (std::string word; is >> word;)
    {
        std::size_t kilobytes = 0;
        if (word == key && is >> kilobytes)
            return 1024 * kilobytes;
    }
    return 0;
}
} // namespace

PeakMemory::PeakMemory()
{
#if defined(__GLIBC__)
    malloc_trim(0); // what earlier runs freed must not hide what this one takes
#endif
    std::ofstream("/proc/self/clear_refs") << "5"; // resets the high-water mark
    atStart = readStatus("VmRSS:");
}

std::size_t PeakMemory::getBytes() const
{
    const std::size_t peak = readStatus("VmHWM:");
    return peak > atStart ? peak - atStart : 0;
}

} // namespace TARN_ZEF

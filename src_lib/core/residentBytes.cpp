#include "core/residentBytes.h"

#if defined(_WIN32)
#include <windows.h>
// After windows.h, which it needs.
#include <psapi.h>
#elif defined(__APPLE__)
#include <mach/mach.h>
#elif defined(__linux__)
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>
#endif

namespace TARN_ZEF
{
#if defined(_WIN32)

std::size_t getResidentBytes() noexcept
{
    PROCESS_MEMORY_COUNTERS counters = {};
    if (K32GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof counters) == 0)
        return 0;
    return counters.WorkingSetSize;
}

#elif defined(__APPLE__)

std::size_t getResidentBytes() noexcept
{
    mach_task_basic_info info = {};
    mach_msg_type_number_t count = MACH_TASK_BASIC_INFO_COUNT;
    if (task_info(mach_task_self(), MACH_TASK_BASIC_INFO, reinterpret_cast<task_info_t>(&info), &count) !=
        KERN_SUCCESS)
        return 0;
    return info.resident_size;
}

#elif defined(__linux__)

// The second figure of the file, in pages.
std::size_t getResidentBytes() noexcept
{
    const int file = open("/proc/self/statm", O_RDONLY | O_CLOEXEC);
    if (file < 0)
        return 0;
    char text[128];
    const ssize_t num = read(file, text, sizeof text - 1);
    close(file);
    text[num > 0 ? num : 0] = '\0';
    char* pSecond = nullptr;
    static_cast<void>(std::strtoull(text, &pSecond, 10));
    return std::strtoull(pSecond, nullptr, 10) * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

#else

std::size_t getResidentBytes() noexcept
{
    return 0;
}

#endif
} // namespace TARN_ZEF

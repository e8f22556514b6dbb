#include "tarn_tools/PageWarmer.h"

#include <algorithm>
#include <cstdint>

#ifdef __linux__
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace TARN_ZEF
{
namespace
{
// A job takes a few milliseconds. Four of them ahead are enough while the workers have other jobs too.
const std::size_t STEP = std::size_t{4} << 20; // bytes
const std::size_t NUM_STEPS_AHEAD = 4;
const std::size_t MIN_BLOCK = 2 * STEP;

#if defined(__linux__) && defined(MADV_POPULATE_WRITE)
const bool CAN_MAP_AHEAD = true;

// Maps the pages as if they were written to. A system that cannot refuses, which does no harm.
void mapPages(char* pFrom, std::size_t num)
{
    static const auto pageSize = static_cast<std::uintptr_t>(::sysconf(_SC_PAGESIZE));
    const std::uintptr_t offset = reinterpret_cast<std::uintptr_t>(pFrom) % pageSize;
    (void)::madvise(pFrom - offset, num + offset, MADV_POPULATE_WRITE);
}
#else
const bool CAN_MAP_AHEAD = false;

void mapPages(char*, std::size_t) {}
#endif

#if defined(__linux__) && defined(MADV_HUGEPAGE)
// A record of a mesh leads to another one far away, so that with small pages nearly each step misses the table
// of addresses, too. Whole large pages only: what stands around the block keeps its own.
void askForLargePages(char* pFrom, std::size_t num)
{
    constexpr std::uintptr_t pageSize = std::uintptr_t{2} << 20;
    const auto start = reinterpret_cast<std::uintptr_t>(pFrom);
    const std::uintptr_t skipped = (pageSize - start % pageSize) % pageSize;
    if (num > skipped)
        (void)::madvise(pFrom + skipped, (num - skipped) / pageSize * pageSize, MADV_HUGEPAGE);
}
#else
void askForLargePages(char*, std::size_t) {}
#endif
} // namespace

void PageWarmer::begin(void* pMemory, std::size_t numBytes_)
{
    const CancelAdoption never(nullptr);
    jobs.finish();
    pBlock = static_cast<char*>(pMemory);
    numBytes = numBytes_;
    if (numBytes >= MIN_BLOCK)
        askForLargePages(pBlock, numBytes);
    const bool bWorth = CAN_MAP_AHEAD && numBytes >= MIN_BLOCK && getNumThreads() > 1 && !isWorkerThread();
    released = bWorth ? 0 : numBytes;
    ordered = bWorth ? STEP : numBytes;
}

std::size_t PageWarmer::advance()
{
    const CancelAdoption never(nullptr);
    released = std::min(released + STEP, numBytes);
    const std::size_t wanted = std::min(released + NUM_STEPS_AHEAD * STEP, numBytes);
    while (ordered < wanted)
    {
        const std::size_t num = std::min(STEP, numBytes - ordered);
        jobs.push([pFrom = pBlock + ordered, num] { mapPages(pFrom, num); });
        ordered += num;
    }
    return released;
}

void PageWarmer::finish()
{
    const CancelAdoption never(nullptr);
    jobs.finish();
}

} // namespace TARN_ZEF

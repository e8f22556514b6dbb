#include "core/PeakSampler.h"

#include "core/residentBytes.h"

#include <algorithm>
#include <chrono>
#include <system_error>

namespace TARN_ZEF
{
namespace
{
constexpr std::chrono::milliseconds PERIOD{1};
}

PeakSampler::PeakSampler()
{
    try
    {
        watcher = std::thread([this] { watch(); });
    }
    catch (const std::system_error&)
    {
        // A call must not fail for its report.
    }
}

PeakSampler::~PeakSampler()
{
    if (!watcher.joinable())
        return;
    {
        const std::lock_guard<std::mutex> lock(mtx);
        bEnd = true;
    }
    wake.notify_one();
    watcher.join();
}

std::size_t PeakSampler::takeHighest() noexcept
{
    return std::max(highest.exchange(0, std::memory_order_relaxed), getResidentBytes());
}

void PeakSampler::watch()
{
    std::unique_lock<std::mutex> lock(mtx);
    while (!wake.wait_for(lock, PERIOD, [this] { return bEnd; }))
    {
        const std::size_t now = getResidentBytes();
        std::size_t before = highest.load(std::memory_order_relaxed);
        while (before < now && !highest.compare_exchange_weak(before, now, std::memory_order_relaxed))
        {
        }
    }
}

} // namespace TARN_ZEF

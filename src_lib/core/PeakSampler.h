#ifndef ZEF_PEAKSAMPLER_H
#define ZEF_PEAKSAMPLER_H

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <thread>

namespace TARN_ZEF
{
// Watches how much memory of the process is resident, about every millisecond, on a thread of its own. If there is
// none to be had, only those who ask look.
//
// Threads:    one owner
class PeakSampler
{
public:
    PeakSampler();
    ~PeakSampler();
    PeakSampler(const PeakSampler&) = delete;
    PeakSampler& operator=(const PeakSampler&) = delete;

    // The most since the last time, in bytes.
    [[nodiscard]] std::size_t takeHighest() noexcept;

private:
    void watch();

    std::atomic<std::size_t> highest{0};
    std::mutex mtx;
    std::condition_variable wake;
    bool bEnd = false;
    std::thread watcher;
};

} // namespace TARN_ZEF

#endif

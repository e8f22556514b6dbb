#ifndef ZEF_BENCHMARKS_PEAKMEMORY_H
#define ZEF_BENCHMARKS_PEAKMEMORY_H

#include <cstddef>

namespace TARN_ZEF
{
// The largest resident memory of the process since construction, above what it had then. Linux only; 0
// elsewhere.
class PeakMemory
{
public:
    PeakMemory();
    [[nodiscard]] std::size_t getBytes() const;

private:
    std::size_t atStart;
};

} // namespace TARN_ZEF

#endif

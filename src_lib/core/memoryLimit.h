#ifndef ZEF_MEMORYLIMIT_H
#define ZEF_MEMORYLIMIT_H

#include <cstddef>
#include <limits>

namespace TARN_ZEF
{
inline constexpr std::size_t NO_MEMORY_LIMIT = std::numeric_limits<std::size_t>::max();

// Of the calls of this thread, in bytes. Set by MemoryLimitScope alone.
extern thread_local constinit std::size_t memoryLimit;

} // namespace TARN_ZEF

#endif

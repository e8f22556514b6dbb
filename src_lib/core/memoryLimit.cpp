#include "core/memoryLimit.h"

#include "estimateMemory.h"

#include <algorithm>

namespace TARN_ZEF
{
thread_local constinit std::size_t memoryLimit = NO_MEMORY_LIMIT;

MemoryLimitScope::MemoryLimitScope(std::size_t numBytes) noexcept
    : outerLimit(memoryLimit)
{
    memoryLimit = std::min(memoryLimit, numBytes);
}

MemoryLimitScope::~MemoryLimitScope()
{
    memoryLimit = outerLimit;
}

ZefOverMemoryLimit::ZefOverMemoryLimit(const std::string& reason, std::size_t forecast_,
                                       double fittingSpacing_)
    : ZefRefusedException(reason)
    , forecast(forecast_)
    , fittingSpacing(fittingSpacing_)
{
}

ZefOverMemoryLimit::~ZefOverMemoryLimit() = default;

} // namespace TARN_ZEF

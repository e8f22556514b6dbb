#ifndef ZEF_PREFETCH_H
#define ZEF_PREFETCH_H

#include <cstddef>

namespace TARN_ZEF
{
// Asks for a record to be brought near the processor: all cache lines of it, in the background. Only speed
// depends on it; any address will do.
template <typename T>
void prefetch(const T* p) noexcept
{
#if defined(__GNUC__)
    constexpr std::size_t lineSize = 64;
    const char* const pBytes = reinterpret_cast<const char*>(p);
    for (std::size_t i = 0; i < sizeof(T); i += lineSize)
        __builtin_prefetch(pBytes + i);
    __builtin_prefetch(pBytes + sizeof(T) - 1);
#else
    (void)p;
#endif
}

} // namespace TARN_ZEF

#endif

// The library's one source of random numbers.
#ifndef ZEF_ZEFRAND_H
#define ZEF_ZEFRAND_H

#include <cstddef>
#include <cstdint>
#include <utility>

namespace TARN_ZEF
{
inline constexpr double ZEF_RAND_MAX = 32767.0;

// A 32-bit linear congruential step; bits 16 to 30 are the result, 0 to 32767. All jitters and acceptance
// tests of the library are scaled for this range. Multiplier and increment: the example generator of the
// C standard (ISO/IEC 9899, 7.22.2.2).
class ZefRandom
{
public:
    constexpr explicit ZefRandom(std::uint32_t startState = 1) noexcept
        : state(startState)
    {
    }
    constexpr int next() noexcept
    {
        state = state * 1103515245u + 12345u;
        return static_cast<int>((state >> 16) & 0x7FFFu);
    }

private:
    std::uint32_t state;
};

// Next number of the call's sequence, which starts in state 1. Outside of calls, and in calls without a state of
// their own, of the thread's: every thread starts in state 1, and nothing reseeds it.
int zefRand() noexcept;
// The sequence itself, to be kept and put back.
[[nodiscard]] ZefRandom& threadRandom() noexcept;

// Fisher-Yates on that sequence: element i changes places with one of 0..i, i falling.
template <typename RandomIt>
void zefShuffle(RandomIt first, RandomIt last)
{
    for (std::size_t i = static_cast<std::size_t>(last - first); i-- > 1;)
    {
        const std::uint32_t high = static_cast<std::uint32_t>(zefRand()) << 15;
        const std::uint32_t draw = high | static_cast<std::uint32_t>(zefRand());
        std::swap(first[static_cast<std::ptrdiff_t>(i)], first[static_cast<std::ptrdiff_t>(draw % (i + 1))]);
    }
}

} // namespace TARN_ZEF

#endif

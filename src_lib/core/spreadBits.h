// The bits of numbers spread for codes along a curve through space.
#ifndef ZEF_SPREADBITS_H
#define ZEF_SPREADBITS_H

#include "core/definitions.h"

namespace TARN_ZEF
{
// Spreads the low 21 bits of a number: bit i goes to bit 3i. The higher bits are dropped.
// Source: the parallel prefix form of bit interleaving, H. S. Warren, Hacker's Delight, chapter 7.
[[nodiscard]] constexpr u64 spreadBits3(u64 number) noexcept
{
    u64 v = number & 0x1FFFFF;
    v = (v | v << 32) & 0x001F00000000FFFF;
    v = (v | v << 16) & 0x001F0000FF0000FF;
    v = (v | v << 8) & 0x100F00F00F00F00F;
    v = (v | v << 4) & 0x10C30C30C30C30C3;
    v = (v | v << 2) & 0x1249249249249249;
    return v;
}

// The inverse: bit 3i goes to bit i, all other bits are dropped.
[[nodiscard]] constexpr u64 compactBits3(u64 code) noexcept
{
    u64 v = code & 0x1249249249249249;
    v = (v | v >> 2) & 0x10C30C30C30C30C3;
    v = (v | v >> 4) & 0x100F00F00F00F00F;
    v = (v | v >> 8) & 0x001F0000FF0000FF;
    v = (v | v >> 16) & 0x001F00000000FFFF;
    v = (v | v >> 32) & 0x1FFFFF;
    return v;
}

} // namespace TARN_ZEF

#endif

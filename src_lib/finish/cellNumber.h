#ifndef ZEF_FINISH_CELLNUMBER_H
#define ZEF_FINISH_CELLNUMBER_H

#include "core/definitions.h"

#include <cstdint>

namespace TARN_ZEF
{
// One number for a cell of an unbounded grid. Cells far apart may get the same one: who searches by it looks at
// something in vain now and then, but misses nothing. REQUIRES: whole numbers below 2^63.
[[nodiscard]] inline u64 getCellNumber(double x, double y, double z) noexcept
{
    const auto part = [](double c) { return static_cast<u64>(static_cast<std::int64_t>(c)); };
    return part(x) * 0x9E3779B97F4A7C15ULL + part(y) * 0xC2B2AE3D27D4EB4FULL +
           part(z) * 0x165667B19E3779F9ULL;
}

} // namespace TARN_ZEF

#endif

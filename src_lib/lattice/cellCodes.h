// The 64-bit codes of lattice cells and the bit arithmetic beneath them. Nothing but these functions and
// class Calc touches the bits of a code.
#ifndef ZEF_CELLCODES_H
#define ZEF_CELLCODES_H

#include "core/definitions.h"
#include "core/spreadBits.h"

namespace TARN_ZEF
{
// Interleaved code: bit 3i+2 is bit i of x, bit 3i+1 bit i of y, bit 3i bit i of z, for i from 0 to 20. Bit
// 63 is 0. Codes sorted as numbers run in Morton order; clearing low bits names the enclosing block.
using CCD = u64;
// Packed code: x << 42 | y << 21 | z.
using RCD = u64;
// A CCD in the role of a mesh vertex.
using VCD = u64;
static_assert(sizeof(CCD) == 8);

// Three coordinates of 21 bits fill 63 bits.
inline constexpr int MAXLEVELS = 21;

// A "sparse number" is a CCD with only the bits of one axis kept.
inline constexpr u64 SPARSE_X = 0x4924924924924924;
inline constexpr u64 SPARSE_Y = 0x2492492492492492;
inline constexpr u64 SPARSE_Z = 0x1249249249249249;
inline constexpr u64 SPARSE_XY = SPARSE_X | SPARSE_Y;
inline constexpr u64 SPARSE_YZ = SPARSE_Y | SPARSE_Z;
static_assert(SPARSE_XY == 0x6DB6DB6DB6DB6DB6 && SPARSE_YZ == 0x36DB6DB6DB6DB6DB);

// How an axis is named: by its bit within a triple of bits (axTriBit). The bit of level i of that axis is
// axTriBit << 3i.
inline constexpr u64 AXTRIBIT_X = 4;
inline constexpr u64 AXTRIBIT_Y = 2;
inline constexpr u64 AXTRIBIT_Z = 1;

inline constexpr u64 RCD_MASK_X = 0x7FFFFC0000000000;
inline constexpr u64 RCD_MASK_Y = 0x000003FFFFE00000;
inline constexpr u64 RCD_MASK_Z = 0x00000000001FFFFF;

// Adjacency of two cells, by the number of axes in which they differ, whatever the distance.
enum NeigTyp
{
    NT_SAME = 1, // for completeness; a cell is no neighbour of itself
    NT_FACE = 2,
    NT_EDGE = 3,
    NT_CORNER = 4
};

// topmost becomes ccd if that lies higher in z; of cells at one height the first one stays.
constexpr void raiseTo(u64& topmost, u64 ccd) noexcept
{
    if ((ccd & SPARSE_Z) > (topmost & SPARSE_Z))
        topmost = ccd;
}

// No component is masked: one of 2^21 or more spills into its neighbour.
[[nodiscard]] constexpr RCD makeRCD(u64 x, u64 y, u64 z) noexcept
{
    return x << 42 | y << 21 | z;
}

constexpr void splitRCD(RCD rcd, u64& x, u64& y, u64& z) noexcept
{
    x = (rcd & RCD_MASK_X) >> 42;
    y = (rcd & RCD_MASK_Y) >> 21;
    z = rcd & RCD_MASK_Z;
}

// The sparse mask of axis index 0 (x), 1 (y) or 2 (z); any other index is an assertion failure.
[[nodiscard]] inline u64 getMask(int axis)
{
    constexpr u64 MASKS[3] = {SPARSE_X, SPARSE_Y, SPARSE_Z};
    ASSEX_TEXT(axis >= 0 && axis < 3, "false");
    return MASKS[axis];
}

} // namespace TARN_ZEF

#endif

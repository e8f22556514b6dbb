#ifndef ZEF_CELLLOOPS_H
#define ZEF_CELLLOOPS_H

#include <array>
#include <cstdint>

namespace TARN_ZEF
{
// How the surface between inside and outside passes a cell, told by which of its corners are inside: as loops over the
// edges that change. Where two inside corners of a side stand across from each other, they hang together there, so the
// cell behind that side sees the same.
//
// Naming:  corner x + 2y + 4z; edge 4 axis + b + 2c at offset b along the next axis and c along the one after it.
class CellLoops
{
public:
    static constexpr int NUM_EDGES = 12;
    static constexpr std::uint8_t NO_LOOP = 0xFF;

    struct Loops
    {
        int num = 0;
        std::array<std::uint8_t, NUM_EDGES> loopOf = {}; // by edge; NO_LOOP where nothing changes
        bool bAmbiguous = false;                         // a side with four changes
    };

    CellLoops();

    // By the bits of the inside corners.
    [[nodiscard]] const Loops& of(unsigned corners) const { return table[corners]; }
    [[nodiscard]] static int lowerCorner(int edge);
    [[nodiscard]] static int upperCorner(int edge) { return lowerCorner(edge) | (1 << (edge / 4)); }

private:
    static void joinOnSide(unsigned corners, int axis, int side, std::array<int, NUM_EDGES>& group,
                           Loops& loops);

    std::array<Loops, 256> table;
};

} // namespace TARN_ZEF

#endif

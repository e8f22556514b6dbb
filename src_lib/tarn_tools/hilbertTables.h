#ifndef ZEF_HILBERTTABLES_H
#define ZEF_HILBERTTABLES_H

#include <array>
#include <bit>

namespace TARN_ZEF
{
// The two tables that walk a Hilbert curve of N dimensions down the levels of a cube, made by the compiler.
//
// A state is the way the curve runs through a cube: the corner where it enters, and the axis along which it
// leaves. Corners of an even number of ones occur only, so there are 12 states in space, 4 in the plane.
// State 0 enters at corner 0.
//
// Source: C. Hamilton, "Compact Hilbert Indices", Dalhousie University, CS-2006-07, section 2.
template <int N>
class HilbertTables
{
public:
    static constexpr unsigned numOrthants = 1u << N;
    static constexpr unsigned numStates = numOrthants / 2 * N;
    using Table = std::array<std::array<unsigned char, numStates>, numOrthants>;

    constexpr HilbertTables()
    {
        for (unsigned state = 0; state < numStates; ++state)
        {
            for (unsigned q = 0; q < numOrthants; ++q)
                fill(q, state);
        }
    }

    // positionTable[q][state]: the rank of subcube q on the way through the cube.
    Table positionTable = {};
    // stateTable[q][state]: the way through subcube q.
    Table stateTable = {};

private:
    static constexpr unsigned rotateLeft(unsigned bits, unsigned by)
    {
        by %= N;
        return ((bits << by) | (bits >> (N - by))) & (numOrthants - 1);
    }

    static constexpr unsigned toGray(unsigned rank) { return rank ^ (rank >> 1); }

    static constexpr unsigned fromGray(unsigned code)
    {
        unsigned rank = 0;
        for (; code != 0; code >>= 1)
            rank ^= code;
        return rank;
    }

    // Where the way enters the subcube of that rank, and along which axis it leaves, in state 0.
    static constexpr unsigned entryOf(unsigned rank) { return rank == 0 ? 0 : toGray((rank - 1) / 2 * 2); }
    static constexpr unsigned axisOf(unsigned rank)
    {
        if (rank == 0)
            return 0;
        return static_cast<unsigned>(std::countr_one(rank % 2 == 0 ? rank - 1 : rank)) % N;
    }

    // The even corners in order, by their high bits; the lowest one follows from the others.
    static constexpr unsigned cornerOf(unsigned state)
    {
        const unsigned high = state / N << 1;
        return high | (static_cast<unsigned>(std::popcount(high)) & 1);
    }

    constexpr void fill(unsigned q, unsigned state)
    {
        const unsigned entry = cornerOf(state);
        const unsigned axis = state % N;
        const unsigned rank = fromGray(rotateLeft(q ^ entry, 2 * N - axis - 1));
        const unsigned nextEntry = entry ^ rotateLeft(entryOf(rank), axis + 1);
        const unsigned nextAxis = (axis + axisOf(rank) + 1) % N;
        positionTable[q][state] = static_cast<unsigned char>(rank);
        stateTable[q][state] = static_cast<unsigned char>(nextEntry / 2 * N + nextAxis);
    }
};

} // namespace TARN_ZEF

#endif

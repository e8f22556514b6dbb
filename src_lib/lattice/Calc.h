#ifndef ZEF_CALC_H
#define ZEF_CALC_H

#include "Point3.h"
#include "lattice/cellCodes.h"

#include <vector>

namespace TARN_ZEF
{
// The cubic lattice of 2^numLevels cells per axis on which everything between the input points and the
// refined mesh lives: its box, its cell size, and all arithmetic on cell codes.
//
// Invariant:  a cell index lies in 0 .. getNumCells() - 1 on each axis. The box leaves a margin of more than
//             four cells around the data, and the neighbourhood operations rely on it: they abort at the
//             rim and never clamp.
// Threads:    immutable after construction; shared without locks.
// Cost:       a few bit operations per call and no allocation. These calls sit in the innermost loops.
//
// axTriBit, wherever it is asked for, is 4 (x), 2 (y) or 1 (z).
class Calc
{
public:
    // Lower corner and side lengths of the box, in units of the points. At most MAXLEVELS levels, else
    // ZefBugException.
    Calc(double x0_, double y0_, double z0_, double lenX_, double lenY_, double lenZ_, int numLevels_);

    // --- Sizes ---------------------------------------------------------------------------------------------

    // The one cell size to ask for: cells are cubic in use.
    [[nodiscard]] double getCellSizeX() const noexcept { return cellX; }
    void getCellSizes(double& x, double& y, double& z) const noexcept;
    [[nodiscard]] int getNumLevels() const noexcept { return numLevels; }
    // Cells per axis.
    [[nodiscard]] u64 getNumCells() const noexcept { return numCells; }

    // --- Cell to real point --------------------------------------------------------------------------------

    // Lower corner of a cell: the box corner plus cell size * 2^i for each set bit i, added from bit 0 up.
    [[nodiscard]] Point3 getRef(CCD ccd) const noexcept;
    // Centre of a cell.
    [[nodiscard]] Point3 getMid(CCD ccd) const noexcept;
    // From the packed code, by another formula: not always bit-identical to getRef() and getMid(), and
    // meant to be so.
    [[nodiscard]] Point3 getRefOfRCD(RCD rcd) const noexcept;
    [[nodiscard]] Point3 getMidOfRCD(RCD rcd) const noexcept;

    // Append one point per code, in order.
    void getRefs(const std::vector<CCD>& vCCD, std::vector<Point3>& vPoints) const;
    void getMids(const std::vector<CCD>& vCCD, std::vector<Point3>& vPoints) const;

    // --- Real point to cell --------------------------------------------------------------------------------

    // The cell that holds p. There is no range check: a point outside the box gives a meaningless cell.
    [[nodiscard]] RCD getRCD(const Point3& p) const noexcept
    {
        return makeRCD(toIndex((p.x() - x0) * invCellX), toIndex((p.y() - y0) * invCellY),
                       toIndex((p.z() - z0) * invCellZ));
    }
    [[nodiscard]] CCD getCCD(const Point3& p) const noexcept
    {
        return interleave(toIndex((p.x() - x0) * invCellX), toIndex((p.y() - y0) * invCellY),
                          toIndex((p.z() - z0) * invCellZ));
    }
    // The same for p with shift added to each coordinate.
    [[nodiscard]] CCD getCCD(const Point3& p, double shift) const noexcept
    {
        return getCCD(Point3(p.x() + shift, p.y() + shift, p.z() + shift));
    }

    // --- Conversions ---------------------------------------------------------------------------------------

    void getXYZ(CCD ccd, u64& x, u64& y, u64& z) const noexcept
    {
        x = compactBits3(ccd >> 2);
        y = compactBits3(ccd >> 1);
        z = compactBits3(ccd);
    }
    [[nodiscard]] RCD ccdToRCD(CCD ccd) const noexcept
    {
        return makeRCD(compactBits3(ccd >> 2), compactBits3(ccd >> 1), compactBits3(ccd));
    }
    // Bits of levels from numLevels up are ignored in both.
    [[nodiscard]] u64 numberToSparse(u64 number, u64 axTriBit) const
    {
        ASSEX(axTriBit < 8);
        return (spreadBits3(number) & levelMask) * axTriBit;
    }
    [[nodiscard]] u64 sparseToNumber(u64 sparse, u64 axTriBit) const
    {
        ASSEX(axTriBit < 8);
        return compactBits3((sparse >> (axTriBit >> 1)) & levelMask);
    }

    // --- Steps ---------------------------------------------------------------------------------------------

    // One up or down on the bits of one axis; all other bits of the argument stay. Leaving the lattice is an
    // assertion failure.
    //
    // Adding 1 to the axis is one ordinary addition: with all bits of the other axes set, the carry runs
    // through them to the axis's next bit. Subtracting mirrors it with those bits clear.
    [[nodiscard]] u64 incSparse(u64 sparse, u64 axTriBit) const
    {
        const u64 mask = levelMask * axTriBit;
        ASSEX_TEXT((sparse & mask) != mask, "false");
        return (sparse & ~mask) | (((sparse | ~mask) + axTriBit) & mask);
    }
    [[nodiscard]] u64 decSparse(u64 sparse, u64 axTriBit) const
    {
        const u64 mask = levelMask * axTriBit;
        ASSEX_TEXT((sparse & mask) != 0, "false");
        return (sparse & ~mask) | (((sparse & mask) - axTriBit) & mask);
    }
    // The same on one axis of a whole code, in place. Leaving the lattice gives false, a warning, and a code
    // of all ones.
    [[nodiscard]] bool manipOneAxis(CCD& ccd, bool bIncrease, u64 axTriBit) const;
    // The cell at a distance of offset cells along one axis; leaving the lattice is an assertion failure.
    [[nodiscard]] CCD getOffVal(CCD ccd, int offset, u64 axTriBit) const;

    // --- Neighbourhoods ------------------------------------------------------------------------------------

    // Fill the eight cells of a cube. Up: array[0] is given and is the lowest cell. Down: array[5] is given
    // and is the highest cell. The two orders differ beyond that shift: in the second one z runs the other
    // way. It numbers the bits of a cube configuration.
    //
    //   index        0  1  2  3  4  5  6  7
    //   up    dx     0  1  1  0  0  1  1  0
    //         dy     0  0  0  0  1  1  1  1
    //         dz     0  0  1  1  0  0  1  1
    //   down  dx    -1  0  0 -1 -1  0  0 -1
    //         dy    -1 -1 -1 -1  0  0  0  0
    //         dz     0  0 -1 -1  0  0 -1 -1
    void completeArray8Up(CCD array[8]) const;
    void completeArray8Down(CCD array[8]) const;
    // The block around a cell, at index (dz+1)*9 + (dy+1)*3 + (dx+1); array[13] is the cell. A cell 0 is an
    // assertion failure.
    void completeArray27(CCD baseCCD, CCD array[27]) const;
    // The 26 neighbours in ascending order of (dx, dy, dz). No index of the cell may be 0.
    void completeArray26_RCD(RCD rcd, RCD array[26]) const;
    // The ring of eight cells around a cell in the plane that keeps x (0), y (1) or z (2), walked once
    // around. With (a, b) the varying axes, (y, z), (x, z) or (y, x): (a-1, b-1), (a, b-1), (a+1, b-1),
    // (a+1, b), (a+1, b+1), (a, b+1), (a-1, b+1), (a-1, b).
    void getPlaneCCD8(CCD ccd, int planeIndex, CCD array[8]) const;

    // --- Comparisons ---------------------------------------------------------------------------------------

    // By the number of axes that differ, not by how much. Equal cells are an assertion failure.
    [[nodiscard]] NeigTyp getNeigType(CCD a, CCD b) const;
    // Index (0 x, 1 y, 2 z) of the axis that alone stays the same in all cells, or that alone differs; -1 if
    // there is no such single axis.
    [[nodiscard]] int getUniqueSameComponent(CCD a, CCD b) const noexcept;
    [[nodiscard]] int getUniqueSameComponent(CCD a, CCD b, CCD c) const noexcept;
    [[nodiscard]] int getUniqueDifferentComponent(CCD a, CCD b) const noexcept;
    // The two other axes, as axTriBits.
    static void getOrthoTribs(u64 axTriBit, u64& a, u64& b);
    // Bits set in a byte.
    [[nodiscard]] static int getNumSet8(int val);

private:
    // A negative or absurd coordinate must not be undefined: what is not above -1 or does not fit becomes
    // 2^63, far outside every lattice.
    [[nodiscard]] static u64 toIndex(double d) noexcept
    {
        if (d > -1.0 && d < 9223372036854775808.0) [[likely]]
            return static_cast<u64>(static_cast<std::int64_t>(d));
        return toIndexFar(d);
    }
    [[nodiscard]] static u64 toIndexFar(double d) noexcept;

    // The indices of a lattice have 21 bits. Of a larger one, all that is left is bit 21 of z, in bit 63: it
    // keeps such a code apart from those of the lattice.
    [[nodiscard]] static CCD interleave(u64 x, u64 y, u64 z) noexcept
    {
        return spreadBits3(x) << 2 | spreadBits3(y) << 1 | spreadBits3(z) | (z >> 21) << 63;
    }

    double x0, y0, z0;                   // lower corner of the box
    double lenX, lenY, lenZ;             // sides of the box
    int numLevels;                       // bits per coordinate
    u64 numCells;                        // 2^numLevels
    double cellX, cellY, cellZ;          // side / numCells
    double invCellX, invCellY, invCellZ; // numCells / side
    u64 levelMask;                       // the z bits of all levels below numLevels
};

} // namespace TARN_ZEF

#endif

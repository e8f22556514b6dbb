#ifndef ZEF_CUBEWALK_H
#define ZEF_CUBEWALK_H

#include "lattice/CellIndex.h"

#include <cstdint>
#include <cstring>
#include <vector>

namespace TARN_ZEF
{
// Visits every cube with at least one occupied cell, in ascending order of its base (its highest cell),
// with its configuration as of Calc::completeArray8Down() and the rank of each member.
//
// A block of 8x8x8 bases is done at once: the occupied cells of the block and of the layer below it enter
// their bit in the configurations of the eight cubes they belong to. No list of (cube, member) pairs is
// made or sorted.
//
// Threads:    one walker serves one thread; several may walk ranges of blocks of one index.
// Cost:       linear in the cells; a few kilobytes, whatever their number.
class CubeWalk
{
public:
    // One visited cube. Valid during the call only.
    class Cube
    {
    public:
        [[nodiscard]] u64 getBase() const noexcept { return base; }
        [[nodiscard]] int getCfg() const noexcept { return cfg; }
        // Rank of the member at a corner 0 to 7 whose bit is set in the configuration.
        [[nodiscard]] std::uint32_t getRank(int corner) const noexcept { return pRank[CORNER_DELTA[corner]]; }

    private:
        friend class CubeWalk;
        u64 base = 0;
        int cfg = 0;
        const std::uint32_t* pRank = nullptr; // at the base in the region
    };

    explicit CubeWalk(const CellIndex& index_);

    // Blocks that can hold bases, ascending. A walk over all of them visits all cubes.
    [[nodiscard]] std::size_t getNumBlocks() const noexcept { return vCodes.size(); }

    // f(const Cube&) for each cube of the blocks [from, to).
    template <typename F>
    void walk(std::size_t from, std::size_t to, F&& f)
    {
        for (std::size_t i = from; i < to; ++i)
        {
            loadBlock(vCodes[i]);
            visitBases(vCodes[i] << CellIndex::BLOCK_BITS, f);
        }
    }
    template <typename F>
    void walk(F&& f)
    {
        walk(0, getNumBlocks(), f);
    }

private:
    // The region of a block: its cells and one layer below on each axis, 9x9x9, z fastest.
    static constexpr int EDGE = 9;
    static constexpr int STEP_X = EDGE * EDGE;
    static constexpr int STEP_Y = EDGE;
    static constexpr int STEP_Z = 1;
    // From a base to its member at each corner, within the region.
    static constexpr int CORNER_DELTA[8] = {
        -STEP_X - STEP_Y, -STEP_Y, -STEP_Y - STEP_Z, -STEP_X - STEP_Y - STEP_Z,
        -STEP_X,          0,       -STEP_Z,          -STEP_X - STEP_Z};

    void loadBlock(u64 code);
    void loadCells(const CellIndex::Block& block, int dx, int dy, int dz);
    void enterCell(int x, int y, int z, std::uint32_t rank) noexcept;

    template <typename F>
    void visitBases(u64 firstBase, F& f)
    {
        Cube cube;
        for (int word = 0; word < 64; ++word)
        {
            u64 eight;
            std::memcpy(&eight, aCfg + 8 * word, 8);
            if (eight == 0)
                continue;
            for (int local = 8 * word; local < 8 * word + 8; ++local)
            {
                if (aCfg[local] == 0)
                    continue;
                cube.base = firstBase | static_cast<u64>(local);
                cube.cfg = aCfg[local];
                cube.pRank = aRank + regionIndexOfLocal(local);
                f(static_cast<const Cube&>(cube));
            }
        }
    }
    [[nodiscard]] static int regionIndexOfLocal(int local) noexcept;

    const CellIndex* pIndex;
    std::vector<u64> vCodes;
    std::uint32_t aRank[EDGE * EDGE * EDGE] = {};
    alignas(8) unsigned char aCfg[512] = {}; // by local code of the base
};

} // namespace TARN_ZEF

#endif

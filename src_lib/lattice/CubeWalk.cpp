#include "lattice/CubeWalk.h"

#include <algorithm>
#include <array>

namespace TARN_ZEF
{
namespace
{
// Local coordinates, 0 to 7 each, of the 512 local codes of a block.
struct Local
{
    unsigned char x, y, z;
};

constexpr std::array<Local, 512> makeLocals()
{
    std::array<Local, 512> a{};
    for (unsigned int i = 0; i < 512; ++i)
        for (unsigned int level = 0; level < 3; ++level)
        {
            a[i].x = static_cast<unsigned char>(a[i].x | ((i >> (3 * level + 2) & 1) << level));
            a[i].y = static_cast<unsigned char>(a[i].y | ((i >> (3 * level + 1) & 1) << level));
            a[i].z = static_cast<unsigned char>(a[i].z | ((i >> (3 * level) & 1) << level));
        }
    return a;
}
constexpr std::array<Local, 512> LOCALS = makeLocals();

// The same three bits of a coordinate, spread to every third place.
constexpr unsigned int SPREAD[8] = {0, 1, 8, 9, 64, 65, 72, 73};

// Local codes with x (y, z) = 7: the layer that cubes of the next block reach back to.
struct TopLayers
{
    u64 aMask[3][8];
};
constexpr TopLayers makeTopLayers()
{
    TopLayers t{};
    for (unsigned int i = 0; i < 512; ++i)
    {
        const u64 bit = u64{1} << (i & 63);
        t.aMask[0][i >> 6] |= LOCALS[i].x == 7 ? bit : 0;
        t.aMask[1][i >> 6] |= LOCALS[i].y == 7 ? bit : 0;
        t.aMask[2][i >> 6] |= LOCALS[i].z == 7 ? bit : 0;
    }
    return t;
}
constexpr TopLayers TOP = makeTopLayers();

// The bit of a member by the steps (0 or 1 per axis) from it up to the base: x is 4, y is 2, z is 1.
constexpr unsigned char CFG_BIT_OF_STEPS[8] = {1 << 5, 1 << 6, 1 << 1, 1 << 2,
                                               1 << 4, 1 << 7, 1 << 0, 1 << 3};

u64 stepUp(u64 code, u64 mask, u64 lowBit)
{
    return (code & ~mask) | (((code | ~mask) + lowBit) & mask);
}

u64 stepDown(u64 code, u64 mask, u64 lowBit)
{
    return (code & ~mask) | (((code & mask) - lowBit) & mask);
}
} // namespace

CubeWalk::CubeWalk(const CellIndex& index_)
    : pIndex(&index_)
{
    vCodes.reserve(8 * index_.getBlocks().size());
    for (const CellIndex::Block& block : index_.getBlocks())
        for (int steps = 0; steps < 8; ++steps)
        {
            u64 code = block.code;
            code = (steps & 4) != 0 ? stepUp(code, SPARSE_X, AXTRIBIT_X) : code;
            code = (steps & 2) != 0 ? stepUp(code, SPARSE_Y, AXTRIBIT_Y) : code;
            code = (steps & 1) != 0 ? stepUp(code, SPARSE_Z, AXTRIBIT_Z) : code;
            vCodes.push_back(code);
        }
    std::sort(vCodes.begin(), vCodes.end());
    vCodes.erase(std::unique(vCodes.begin(), vCodes.end()), vCodes.end());
}

int CubeWalk::regionIndexOfLocal(int local) noexcept
{
    const Local& l = LOCALS[static_cast<std::size_t>(local)];
    return (l.x + 1) * STEP_X + (l.y + 1) * STEP_Y + (l.z + 1) * STEP_Z;
}

void CubeWalk::loadBlock(u64 code)
{
    std::memset(aCfg, 0, sizeof(aCfg));
    for (int steps = 0; steps < 8; ++steps)
    {
        const int dx = steps >> 2 & 1;
        const int dy = steps >> 1 & 1;
        const int dz = steps & 1;
        if ((dx != 0 && (code & SPARSE_X) == 0) || (dy != 0 && (code & SPARSE_Y) == 0) ||
            (dz != 0 && (code & SPARSE_Z) == 0))
            continue;
        u64 lower = code;
        lower = dx != 0 ? stepDown(lower, SPARSE_X, AXTRIBIT_X) : lower;
        lower = dy != 0 ? stepDown(lower, SPARSE_Y, AXTRIBIT_Y) : lower;
        lower = dz != 0 ? stepDown(lower, SPARSE_Z, AXTRIBIT_Z) : lower;
        const CellIndex::Block* pBlock = pIndex->findBlock(lower);
        if (pBlock != nullptr)
            loadCells(*pBlock, dx, dy, dz);
    }
}

// dx, dy, dz: 1 if the block lies below the one being loaded on that axis.
void CubeWalk::loadCells(const CellIndex::Block& block, int dx, int dy, int dz)
{
    for (int w = 0; w < 8; ++w)
    {
        u64 bits = block.aBits[w];
        bits &= dx != 0 ? TOP.aMask[0][w] : ~u64{0};
        bits &= dy != 0 ? TOP.aMask[1][w] : ~u64{0};
        bits &= dz != 0 ? TOP.aMask[2][w] : ~u64{0};
        for (; bits != 0; bits &= bits - 1)
        {
            const auto local = static_cast<unsigned int>(64 * w + std::countr_zero(bits));
            const Local& l = LOCALS[local];
            enterCell(l.x - 8 * dx, l.y - 8 * dy, l.z - 8 * dz, CellIndex::rankIn(block, local));
        }
    }
}

void CubeWalk::enterCell(int x, int y, int z, std::uint32_t rank) noexcept
{
    aRank[(x + 1) * STEP_X + (y + 1) * STEP_Y + (z + 1) * STEP_Z] = rank;
    for (int steps = 0; steps < 8; ++steps)
    {
        const int bx = x + (steps >> 2 & 1);
        const int by = y + (steps >> 1 & 1);
        const int bz = z + (steps & 1);
        if ((bx & ~7) != 0 || (by & ~7) != 0 || (bz & ~7) != 0)
            continue;
        aCfg[SPREAD[bx] << 2 | SPREAD[by] << 1 | SPREAD[bz]] |= CFG_BIT_OF_STEPS[steps];
    }
}

} // namespace TARN_ZEF

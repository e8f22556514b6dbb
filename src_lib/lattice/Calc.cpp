#include "lattice/Calc.h"

#include <bit>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
int checkLevels(int numLevels)
{
    ASSEX(numLevels <= MAXLEVELS);
    ASSEX(numLevels >= 0);
    return numLevels;
}

// Bit k set: axis k (0 x, 1 y, 2 z) has a bit in code.
unsigned getAxesOf(u64 code) noexcept
{
    return unsigned{(code & SPARSE_X) != 0} | unsigned{(code & SPARSE_Y) != 0} << 1 |
           unsigned{(code & SPARSE_Z) != 0} << 2;
}

// Axis index by a set of axes: the one that is in it alone.
constexpr int SINGLE_AXIS[8] = {-1, 0, 1, -1, 2, -1, -1, -1};

// The cells next to a cell, one axis at a time: index 0 one lower, 1 the same, 2 one higher.
struct AxisSteps
{
    AxisSteps(const Calc& calc, u64 sparse, u64 axTriBit)
        : v{calc.decSparse(sparse, axTriBit), sparse, calc.incSparse(sparse, axTriBit)}
    {
    }
    u64 v[3];
};
} // namespace

Calc::Calc(double x0_, double y0_, double z0_, double lenX_, double lenY_, double lenZ_, int numLevels_)
    : x0(x0_)
    , y0(y0_)
    , z0(z0_)
    , lenX(lenX_)
    , lenY(lenY_)
    , lenZ(lenZ_)
    , numLevels(checkLevels(numLevels_))
    , numCells(u64{1} << numLevels)
    , cellX(lenX / static_cast<double>(numCells))
    , cellY(lenY / static_cast<double>(numCells))
    , cellZ(lenZ / static_cast<double>(numCells))
    , invCellX(static_cast<double>(numCells) / lenX)
    , invCellY(static_cast<double>(numCells) / lenY)
    , invCellZ(static_cast<double>(numCells) / lenZ)
    , levelMask(spreadBits3(numCells - 1))
{
}

void Calc::getCellSizes(double& x, double& y, double& z) const noexcept
{
    x = cellX;
    y = cellY;
    z = cellZ;
}

Point3 Calc::getRef(CCD ccd) const noexcept
{
    double x = x0;
    double y = y0;
    double z = z0;
    double weightX = cellX;
    double weightY = cellY;
    double weightZ = cellZ;
    // A clear bit adds -0.0, which leaves every double as it is, the sign of a zero included.
    for (int i = 0; i < numLevels; ++i)
    {
        x += (ccd & 4) ? weightX : -0.0;
        y += (ccd & 2) ? weightY : -0.0;
        z += (ccd & 1) ? weightZ : -0.0;
        weightX *= 2.0;
        weightY *= 2.0;
        weightZ *= 2.0;
        ccd >>= 3;
    }
    return {x, y, z};
}

Point3 Calc::getMid(CCD ccd) const noexcept
{
    const Point3 ref = getRef(ccd);
    return {ref.x() + 0.5 * cellX, ref.y() + 0.5 * cellY, ref.z() + 0.5 * cellZ};
}

Point3 Calc::getRefOfRCD(RCD rcd) const noexcept
{
    u64 x, y, z;
    splitRCD(rcd, x, y, z);
    return {static_cast<double>(x) / invCellX + x0, static_cast<double>(y) / invCellY + y0,
            static_cast<double>(z) / invCellZ + z0};
}

Point3 Calc::getMidOfRCD(RCD rcd) const noexcept
{
    u64 x, y, z;
    splitRCD(rcd, x, y, z);
    return {(static_cast<double>(x) + 0.5) * cellX + x0, (static_cast<double>(y) + 0.5) * cellY + y0,
            (static_cast<double>(z) + 0.5) * cellZ + z0};
}

void Calc::getRefs(const std::vector<CCD>& vCCD, std::vector<Point3>& vPoints) const
{
    vPoints.reserve(vPoints.size() + vCCD.size());
    for (const CCD ccd : vCCD)
        vPoints.push_back(getRef(ccd));
}

void Calc::getMids(const std::vector<CCD>& vCCD, std::vector<Point3>& vPoints) const
{
    vPoints.reserve(vPoints.size() + vCCD.size());
    for (const CCD ccd : vCCD)
        vPoints.push_back(getMid(ccd));
}

bool Calc::manipOneAxis(CCD& ccd, bool bIncrease, u64 axTriBit) const
{
    const u64 mask = levelMask * axTriBit;
    if ((ccd & mask) == (bIncrease ? mask : 0))
    {
        warningMessage(ZEF_HERE, "ERROR, out of range, bIncrease=" + std::to_string(int{bIncrease}) +
                                     ", axTribit=" + std::to_string(axTriBit) + ", this is " +
                                     std::to_string(ccd) + ", numLevels=" + std::to_string(numLevels) +
                                     ". End not found");
        ccd = ~u64{0};
        return false;
    }
    ccd = bIncrease ? incSparse(ccd, axTriBit) : decSparse(ccd, axTriBit);
    return true;
}

CCD Calc::getOffVal(CCD ccd, int offset, u64 axTriBit) const
{
    const u64 value = sparseToNumber(ccd, axTriBit);
    const u64 moved = value + static_cast<u64>(static_cast<std::int64_t>(offset));
    if (moved >= numCells) [[unlikely]]
    {
        if (offset < 0)
            warningMessage(ZEF_HERE, "out of range, value=" + std::to_string(offset) +
                                         ", component=" + std::to_string(value));
        warningMessage(ZEF_HERE, "out of range, value=" + std::to_string(offset) + ", new component=" +
                                     std::to_string(moved) + ", maxVal=" + std::to_string(numCells));
        ASSEX(false);
    }
    return (ccd & ~(levelMask * axTriBit)) | numberToSparse(moved, axTriBit);
}

void Calc::completeArray8Up(CCD array[8]) const
{
    const u64 lowX = array[0] & SPARSE_X;
    const u64 lowY = array[0] & SPARSE_Y;
    const u64 lowZ = array[0] & SPARSE_Z;
    const u64 highX = incSparse(lowX, AXTRIBIT_X);
    const u64 highY = incSparse(lowY, AXTRIBIT_Y);
    const u64 highZ = incSparse(lowZ, AXTRIBIT_Z);
    array[1] = highX | lowY | lowZ;
    array[2] = highX | lowY | highZ;
    array[3] = lowX | lowY | highZ;
    array[4] = lowX | highY | lowZ;
    array[5] = highX | highY | lowZ;
    array[6] = highX | highY | highZ;
    array[7] = lowX | highY | highZ;
}

void Calc::completeArray8Down(CCD array[8]) const
{
    const u64 highX = array[5] & SPARSE_X;
    const u64 highY = array[5] & SPARSE_Y;
    const u64 highZ = array[5] & SPARSE_Z;
    const u64 lowX = decSparse(highX, AXTRIBIT_X);
    const u64 lowY = decSparse(highY, AXTRIBIT_Y);
    const u64 lowZ = decSparse(highZ, AXTRIBIT_Z);
    array[0] = lowX | lowY | highZ;
    array[1] = highX | lowY | highZ;
    array[2] = highX | lowY | lowZ;
    array[3] = lowX | lowY | lowZ;
    array[4] = lowX | highY | highZ;
    array[6] = highX | highY | lowZ;
    array[7] = lowX | highY | lowZ;
}

void Calc::completeArray27(CCD baseCCD, CCD array[27]) const
{
    const AxisSteps x(*this, baseCCD & SPARSE_X, AXTRIBIT_X);
    const AxisSteps y(*this, baseCCD & SPARSE_Y, AXTRIBIT_Y);
    const AxisSteps z(*this, baseCCD & SPARSE_Z, AXTRIBIT_Z);
    int i = 0;
    for (const u64 valueZ : z.v)
    {
        for (const u64 valueY : y.v)
        {
            const u64 valueYZ = valueY | valueZ;
            array[i++] = x.v[0] | valueYZ;
            array[i++] = x.v[1] | valueYZ;
            array[i++] = x.v[2] | valueYZ;
        }
    }
    array[13] = baseCCD;
    ASSEX_TEXT(baseCCD != 0, "array[13]=baseCCD");
}

void Calc::completeArray26_RCD(RCD rcd, RCD array[26]) const
{
    u64 x, y, z;
    splitRCD(rcd, x, y, z);
    ASSEX(x > 0 && y > 0 && z > 0);
    int i = 0;
    for (u64 nx = x - 1; nx <= x + 1; ++nx)
        for (u64 ny = y - 1; ny <= y + 1; ++ny)
            for (u64 nz = z - 1; nz <= z + 1; ++nz)
                if (nx != x || ny != y || nz != z)
                    array[i++] = makeRCD(nx, ny, nz);
}

void Calc::getPlaneCCD8(CCD ccd, int planeIndex, CCD array[8]) const
{
    // The two varying axes (a, b) by plane.
    constexpr u64 AXES[3][2] = {{AXTRIBIT_Y, AXTRIBIT_Z}, {AXTRIBIT_X, AXTRIBIT_Z}, {AXTRIBIT_Y, AXTRIBIT_X}};
    if (planeIndex < 0 || planeIndex > 2)
    {
        errorMessage(ZEF_HERE, "Bug, planeIndex=" + std::to_string(planeIndex));
        ASSEX(false);
    }
    const u64 axisA = AXES[planeIndex][0];
    const u64 axisB = AXES[planeIndex][1];
    const u64 maskA = SPARSE_Z * axisA;
    const u64 maskB = SPARSE_Z * axisB;
    const u64 kept = ccd & ~(maskA | maskB);
    const AxisSteps a(*this, ccd & maskA, axisA);
    const AxisSteps b(*this, ccd & maskB, axisB);
    array[0] = kept | a.v[0] | b.v[0];
    array[1] = kept | a.v[1] | b.v[0];
    array[2] = kept | a.v[2] | b.v[0];
    array[3] = kept | a.v[2] | b.v[1];
    array[4] = kept | a.v[2] | b.v[2];
    array[5] = kept | a.v[1] | b.v[2];
    array[6] = kept | a.v[0] | b.v[2];
    array[7] = kept | a.v[0] | b.v[1];
}

NeigTyp Calc::getNeigType(CCD a, CCD b) const
{
    const u64 result_xor = a ^ b;
    ASSEX(result_xor);
    return static_cast<NeigTyp>(NT_SAME + std::popcount(getAxesOf(result_xor)));
}

int Calc::getUniqueSameComponent(CCD a, CCD b) const noexcept
{
    return SINGLE_AXIS[7 - getAxesOf(a ^ b)];
}

int Calc::getUniqueSameComponent(CCD a, CCD b, CCD c) const noexcept
{
    return SINGLE_AXIS[7 - getAxesOf((a ^ b) | (a ^ c))];
}

int Calc::getUniqueDifferentComponent(CCD a, CCD b) const noexcept
{
    return SINGLE_AXIS[getAxesOf(a ^ b)];
}

void Calc::getOrthoTribs(u64 axTriBit, u64& a, u64& b)
{
    ASSEX_TEXT(axTriBit == AXTRIBIT_X || axTriBit == AXTRIBIT_Y || axTriBit == AXTRIBIT_Z, "false");
    a = axTriBit == AXTRIBIT_X ? AXTRIBIT_Y : AXTRIBIT_X;
    b = axTriBit == AXTRIBIT_Z ? AXTRIBIT_Y : AXTRIBIT_Z;
}

int Calc::getNumSet8(int val)
{
    constexpr int NIBBLE_COUNTS[16] = {0, 1, 1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4};
    ASSEX(val < 256);
    return NIBBLE_COUNTS[val & 15] + NIBBLE_COUNTS[(val >> 4) & 15];
}

u64 Calc::toIndexFar(double d) noexcept
{
    constexpr double TWO_POW_64 = 18446744073709551616.0;
    const bool bFits = d > 0.0 && d < TWO_POW_64;
    return bFits ? static_cast<u64>(d) : u64{1} << 63;
}

} // namespace TARN_ZEF

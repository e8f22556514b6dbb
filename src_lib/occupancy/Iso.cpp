#include "occupancy/Iso.h"

#include <bit>

namespace TARN_ZEF
{
Iso::Iso(CCD upperQuad_)
    : upperQuad(upperQuad_)
{
}

std::size_t Iso::getAddress(int x, int y, int z)
{
    ASSEX_TEXT(x < 32 && y < 32 && z < 32, "x<32 && y<32 && z<32");
    ASSEX_TEXT(x > -1 && y > -1 && z > -1, "x>-1 && y>-1 && z>-1");
    const std::size_t address = (static_cast<std::size_t>(y) << 5) + static_cast<std::size_t>(z);
    ASSEX_TEXT(address < MAX_ROWS, "address<1024");
    return address;
}

void Iso::set(int x, int y, int z, bool bSet)
{
    const std::size_t address = getAddress(x, y, z);
    if (address >= vRows.size())
        vRows.resize(address + 1, 0);
    const std::uint32_t bit = std::uint32_t{1} << x;
    vRows[address] = bSet ? vRows[address] | bit : vRows[address] & ~bit;
}

bool Iso::get(int x, int y, int z) const
{
    const std::size_t address = getAddress(x, y, z);
    return address < vRows.size() && (vRows[address] >> x & 1) != 0;
}

void Iso::getCCDs(std::vector<CCD>& vCCD) const
{
    for (std::size_t address = 0; address < vRows.size(); ++address)
    {
        const CCD rowCCD = upperQuad | spreadBits3(address >> 5) << 1 | spreadBits3(address & 31);
        for (std::uint32_t row = vRows[address]; row != 0; row &= row - 1)
            vCCD.push_back(rowCCD | spreadBits3(static_cast<u64>(std::countr_zero(row))) << 2);
    }
}

} // namespace TARN_ZEF

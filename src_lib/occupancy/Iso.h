#ifndef ZEF_ISO_H
#define ZEF_ISO_H

#include "lattice/cellCodes.h"

#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// A block of 32x32x32 cells, one bit a cell.
//
// Local coordinates are the low five bits of each axis of a cell code, 0 to 31.
//
// Invariant:  rows behind the last one that was written are not stored and hold no cell.
// Cost:       get() is a shift; at most 4 KB, up to the highest row in use.
class Iso
{
public:
    static constexpr int SIZE = 32;           // cells per axis
    static constexpr int LEVEL_BITS = 15;     // bits of a code that name a cell within its block
    static constexpr CCD LOCAL_MASK = 0x7FFF; // these bits
    static constexpr std::size_t MAX_ROWS = 1024;

    // The cells of a block minus their low 15 bits.
    [[nodiscard]] static constexpr CCD toUpperQuad(CCD ccd) noexcept { return ccd & ~LOCAL_MASK; }
    static constexpr void toLocal(CCD ccd, int& x, int& y, int& z) noexcept
    {
        x = static_cast<int>(compactBits3((ccd & LOCAL_MASK) >> 2));
        y = static_cast<int>(compactBits3((ccd & LOCAL_MASK) >> 1));
        z = static_cast<int>(compactBits3(ccd & LOCAL_MASK));
    }

    explicit Iso(CCD upperQuad_);

    // Coordinates outside 0 to 31 are fatal, here and in get().
    void set(int x, int y, int z, bool bSet);
    [[nodiscard]] bool get(int x, int y, int z) const;
    // Appends the codes of the cells that are set, in ascending order of y, z, x.
    void getCCDs(std::vector<CCD>& vCCD) const;
    [[nodiscard]] CCD getUpperQuad() const noexcept { return upperQuad; }
    [[nodiscard]] std::size_t getNumRows() const noexcept { return vRows.size(); }

private:
    [[nodiscard]] static std::size_t getAddress(int x, int y, int z);

    std::vector<std::uint32_t> vRows; // bit x of row 32 y + z
    CCD upperQuad;
};

} // namespace TARN_ZEF

#endif

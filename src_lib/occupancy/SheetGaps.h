#ifndef ZEF_SHEETGAPS_H
#define ZEF_SHEETGAPS_H

#include "lattice/Calc.h"

#include <vector>

namespace TARN_ZEF
{
class CellIndex;

// Finds the empty cells that a sheet of occupied cells needs to be whole.
//
// A cube is active if one of its eight cells is occupied. An empty cell with all its eight cubes active is
// enclosed and belongs to the sheet. One with six or seven belongs to it if, had it been there, it could not
// be taken away without tearing the sheet.
//
// Threads:    works on the pool; the result does not depend on it.
// Cost:       linear in the cells, apart from sorting the gaps.
class SheetGaps
{
public:
    // Occupied cells, strictly ascending and off the rim of the lattice. The vector is used up.
    SheetGaps(std::vector<CCD> vOrgCCD, const Calc* pCalc_);

    // The enclosed cells, then the others, each ascending.
    [[nodiscard]] const std::vector<CCD>& getEnclosed() const noexcept { return vFilteredCandidatesCard8; }
    [[nodiscard]] const std::vector<CCD>& getNeeded() const noexcept { return vTake6a7; }

private:
    [[nodiscard]] std::vector<CCD> findCandidates(const CellIndex& occupied);
    void takeNeeded(const CellIndex& occupied, const std::vector<CCD>& vCandidates);

    const Calc* pCalc;
    std::vector<CCD> vFilteredCandidatesCard8;
    std::vector<CCD> vTake6a7;
};

} // namespace TARN_ZEF

#endif

#ifndef ZEF_REMOVEDECIDER_H
#define ZEF_REMOVEDECIDER_H

#include "lattice/Calc.h"
#include "lattice/CellSet.h"

#include <vector>

namespace TARN_ZEF
{
class CellIndex;

// Answers whether an occupied cell may be taken away without tearing the surface that the cells stand for.
// It looks at the block of 27 cells around the cell only.
//
// The decider remembers the doomed cells: each decision sees the effect of the earlier ones, while the
// caller's cells stay as they are until he rebuilds them.
//
// Ownership:  refers to the caller's cells and lattice; neither may change during the decider's life.
// Threads:    one instance serves one thread.
// Cost:       26 lookups per decision. With a CellIndex they are much cheaper than the binary searches in
//             a sorted vector.
class RemoveDecider
{
public:
    // Cells sorted ascending.
    RemoveDecider(const std::vector<CCD>* pExisting_, const Calc* pCalc_);
    RemoveDecider(const CellIndex* pIndex_, const Calc* pCalc_);
    RemoveDecider(const RemoveDecider&) = delete;
    RemoveDecider& operator=(const RemoveDecider&) = delete;

    // Loads the neighbourhood of ccd and decides. It does not doom the cell: the caller does, by addDoomed().
    // A cell at the rim of the lattice is an assertion failure.
    [[nodiscard]] bool canRemove(CCD ccd);

    void addDoomed(CCD ccd) { sDoomed.insert(ccd); }
    [[nodiscard]] bool isDoomed(CCD ccd) const noexcept { return sDoomed.contains(ccd); }

    // Decisions so far that allowed the removal.
    [[nodiscard]] u64 getNumRemovable() const noexcept { return numRemovable; }

    // On the loaded neighbourhood: whether cells a and b are away and cells c, d, e, f are all there.
    [[nodiscard]] bool badDirect(int a, int b, int c, int d, int e, int f) const noexcept;

    // Prints the loaded neighbourhood and writes it as a scene; only with debug scenes switched on.
    void show() const;

private:
    [[nodiscard]] bool exists(CCD ccd) const;
    // Fills array and neighbourMask; the result is the number of cells in the mask.
    int load(CCD ccd);
    [[nodiscard]] bool isSet(int i) const noexcept { return (neighbourMask >> i & 1) != 0; }
    [[nodiscard]] int countFreeFaces() const noexcept;
    [[nodiscard]] bool hasHangingEdge() const noexcept;
    [[nodiscard]] bool plugsSheet() const noexcept;

    const std::vector<CCD>* pExisting; // null if pIndex serves
    const CellIndex* pIndex;           // null if pExisting serves
    const Calc* pCalc;
    CCD currentCCD = ~CCD{0}; // whose neighbourhood is loaded
    CellSet sDoomed;
    CCD array[27] = {};    // the block as of Calc::completeArray27()
    u64 neighbourMask = 0; // bit i: array[i] exists and is not doomed
    u64 numRemovable = 0;
};

} // namespace TARN_ZEF

#endif

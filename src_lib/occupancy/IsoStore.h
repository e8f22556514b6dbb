#ifndef ZEF_ISOSTORE_H
#define ZEF_ISOSTORE_H

#include "lattice/cellCodes.h"
#include "occupancy/Iso.h"

#include <map>
#include <memory>
#include <vector>

namespace TARN_ZEF
{
class Calc;
struct Bundle;

// The occupied cells as bits, and three passes that take cells away where they lie thicker than one sheet.
//
// A pass takes away a bit; the bundle that loses its cell gets the forbidden direction -1, and its owner must
// drop it. A cell goes only if whatever lies beside the layer in front of it, across an edge of that cell,
// has a neighbour in the cell's own layer.
//
// Ownership:  owns its blocks. Lattice, bundles and their vector belong to the caller and must outlive it.
// Invariant:  a block stays once it is made, even when all its cells are gone.
// Threads:    one. simplify() leaves the sign of its last pass for the next run of the call; outside of calls, and in
//             calls without a state of their own, in a static: then one in the process.
// Cost:       a test is a few shifts within a block; across its border, a search among the blocks.
class IsoStore
{
public:
    // Holds no cell yet. pBundles_ is what the passes walk.
    IsoStore(const Calc* pCalc_, std::vector<Bundle*>& vBundles_);
    IsoStore(const IsoStore&) = delete;
    IsoStore& operator=(const IsoStore&) = delete;

    // --- Filling ---
    // Makes the block of a group of bundles that all lie in it; a second time is fatal.
    void init(CCD upperQuad, const std::vector<Bundle*>& vGroup);
    // Adds cells to a block, which is made if it is missing.
    void add(CCD upperQuad, const std::vector<CCD>& vCCD);
    // The block must exist, as for isSet() and getIso().
    void set(CCD ccd, bool bSet);

    // --- Queries ---
    [[nodiscard]] bool isSet(CCD ccd) const;
    // The block of a cell.
    [[nodiscard]] Iso* getIso(CCD ccd) const;
    // By local coordinates that may leave the block by less than its size. What lies outside all blocks or
    // the lattice is empty.
    [[nodiscard]] bool isSetRelative(const Iso* pIso, int x, int y, int z) const;
    void getAllCCD(std::vector<CCD>& vCCD) const; // appends, block by block
    [[nodiscard]] bool empty() const;             // no cell is set
    // Cells added so far; the passes don't lower it.
    [[nodiscard]] u64 getSize() const noexcept { return size; }

    // --- Passes ---
    // Takes away one side of layers of exactly two cells, along all axes that a bundle allows, until nothing
    // changes.
    void simplify();
    // The same on given cells with their forbidden directions, for layers of any thickness. A cell that goes
    // gets the direction -1.
    void simplifyInflates(std::map<CCD, int>& vInflCCD2forbDir);
    // Takes away cells of cubes with five or more, those with their points close to their centres first.
    void slide();

    // --- One cell ---
    // Takes away a cell with nothing in front of it (direction 1 or -1 along axTriBit axis) and one behind
    // it, with a bundle only if there is no third one. pBundle may be null.
    bool tryKill(Bundle* pBundle, CCD ccd, int axis, int direction);
    // Takes away pB0's cell in favour of pB1's, which must be its neighbour across a face.
    bool tryKillWeakBundle(Bundle* pB0, const Bundle* pB1);

private:
    // A cell in its block.
    struct Place
    {
        const Iso* pIso;
        int aXYZ[3];
    };

    [[nodiscard]] Iso* findIso(CCD upperQuad) const; // null if absent
    [[nodiscard]] Iso* makeIso(CCD upperQuad);
    static void setAll(Iso* pIso, std::vector<CCD> vCCD);
    [[nodiscard]] Place getPlace(CCD ccd) const;
    // The cell so many steps from the place along axis index a (0 x, 1 y, 2 z) and axis index b.
    [[nodiscard]] bool isSetAt(const Place& place, int a, int stepA, int b, int stepB) const;
    [[nodiscard]] bool isSupported(const Place& place, int a, int d) const;
    [[nodiscard]] bool tryKillBothWays(Bundle* pBundle, CCD ccd, int axis, int firstDirection);
    void clear(CCD ccd, Bundle* pBundle);
    void printSize(const char* name) const;

    // IsoStoreSlide.cpp
    using CubeBundle = std::pair<CCD, Bundle*>;
    void setWeights() const;
    void getCubes(std::vector<CubeBundle>& v8VCD2Bundle) const;
    [[nodiscard]] u64 slideWeakest(std::vector<Bundle*>& vUpTo8);
    [[nodiscard]] u64 slideMany(std::vector<Bundle*>& vUpTo8);
    void writeScene(const char* name) const;

    static int simplifySign; // where no call has its own

    const Calc* pCalc;
    std::map<CCD, std::unique_ptr<Iso>> mUpperQuad2Iso;
    mutable Iso* pLastIso = nullptr; // most questions stay in one block
    std::vector<Bundle*>* pBundles;
    u64 size = 0;
};

} // namespace TARN_ZEF

#endif

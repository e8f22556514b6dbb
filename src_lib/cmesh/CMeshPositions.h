#ifndef ZEF_CMESHPOSITIONS_H
#define ZEF_CMESHPOSITIONS_H

#include "Point3.h"
#include "cmesh/CMeshRecords.h"
#include "core/definitions.h"
#include "lattice/Calc.h"

#include <unordered_set>
#include <vector>

namespace TARN_ZEF
{
// Where the corners of a CMesh stand: at the points of their bundles. Cells without input points get extra
// bundles, whose points are means of their neighbours'.
//
// Ownership:  owns the extra bundles and their points, though they stand in the shared bundle map, too. The
//             lattice is shared, not owned.
// Invariant:  each corner of an alive triangle has a bundle once its position is asked for; that of a corner
//             record is the one in the map.
class CMeshPositions : public CMeshRecords
{
public:
    [[nodiscard]] Point3* getVtx(u64 ccd) const; // position of the corner's bundle; no bundle is fatal
    [[nodiscard]] Point3* getBundleVtx(u64 ccd) const { return getVtx(ccd); }
    [[nodiscard]] Point3 getAvgPoint(u64 ccd) const { return *getVtx(ccd); }
    [[nodiscard]] Point3 getCoarsePoint(u64 ccd) const; // the cell's centre
    [[nodiscard]] Bundle* findBundle(u64 ccd) const;    // null if absent
    [[nodiscard]] double getAvgSpacing() const;         // cell edge of the lattice
    [[nodiscard]] Calc* getCalc() const noexcept { return pCalc; }

    // --- Extra bundles ---
    // Makes a bundle and a point at the centre of the cell and averages it. A cell that has a bundle is left
    // alone.
    void addBundle(u64 ccd);
    [[nodiscard]] const std::vector<Bundle*>& getExtraBundles() const noexcept { return vBundles; }
    [[nodiscard]] bool isExtraVtx(const Point3* pVtx) const { return sExtraVtx.count(pVtx) != 0; }
    // Moves a corner slightly past the mean of its ring; real ring points count before extra ones.
    void averageBundle(Bundle* pBundle);
    void averageBundles(); // of all extra bundles, in order of creation

protected:
    CMeshPositions(Calc* pCalc_, BundleMap* pCCDBundle_);
    ~CMeshPositions();

    // Deletes the extra bundles that isUnusable(pBundle) says so of, once it has looked at all.
    template <typename F>
    void eraseBundlesIf(F isUnusable);

private:
    void eraseBundle(Bundle* pBundle); // from the map and from the corner's record; deletes bundle and point

    Calc* pCalc;
    std::unordered_set<const Point3*> sExtraVtx; // points of vBundles
    std::vector<Bundle*> vBundles;               // extra bundles, in order of creation; owned
};

template <typename F>
void CMeshPositions::eraseBundlesIf(F isUnusable)
{
    std::vector<Bundle*> vRemoveBundles;
    std::vector<Bundle*> vKeptBundles;
    for (Bundle* pBundle : vBundles)
        (isUnusable(pBundle) ? vRemoveBundles : vKeptBundles).push_back(pBundle);
    vBundles.swap(vKeptBundles);
    for (Bundle* pBundle : vRemoveBundles)
        eraseBundle(pBundle);
}

} // namespace TARN_ZEF

#endif

#ifndef ZEF_HAL_H
#define ZEF_HAL_H

#include "Mesh.h"
#include "lattice/BundleMap.h"

#include <memory>
#include <vector>

namespace TARN_ZEF
{
class CMesh;
class Calc;
class CloudMgr;
class IsoStore;
class RMesh;
struct Bundle;

// Runs the stages of a public call in their fixed order, from the occupied cells to the mesh.
//
// Ownership:  owns the combinatorial mesh and extra points and bundles. Cloud, lattice and the bundles of
//             the input belong to the CloudMgr, which must outlive it. The Mesh that it returns depends on
//             nothing of it.
// Threads:    one call, one thread.
class Hal
{
public:
    explicit Hal(CloudMgr* pCloudMgr_);
    ~Hal();
    Hal(const Hal&) = delete;
    Hal& operator=(const Hal&) = delete;

    // The scan pipeline. An empty pointer, with a warning, if no cell is occupied.
    [[nodiscard]] std::shared_ptr<Mesh> reconstruct();

    // The melt pipeline: the same on the cells of a triangle soup, with the repair for melting.
    [[nodiscard]] std::shared_ptr<Mesh> oneMelt();
    // Appends the points of the bundles. A warning if there are none.
    void toCloud(std::vector<Point3>& vResult);

    // Asserts that an extraction has made it.
    [[nodiscard]] CMesh* getCMesh() const;
    [[nodiscard]] std::size_t numBundles() const noexcept { return vBundles.size(); }
    // Fills the map from cell to bundle.
    void createCCDBundle();

    // --- Occupancy stage (HalIsoStore.cpp) ---
    // The bundles' cells as bits. It walks the bundles of this object, which it sorts by cell.
    [[nodiscard]] std::shared_ptr<IsoStore> createIsoStore();
    // Whether reconstruct() thins layers of cells before the extraction; off at first.
    void setOccupancyStage(bool bOccupancyStage_) noexcept { bOccupancyStage = bOccupancyStage_; }

private:
    enum class Repair
    {
        SCAN,
        MELT
    };
    // The combinatorial mesh, from the map of bundles.
    void extractAndRepair(Repair repair);
    [[nodiscard]] std::shared_ptr<Mesh> refineMesh();
    // Drops the bundles whose cells the passes of the store take away.
    void thinOccupancy();

    CloudMgr* pCloudMgr;
    bool bOccupancyStage = false;
    Calc* pCalc = nullptr;
    CMesh* pCMesh = nullptr;
    std::vector<Bundle*> vBundles; // the occupied cells, ascending by cell
    BundleMap mCCDBundle;
    std::vector<Point3*> vExtraPoints;  // owned
    std::vector<Bundle*> vExtraBundles; // owned
};

} // namespace TARN_ZEF

#endif

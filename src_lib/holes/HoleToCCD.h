#ifndef ZEF_HOLETOCCD_H
#define ZEF_HOLETOCCD_H

#include "Point3.h"
#include "cmesh/CMesh.h"
#include "lattice/BundleMap.h"

#include <memory>
#include <vector>

namespace TARN_ZEF
{
class Calc;
class CEdge;
class Chain;
class ChainMgr;
class CTriangle;
class Loop;

// A private copy of the triangles around one border. It borrows the bundles of the source.
struct BorderMesh
{
    explicit BorderMesh(Calc* pCalc)
        : mesh(pCalc, &mCCDBundle)
    {
    }

    BundleMap mCCDBundle;
    CMesh mesh;
};

// Fills the small holes of a mesh, the last act of its repair. Before that it undoes Moebius twists along the
// borders.
//
// Filled are closed chains of border edges without a twist, of at most 50 edges, no longer than the rim of
// triangles around them, for which a Loop has a result. Each is filled on a private copy of its surroundings,
// so that a failed attempt leaves the mesh as it was. A hole that can't be filled stays open, without a
// message. Orientation along the borders changes; the caller unifies it afterwards.
//
// Ownership:  owns its chains; mesh and lattice belong to the caller.
// Threads:    none.
// Cost:       linear in the border edges; for each hole its surroundings.
class HoleToCCD
{
public:
    HoleToCCD(CMesh* pCMesh_, Calc* pCalc_);
    ~HoleToCCD();
    HoleToCCD(const HoleToCCD&) = delete;
    HoleToCCD& operator=(const HoleToCCD&) = delete;

    // The whole pass. vPixels is for cells that a caller should add; none are, so the result, whether it has
    // entries, is that of the vector handed in.
    bool run(std::vector<Point3>& vPixels);
    void fillAll();
    // False if the closed chain stays open.
    bool fill(const Chain* pChain);

    // Copies the triangles at the corners of the chain. vBorderCE gets the counterparts of the chain's edges
    // in order. Null if one has none.
    [[nodiscard]] std::unique_ptr<BorderMesh> createBorderMesh(const Chain* pChain,
                                                               std::vector<CEdge*>& vBorderCE) const;
    // The loop over all of these edges of the copy, which must be one ring. It must not outlive the copy.
    [[nodiscard]] static std::unique_ptr<Loop> createLoop(CMesh* pBorderMesh, std::vector<CEdge*>& vBorderCE);

    [[nodiscard]] const std::vector<CTriangle*>& getFillT() const noexcept { return vFillT; }

private:
    void createChains();

    std::unique_ptr<ChainMgr> pChainMgr; // made anew for each pass
    CMesh* pCMesh;
    Calc* pCalc;
    std::vector<CTriangle*> vFillT; // triangles added to the mesh
};

} // namespace TARN_ZEF

#endif

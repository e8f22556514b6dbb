#ifndef ZEF_ORIENTATION_H
#define ZEF_ORIENTATION_H

#include "cmesh/SurfacePieces.h"
#include "cmesh/TriangleUnion.h"
#include "core/definitions.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
class Calc;
class CMesh;
class CTriangle;
struct RepairState;

// Orients all pieces of a mesh that hang together over edges of degree 2, each with its topmost corner facing
// up: the same as createPatchesOrient() on all triangles and orientPatch() on each of its patches.
//
// Comes in:  any mesh; the pieces that the state keeps are used up if they are those of the mesh.
// Leaves:    neighbours over edges of degree 2 that agree, but along one line in each twisted piece.
// Cost:      a few walks in memory order, since the turn of a triangle against the first one of its piece is
//            unique. Only a twisted piece needs a flood, whose order decides where the twist ends.
class Orientation
{
public:
    explicit Orientation(RepairState& state);
    Orientation(const Orientation&) = delete;
    Orientation& operator=(const Orientation&) = delete;

    // Once.
    void run();

private:
    // One piece.
    struct Component
    {
        unsigned int seed = 0; // number of its first triangle
        u64 topmostCCD = 0;
        bool bTopKnown = false; // topmostCCD is final
        bool bTwisted = false;  // no orientation fits all its edges
        bool bTurn = false;     // the seed must be turned, and all that agrees with it
    };
    // The topmost corner of some triangles in a row that are of one component.
    struct Peak
    {
        unsigned int component;
        u64 topmostCCD;
    };
    using Peaks = std::vector<Peak>;
    // The uppermost corners of a large piece, as far as a walk over all corners has come.
    struct Summit
    {
        unsigned int component;
        u64 z = 0;
        std::vector<u64> vCCD;
    };

    Orientation(CMesh* pCMesh_, const Calc* pCalc_, SurfacePieces pieces);

    void collectComponents();
    [[nodiscard]] unsigned int getComponent(std::size_t number) const;
    void findTopOfLarge();
    void climb(u64 ccd, std::vector<Summit>& vSummits);
    [[nodiscard]] u64 getFirstCorner(const Summit& summit);
    void collectPeaks(std::size_t from, std::size_t to, Peaks& vPeaks) const;
    [[nodiscard]] bool isUpsideDown(const Component& component);
    void turnTriangles();
    void turn(CTriangle& ct, const TriangleUnion::Found& found) const;
    void orientTwisted(const Component& component);

    CMesh* pCMesh;
    const Calc* pCalc;
    TriangleUnion turns;                    // each triangle against the seed of its piece
    std::vector<std::uint32_t> vTwisted;    // triangles of pieces that no orientation fits
    std::vector<unsigned int> vComponentOf; // by number of its seed
    std::vector<Component> vComponents;
    std::vector<CTriangle*> vIncT;
};

} // namespace TARN_ZEF

#endif

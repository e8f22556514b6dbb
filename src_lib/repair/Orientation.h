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
//            unique. Two kinds of pieces need a flood: a twisted one, where the order of the flood decides
//            where the twist ends, and one whose topmost corners do not agree, where the first one that it
//            meets decides.
class Orientation
{
public:
    explicit Orientation(RepairState& state);
    Orientation(const Orientation&) = delete;
    Orientation& operator=(const Orientation&) = delete;

    // Once.
    void run();

private:
    // The topmost corner of some triangles of one piece, one of them if there are several, and how the
    // triangles at these stand against the seed: whether some face up, down, and neither.
    struct Peak
    {
        unsigned int component = 0;
        u64 topmostCCD = 0;
        bool bUp = false;
        bool bDown = false;
        bool bUpright = false;

        // Takes over what is as high, in place of what is lower.
        void raise(const Peak& other);
        // The topmost corners may differ in which way the piece must be turned.
        [[nodiscard]] bool isUnclear() const { return bDown && (bUp || bUpright); }
    };
    using Peaks = std::vector<Peak>;
    // One piece.
    struct Component
    {
        unsigned int seed = 0; // number of its first triangle
        Peak peak;
        bool bTopKnown = false; // the peak is final
        bool bFlood = false;    // twisted, so that no orientation fits all its edges, or with an unclear peak
        bool bTurn = false;     // the seed must be turned, and all that agrees with it
    };
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
    void settle(const Summit& summit);
    void collectPeaks(std::size_t from, std::size_t to, Peaks& vPeaks) const;
    [[nodiscard]] bool isUpsideDown(const Component& component, u64 topmostCCD);
    void turnTriangles();
    void turn(CTriangle& ct, const TriangleUnion::Found& found) const;
    void orientByFlood(const Component& component);

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

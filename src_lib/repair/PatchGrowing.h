#ifndef ZEF_PATCHGROWING_H
#define ZEF_PATCHGROWING_H

#include "core/definitions.h"

#include <vector>

namespace TARN_ZEF
{
class CEdge;
class CPatch;
class CTriangle;
struct RepairState;

// Grows the outermost patch over its boundary, each time by the patch that is next in rotation, which is
// turned to agree.
//
// Comes in:  patches of the present mesh, each consistent in itself.
// Leaves:    the grown patch; all other triangles of the patches are dead, and so is a patch that was taken
//            over.
class PatchGrowing
{
public:
    explicit PatchGrowing(const RepairState& state_);

    // The result has its outer boundary.
    CPatch* grow(const std::vector<CPatch*>& vPatches);
    // A triangle on the outermost corner of the patches, and whether it faces inwards. Throws
    // ZefBugException if none there has a side.
    [[nodiscard]] CTriangle* getMaxT(const std::vector<CPatch*>& vPatches, bool& bNeedFlip) const;
    // Of the triangles at the outermost corner, the first that faces along x, those with few corners beside
    // it first; and whether it faces inwards. Null if none does.
    [[nodiscard]] static CTriangle* findFacing(const std::vector<CTriangle*>& vIncT, u64 maxCCD,
                                               bool& bNeedFlip);
    // Kills every patch with an edge of degree 1.
    static void killBoundaryPatches(const std::vector<CPatch*>& vPatches);

private:
    // The patch to take over next across a boundary edge, turned to agree; null without one.
    [[nodiscard]] CPatch* findForeignPatch(CEdge* pBoundaryCE, CPatch* pCurrentPatch, bool& bWarned) const;

    const RepairState& state;
};

} // namespace TARN_ZEF

#endif

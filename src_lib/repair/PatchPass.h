#ifndef ZEF_PATCHPASS_H
#define ZEF_PATCHPASS_H

#include "cmesh/SurfacePieces.h"

#include <utility>
#include <vector>

namespace TARN_ZEF
{
class CPatch;
class Progress;
struct RepairState;

// Passes over the patches between non-manifold edges: of two patches with one boundary one dies, thin closed
// patches lose a side, free bubbles go. PatchSolver does it; the static members are the same decisions on
// patches that a caller has cut itself.
//
// Leaves:  non-manifold edges that no pass can decide.
// Cost:    a walk over all edges, then what the non-manifold and border edges do.
class PatchPass
{
public:
    using PatchPair = std::pair<CPatch*, CPatch*>;

    explicit PatchPass(RepairState& state_);

    // One pass. Returns whether a pair was decided or a patch was split; a free bubble does not count.
    bool run(bool bStrict);
    // Passes until nothing changes; a step of progress, if given, after each that changed something. Returns
    // the pieces of what is left.
    SurfacePieces runAll(bool bStrict, Progress* pProgress);

    // Sorts vPatches by their outer boundaries. A patch without one is closed; one whose successor has the
    // same makes a pair with it; all others are open. Three patches with one boundary make two pairs.
    static void classifyPatches(std::vector<CPatch*>& vPatches, std::vector<PatchPair>& vPatchPairs,
                                std::vector<CPatch*>& vClosedPatches, std::vector<CPatch*>& vOpenPatches);
    // Kills one of the two, unless they are large; false if both stay. sumArea  of the whole mesh
    static bool solvePair(CPatch* p0, CPatch* p1, double sumArea);
    // Smallest first: kills the free bubbles and lets all other closed patches lose a side, if they are thin.
    // With bStrict not those that are anchored on both sides. Returns whether one was split.
    static bool solveClosedPatches(std::vector<CPatch*>& vClosedPatches, bool bStrict);

private:
    RepairState& state;
};

} // namespace TARN_ZEF

#endif

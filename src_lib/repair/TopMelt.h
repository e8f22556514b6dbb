#ifndef ZEF_TOPMELT_H
#define ZEF_TOPMELT_H

#include "repair/Top.h"

#include <utility>
#include <vector>

namespace TARN_ZEF
{
// The repair of a mesh that comes from a triangle soup with known feature edges: keeps feature lines through
// flips, and offers to grow one consistent surface from the outermost triangle and to take out corners whose
// creases don't need them.
//
// A second route beside Top::runMelt(), for a caller that chooses it. A melt is closed unless a caller has
// named the corners of known borders (addBorderCCD).
//
// Ownership:  as Top.
// Errors:     edges that leave the lattice's cubes, as flips and collapses make them, have no order of
//             rotation: where such an edge needs one, ZefBugException.
class TopMelt : public Top
{
public:
    using Top::Top;

    // The whole flow. vFeatures: cells at both ends of the pieces of feature edges.
    void finalize2(const std::vector<std::pair<u64, u64>>& vFeatures);

    // A triangle of vT at its outermost corner, turned to face outwards; null if none there has a side. No
    // alive triangle is fatal.
    [[nodiscard]] CTriangle* getFlippedMaxT_for_closed_melt(const std::vector<CTriangle*>& vT);
    // The nearest triangle to that one with a corner on a known border, breadth first. Turns all triangles on
    // its way to agree. Null if it reaches none; no known border is fatal.
    [[nodiscard]] CTriangle* getFlippedMaxT_for_open_melt(const std::vector<CTriangle*>& vT);
    // Keeps of vT what can be reached from the start triangle over findFlippedNeig(), and kills the rest.
    void meshGrowing(const std::vector<CTriangle*>& vT, bool bOpen);
    // The next triangle in rotation over the edge opposite corner ici, turned to agree. Null at a border, at
    // an edge of a known border, and where two triangles stand in one half-plane.
    [[nodiscard]] CTriangle* findFlippedNeig(CTriangle* pCT, int ici);

    // Takes killCCD out of a crease, without losing the crease: all its triangles go to one corner of its
    // ring. vIncCE: its edges; two or more of them must bend by more than maxAngle degrees. False if nothing
    // was changed.
    bool tryRemoveCCD(u64 killCCD, const std::vector<CEdge*>& vIncCE, double maxAngle);
    // As Top::flipCreases(), for bends of 140 degrees and more.
    void flipCreases();
    // tryRemoveCCD() on the ends of such edges.
    void removeCreaseCCDs();

private:
    struct PatchClasses
    {
        std::vector<CPatch*> vPatches;
        std::vector<PatchPass::PatchPair> vPatchPairs;
        std::vector<CPatch*> vClosedPatches;
        std::vector<CPatch*> vOpenPatches;
    };

    void cutAndClassify(const EdgeSet* pCuts, PatchClasses& classes);
    static void solvePairs(const PatchClasses& classes, double sumArea);
    // The largest bend at the corner, if enough of its edges bend by more than maxAngle.
    [[nodiscard]] bool getWorstAngle(const std::vector<CEdge*>& vIncCE, double maxAngle,
                                     double& worstAngle) const;
    // The largest angle that the surface around would make if all triangles at killCCD went to fromCCD; 360
    // where none can be told.
    [[nodiscard]] double getAngleOfFan(u64 killCCD, u64 fromCCD, const std::vector<CTriangle*>& vIncT) const;
    void writeScene(const char* name) const;
};

} // namespace TARN_ZEF

#endif

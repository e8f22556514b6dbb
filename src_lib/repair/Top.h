#ifndef ZEF_TOP_H
#define ZEF_TOP_H

#include "repair/PatchPass.h"
#include "repair/TopFacilities.h"

#include <vector>

namespace TARN_ZEF
{
class CornerParter;
class Voro;

// Takes the raw mesh of the extraction and removes what makes it unusable as a surface: crossing diagonals,
// flat triangles, dangling triangles and frayed pieces at the border, non-manifold fins and bubbles.
//
// The passes kill and split triangles and ask Voro for more cells. At the end every piece that hangs together
// over edges of degree 2 is consistently oriented, its topmost corner facing up. Borders remain, and so do
// those non-manifold edges that no pass can decide.
//
// This class is the orders of passes. What a pass does stands in the class that the member of its name hands
// over to; what they remember of each other, in RepairState.
//
// Ownership:  none; mesh, lattice and Voro belong to the caller.
// Validity:   every pass invalidates pointers to the triangles and edges that it replaces; cbsComplete() all.
// Threads:    none; the progress tree of the calling thread must have been prepared.
// Errors:     a flat triangle that can neither be split away nor moved throws ZefBugException.
// Cost:       a small number of walks over the mesh.
class Top : public TopFacilities
{
public:
    using TopFacilities::TopFacilities;

    // --- The orders of passes ---
    void run(Voro* pVoro);     // after a reconstruction from points
    void runMelt(Voro* pVoro); // after a melt
    void optimize();           // flips and collapses that smooth the lattice mesh

    // --- The passes by themselves ---
    void unifyDiagonals();                                    // UnifyDiagonals
    void killDegenerate();                                    // FlatTriangles
    void cbsComplete(Voro* pVoro);                            // CellCompletion
    void getBordersKillDeg1nn(std::vector<CEdge*>& vBorders); // BorderRepair, and the next three
    void integrateCCD(CEdge* pCE);
    void killBorderEars();
    void pruneCases();
    void killTinyBorderPatches(int maxNumT); // TinyBorderPieces
    bool solvePatches(bool bStrict);         // PatchPass, and the next two
    static bool solvePair(CPatch* p0, CPatch* p1, double sumArea);
    static bool solveClosedPatches(std::vector<CPatch*>& vClosedPatches, bool bStrict);
    void createPatchesOrient(const std::vector<CTriangle*>& vT, std::vector<CPatch*>& vPatches);
    void separateDuplicatePoints(); // DuplicatePoints

    [[nodiscard]] CMesh* getCMesh() const noexcept { return state.pCMesh; }

private:
    // For the report of the call, if there is one.
    template <typename Work>
    void pass(const char* name, Work work);
    void completeBorders();
    void completeMeltBorders();
    void solveAllPatches();
    void finish(CornerParter& cornerParter);
    void cleanSeams();
    void cleanFilledBorders();
};

} // namespace TARN_ZEF

#endif

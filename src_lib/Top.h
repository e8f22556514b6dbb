#ifndef ZEF_TOP_H
#define ZEF_TOP_H

#include "Rotx.h"
#include "definitions.h"

#include <utility>
#include <vector>

namespace TARN_ZEF
{
class Calc;
class CEdge;
class CMesh;
class CPatch;
class CTriangle;
class Progress;
class Voro;

// Takes the raw mesh of the extraction and removes what makes it unusable as a surface: crossing diagonals,
// flat triangles, dangling triangles and frayed pieces at the border, non-manifold fins and bubbles.
//
// The passes kill and split triangles and ask Voro for more cells. At the end every piece that hangs together
// over edges of degree 2 is consistently oriented, its topmost corner facing up. Borders remain, and so do
// those non-manifold edges that no pass can decide.
//
// Ownership:  none; mesh, lattice and Voro belong to the caller.
// Validity:   every pass invalidates pointers to the triangles and edges that it replaces; cbsComplete() all.
// Threads:    none; the progress tree of the calling thread must have been prepared.
// Errors:     a flat triangle that can neither be split away nor moved throws ZefBugException.
// Cost:       a small number of walks over the mesh.
class Top
{
public:
    Top(CMesh* pCMesh_, Calc* pCalc_);

    // --- The orders of passes ---
    void run(Voro* pVoro);     // after a reconstruction from points
    void runMelt(Voro* pVoro); // after a melt

    // --- Flat faces and flat triangles ---
    // A square lattice face that carries both diagonals gets one.
    void unifyDiagonals();
    // Splits away or moves all geometrically degenerate triangles. One that this makes stays for the next
    // call.
    void killDegenerate();

    // --- Borders ---
    // Lets Voro complete the cells around borders and edges of degree 4 and extract again.
    void cbsComplete(Voro* pVoro);
    // Kills each triangle that hangs between two non-manifold edges; appends the border edges that remain.
    void getBordersKillDeg1nn(std::vector<CEdge*>& vBorders);
    // Takes the free corner of a triangle with two borders into the fin that it hangs on; a triangle that
    // stands alone dies.
    void integrateCCD(CEdge* pCE);
    // Kills the pieces between borders and non-manifold edges that have few triangles, at most maxNumT, and
    // much border.
    void killTinyBorderPatches(int maxNumT);
    // Kills triangles with a border, of the cube configurations that leave such triangles behind.
    void pruneCases();

    // --- Patches ---
    // One pass: of two patches with one boundary one dies, thin closed patches lose a side. Returns whether a
    // pair was decided or a patch was split.
    bool solvePatches(bool bStrict);
    // Cuts the alive triangles of vT into patches that hang together over edges of degree 2, and orients each
    // of them in itself: through clean surface first, beside borders and non-manifold edges last. vPatches
    // must be empty; the caller owns what it gets.
    void createPatchesOrient(const std::vector<CTriangle*>& vT, std::vector<CPatch*>& vPatches);

    // --- Positions ---
    // Moves corners until no two of them hold the same position. The first one of a group stays.
    void separateDuplicatePoints();

    [[nodiscard]] CMesh* getCMesh() const noexcept { return pCMesh; }

protected:
    using PatchPair = std::pair<CPatch*, CPatch*>;

    // Sorts vPatches by their outer boundaries. A patch without one is closed; one whose successor has the
    // same makes a pair with it; all others are open. Three patches with one boundary make two pairs.
    static void classifyPatches(std::vector<CPatch*>& vPatches, std::vector<PatchPair>& vPatchPairs,
                                std::vector<CPatch*>& vClosedPatches, std::vector<CPatch*>& vOpenPatches);
    // Kills one of the two, unless they are large; false if both stay. sumArea  of the whole mesh
    static bool solvePair(CPatch* p0, CPatch* p1, double sumArea);

    CMesh* pCMesh; // the same after cbsComplete(), with other contents
    Calc* pCalc;
    Rotx rotx;

private:
    bool unifyDiagonalAt(CEdge* pCE);
    void splitNewFlat(CTriangle* pNewT);
    // Moves the first corner that lets itself be moved, from corner ici on; false if none does.
    [[nodiscard]] bool moveOneCorner(const CTriangle& ct, int ici);
    // Passes until nothing changes; a step of progress, if given, after each that changed something.
    void solveAllPatches(bool bStrict, Progress* pProgress);
    void orientAll();
    void finish();
};

} // namespace TARN_ZEF

#endif

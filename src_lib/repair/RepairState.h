#ifndef ZEF_REPAIRSTATE_H
#define ZEF_REPAIRSTATE_H

#include "cmesh/Rotx.h"
#include "cmesh/SurfacePieces.h"
#include "core/definitions.h"
#include "repair/CrossingDiagonals.h"

#include <optional>
#include <set>
#include <utility>

namespace TARN_ZEF
{
class Calc;
class CMesh;

// What the repair of one mesh works on and what it remembers from one pass to the next. Passes hold a
// reference for as long as they run; what only one pass needs while it runs is a member of that pass.
//
// Ownership:  mesh and lattice belong to the caller; the memories are the state's.
// Invariant:  a memory tells about the mesh as it was at a time that the memory itself can prove: the number
//             of an extraction, or the number of triangles. What cannot be proven is searched anew, so a pass
//             may kill, make and move without a word to the others.
// Threads:    none.
struct RepairState
{
    RepairState(CMesh* pCMesh_, Calc* pCalc_)
        : pCMesh(pCMesh_)
        , pCalc(pCalc_)
        , rotx(pCMesh_, true)
    {
    }
    RepairState(const RepairState&) = delete;
    RepairState& operator=(const RepairState&) = delete;

    // After a renewed extraction: its mesh, the same object with other contents as Voro has it.
    void renew(CMesh* pCMesh_)
    {
        pCMesh = pCMesh_;
        pieces.reset();
    }
    // The pieces of the present mesh. No triangle may be flipped until they are taken or forgotten.
    void keepPieces(SurfacePieces pieces_) { pieces.emplace(std::move(pieces_)); }
    // Gives them away if no triangle has come or gone since; forgets them in any case.
    [[nodiscard]] std::optional<SurfacePieces> takePieces()
    {
        std::optional<SurfacePieces> taken;
        if (pieces && pieces->isOf(*pCMesh))
            taken.swap(pieces);
        pieces.reset();
        return taken;
    }

    CMesh* pCMesh;
    Calc* pCalc;
    Rotx rotx;
    // Those of the latest extraction; changed by UnifyDiagonals alone.
    CrossingDiagonals crossing;
    // Corners of feature lines and of known borders of a melt; empty unless a caller knows some.
    std::set<u64> sFeatureCCD;
    std::set<u64> sBorderCCD;

private:
    std::optional<SurfacePieces> pieces;
};

} // namespace TARN_ZEF

#endif

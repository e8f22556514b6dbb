#ifndef ZEF_UNIFYDIAGONALS_H
#define ZEF_UNIFYDIAGONALS_H

namespace TARN_ZEF
{
class CEdge;
class CMesh;
class CTriangle;
struct RepairState;

// Leaves a square lattice face that carries both diagonals one of them.
//
// Comes in:  the mesh of an extraction, or of any later pass.
// Leaves:    no crossed square, but those that the split of a flat new triangle may make.
// Errors:    a flat new triangle that can neither be split away nor moved throws ZefBugException.
// Cost:      a walk over all edges on the workers of the pool; after a renewed extraction only what was made
//            anew.
class UnifyDiagonals
{
public:
    explicit UnifyDiagonals(RepairState& state_);

    void run();

private:
    bool unifyAt(CEdge* pCE);
    void splitNewFlat(CTriangle* pNewT);

    RepairState& state;
    CMesh* pCMesh;
};

} // namespace TARN_ZEF

#endif

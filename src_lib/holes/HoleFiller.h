#ifndef ZEF_HOLEFILLER_H
#define ZEF_HOLEFILLER_H

#include "core/definitions.h"

#include <memory>
#include <vector>

namespace TARN_ZEF
{
class CEdge;
class CMesh;
class CTriangle;
class Loop;
class VcdEdgeMap;

// Fills the holes of a mesh in place, of any size: another way than HoleToCCD, which works on copies. It
// first bridges pinched corners, where two fans of triangles touch.
//
// Ownership:  owns its loops; the mesh belongs to the caller.
// Threads:    none.
// Cost:       each loop orients the whole connected surface, so one pass is O(holes * triangles).
class HoleFiller
{
public:
    explicit HoleFiller(CMesh* pCMesh_);
    ~HoleFiller();
    HoleFiller(const HoleFiller&) = delete;
    HoleFiller& operator=(const HoleFiller&) = delete;

    // Fills until two passes in a row made no triangle.
    void run();
    // Makes loops of the edges, all of degree 1, after bridging the pinched corners.
    void createLoopsStrategy(const std::vector<CEdge*>& vBorderEdges);
    // Bridges the two fans at the corner with one triangle, and takes the two edges that it covers out of the
    // map; its free edge enters. Nothing is done, with a warning, unless each fan has two of exactly four
    // border edges; nor if the fans cross.
    void solveMultiVCD(u64 vcd, VcdEdgeMap& mmVCD2CE);

private:
    [[nodiscard]] bool splitEdges(u64 vcd, const VcdEdgeMap& mmVCD2CE, const std::vector<CTriangle*>& vIncT,
                                  u64 va[2], u64 vb[2]) const;
    [[nodiscard]] bool arePaired(u64 vcd, u64 va[2], const u64 vb[2]) const;

    CMesh* pCMesh;
    std::vector<std::unique_ptr<Loop>> vLoops; // a stack
};

} // namespace TARN_ZEF

#endif

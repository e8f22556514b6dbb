#ifndef ZEF_RPATCH_H
#define ZEF_RPATCH_H

#include "core/definitions.h"
#include <cstddef>

#include <vector>

namespace TARN_ZEF
{
class REdge;
class RMesh;
class RTriangle;

// A set of triangles of the refined mesh, connected across edges of degree 2.
//
// Ownership:  belongs to its mesh; triangles and edges are not its own.
// Invariant:  members and boundary are in order of creation, each once.
class RPatch
{
public:
    explicit RPatch(RMesh* pRMesh_);

    [[nodiscard]] bool isAlive() const noexcept { return bAlive; }
    [[nodiscard]] u64 getId() const noexcept { return id; } // counts in the whole process
    [[nodiscard]] RMesh* getRMesh() const noexcept { return pRMesh; }
    void addT(RTriangle* pRT);                 // a member already has no effect beyond setting its patch
    [[nodiscard]] std::size_t getNumT() const; // alive members
    [[nodiscard]] const std::vector<RTriangle*>& getMembers() const;
    // vRE must come in empty: the edges of alive members, by creation, each once.
    void getAllRE(std::vector<REdge*>& vRE) const;
    // Collects the edges that occur exactly once among the alive members.
    void setBoundary();
    [[nodiscard]] std::vector<REdge*> getBoundary() const { return vBoundaryRE; }

private:
    bool bAlive = true;
    u64 id;
    RMesh* pRMesh;
    mutable std::vector<RTriangle*> vT; // in order of addition until it is asked for
    mutable bool bSorted = true;
    std::vector<REdge*> vBoundaryRE;
};

} // namespace TARN_ZEF

#endif

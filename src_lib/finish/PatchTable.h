#ifndef ZEF_FINISH_PATCHTABLE_H
#define ZEF_FINISH_PATCHTABLE_H

#include "finish/EdgeTable.h"
#include "finish/FlatMesh.h"

#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// The patches of a mesh: triangles that hang together across edges with exactly two of them, which face alike. All
// other edges of two or more are the seams between patches.
//
// Invariant:  within a patch the facings agree across each of its edges.
struct PatchTable
{
    using Index = FlatMesh::Index;

    struct Patch
    {
        std::size_t numT = 0;
        std::size_t numBorder = 0; // edges with one triangle
        std::size_t numSeam = 0;   // half-edges at edges with three or more
    };

    PatchTable(const FlatMesh& mesh, const EdgeTable& edges);

    std::vector<Index> vPatchOfT;
    std::vector<Patch> vPatches;

private:
    void flood(const std::vector<Index>& vMate, Index firstT);
    void count(const EdgeTable& edges);
};

} // namespace TARN_ZEF

#endif

#ifndef ZEF_FINISH_PATCHTABLE_H
#define ZEF_FINISH_PATCHTABLE_H

#include "finish/EdgeTable.h"
#include "finish/FlatMesh.h"

#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// The patches of a mesh: triangles that hang together across edges with exactly two of them. Edges with three or
// more are the seams between patches.
//
// Invariant:  within a patch the facings agree across each of its edges, as far as the patch can be oriented; the
//             majority of its triangles faces as it was given.
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
    std::vector<std::uint8_t> vTurned; // for each triangle, whether it must be turned over
    std::vector<Patch> vPatches;

private:
    void flood(const std::vector<Index>& vMate, const std::vector<std::uint8_t>& vSameWay, Index firstT);
    void count(const EdgeTable& edges);
};

} // namespace TARN_ZEF

#endif

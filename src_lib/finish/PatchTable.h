#ifndef ZEF_FINISH_PATCHTABLE_H
#define ZEF_FINISH_PATCHTABLE_H

#include "finish/FlatMesh.h"
#include "finish/fans.h"

#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
// The patches of a mesh: triangles that hang together across mates.
struct PatchTable
{
    using Index = FlatMesh::Index;

    PatchTable(const FlatMesh& mesh, const Mates& vMates);

    std::vector<Index> vPatchOfT;
    std::vector<std::size_t> vNumT; // of each patch

private:
    void flood(const Mates& vMates, Index firstT);
};

} // namespace TARN_ZEF

#endif

#include "finish/PatchTable.h"

namespace TARN_ZEF
{
PatchTable::PatchTable(const FlatMesh& mesh, const Mates& vMates)
    : vPatchOfT(mesh.getNumT(), FlatMesh::NONE)
{
    for (Index t = 0; t < mesh.getNumT(); ++t)
        if (vPatchOfT[t] == FlatMesh::NONE)
            flood(vMates, t);
}

void PatchTable::flood(const Mates& vMates, Index firstT)
{
    const auto patch = static_cast<Index>(vNumT.size());
    std::vector<Index> vReached = {firstT};
    vPatchOfT[firstT] = patch;
    for (std::size_t i = 0; i < vReached.size(); ++i)
    {
        for (Index h = 3 * vReached[i]; h < 3 * vReached[i] + 3; ++h)
        {
            if (vMates[h] == FlatMesh::NONE || vPatchOfT[vMates[h] / 3] != FlatMesh::NONE)
                continue;
            vPatchOfT[vMates[h] / 3] = patch;
            vReached.push_back(vMates[h] / 3);
        }
    }
    vNumT.push_back(vReached.size());
}

} // namespace TARN_ZEF

#include "finish/PatchTable.h"

namespace TARN_ZEF
{
PatchTable::PatchTable(const FlatMesh& mesh, const EdgeTable& edges)
    : vPatchOfT(mesh.getNumT(), FlatMesh::NONE)
{
    std::vector<Index> vMate(mesh.vCorners.size(), FlatMesh::NONE);
    edges.forEach(
        [&](auto halfEdges)
        {
            if (halfEdges.size() != 2 || mesh.from(halfEdges[0].second) == mesh.from(halfEdges[1].second))
                return;
            vMate[halfEdges[0].second] = halfEdges[1].second;
            vMate[halfEdges[1].second] = halfEdges[0].second;
        });
    for (Index t = 0; t < mesh.getNumT(); ++t)
        if (vPatchOfT[t] == FlatMesh::NONE)
            flood(vMate, t);
    count(edges);
}

void PatchTable::flood(const std::vector<Index>& vMate, Index firstT)
{
    const auto patch = static_cast<Index>(vPatches.size());
    std::vector<Index> vReached = {firstT};
    vPatchOfT[firstT] = patch;
    for (std::size_t i = 0; i < vReached.size(); ++i)
    {
        for (Index h = 3 * vReached[i]; h < 3 * vReached[i] + 3; ++h)
        {
            if (vMate[h] == FlatMesh::NONE || vPatchOfT[vMate[h] / 3] != FlatMesh::NONE)
                continue;
            vPatchOfT[vMate[h] / 3] = patch;
            vReached.push_back(vMate[h] / 3);
        }
    }
    vPatches.push_back({.numT = vReached.size()});
}

void PatchTable::count(const EdgeTable& edges)
{
    edges.forEach(
        [&](auto halfEdges)
        {
            if (halfEdges.size() == 2)
                return;
            for (const auto& [ends, h] : halfEdges)
            {
                Patch& patch = vPatches[vPatchOfT[h / 3]];
                patch.numBorder += halfEdges.size() == 1;
                patch.numSeam += halfEdges.size() > 2;
            }
        });
}

} // namespace TARN_ZEF

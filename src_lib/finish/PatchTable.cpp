#include "finish/PatchTable.h"

namespace TARN_ZEF
{
PatchTable::PatchTable(const FlatMesh& mesh, const EdgeTable& edges)
    : vPatchOfT(mesh.getNumT(), FlatMesh::NONE)
    , vTurned(mesh.getNumT(), 0)
{
    std::vector<Index> vMate(mesh.vCorners.size(), FlatMesh::NONE);
    std::vector<std::uint8_t> vSameWay(mesh.vCorners.size(), 0);
    edges.forEach(
        [&](auto halfEdges)
        {
            if (halfEdges.size() != 2)
                return;
            const Index g = halfEdges[0].second;
            const Index h = halfEdges[1].second;
            vMate[g] = h;
            vMate[h] = g;
            vSameWay[g] = vSameWay[h] = mesh.from(g) == mesh.from(h) ? 1 : 0;
        });
    for (Index t = 0; t < mesh.getNumT(); ++t)
        if (vPatchOfT[t] == FlatMesh::NONE)
            flood(vMate, vSameWay, t);
    count(edges);
}

void PatchTable::flood(const std::vector<Index>& vMate, const std::vector<std::uint8_t>& vSameWay,
                       Index firstT)
{
    const auto patch = static_cast<Index>(vPatches.size());
    std::vector<Index> vReached = {firstT};
    vPatchOfT[firstT] = patch;
    std::size_t numTurned = 0;
    for (std::size_t i = 0; i < vReached.size(); ++i)
    {
        const Index t = vReached[i];
        numTurned += vTurned[t];
        for (Index h = 3 * t; h < 3 * t + 3; ++h)
        {
            if (vMate[h] == FlatMesh::NONE)
                continue;
            const Index neighbour = vMate[h] / 3;
            if (vPatchOfT[neighbour] != FlatMesh::NONE)
                continue;
            vPatchOfT[neighbour] = patch;
            vTurned[neighbour] = vTurned[t] ^ vSameWay[h];
            vReached.push_back(neighbour);
        }
    }
    if (2 * numTurned > vReached.size())
        for (const Index t : vReached)
            vTurned[t] ^= 1;
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

#include "finish/DebrisRemoval.h"

#include "finish/ParityUnion.h"
#include "finish/dropTriangles.h"

#include <algorithm>

namespace TARN_ZEF
{
namespace
{
constexpr std::size_t MIN_LARGE = 100;
constexpr std::size_t MIN_PIECE = 32;
} // namespace

DebrisRemoval::Flags DebrisRemoval::findLarge(const FlatMesh& mesh)
{
    ParityUnion pieces(mesh.vPoints.size());
    for (std::size_t t = 0; t < mesh.getNumT(); ++t)
        for (const std::size_t h : {3 * t + 1, 3 * t + 2})
            pieces.unite(mesh.vCorners[3 * t], mesh.vCorners[h], 0);
    std::vector<std::size_t> vNumT(mesh.vPoints.size(), 0);
    std::uint8_t unlike = 0;
    for (std::size_t t = 0; t < mesh.getNumT(); ++t)
        ++vNumT[pieces.find(mesh.vCorners[3 * t], unlike)];
    Flags vIsOfLarge(mesh.vPoints.size());
    for (FlatMesh::Index v = 0; v < vIsOfLarge.size(); ++v)
        vIsOfLarge[v] = vNumT[pieces.find(v, unlike)] >= MIN_LARGE ? 1 : 0;
    return vIsOfLarge;
}

DebrisRemoval::DebrisRemoval(HalfEdgeMesh& mesh_)
    : mesh(mesh_)
{
}

void DebrisRemoval::label(const Flags& vIsOfLarge)
{
    for (int t = 0; t < mesh.endTriangles(); ++t)
        if (mesh.isAlive(t))
            mesh.setLabel(t, vIsOfLarge[static_cast<std::size_t>(mesh.from(4 * t))] != 0 ? LARGE : 0);
}

std::size_t DebrisRemoval::run()
{
    std::size_t numT = 0;
    Flags vDrop(static_cast<std::size_t>(mesh.endTriangles()), 0);
    Flags vReached(static_cast<std::size_t>(mesh.endTriangles()), 0);
    for (int first = 0; first < static_cast<int>(vReached.size()); ++first)
    {
        if (!mesh.isAlive(first) || vReached[static_cast<std::size_t>(first)] != 0)
            continue;
        const std::vector<int> vPiece = flood(first, vReached);
        const auto isOfLarge = [this](int t) { return mesh.label(t) == LARGE; };
        if (vPiece.size() >= MIN_PIECE || std::none_of(vPiece.begin(), vPiece.end(), isOfLarge))
            continue;
        for (const int t : vPiece)
            vDrop[static_cast<std::size_t>(t)] = 1;
        numT += vPiece.size();
    }
    if (numT > 0)
        dropTriangles(mesh, vDrop);
    return numT;
}

std::vector<int> DebrisRemoval::flood(int first, Flags& vReached) const
{
    std::vector<int> vPiece = {first};
    vReached[static_cast<std::size_t>(first)] = 1;
    for (std::size_t i = 0; i < vPiece.size(); ++i)
    {
        for (int h = 4 * vPiece[i]; h < 4 * vPiece[i] + 3; ++h)
        {
            if (mesh.isBorder(h))
                continue;
            const int t = HalfEdgeMesh::triangleOf(mesh.partner(h));
            if (vReached[static_cast<std::size_t>(t)] != 0)
                continue;
            vReached[static_cast<std::size_t>(t)] = 1;
            vPiece.push_back(t);
        }
    }
    return vPiece;
}

} // namespace TARN_ZEF

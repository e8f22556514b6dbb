#include "finish/SeamTable.h"

#include "parallel/collectInOrder.h"

#include <algorithm>

namespace TARN_ZEF
{
SeamTable::SeamTable(const FlatMesh& mesh)
    : vMates(mesh.vCorners.size(), FlatMesh::NONE)
    , vSeamOf(mesh.vCorners.size(), FlatMesh::NONE)
{
    const EdgeTable edges(mesh);
    struct Side
    {
        Index h;
        bool bFirst; // of its seam
    };
    const std::vector<Side> vFound = collectInOrder<Side>(
        edges.getNumVertices(),
        [&](std::size_t from, std::size_t to, std::vector<Side>& vSidesHere)
        {
            edges.forEachEdge(from, to,
                              [&](std::span<const EdgeTable::Entry> halfEdges)
                              {
                                  if (halfEdges.size() < 2 || mateTwo(mesh, halfEdges))
                                      return;
                                  for (const EdgeTable::Entry& side : halfEdges)
                                      vSidesHere.push_back({side.h, &side == &halfEdges.front()});
                              });
        });
    for (const Side& side : vFound)
    {
        if (side.bFirst)
            vSeams.push_back({vSides.size(), 0});
        vSeamOf[side.h] = static_cast<Index>(vSeams.size() - 1);
        ++vSeams.back().num;
        vSides.push_back(side.h);
    }
}

// False if they are not two that face alike.
bool SeamTable::mateTwo(const FlatMesh& mesh, std::span<const EdgeTable::Entry> halfEdges)
{
    const Index g = halfEdges[0].h;
    const Index h = halfEdges[1].h;
    if (halfEdges.size() != 2 || mesh.from(g) == mesh.from(h))
        return false;
    vMates[g] = h;
    vMates[h] = g;
    return true;
}

void SeamTable::removeSides(const FlatMesh& mesh, Index number, const std::vector<std::uint8_t>& vKeep)
{
    Seam& seam = vSeams[number];
    const auto begin = vSides.begin() + static_cast<std::ptrdiff_t>(seam.first);
    const auto end = std::remove_if(begin, begin + static_cast<std::ptrdiff_t>(seam.num),
                                    [&](Index side)
                                    {
                                        const bool bGoes = vKeep[side / 3] == 0;
                                        if (bGoes)
                                            vSeamOf[side] = FlatMesh::NONE;
                                        return bGoes;
                                    });
    seam.num = static_cast<std::size_t>(end - begin);
    const bool bMates = seam.num == 2 && mesh.from(begin[0]) != mesh.from(begin[1]);
    if (bMates)
    {
        vMates[begin[0]] = begin[1];
        vMates[begin[1]] = begin[0];
    }
    if (!bMates && seam.num > 1)
        return;
    std::for_each(begin, end, [this](Index side) { vSeamOf[side] = FlatMesh::NONE; });
    seam.num = 0;
}

void SeamTable::keepTriangles(const std::vector<std::uint8_t>& vKeep)
{
    std::vector<Index> vNewT(vKeep.size(), FlatMesh::NONE);
    Index num = 0;
    for (std::size_t t = 0; t < vKeep.size(); ++t)
        if (vKeep[t] != 0)
            vNewT[t] = num++;
    const auto renumber = [&](Index h) { return h == FlatMesh::NONE ? h : 3 * vNewT[h / 3] + h % 3; };
    for (Index h = 0; h < vMates.size(); ++h)
    {
        if (vKeep[h / 3] == 0)
            continue;
        vMates[renumber(h)] = renumber(vMates[h]);
        vSeamOf[renumber(h)] = vSeamOf[h];
    }
    vMates.resize(3 * std::size_t{num});
    vSeamOf.resize(3 * std::size_t{num});
    for (const Seam& seam : vSeams)
        for (std::size_t i = 0; i < seam.num; ++i)
            vSides[seam.first + i] = renumber(vSides[seam.first + i]);
}

void SeamTable::turnTriangles(const std::vector<std::uint8_t>& vTurn)
{
    turnMates(vMates, vTurn);
    for (std::size_t t = 0; t < vTurn.size(); ++t)
        if (vTurn[t] != 0)
            std::swap(vSeamOf[3 * t], vSeamOf[3 * t + 2]);
    for (const Seam& seam : vSeams)
    {
        const auto begin = vSides.begin() + static_cast<std::ptrdiff_t>(seam.first);
        const auto end = begin + static_cast<std::ptrdiff_t>(seam.num);
        std::for_each(begin, end, [&](Index& side) { side = vTurn[side / 3] != 0 ? getTurned(side) : side; });
        std::sort(begin, end);
    }
}

} // namespace TARN_ZEF

#include "finish/fans.h"

#include "finish/EdgeTable.h"

namespace TARN_ZEF
{
using Index = FlatMesh::Index;

namespace
{
// Calls f(h) for each half-edge that starts at the centre of the fan of h.
template <typename F>
void forEachOfFan(const Mates& vMates, Index h, F f)
{
    Index at = h;
    do
    {
        f(at);
        at = vMates[FlatMesh::prev(at)];
    } while (at != FlatMesh::NONE && at != h);
    if (at == h)
        return;
    for (at = vMates[h]; at != FlatMesh::NONE; at = vMates[at])
    {
        at = FlatMesh::next(at);
        f(at);
    }
}

// Keeps the first half-edge and the first that runs the other way; marks the triangles of the others.
std::size_t markSurplus(const FlatMesh& mesh, std::span<const EdgeTable::Entry> halfEdges,
                        std::vector<std::uint8_t>& vKeep)
{
    const Index first = halfEdges.front().second;
    bool bPaired = false;
    std::size_t numDropped = 0;
    for (const auto& [ends, h] : halfEdges.subspan(1))
    {
        if (!bPaired && mesh.from(h) != mesh.from(first))
        {
            bPaired = true;
            continue;
        }
        numDropped += vKeep[h / 3];
        vKeep[h / 3] = 0;
    }
    return numDropped;
}
} // namespace

Mates findMates(const FlatMesh& mesh)
{
    Mates vMates(mesh.vCorners.size(), FlatMesh::NONE);
    EdgeTable(mesh).forEach(
        [&](auto halfEdges)
        {
            if (halfEdges.size() != 2)
                return;
            const Index g = halfEdges[0].second;
            const Index h = halfEdges[1].second;
            if (mesh.from(g) == mesh.from(h))
                return;
            vMates[g] = h;
            vMates[h] = g;
        });
    return vMates;
}

std::size_t doubleVertices(FlatMesh& mesh, const Mates& vMates, std::vector<Index>* pOriginals)
{
    std::vector<std::uint8_t> vHasFan(mesh.vPoints.size(), 0);
    std::vector<std::uint8_t> vVisited(mesh.vCorners.size(), 0);
    std::size_t numCopies = 0;
    for (Index h = 0; h < mesh.vCorners.size(); ++h)
    {
        if (vVisited[h] != 0)
            continue;
        const Index original = mesh.vCorners[h];
        Index vertex = original;
        if (vHasFan[original] != 0)
        {
            vertex = static_cast<Index>(mesh.vPoints.size());
            mesh.vPoints.push_back(Point3(mesh.vPoints[original]));
            vHasFan.push_back(1);
            ++numCopies;
            if (pOriginals != nullptr)
                pOriginals->push_back(original);
        }
        vHasFan[original] = 1;
        forEachOfFan(vMates, h,
                     [&](Index g)
                     {
                         vVisited[g] = 1;
                         mesh.vCorners[g] = vertex;
                     });
    }
    return numCopies;
}

std::size_t dropToManifold(FlatMesh& mesh)
{
    std::size_t numAll = 0;
    for (;;)
    {
        std::vector<std::uint8_t> vKeep(mesh.getNumT(), 1);
        std::size_t numDropped = 0;
        EdgeTable(mesh).forEach(
            [&](auto halfEdges)
            {
                if (halfEdges.size() > 1)
                    numDropped += markSurplus(mesh, halfEdges, vKeep);
            });
        if (numDropped == 0)
            break;
        numAll += numDropped;
        mesh.keepTriangles(vKeep);
    }
    doubleVertices(mesh, findMates(mesh));
    return numAll;
}

} // namespace TARN_ZEF

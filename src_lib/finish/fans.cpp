#include "finish/fans.h"

#include <utility>

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
} // namespace

void turnTriangles(FlatMesh& mesh, const std::vector<std::uint8_t>& vTurn)
{
    for (std::size_t t = 0; t < vTurn.size(); ++t)
        if (vTurn[t] != 0)
            std::swap(mesh.vCorners[3 * t + 1], mesh.vCorners[3 * t + 2]);
}

void turnMates(Mates& vMates, const std::vector<std::uint8_t>& vTurn)
{
    for (std::size_t t = 0; t < vTurn.size(); ++t)
        if (vTurn[t] != 0)
            std::swap(vMates[3 * t], vMates[3 * t + 2]);
    for (Index& mate : vMates)
        if (mate != FlatMesh::NONE && vTurn[mate / 3] != 0)
            mate = getTurned(mate);
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
            const Point3 copy = mesh.vPoints[original];
            mesh.vPoints.push_back(copy);
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

} // namespace TARN_ZEF

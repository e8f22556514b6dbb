// Members of RMeshRecords that move many vertices.
#include "rmesh/RMeshRecords.h"

#include "parallel/sortMT2.h"

#include <algorithm>
#include <bit>

namespace TARN_ZEF
{
namespace
{
// Equal for equal coordinates; adding 0.0 makes -0.0 the same as 0.0.
u64 getHash(const Point3& point)
{
    u64 h = 0;
    for (const double coordinate : {point.x(), point.y(), point.z()})
    {
        h = (h ^ std::bit_cast<u64>(coordinate + 0.0)) * 0x9FB21C651E98DF25ull;
        h ^= h >> 35;
    }
    return h;
}
} // namespace

void RMeshRecords::dropPointTable() noexcept
{
    pointTable = PointTable();
    bPointTable = false;
}

void RMeshRecords::moveVertices(const std::vector<std::pair<Point3*, Point3>>& vOldVtx2NewPnt)
{
    if (areAllPlacesDifferent(vOldVtx2NewPnt))
    {
        for (const auto& [pVtx, newPoint] : vOldVtx2NewPnt)
            if (*pVtx != newPoint)
                *pVtx = newPoint;
        dropPointTable();
        return;
    }
    for (const auto& [pVtx, newPoint] : vOldVtx2NewPnt)
        if (!hasVertexAt(newPoint) && *pVtx != newPoint)
            updateVertex(pVtx, newPoint);
}

// If all vertices stand in different places, and no vertex goes to where another one comes from or goes, none
// can be in the way of another, and the table can be made anew afterwards. A hash that occurs twice by chance
// only costs the slower way.
bool RMeshRecords::areAllPlacesDifferent(const std::vector<std::pair<Point3*, Point3>>& vOldVtx2NewPnt) const
{
    if (bPointTable && pointTable.size() != numVertices)
        return false;
    std::vector<u64> vHashes;
    vHashes.reserve(numVertices + vOldVtx2NewPnt.size());
    vtxPool.forEach([&vHashes](const RVertex* pVertex) { vHashes.push_back(getHash(pVertex->point)); });
    for (const auto& [pVtx, newPoint] : vOldVtx2NewPnt)
        if (*pVtx != newPoint)
            vHashes.push_back(getHash(newPoint));
    sortMT(vHashes.begin(), vHashes.end());
    return std::adjacent_find(vHashes.begin(), vHashes.end()) == vHashes.end();
}

} // namespace TARN_ZEF

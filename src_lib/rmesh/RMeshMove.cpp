// Members of RMeshRecords that move many vertices.
#include "rmesh/RMeshRecords.h"

#include "parallel/parallelFor.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <numeric>

namespace TARN_ZEF
{
namespace
{
const std::size_t MIN_MOVES_PER_JOB = 20000;
const std::size_t HASHES_PER_BUCKET = 1024; // so that the table of a bucket stays in the first cache

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

// The hashes sorted by their highest bits: those of bucket k stand from vFirst[k] to before vFirst[k + 1].
struct HashBuckets
{
    explicit HashBuckets(const std::vector<u64>& vHashes)
        : vSorted(vHashes.size())
    {
        const std::size_t num = std::bit_ceil(std::max<std::size_t>(2, vHashes.size() / HASHES_PER_BUCKET));
        const int shift = 64 - std::countr_zero(num);
        vFirst.assign(num + 1, 0);
        for (const u64 hash : vHashes)
            ++vFirst[(hash >> shift) + 1];
        std::partial_sum(vFirst.begin(), vFirst.end(), vFirst.begin());
        std::vector<std::size_t> vNext(vFirst.begin(), vFirst.end() - 1);
        for (const u64 hash : vHashes)
            vSorted[vNext[hash >> shift]++] = hash;
    }
    [[nodiscard]] std::size_t size() const noexcept { return vFirst.size() - 1; }

    std::vector<u64> vSorted;
    std::vector<std::size_t> vFirst;
};

// A table with open addressing. 0 is a free place: a hash of 0 counts as a twin.
bool hasTwins(const u64* pHash, const u64* pEnd, std::vector<u64>& vTable)
{
    const std::size_t mask = 2 * std::bit_ceil(static_cast<std::size_t>(pEnd - pHash) + 1) - 1;
    vTable.assign(mask + 1, 0);
    for (; pHash != pEnd; ++pHash)
    {
        std::size_t i = *pHash & mask;
        while (vTable[i] != 0 && vTable[i] != *pHash)
            i = (i + 1) & mask;
        if (vTable[i] == *pHash)
            return true;
        vTable[i] = *pHash;
    }
    return false;
}

bool hasTwins(const std::vector<u64>& vHashes)
{
    const HashBuckets buckets(vHashes);
    std::atomic<bool> bFound = false;
    parallelFor(buckets.size(), 1 + MIN_MOVES_PER_JOB / HASHES_PER_BUCKET,
                [&](std::size_t from, std::size_t to)
                {
                    std::vector<u64> vTable;
                    const u64* const pFirst = buckets.vSorted.data();
                    for (std::size_t k = from; k < to && !bFound; ++k)
                        if (hasTwins(pFirst + buckets.vFirst[k], pFirst + buckets.vFirst[k + 1], vTable))
                            bFound = true;
                });
    return bFound;
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
        parallelFor(vOldVtx2NewPnt.size(), MIN_MOVES_PER_JOB,
                    [&vOldVtx2NewPnt](std::size_t from, std::size_t to)
                    {
                        for (std::size_t i = from; i < to; ++i)
                            if (*vOldVtx2NewPnt[i].first != vOldVtx2NewPnt[i].second)
                                *vOldVtx2NewPnt[i].first = vOldVtx2NewPnt[i].second;
                    });
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
    return !hasTwins(vHashes);
}

} // namespace TARN_ZEF

// Whether two results are the same, bit for bit, in one number.
#ifndef ZEF_TESTS_MESHHASH_H
#define ZEF_TESTS_MESHHASH_H

#include "Mesh.h"

#include <bit>
#include <cstdint>
#include <memory>
#include <vector>

namespace TARN_ZEF
{
// Of the bits of all coordinates, by the FNV-1a rule a word at a time.
[[nodiscard]] inline std::uint64_t getHash(const std::vector<Point3>& vPoints)
{
    std::uint64_t hash = 0xcbf29ce484222325ull;
    for (const Point3& p : vPoints)
        for (const double coordinate : {p.x(), p.y(), p.z()})
            hash = (hash ^ std::bit_cast<std::uint64_t>(coordinate)) * 0x100000001b3ull;
    return hash;
}

// Of the corners of all triangles; 1 for no mesh.
[[nodiscard]] inline std::uint64_t getHash(const std::shared_ptr<Mesh>& pMesh)
{
    if (pMesh == nullptr)
        return 1;
    std::vector<Point3*> vCorners;
    pMesh->getTriangles(vCorners);
    std::vector<Point3> vPoints;
    for (const Point3* pCorner : vCorners)
        vPoints.push_back(*pCorner);
    return getHash(vPoints);
}

} // namespace TARN_ZEF

#endif

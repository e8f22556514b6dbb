#ifndef ZEF_FLATMESH_H
#define ZEF_FLATMESH_H

#include "Point3.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// A mesh as plain numbers: what all passes of this room work on.
//
// Three consecutive entries of vCorners are one triangle. Half-edge h = 3 t + i runs from corner i of triangle t
// to the next one.
struct FlatMesh
{
    using Index = std::uint32_t;
    static constexpr Index NONE = UINT32_MAX;

    std::vector<Point3> vPoints;
    std::vector<Index> vCorners;

    [[nodiscard]] std::size_t getNumT() const noexcept { return vCorners.size() / 3; }
    [[nodiscard]] static constexpr Index next(Index h) noexcept { return h % 3 == 2 ? h - 2 : h + 1; }
    [[nodiscard]] static constexpr Index prev(Index h) noexcept { return h % 3 == 0 ? h + 2 : h - 1; }
    [[nodiscard]] Index from(Index h) const noexcept { return vCorners[h]; }
    [[nodiscard]] Index to(Index h) const noexcept { return vCorners[next(h)]; }
    [[nodiscard]] Index opposite(Index h) const noexcept { return vCorners[prev(h)]; }
    [[nodiscard]] const Point3& at(Index h) const noexcept { return vPoints[vCorners[h]]; }

    // Keeps the triangles t with vKeep[t] != 0, in their order.
    void keepTriangles(const std::vector<std::uint8_t>& vKeep);
};

} // namespace TARN_ZEF

#endif

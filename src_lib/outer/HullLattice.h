#ifndef ZEF_HULLLATTICE_H
#define ZEF_HULLLATTICE_H

#include "Point3.h"
#include "judge/ExactSigns.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace TARN_ZEF
{
// The lattice of a hull: cubic cells between points with whole coordinates. A line runs along one axis; the axes after
// it, in turn, number it.
struct HullLattice
{
    using Cell = std::array<int, 3>; // also a point: the lowest corner of its cell

    static constexpr int BITS = 20; // of a coordinate

    Point3 origin;
    double cell = 1.0;
    std::array<int, 3> size = {0, 0, 0}; // points along each axis

    [[nodiscard]] static constexpr int after(int axis) noexcept { return axis == 2 ? 0 : axis + 1; }
    [[nodiscard]] static constexpr int before(int axis) noexcept { return axis == 0 ? 2 : axis - 1; }

    [[nodiscard]] Place toPlace(const Point3& p) const noexcept
    {
        return {(p.x() - origin.x()) / cell, (p.y() - origin.y()) / cell, (p.z() - origin.z()) / cell};
    }
    [[nodiscard]] Point3 toPoint(const Place& place) const noexcept
    {
        return {origin.x() + place[0] * cell, origin.y() + place[1] * cell, origin.z() + place[2] * cell};
    }
    [[nodiscard]] std::size_t numLines(int axis) const noexcept
    {
        return static_cast<std::size_t>(size[after(axis)]) * static_cast<std::size_t>(size[before(axis)]);
    }
    [[nodiscard]] std::size_t lineOf(int axis, const Cell& p) const noexcept
    {
        return static_cast<std::size_t>(p[before(axis)]) * static_cast<std::size_t>(size[after(axis)]) +
               static_cast<std::size_t>(p[after(axis)]);
    }
    [[nodiscard]] static std::uint64_t keyOf(const Cell& p) noexcept
    {
        return (static_cast<std::uint64_t>(p[2]) << (2 * BITS)) | (static_cast<std::uint64_t>(p[1]) << BITS) |
               static_cast<std::uint64_t>(p[0]);
    }
};

} // namespace TARN_ZEF

#endif

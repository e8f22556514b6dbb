#ifndef ZEF_POINTFACING_H
#define ZEF_POINTFACING_H

#include "Point3.h"
#include "Vector3.h"
#include "choice/PointGrid.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// Which way the surface of closed bodies faces at each of its points: a plane through the nearest ones, turned to face
// outward.
//
// Points that hang together agree by one rule: what is seen at one end of the way between two points is what is seen at the
// other end in a mirror that stands halfway. It holds on flat places, round edges of any angle, and also from one sheet to
// the other, across a wall or a gap; so no sheet is too thin. The surest pairs count first.
// Source:  H. Hoppe et al., Surface reconstruction from unorganized points, 1992, for the tree of pairs; S. König,
//          S. Gumhold, Consistent propagation of normal orientations in point clouds, 2009, for the rule.
//
// Ownership:  refers to the points and their grid.
// Threads:    one caller; runs on the pool. The result is the same for every number of threads.
class PointFacing
{
public:
    // spacing  a mean one: lengths of pairs are compared with it. grid: of the same points
    PointFacing(const std::vector<Point3>& vPoints_, const PointGrid& grid_, double spacing_);

    void run();

    // By point, of length 1.
    [[nodiscard]] const std::vector<Vector3>& getNormals() const { return vNormals; }

private:
    static constexpr std::size_t NUM_NEIGHBOURS = 10;
    static constexpr std::uint32_t NONE = ~std::uint32_t{0};
    using Neighbours = std::array<std::uint32_t, NUM_NEIGHBOURS>; // nearest first, then NONE

    struct Pair
    {
        double doubt;
        std::uint32_t a;
        std::uint32_t b;
    };

    void fitPlanes();
    [[nodiscard]] Vector3 fitPlane(std::uint32_t point) const;
    [[nodiscard]] std::vector<Pair> findPairs() const;
    // Above 0 if both normals face the same way; 1 or -1 at the surest.
    [[nodiscard]] double compare(std::uint32_t a, std::uint32_t b) const;
    void agree();
    void faceOutward();
    void faceCavitiesInward();
    [[nodiscard]] bool isWithin(std::uint32_t group, std::uint32_t other) const;
    [[nodiscard]] std::uint32_t findNearestOf(std::uint32_t group, const Point3& p) const;
    void turnGroups(const std::vector<bool>& vTurned);

    const std::vector<Point3>& vPoints;
    const PointGrid& grid;
    double spacing;
    std::vector<Neighbours> vNeighbours;
    std::vector<Vector3> vNormals;
    std::vector<std::uint32_t> vGroup;                // by point: those that hang together
    std::vector<std::vector<std::uint32_t>> vOfGroup; // by group, its points
};

} // namespace TARN_ZEF

#endif

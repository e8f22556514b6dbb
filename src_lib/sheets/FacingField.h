#ifndef ZEF_FACINGFIELD_H
#define ZEF_FACINGFIELD_H

#include "Point3.h"
#include "Vector3.h"
#include "choice/PointGrid.h"
#include "outer/DualSurface.h"
#include "outer/HullLattice.h"
#include "outer/PointRuns.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace TARN_ZEF
{
// How far the points of a lattice near a cloud are from the surface, in spacings: below 0 inside the bodies.
//
// Each lattice point asks the points of the cloud around it, the nearer the more, how far it lies before their planes.
// Then it takes on some of what its neighbours in the lattice say, all of it where points are far: so the gaps between points
// get the smoothest surface that fits around them, even where another sheet lies closer than the points of their own.
// Source:  R. Kolluri, Provably good moving least squares, 2005, for the distance.
//
// Threads:    one caller; runs on the pool. The result is the same for every number of threads.
// Cost:       some 15 lattice points for each point of the cloud, 36 bytes each.
class FacingField
{
public:
    using Cell = HullLattice::Cell;

    // vNormals: as PointFacing gives them. grid: of the points, with a reach of REACH spacings
    FacingField(const std::vector<Point3>& vPoints_, const std::vector<Vector3>& vNormals_,
                const PointGrid& grid_, double spacing_);

    static constexpr double REACH = 3.5;

    // False if the cloud is too long and thin for a lattice.
    [[nodiscard]] bool run();

    [[nodiscard]] const HullLattice& getLattice() const { return lattice; }
    // At a point of the lattice near the cloud.
    [[nodiscard]] double at(const Cell& p) const { return vValues[indexOf(p)]; }
    // All edges of the lattice that the surface passes; nothing if it leaves the part of the lattice near the cloud,
    // as one with a rim does.
    [[nodiscard]] std::optional<std::vector<DualSurface::Change>> findChanges() const;
    // The share of the points that the surface passes within a spacing of.
    [[nodiscard]] double getCovered() const;

private:
    using Hits = std::vector<PointGrid::Hit>;
    static constexpr std::uint32_t NONE = ~std::uint32_t{0};

    [[nodiscard]] bool makeLattice();
    void findNear();
    void evaluate();
    void evaluateAt(std::size_t index, const Point3& p, Hits& vHits);
    void smooth();
    [[nodiscard]] std::uint32_t indexOf(const Cell& p) const;
    template <typename F>
    void forEachOnLines(std::size_t from, std::size_t to, F f) const;
    [[nodiscard]] bool isWhole(const Cell& cell) const;
    [[nodiscard]] double interpolate(const Point3& p) const;

    const std::vector<Point3>& vPoints;
    const std::vector<Vector3>& vNormals;
    const PointGrid& grid;
    double spacing;
    HullLattice lattice;
    std::optional<PointRuns> oNear;  // the part of the lattice near the cloud
    std::vector<std::size_t> vFirst; // by line: number of the lattice points near the cloud before it
    std::vector<float> vValues;      // of those points, line by line
    std::vector<float> vWeights;     // how much each value keeps to what the points say
};

} // namespace TARN_ZEF

#endif

#ifndef ZEF_INSIDEPOINTS_H
#define ZEF_INSIDEPOINTS_H

#include "outer/HullLattice.h"
#include "outer/LineCrossings.h"
#include "outer/PointRuns.h"

#include <array>
#include <vector>

namespace TARN_ZEF
{
// By axis.
using AllCrossings = std::array<LineCrossings, 3>;

// Which points of a lattice are inside the hull of triangles: what closed sheets wind round, what cannot be reached from
// outside, and the points beside triangles that would vanish else: those of open sheets and of walls that are thinner
// than a cell.
class InsidePoints
{
public:
    // vOpen        by triangle, whether its sheet has a border, and so winds round nothing
    // bridgedCells widest gap that counts as closed, in cells
    InsidePoints(const HullLattice& lattice_, const AllCrossings& crossings_, const std::vector<bool>& vOpen_,
                 int bridgedCells);

    [[nodiscard]] const PointRuns& getInside() const { return inside; }
    // Whether p is inside only because a triangle passes beside it.
    [[nodiscard]] bool isWall(const HullLattice::Cell& p) const { return walls.has(p); }

private:
    using Cell = HullLattice::Cell;

    [[nodiscard]] PointRuns findWound() const;
    [[nodiscard]] PointRuns findWalls() const;
    [[nodiscard]] PointRuns findBacked(const PointRuns& solid) const;
    [[nodiscard]] bool isBacked(const Cell& wall, const PointRuns& solid) const;
    [[nodiscard]] bool isNeeded(const Cell& wall, const PointRuns& solid) const;
    template <typename F>
    [[nodiscard]] PointRuns selectWalls(F isChosen) const;
    template <typename F>
    void forEachNeighbour(const Cell& p, F f) const;
    [[nodiscard]] PointRuns makeRuns(std::vector<Cell>& vPoints) const;
    template <typename F>
    void forEachUnseen(F f) const;

    const HullLattice& lattice;
    const AllCrossings& crossings;
    const std::vector<bool>& vOpen;
    PointRuns inside;
    PointRuns walls;
};

} // namespace TARN_ZEF

#endif

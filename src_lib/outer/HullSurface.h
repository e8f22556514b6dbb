#ifndef ZEF_HULLSURFACE_H
#define ZEF_HULLSURFACE_H

#include "outer/DualSurface.h"
#include "outer/InsidePoints.h"
#include "remesh/PatchWalker.h"

#include <array>
#include <vector>

namespace TARN_ZEF
{
// The surface of a hull, with its vertices on the triangles that it encloses.
class HullSurface : public DualSurface
{
public:
    // surface: the triangles that the crossings name.
    HullSurface(const HullLattice& lattice_, const AllCrossings& crossings_, const InsidePoints& points_,
                const HalfEdgeMesh& surface_);

    void run();

private:
    [[nodiscard]] HullVertex makeVertex(const Cell& cell,
                                        const std::vector<const Change*>& vLoop) const override;
    [[nodiscard]] bool isFirstDiagonalBetter(const std::array<int, 4>& ring,
                                             const Change& change) const override;
    [[nodiscard]] EdgeSample sample(const Change& change) const;

    const AllCrossings& crossings;
    const InsidePoints& points;
    const HalfEdgeMesh& surface;
    const PatchWalker walker;
};

} // namespace TARN_ZEF

#endif

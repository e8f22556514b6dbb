#ifndef ZEF_NEARNESSPROOF_H
#define ZEF_NEARNESSPROOF_H

#include "remesh/PatchWalker.h"

#include <array>

namespace TARN_ZEF
{
// Shows, as far as it can, that a whole triangle lies within a tolerance of a patch, not only some places on
// it: the distance from one triangle is a convex function, so it is largest at corners. A piece all of whose
// corners are within the tolerance of one triangle of the patch is within it. So is one whose corners lie
// beside triangles that share a vertex and fall little towards one another, if all corners are near the
// planes of all of these: the surface between them is nowhere higher than the highest plane nor lower than
// the lowest. Other pieces are cut in four, four times at most; what is left then counts as near by its
// corners: places a sixteenth of the triangle apart.
//
// Threads:    none.
class NearnessProof
{
public:
    NearnessProof(const PatchWalker& walker_, double tolerance_)
        : walker(walker_)
        , mesh(walker_.getMesh())
        , tolerance(tolerance_)
    {
    }

    // hint: a triangle of the patch, near them. False if a place that was looked at is farther off.
    [[nodiscard]] bool run(const std::array<Point3, 3>& corners, int hint);

    // Of the last run that failed: the place that is farthest of those looked at, as the patch sees it.
    [[nodiscard]] const SurfacePlace& getFarthest() const { return farthest; }

private:
    struct Corner
    {
        Point3 point;
        SurfacePlace place;
    };
    using Piece = std::array<Corner, 3>;

    [[nodiscard]] Corner look(const Point3& p, int hint);
    [[nodiscard]] bool prove(const Piece& piece, int depth);
    [[nodiscard]] bool hasWitness(const Piece& piece) const;
    [[nodiscard]] bool isNearPlanes(const Piece& piece) const;
    [[nodiscard]] bool isWithin(const Point3& p, int triangle) const;

    const PatchWalker& walker;
    const HalfEdgeMesh& mesh; // the walker's
    double tolerance;
    SurfacePlace farthest;
};

} // namespace TARN_ZEF

#endif

#ifndef ZEF_EDGETRACE_H
#define ZEF_EDGETRACE_H

#include "Vector3.h"
#include "remesh/PatchWalker.h"

namespace TARN_ZEF
{
// Follows a straight line over a patch of a surface, from triangle to triangle, and looks how far the two are
// apart where the line passes the edges of the patch: between two of these places both are straight, so they
// are nowhere farther apart.
//
// Threads:  none; the last place belongs to the object.
class EdgeTrace
{
public:
    EdgeTrace(const PatchWalker& walker_, double tolerance)
        : walker(walker_)
        , mesh(walker_.getMesh())
        , sqTolerance(tolerance * tolerance)
    {
    }

    enum class End
    {
        NEAR, // all of the line is within the tolerance
        FAR,  // a place of it is not; getFarthest()
        LOST  // the patch does not lie under the line all the way, so nothing is known
    };

    // start  the place of the patch that is nearest to a
    // up     from the patch to where it is seen from, of any length above 0
    [[nodiscard]] End follow(const SurfacePlace& start, const Point3& a, const Point3& b, const Vector3& up);

    // After FAR: the place on the patch nearest to the place of the line.
    [[nodiscard]] const SurfacePlace& getFarthest() const { return farthest; }

private:
    // A line, and the plane through it that stands on the patch.
    struct Line
    {
        Point3 a;
        Vector3 direction; // to its end
        double sqLength;
        Vector3 left; // of the direction, seen from above
        Vector3 up;
    };

    [[nodiscard]] double sideOf(const Line& line, int v) const
    {
        return (mesh.point(v) - line.a) * line.left;
    }
    [[nodiscard]] int exitOf(const Line& line, int t) const;
    [[nodiscard]] int findStart(const Line& line, const SurfacePlace& start) const;
    [[nodiscard]] int exitAtCorner(const Line& line, int v, int patch) const;
    [[nodiscard]] Point3 crossing(const Line& line, int h) const;
    [[nodiscard]] End judge(const Line& line, double along, const Point3& place, int t);
    [[nodiscard]] End endOn(const Line& line, int t) const;

    const PatchWalker& walker;
    const HalfEdgeMesh& mesh; // the walker's
    double sqTolerance;
    SurfacePlace farthest;
};

} // namespace TARN_ZEF

#endif

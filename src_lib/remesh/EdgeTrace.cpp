#include "remesh/EdgeTrace.h"

#include "remesh/triangles.h"

#include <cmath>

namespace TARN_ZEF
{
namespace
{
constexpr int NONE = HalfEdgeMesh::NONE;
constexpr int MAX_STEPS = 1000;
constexpr double COS_STEEP = 0.3; // between up and the normal of the patch at the end
constexpr double ROUNDING = 1e-9; // of the length of the line
} // namespace

EdgeTrace::End EdgeTrace::follow(const SurfacePlace& start, const Point3& a, const Point3& b,
                                 const Vector3& up)
{
    const Vector3 ab = b - a;
    const Line line = {a, ab, ab.sqLength(), crossProduct(up, ab), up};
    const int patch = mesh.label(start.triangle);
    int exit = findStart(line, start);
    for (int i = 0; i < MAX_STEPS && exit != NONE; ++i)
    {
        const Point3 place = crossing(line, exit);
        const double along = ((place - a) * ab) / line.sqLength;
        if (along >= 1.0 - ROUNDING)
            return endOn(line, HalfEdgeMesh::triangleOf(exit));
        if (along > ROUNDING)
        {
            const End end = judge(line, along, place, HalfEdgeMesh::triangleOf(exit));
            if (end != End::NEAR)
                return end;
        }
        const int g = mesh.partner(exit);
        if (g == NONE || mesh.label(HalfEdgeMesh::triangleOf(g)) != patch)
            return End::LOST;
        exit = sideOf(line, mesh.apex(g)) >= 0.0 ? HalfEdgeMesh::next(g) : HalfEdgeMesh::prev(g);
    }
    return End::LOST;
}

// The half-edge over which the line leaves t: from its right to its left, where what lies on it counts as
// left. There is one of these or none.
int EdgeTrace::exitOf(const Line& line, int t) const
{
    bool bLeft[3];
    for (int k = 0; k < 3; ++k)
        bLeft[k] = sideOf(line, mesh.from(4 * t + k)) >= 0.0;
    for (int k = 0; k < 3; ++k)
        if (!bLeft[k] && bLeft[(k + 1) % 3])
            return 4 * t + k;
    return NONE;
}

// A line that begins in a corner of the triangle may leave through another one there.
int EdgeTrace::findStart(const Line& line, const SurfacePlace& start) const
{
    const int exit = exitOf(line, start.triangle);
    if (exit != NONE && (crossing(line, exit) - line.a) * line.direction > ROUNDING * line.sqLength)
        return exit;
    int nearest = 4 * start.triangle;
    for (int h = nearest + 1; h < 4 * start.triangle + 3; ++h)
        if (sqDistance(mesh.point(mesh.from(h)), line.a) < sqDistance(mesh.point(mesh.from(nearest)), line.a))
            nearest = h;
    const int other = exitAtCorner(line, mesh.from(nearest), mesh.label(start.triangle));
    return other != NONE ? other : exit;
}

int EdgeTrace::exitAtCorner(const Line& line, int v, int patch) const
{
    int best = NONE;
    mesh.forEachOutgoing(v,
                         [&](int h)
                         {
                             if (best != NONE || mesh.label(HalfEdgeMesh::triangleOf(h)) != patch)
                                 return;
                             const int exit = exitOf(line, HalfEdgeMesh::triangleOf(h));
                             if (exit == HalfEdgeMesh::next(h) &&
                                 (crossing(line, exit) - line.a) * line.direction > 0.0)
                                 best = exit;
                         });
    return best;
}

Point3 EdgeTrace::crossing(const Line& line, int h) const
{
    const double right = sideOf(line, mesh.from(h));
    const double left = sideOf(line, mesh.to(h));
    const Point3& p = mesh.point(mesh.from(h));
    return p + (mesh.point(mesh.to(h)) - p) * (right / (right - left));
}

EdgeTrace::End EdgeTrace::judge(const Line& line, double along, const Point3& place, int t)
{
    const Point3 p = line.a + line.direction * along;
    if (sqDistance(p, place) <= sqTolerance)
        return End::NEAR;
    farthest = walker.nearest(p, t, std::sqrt(sqTolerance));
    return farthest.sqDist > sqTolerance ? End::FAR : End::LOST;
}

// Whether t lies under the end of the line.
EdgeTrace::End EdgeTrace::endOn(const Line& line, int t) const
{
    const Point3 b = line.a + line.direction;
    const Point3& base = mesh.point(mesh.from(4 * t));
    const Vector3 normal =
        unitOrNull(rawNormal(base, mesh.point(mesh.from(4 * t + 1)), mesh.point(mesh.from(4 * t + 2))));
    const double steep = normal * unitOrNull(line.up);
    const double height = ((b - base) * normal) / steep;
    return steep > COS_STEEP && height * height <= sqTolerance ? End::NEAR : End::LOST;
}

} // namespace TARN_ZEF

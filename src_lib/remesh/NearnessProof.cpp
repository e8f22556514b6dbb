#include "remesh/NearnessProof.h"

#include "remesh/triangles.h"

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
constexpr int MAX_DEPTH = 4;     // pieces as small as this are taken by their corners alone
constexpr double COS_FALL = 0.9; // between the normals of triangles whose planes count

bool shareVertex(const HalfEdgeMesh& mesh, int t, int u)
{
    for (int h = 4 * t; h < 4 * t + 3; ++h)
        for (int g = 4 * u; g < 4 * u + 3; ++g)
            if (mesh.from(h) == mesh.from(g))
                return true;
    return false;
}
} // namespace

bool NearnessProof::run(const std::array<Point3, 3>& corners, int hint)
{
    farthest = SurfacePlace();
    const Corner a = look(corners[0], hint);
    const Corner b = look(corners[1], a.place.triangle);
    const Corner c = look(corners[2], b.place.triangle);
    return prove({a, b, c}, 0);
}

NearnessProof::Corner NearnessProof::look(const Point3& p, int hint)
{
    const SurfacePlace place = walker.nearest(p, hint, tolerance);
    if (farthest.triangle == HalfEdgeMesh::NONE || place.sqDist > farthest.sqDist)
        farthest = place;
    return {p, place};
}

bool NearnessProof::isWithin(const Point3& p, int triangle) const
{
    return walker.sqDistanceTo(p, triangle) <= tolerance * tolerance;
}

bool NearnessProof::hasWitness(const Piece& piece) const
{
    for (std::size_t i = 0; i < piece.size(); ++i)
    {
        const int t = piece[i].place.triangle;
        if (isWithin(piece[(i + 1) % 3].point, t) && isWithin(piece[(i + 2) % 3].point, t))
            return true;
    }
    return false;
}

// Seen along one of the normals distances are larger than across, by the cosine at most.
bool NearnessProof::isNearPlanes(const Piece& piece) const
{
    const std::array<int, 3> triangles = {piece[0].place.triangle, piece[1].place.triangle,
                                          piece[2].place.triangle};
    std::array<Vector3, 3> normals;
    for (std::size_t i = 0; i < 3; ++i)
    {
        const int t = triangles[i];
        const Point3& base = mesh.point(mesh.from(4 * t));
        normals[i] =
            unitOrNull(rawNormal(base, mesh.point(mesh.from(4 * t + 1)), mesh.point(mesh.from(4 * t + 2))));
        for (const Corner& corner : piece)
            if (std::fabs((corner.point - base) * normals[i]) > COS_FALL * tolerance)
                return false;
    }
    for (std::size_t i = 0; i < 3; ++i)
        if (!(normals[i] * normals[(i + 1) % 3] > COS_FALL) ||
            !shareVertex(mesh, triangles[i], triangles[(i + 1) % 3]))
            return false;
    return true;
}

bool NearnessProof::prove(const Piece& piece, int depth)
{
    if (farthest.sqDist > tolerance * tolerance)
        return false;
    if (depth == MAX_DEPTH || hasWitness(piece) || isNearPlanes(piece))
        return true;
    std::array<Corner, 3> middles;
    for (std::size_t i = 0; i < piece.size(); ++i)
        middles[i] = look(middle(piece[i].point, piece[(i + 1) % 3].point), piece[i].place.triangle);
    return prove(middles, depth + 1) && prove({piece[0], middles[0], middles[2]}, depth + 1) &&
           prove({piece[1], middles[1], middles[0]}, depth + 1) &&
           prove({piece[2], middles[2], middles[1]}, depth + 1);
}

} // namespace TARN_ZEF

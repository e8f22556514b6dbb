#include "remesh/SizeField.h"

#include "remesh/triangles.h"

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
using Kind = HalfEdgeMesh::Kind;
constexpr double SIZE_SLOPE = 0.35;
constexpr double LEAST_SIZE = 0.08;    // in lengths
constexpr double SIZE_TOLERANCE = 0.8; // distances that sizes are made for, in tolerances
} // namespace

void SizeField::find()
{
    for (int v = 0; v < mesh.endVertices(); ++v)
        if (mesh.isAliveVertex(v) && mesh.kind(v) == Kind::FREE)
            work.vSize[v] = work.settings.length;
    shrinkByDistance();
    spread();
}

void SizeField::spread()
{
    for (int pass = 0; pass < 2; ++pass)
    {
        const int end = mesh.endVertices();
        for (int i = 0; i < end; ++i)
        {
            const int v = pass == 0 ? i : end - 1 - i;
            if (!mesh.isAliveVertex(v) || mesh.kind(v) != Kind::FREE)
                continue;
            mesh.forEachOutgoing(v,
                                 [&](int h)
                                 {
                                     if (work.vSize[mesh.to(h)] < work.vSize[v])
                                         work.vSize[v] =
                                             std::min(work.vSize[v],
                                                      work.vSize[mesh.to(h)] + SIZE_SLOPE * work.lengthOf(h));
                                 });
        }
    }
}

// How far an edge stands off its patch goes with the square of its length.
void SizeField::shrinkByDistance()
{
    const double allowed = SIZE_TOLERANCE * work.settings.tolerance;
    mesh.forEachEdge(
        [&](int h)
        {
            const int t = HalfEdgeMesh::triangleOf(h);
            if (mesh.feature(h) != 0 || work.patchOf(t).bFlat)
                return;
            const double len = work.lengthOf(h);
            const Point3 m = middle(mesh.point(mesh.from(h)), mesh.point(mesh.to(h)));
            const SurfacePlace place = work.walker.walk(m, work.vHint[t]);
            work.vHint[t] = place.triangle;
            const double off = std::sqrt(place.sqDist);
            if (off * work.settings.length * work.settings.length <= allowed * len * len)
                return;
            const double wanted = std::max(LEAST_SIZE * work.settings.length, len * std::sqrt(allowed / off));
            for (const int v : {mesh.from(h), mesh.to(h)})
                if (mesh.kind(v) == Kind::FREE)
                    work.vSize[v] = std::min(work.vSize[v], wanted);
        });
}

} // namespace TARN_ZEF

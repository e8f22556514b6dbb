#include "remesh/WorkSurface.h"

#include "core/largeVectors.h"
#include "remesh/triangles.h"

#include <algorithm>

namespace TARN_ZEF
{
namespace
{
constexpr int NONE = HalfEdgeMesh::NONE;
constexpr double COS_SPLIT = 0.5;   // between the normals of a triangle before and after
constexpr double SIZE_SLOPE = 0.35; // of sizes, in units of the distance
} // namespace

WorkSurface::WorkSurface(const SourceSurface& source_, const RemeshSettings& settings_)
    : source(source_)
    , settings(settings_)
    , walker(source_.getMesh())
    , mesh(source_.getMesh())
    , vSize(mesh.endVertices(), settings_.length)
    , vHint(mesh.endTriangles())
{
    for (int t = 0; t < mesh.endTriangles(); ++t)
        vHint[t] = t;
}

Vector3 WorkSurface::normalOf(int t) const
{
    return unitOrNull(rawNormal(mesh.point(mesh.from(4 * t)), mesh.point(mesh.from(4 * t + 1)),
                                mesh.point(mesh.from(4 * t + 2))));
}

double WorkSurface::lengthOf(int h) const
{
    return (mesh.point(mesh.to(h)) - mesh.point(mesh.from(h))).length();
}

Point3 WorkSurface::onPatch(const Point3& p, int t, double far, int* pTriangle) const
{
    const Patch& patch = patchOf(t);
    *pTriangle = vHint[t];
    if (patch.bExact)
        return p + patch.normal * -((p - patch.base) * patch.normal);
    const SurfacePlace place = walker.nearest(p, vHint[t], far);
    *pTriangle = place.triangle;
    return place.point;
}

double WorkSurface::sqDistanceFromPatch(const Point3& p, int t) const
{
    if (patchOf(t).bFlat)
        return 0.0;
    return walker.walk(p, vHint[t]).sqDist;
}

void WorkSurface::makeRoom()
{
    mesh.makeRoomToSplit();
    makeRoomFor(vHint, 2);
    makeRoomFor(vSize);
}

int WorkSurface::split(int h, const Point3& p, int sourceTriangle)
{
    const int m = mesh.split(h, p);
    vHint.resize(mesh.endTriangles(), 0);
    vSize.resize(mesh.endVertices(), settings.length);
    const int piece = mesh.outgoing(m);
    const auto handOn = [&](int fresh, int old)
    {
        if (sourceTriangle != NONE)
            vHint[old] = sourceTriangle;
        vHint[fresh] = vHint[old];
    };
    handOn(HalfEdgeMesh::triangleOf(piece), HalfEdgeMesh::triangleOf(h));
    if (!mesh.isBorder(h))
        handOn(HalfEdgeMesh::triangleOf(mesh.partner(piece)), HalfEdgeMesh::triangleOf(mesh.partner(h)));
    return m;
}

int WorkSurface::splitInMiddle(int h)
{
    const int t = HalfEdgeMesh::triangleOf(h);
    const int g = mesh.partner(h);
    const Point3& a = mesh.point(mesh.from(h));
    const Point3& b = mesh.point(mesh.to(h));
    int place = NONE;
    const Point3 m = onPatch(middle(a, b), t, lengthOf(h), &place);
    for (const int side : {h, g})
    {
        const Point3& c = mesh.point(mesh.apex(side));
        const Vector3 before = normalOf(HalfEdgeMesh::triangleOf(side));
        const Vector3 first = rawNormal(mesh.point(mesh.from(side)), m, c);
        const Vector3 second = rawNormal(m, mesh.point(mesh.to(side)), c);
        if (!(before * first > COS_SPLIT * first.length()) ||
            !(before * second > COS_SPLIT * second.length()))
            return NONE;
    }
    const double half = SIZE_SLOPE * 0.5 * lengthOf(h);
    const double size = std::min({settings.length, vSize[mesh.from(h)] + half, vSize[mesh.to(h)] + half});
    const int v = split(h, m, place);
    vSize[v] = size;
    return v;
}

} // namespace TARN_ZEF

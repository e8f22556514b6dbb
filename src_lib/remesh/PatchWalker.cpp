#include "remesh/PatchWalker.h"

#include "core/cancel.h"
#include "remesh/triangles.h"

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
constexpr int MAX_STEPS = 1000;
constexpr double WIDER = 4.0;
} // namespace

SurfacePlace PatchWalker::walk(const Point3& p, int startTriangle) const
{
    checkCancelled();
    SurfacePlace place{startTriangle, mesh.point(mesh.from(4 * startTriangle)), DBL_MAX};
    int edge = -1;
    int corner = -1;
    static_cast<void>(tryTriangle(p, startTriangle, place, edge, corner));
    for (int i = 0; i < MAX_STEPS && step(p, place, edge, corner); ++i)
    {
    }
    return place;
}

SurfacePlace PatchWalker::nearest(const Point3& p, int startTriangle, double far) const
{
    SurfacePlace place = walk(p, startTriangle);
    if (place.sqDist > far * far)
        askTree(p, far, place);
    return place;
}

double PatchWalker::sqDistanceTo(const Point3& p, int t) const
{
    return nearestOnTriangle(p, mesh.point(mesh.from(4 * t)), mesh.point(mesh.from(4 * t + 1)),
                             mesh.point(mesh.from(4 * t + 2)))
        .sqDist;
}

bool PatchWalker::tryTriangle(const Point3& p, int t, SurfacePlace& place, int& edge, int& corner) const
{
    const NearestOnTriangle found = nearestOnTriangle(
        p, mesh.point(mesh.from(4 * t)), mesh.point(mesh.from(4 * t + 1)), mesh.point(mesh.from(4 * t + 2)));
    if (!(found.sqDist < place.sqDist))
        return false;
    place = {t, found.point, found.sqDist};
    edge = found.edge;
    corner = found.corner;
    return true;
}

// To a better triangle behind the edge or round the corner that is nearest; false if there is none.
bool PatchWalker::step(const Point3& p, SurfacePlace& place, int& edge, int& corner) const
{
    const int t = place.triangle;
    const int patch = mesh.label(t);
    if (edge >= 0)
    {
        const int g = mesh.partner(4 * t + edge);
        return g != HalfEdgeMesh::NONE && mesh.label(HalfEdgeMesh::triangleOf(g)) == patch &&
               tryTriangle(p, HalfEdgeMesh::triangleOf(g), place, edge, corner);
    }
    if (corner < 0)
        return false;
    bool bBetter = false;
    mesh.forEachOutgoing(mesh.from(4 * t + corner),
                         [&](int h)
                         {
                             const int u = HalfEdgeMesh::triangleOf(h);
                             if (u != t && mesh.label(u) == patch && tryTriangle(p, u, place, edge, corner))
                                 bBetter = true;
                         });
    return bBetter;
}

void PatchWalker::fillTree() const
{
    pTree = std::make_unique<TARN_LOCATE3::RTree>();
    for (int t = 0; t < mesh.endTriangles(); ++t)
        if (mesh.isAlive(t))
            vTreeTriangles.push_back(t);
    for (int& t : vTreeTriangles)
    {
        Box box;
        for (int h = 4 * t; h < 4 * t + 3; ++h)
        {
            const Point3& c = mesh.point(mesh.from(h));
            box.include({c.x(), c.y(), c.z(), c.x(), c.y(), c.z()});
        }
        pTree->addObject(&t, box.xmin, box.ymin, box.zmin, box.xmax, box.ymax, box.zmax);
    }
    pTree->build();
}

// In boxes that grow until one holds the nearest place.
void PatchWalker::askTree(const Point3& p, double near, SurfacePlace& place) const
{
    if (!pTree)
        fillTree();
    const int patch = mesh.label(place.triangle);
    std::vector<void*> vFound;
    int edge = -1;
    int corner = -1;
    for (double d = std::min(near, std::sqrt(place.sqDist));; d *= WIDER)
    {
        vFound.clear();
        pTree->query(vFound, {p.x() - d, p.y() - d, p.z() - d, p.x() + d, p.y() + d, p.z() + d});
        for (const void* pTriangle : vFound)
        {
            const int t = *static_cast<const int*>(pTriangle);
            if (mesh.label(t) == patch)
                static_cast<void>(tryTriangle(p, t, place, edge, corner));
        }
        if (place.sqDist <= d * d)
            return;
    }
}

} // namespace TARN_ZEF

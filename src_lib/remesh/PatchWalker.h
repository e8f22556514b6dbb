#ifndef ZEF_PATCHWALKER_H
#define ZEF_PATCHWALKER_H

#include "surface/HalfEdgeMesh.h"
#include "tarn_locate3/RTree.h"

#include <memory>
#include <vector>

namespace TARN_ZEF
{
// A place on a surface.
struct SurfacePlace
{
    int triangle = HalfEdgeMesh::NONE;
    Point3 point;
    double sqDist = 0.0; // from the point that was asked for
};

// Finds the nearest place on one patch of a surface, that is on triangles of one label: the nearest place of all
// would jump to other sheets and to parts that touch. It walks from triangle to triangle; a tree of all triangles is
// asked only where the walk ends farther away than it should.
//
// Ownership:  refers to the mesh, which must not change while the walker is in use.
// Threads:    walks may run at the same time; questions to the tree not.
class PatchWalker
{
public:
    explicit PatchWalker(const HalfEdgeMesh& mesh_)
        : mesh(mesh_)
    {
    }

    // The nearest place downhill from a triangle.
    [[nodiscard]] SurfacePlace walk(const Point3& p, int startTriangle) const;
    // The same, but with the tree's answer where that is farther away than `far`, above 0.
    [[nodiscard]] SurfacePlace nearest(const Point3& p, int startTriangle, double far) const;

private:
    [[nodiscard]] bool step(const Point3& p, SurfacePlace& place, int& edge, int& corner) const;
    [[nodiscard]] bool tryTriangle(const Point3& p, int t, SurfacePlace& place, int& edge, int& corner) const;
    void fillTree() const;
    void askTree(const Point3& p, double near, SurfacePlace& place) const;

    const HalfEdgeMesh& mesh;
    mutable std::unique_ptr<TARN_LOCATE3::RTree> pTree;
    mutable std::vector<int> vTreeTriangles; // the tree's objects
};

} // namespace TARN_ZEF

#endif

#ifndef ZEF_WORKSURFACE_H
#define ZEF_WORKSURFACE_H

#include "geometry/tools.h"
#include "remesh/PatchWalker.h"
#include "remesh/SourceSurface.h"
#include "surface/HalfEdgeMesh.h"

#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
struct RemeshSettings
{
    double length = 1.0;
    double tolerance = 0.02; // in units of the points
    bool bGraded = true;     // smaller triangles where features are nearer than the length
    int maxTriangles = 0;    // of the result
};

// The mesh that is worked on, beside the surface it came from. The steps of remeshing share it: each of them changes
// the mesh and keeps what is noted beside it.
//
// Invariant:  a FREE vertex lies on its patch of the source; FIXED ones on their chain. CHAIN vertices are those of
//             the source that are to vanish.
class WorkSurface
{
public:
    WorkSurface(const SourceSurface& source_, const RemeshSettings& settings_);

    [[nodiscard]] const Patch& patchOf(int t) const { return source.getPatches()[mesh.label(t)]; }
    [[nodiscard]] Vector3 normalOf(int t) const;
    [[nodiscard]] double lengthOf(int h) const;
    [[nodiscard]] bool isShorter(int h, double length) const
    {
        return sqDistance(mesh.point(mesh.from(h)), mesh.point(mesh.to(h))) < length * length;
    }
    [[nodiscard]] double sizeOf(int h) const { return 0.5 * (vSize[mesh.from(h)] + vSize[mesh.to(h)]); }
    // Whether there are so many triangles that no collapse will bring them back to those asked for at most.
    [[nodiscard]] bool isFull() const
    {
        return mesh.getNumTriangles() >
               static_cast<std::int64_t>(settings.maxTriangles) + source.getMesh().getNumTriangles();
    }
    // The place of the source nearest to p, on the patch of t. far: how far away it may be before the tree is asked.
    // *pTriangle gets the triangle of the source, for vHint.
    [[nodiscard]] Point3 onPatch(const Point3& p, int t, double far, int* pTriangle) const;
    [[nodiscard]] double sqDistanceFromPatch(const Point3& p, int t) const;
    [[nodiscard]] bool isNearPatch(const Point3& p, int t) const
    {
        return sqDistanceFromPatch(p, t) <= settings.tolerance * settings.tolerance;
    }

    // For one split to come.
    void makeRoom();
    // Splits an edge at a place. The new triangles lie where the old ones lay, or at sourceTriangle if that is told.
    int split(int h, const Point3& p, int sourceTriangle = HalfEdgeMesh::NONE);
    // In the middle, on the patch. Returns the new vertex, or NONE where a triangle would fold.
    int splitInMiddle(int h);

    const SourceSurface& source;
    const RemeshSettings settings;
    const PatchWalker walker;
    HalfEdgeMesh mesh;
    std::vector<double> vSize; // wanted edge length at a vertex
    std::vector<int> vHint;    // a triangle of the source near each triangle, of the same patch
};

} // namespace TARN_ZEF

#endif

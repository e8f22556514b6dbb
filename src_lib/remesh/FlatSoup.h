// The page of the room "remesh": a triangle soup comes in, a mesh of even triangles on the same surface goes
// out. All is flat data and HalfEdgeMesh; the room knows no lattice, no CMesh and no RMesh.
//
// The way: SoupWelder makes one indexed soup of the corners; BodyParter parts it into oriented manifold
// sheets; PartTurner turns closed parts outward; SourceSurface finds the features and keeps the surface as
// it came; Remesher works on a copy.
#ifndef ZEF_FLATSOUP_H
#define ZEF_FLATSOUP_H

#include "Point3.h"

#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
// Indexed triangles: three consecutive corners are one. Corner 3t + k is also the edge from it to the next
// corner of triangle t.
struct FlatSoup
{
    std::vector<Point3> vPoints;
    std::vector<int> vCorners;

    [[nodiscard]] int numTriangles() const { return static_cast<int>(vCorners.size() / 3); }
    [[nodiscard]] const Point3& pointOf(int c) const { return vPoints[vCorners[c]]; }
    [[nodiscard]] static int next(int c) { return c % 3 == 2 ? c - 2 : c + 1; }
    [[nodiscard]] static int prev(int c) { return c % 3 == 0 ? c + 2 : c - 1; }
};

} // namespace TARN_ZEF

#endif

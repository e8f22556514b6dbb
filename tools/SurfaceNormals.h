#ifndef ZEF_TOOLS_SURFACENORMALS_H
#define ZEF_TOOLS_SURFACENORMALS_H

#include "Vec3f.h"

#include <cstddef>
#include <vector>

namespace TARN_TOOL
{
// The directions in which a mesh faces, for shading.
//
// Ownership:  the corners outlive it.
// Cost:       linear; a few bytes for each corner.
class SurfaceNormals
{
public:
    // Three entries of vCorners_ are one triangle.
    SurfaceNormals(const std::vector<Vec3f>& vPoints, const std::vector<int>& vCorners_);

    // Of a corner, entry i of the corners: the mean of the triangles around that lean less than a crease against the
    // corner's own, so that sharp edges look sharp.
    [[nodiscard]] Vec3f getCornerNormal(std::size_t i) const;
    // The sum of the area vectors by the area: near length 1 for an open sheet, 0 for a closed surface.
    [[nodiscard]] Vec3f getMean() const;

private:
    const std::vector<int>& vCorners;
    std::vector<Vec3f> vAreas;       // of each triangle: its normal, as long as twice its area
    std::vector<std::size_t> vBegin; // vTriangles[vBegin[v] .. vBegin[v + 1]) are those of vertex v
    std::vector<int> vTriangles;
};

} // namespace TARN_TOOL

#endif

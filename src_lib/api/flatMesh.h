// Between the finished mesh of the public calls and the points and corner indices that the rooms below work on. Three
// consecutive corners are one triangle.
#ifndef ZEF_API_FLATMESH_H
#define ZEF_API_FLATMESH_H

#include "Mesh.h"
#include "Point3.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace TARN_ZEF
{
// Replaces both. The triangles stand in the order of Mesh::getTriangles().
void getFlat(const Mesh& mesh, std::vector<Point3>& vPoints, std::vector<int>& vCorners);

// cellSize: in units of the points; the lengths of post-processing are measured by it
[[nodiscard]] std::shared_ptr<Mesh> makeMesh(std::vector<Point3> vPoints, std::vector<std::uint32_t> vCorners,
                                             double cellSize);

} // namespace TARN_ZEF

#endif

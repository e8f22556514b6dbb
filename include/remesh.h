#ifndef ZEF_REMESH_H
#define ZEF_REMESH_H

#include "Mesh.h"
#include "Point3.h"
#include "RemeshOptions.h"
#include "zef_export.h"

#include <memory>
#include <vector>

namespace TARN_ZEF
{
// Remeshes a triangle soup on its own surface: sharp edges, corners and borders stay where they are, the faces between
// them get even triangles, and each part of the soup becomes one manifold that faces outward. Parts, handles and cavities
// stay as they are; or, with bOuter, the hull of all parts comes out alone. melt() makes another mesh of the same soup, from cells of a lattice.
//
// vTriCorners  three consecutive entries are one triangle, in any order and turned in any way. Read, never changed
// pReport      if not null, gets what was found and done
// Returns      the mesh, or an empty pointer, with a warning, if no triangle has a height; test it
// Throws       ZefBadArgument for options that getFault() complains about, a number of corners that 3 does not divide,
//              more than 2^29 triangles, extents outside 1e-100 to 1e100, and where more than
//              maxTriangles would come out
// Vertices     where bodies touch in an edge or a corner, each has vertices of its own at the same place
// Threads      runs on the caller's thread; the result is the same in every run and on every system
[[nodiscard]] ZEF_API std::shared_ptr<Mesh> remesh(const std::vector<Point3>& vTriCorners,
                                                   const RemeshOptions& options = RemeshOptions(),
                                                   RemeshReport* pReport = nullptr);

} // namespace TARN_ZEF

#endif

// Which point of a cloud each vertex of its mesh stands for, so that colours and other attributes can follow.
//
//     const std::vector<std::int64_t> vSources = findSourcePoints(*pMesh, vCloud);
//     colorOfVertex[i] = colorOfPoint[vSources[i]];
#ifndef ZEF_SOURCEPOINTS_H
#define ZEF_SOURCEPOINTS_H

#include "Point3.h"
#include "zef_export.h"

#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
class Mesh;

// The nearest point of the cloud to each place: its index; of several that are as near, the first. -1 for a place
// that is not finite, and if the cloud has no finite point; other points of the cloud that are not finite are passed
// over.
//
// Returns    the same for every number of threads
// Throws     ZefBadArgument if places and cloud together have an extent outside 1e-100 to 1e100
// Threads    runs on the caller's thread and the pool
// Cost       about a second of processor time for a million points, and 40 bytes for each
[[nodiscard]] ZEF_API std::vector<std::int64_t> findSourcePoints(const std::vector<Point3>& vPlaces,
                                                                 const std::vector<Point3>& vCloud);

// The same for the vertices of a mesh, in the order of Mesh::getVertexIndexData().
[[nodiscard]] ZEF_API std::vector<std::int64_t> findSourcePoints(const Mesh& mesh,
                                                                 const std::vector<Point3>& vCloud);

} // namespace TARN_ZEF

#endif

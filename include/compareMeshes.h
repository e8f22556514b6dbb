// How far two surfaces are apart.
//
//     const MeshComparison found = compareMeshes(*pMesh, *pReference);
//     report("farthest", found.toFirst.largest, found.toFirst.largestPlace);
#ifndef ZEF_COMPAREMESHES_H
#define ZEF_COMPAREMESHES_H

#include "Point3.h"
#include "zef_export.h"

#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
class Mesh;

struct CompareOptions
{
    // Places on each surface that are measured, evenly by area. More find the farthest place more surely.
    std::size_t numSamples = 200'000;
};

// The distances from one surface to the other: from each place to whatever is nearest there, be it the wrong side of
// a thin wall. In units of the points.
struct SurfaceDistances
{
    std::size_t numSamples = 0;
    // Over the samples, thus by area.
    double mean = 0.0;
    double rms = 0.0;          // root of the mean square
    double percentile99 = 0.0; // 99 % are no farther
    // Over samples and vertices.
    double largest = 0.0;
    Point3 largestPlace;   // on the surface that is measured
    Point3 nearestToThere; // on the other one

    // Of each point of the measured surface, whether triangles use it or not; NaN for one that is not finite.
    std::vector<double> vAtPoints;
};

struct MeshComparison
{
    SurfaceDistances toSecond; // measured on the first, to the second
    SurfaceDistances toFirst;  // measured on the second, to the first
};

// Compares both ways: a part that only one of the surfaces has shows in one of them alone.
//
// Triangles with a corner that is not finite are left out; those without area are lines or points.
// Returns    the same for every number of threads; twice the lengths give twice the distances
// Throws     ZefBadArgument if the number of corners is no multiple of 3, or a corner is no index of a point; if a
//            surface has no triangle with finite corners, or extents are outside 1e-100 to 1e100; if numSamples is 0
// Threads    runs on the caller's thread and the pool
// Cost       some five microseconds of processor time for each sample and each point, and 100 bytes for each triangle
[[nodiscard]] ZEF_API MeshComparison compareMeshes(const std::vector<Point3>& vFirstPoints,
                                                   const std::vector<int>& vFirstCorners,
                                                   const std::vector<Point3>& vSecondPoints,
                                                   const std::vector<int>& vSecondCorners,
                                                   const CompareOptions& options = CompareOptions());

// The same for finished meshes; points are those of Mesh::getVertexIndexData().
[[nodiscard]] ZEF_API MeshComparison compareMeshes(const Mesh& first, const Mesh& second,
                                                   const CompareOptions& options = CompareOptions());

} // namespace TARN_ZEF

#endif

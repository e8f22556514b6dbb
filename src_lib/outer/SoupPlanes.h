#ifndef ZEF_SOUPPLANES_H
#define ZEF_SOUPPLANES_H

#include "Point3.h"
#include "Vector3.h"

#include <vector>

namespace TARN_ZEF
{
// Where a surface shows on an edge of the lattice: a place, and the plane there if a triangle passes.
struct EdgeSample
{
    Point3 point;
    Vector3 normal; // of length 1, or null
    int triangle = -1;
};

// What a vertex of the hull stands on.
struct HullVertex
{
    Point3 point;
    Point3 spare; // a place in its own cell, for the case that others stand at the same point
    int rank = 1; // 1 on a face, 2 on a crease, 3 in a corner
};

// Puts one vertex where the planes of the samples meet: in a corner, on a crease or on a face, by how these turn to
// one another.
//
// centre  of the cell; the vertex stays within `reach` of it along each axis, where the planes allow
// Source  T. Ju et al., Dual contouring of hermite data, 2002; here each direction counts once, however many samples
//         have it, and the number of directions is told by angles.
[[nodiscard]] HullVertex placeOnPlanes(const std::vector<EdgeSample>& vSamples, const Point3& centre,
                                       double reach);

} // namespace TARN_ZEF

#endif

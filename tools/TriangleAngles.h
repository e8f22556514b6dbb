#ifndef ZEF_TOOLS_TRIANGLEANGLES_H
#define ZEF_TOOLS_TRIANGLEANGLES_H

#include "zef.h"

#include <cstddef>

namespace TARN_TOOL
{
// How even the triangles of a mesh are: every triangle counts with the smallest of its three angles, 60
// degrees at best.
struct TriangleAngles
{
    std::size_t numTriangles = 0;
    double smallest = 0.0; // of all triangles, in degrees
    double mean = 0.0;     // over the triangles, in degrees

    TriangleAngles() = default;
    // One pass over the triangles.
    explicit TriangleAngles(const TARN_ZEF::Mesh& mesh);
};

} // namespace TARN_TOOL

#endif

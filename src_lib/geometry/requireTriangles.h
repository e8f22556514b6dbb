#ifndef ZEF_GEOMETRY_REQUIRETRIANGLES_H
#define ZEF_GEOMETRY_REQUIRETRIANGLES_H

#include "core/refuse.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// Refuses corner indices that are not triangles of so many points: three in a row are one, each below numPoints.
// Throws ZefBadArgument.
template <typename Index>
void requireTriangles(std::size_t numPoints, const std::vector<Index>& vCorners)
{
    if (vCorners.size() % 3 != 0)
        refuse<ZefBadArgument>("three corners for each triangle",
                               std::to_string(vCorners.size()) +
                                   " triangle corners are not a multiple of 3; give three for each triangle");
    const auto it = std::find_if(vCorners.begin(), vCorners.end(),
                                 [numPoints](Index corner)
                                 { return std::cmp_less(corner, 0) || !std::cmp_less(corner, numPoints); });
    if (it != vCorners.end())
        refuse<ZefBadArgument>("each corner is the index of a point",
                               "corner " + std::to_string(it - vCorners.begin()) + " is " +
                                   std::to_string(*it) + ", which is no index of one of the " +
                                   std::to_string(numPoints) + " points");
}

} // namespace TARN_ZEF

#endif

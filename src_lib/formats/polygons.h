// Faces of many corners.
#ifndef ZEF_POLYGONS_H
#define ZEF_POLYGONS_H

#include "zef_formats.h"

#include <cstdint>
#include <span>
#include <vector>

namespace TARN_ZEF
{
// Appends the n - 2 triangles of a face of n corners, which face as the face does. A convex one becomes the fan
// about its first corner; a concave one is cut ear by ear, which is right if it is about plane and does not
// cross itself. What has no area or no finite corners becomes the fan too. Fewer than three corners are none.
//
// polygon  indices into vPoints
// Cost     of a convex face linear, of a concave one at most cubic; past MAX_EARS corners always the fan
void appendPolygon(const std::vector<Point3>& vPoints, std::span<const std::uint32_t> polygon,
                   std::vector<std::uint32_t>& vCorners);

// Tells in data that so many faces of fewer than three corners were left out.
void noteSmallFaces(TriangleData& data, std::uint64_t num);

inline constexpr std::size_t MAX_EARS = 2000;

} // namespace TARN_ZEF

#endif

#ifndef ZEF_TOOLS_MESHCURVATURE_H
#define ZEF_TOOLS_MESHCURVATURE_H

#include "Point3.h"

#include <vector>

namespace TARN_TOOL
{
// The mean curvature of a mesh at each point, in one over the unit of the points: 1 / r on a ball of radius r, above
// 0 where the surface bulges to its front, below 0 where it is hollow.
//
// Each edge bends by the angle between its two triangles; a vertex takes half of what its edges bend, each times its
// length, by the third of the area around it that is its own (Steiner 1840; Cohen-Steiner, Morvan 2003). Both are summed
// over each vertex and its neighbours: alone, a vertex of few triangles would seem to bend more. Borders and
// edges of more than two triangles, or of triangles that face opposite sides, bend nothing. NaN where there is no area.
[[nodiscard]] std::vector<double> findCurvatures(const std::vector<TARN_ZEF::Point3>& vPoints,
                                                 const std::vector<int>& vCorners);

} // namespace TARN_TOOL

#endif

#ifndef ZEF_REMESH_SAMEPLACES_H
#define ZEF_REMESH_SAMEPLACES_H

#include "Point3.h"

#include <vector>

namespace TARN_ZEF
{
// For each point the first one with equal coordinates.
[[nodiscard]] std::vector<int> findSamePlaces(const std::vector<Point3>& vPoints);

} // namespace TARN_ZEF

#endif

#ifndef ZEF_COORDINATEFORM_H
#define ZEF_COORDINATEFORM_H

#include "Point3.h"

#include <vector>

namespace TARN_ZEF
{
// Whether floats may stand for the coordinates: where they tell a thousandth of the spacing, or, without one (0.0),
// where they are exactly the same.
[[nodiscard]] bool areFloatsEnough(const std::vector<Point3>& vPoints, double spacing);

} // namespace TARN_ZEF

#endif

#ifndef ZEF_FINISH_DIRECTIONS_H
#define ZEF_FINISH_DIRECTIONS_H

#include "Vector3.h"

#include <cmath>

namespace TARN_ZEF
{
// Of length 1; null for a null vector.
[[nodiscard]] inline Vector3 getUnit(const Vector3& v)
{
    const double length = v.length();
    return length > 0.0 ? v / length : Vector3();
}

// Cosine of the angle between vectors of any length; 1 if one of them is null.
[[nodiscard]] inline double getCosine(const Vector3& a, const Vector3& b)
{
    const double lengths = std::sqrt(a.sqLength() * b.sqLength());
    return lengths > 0.0 ? a * b / lengths : 1.0;
}

} // namespace TARN_ZEF

#endif

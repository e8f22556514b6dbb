#ifndef ZEF_FLATTESTDIRECTION_H
#define ZEF_FLATTESTDIRECTION_H

#include "Vector3.h"

namespace TARN_ZEF
{
// Second moments of vectors.
struct SymmetricMatrix
{
    double a[3][3] = {};

    void addSquareOf(const Vector3& v);
};

// The direction, of length 1, in which the vectors of the moments spread least; spread is the sum of their squares
// along it. By turns after Jacobi (1846): plus, times and roots alone, the same on every machine.
[[nodiscard]] Vector3 flattestDirection(SymmetricMatrix moments, double& spread);

} // namespace TARN_ZEF

#endif

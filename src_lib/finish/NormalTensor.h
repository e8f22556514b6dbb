#ifndef ZEF_FINISH_NORMALTENSOR_H
#define ZEF_FINISH_NORMALTENSOR_H

#include "Vector3.h"

#include <array>

namespace TARN_ZEF
{
// The sum of n n^T over normals n, each with its weight: tells in which directions a surface has shape. On a smooth
// place one direction stands out, on a crease two, in a corner three.
class NormalTensor
{
public:
    // v: normal of any length; counts with its length.
    void add(const Vector3& v) noexcept;
    // What remains of v without the directions that hold more than the given share of the strongest one.
    [[nodiscard]] Vector3 getSmallPart(const Vector3& v, double share) const noexcept;
    // The shortest x with (sum of n n^T) x = right; directions below that share of the strongest one count as empty.
    [[nodiscard]] Vector3 solve(const Vector3& right, double share) const noexcept;

private:
    using Matrix = std::array<std::array<double, 3>, 3>;
    // Turns m into its eigenvalues on the diagonal; the columns of axes are the eigenvectors.
    static void diagonalize(Matrix& m, Matrix& axes) noexcept;

    Matrix m = {};
};

} // namespace TARN_ZEF

#endif

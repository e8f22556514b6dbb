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
    void add(const Vector3& v) noexcept { add(v, v.length()); }
    void add(const Vector3& v, double length) noexcept
    {
        if (!(length > 0.0))
            return;
        const double share = 1.0 / length;
        xx += v.x() * v.x() * share;
        xy += v.x() * v.y() * share;
        xz += v.x() * v.z() * share;
        yy += v.y() * v.y() * share;
        yz += v.y() * v.z() * share;
        zz += v.z() * v.z() * share;
    }
    // What remains of v without the directions that hold more than the given share of the strongest one.
    [[nodiscard]] Vector3 getSmallPart(const Vector3& v, double share) const noexcept;
    // The shortest x with (sum of n n^T) x = right; directions below that share of the strongest one count as empty.
    [[nodiscard]] Vector3 solve(const Vector3& right, double share) const noexcept;

private:
    using Matrix = std::array<std::array<double, 3>, 3>;
    [[nodiscard]] NormalTensor getScaled(double factor) const noexcept;
    [[nodiscard]] NormalTensor getSquare() const noexcept;
    [[nodiscard]] Vector3 apply(const Vector3& v) const noexcept;
    [[nodiscard]] double getTrace() const noexcept { return xx + yy + zz; }
    // The eigenvalues end on the diagonal of the first; the columns of the second are the eigenvectors.
    void diagonalize(Matrix& values, Matrix& axes) const noexcept;

    double xx = 0.0;
    double xy = 0.0;
    double xz = 0.0;
    double yy = 0.0;
    double yz = 0.0;
    double zz = 0.0;
};

} // namespace TARN_ZEF

#endif

#include "finish/NormalTensor.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace TARN_ZEF
{
namespace
{
// Squared so often, a matrix has lost all but its strongest direction if the others hold a fifth of it at most.
constexpr int NUM_SQUARINGS = 5;
constexpr int NUM_SWEEPS = 8;
} // namespace

// The sum of the squared eigenvalues over the squared trace is at most the share of the strongest one: on most places
// it tells that there is one strong direction.
Vector3 NormalTensor::getSmallPart(const Vector3& v, double share) const noexcept
{
    const double trace = getTrace();
    if (!(trace > 0.0))
        return v;
    NormalTensor power = getScaled(1.0 / trace).getSquare();
    constexpr double weakest = 0.2;
    if (power.getTrace() * (1.0 + std::min(share, weakest)) > 1.0)
    {
        for (int i = 1; i < NUM_SQUARINGS; ++i)
            power = power.getSquare();
        return v + power.apply(v) * (-1.0 / power.getTrace());
    }
    Matrix values = {};
    Matrix axes = {};
    diagonalize(values, axes);
    const double limit = share * std::max({values[0][0], values[1][1], values[2][2]});
    Vector3 result = v;
    for (std::size_t i = 0; i < 3; ++i)
    {
        if (values[i][i] <= limit)
            continue;
        const Vector3 axis(axes[0][i], axes[1][i], axes[2][i]);
        result.sub(axis * (v * axis));
    }
    return result;
}

Vector3 NormalTensor::solve(const Vector3& right, double share) const noexcept
{
    Matrix values = {};
    Matrix axes = {};
    diagonalize(values, axes);
    const double limit = share * std::max({values[0][0], values[1][1], values[2][2]});
    Vector3 result;
    for (std::size_t i = 0; i < 3; ++i)
    {
        if (!(values[i][i] > limit))
            continue;
        const Vector3 axis(axes[0][i], axes[1][i], axes[2][i]);
        result.add(axis * (right * axis / values[i][i]));
    }
    return result;
}

NormalTensor NormalTensor::getScaled(double factor) const noexcept
{
    NormalTensor result = *this;
    for (double* pValue : {&result.xx, &result.xy, &result.xz, &result.yy, &result.yz, &result.zz})
        *pValue *= factor;
    return result;
}

NormalTensor NormalTensor::getSquare() const noexcept
{
    NormalTensor result;
    result.xx = xx * xx + xy * xy + xz * xz;
    result.xy = xx * xy + xy * yy + xz * yz;
    result.xz = xx * xz + xy * yz + xz * zz;
    result.yy = xy * xy + yy * yy + yz * yz;
    result.yz = xy * xz + yy * yz + yz * zz;
    result.zz = xz * xz + yz * yz + zz * zz;
    return result;
}

Vector3 NormalTensor::apply(const Vector3& v) const noexcept
{
    return {xx * v.x() + xy * v.y() + xz * v.z(), xy * v.x() + yy * v.y() + yz * v.z(),
            xz * v.x() + yz * v.y() + zz * v.z()};
}

// Cyclic Jacobi rotations: columns p and q first, then, of what came out, the rows.
void NormalTensor::diagonalize(Matrix& values, Matrix& axes) const noexcept
{
    values = {{{xx, xy, xz}, {xy, yy, yz}, {xz, yz, zz}}};
    axes = {{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}};
    bool bRotated = true;
    for (int sweep = 0; sweep < NUM_SWEEPS && bRotated; ++sweep)
    {
        bRotated = false;
        for (const auto& [p, q] : {std::pair<std::size_t, std::size_t>{0, 1}, {0, 2}, {1, 2}})
        {
            if (std::fabs(values[p][q]) <= 1e-15 * (std::fabs(values[p][p]) + std::fabs(values[q][q])))
                continue;
            bRotated = true;
            const double theta = (values[q][q] - values[p][p]) / (2.0 * values[p][q]);
            const double t =
                (theta >= 0.0 ? 1.0 : -1.0) / (std::fabs(theta) + std::sqrt(theta * theta + 1.0));
            const double c = 1.0 / std::sqrt(t * t + 1.0);
            const double s = t * c;
            const auto rotate = [c, s](double& a, double& b)
            {
                const double old = a;
                a = c * old - s * b;
                b = s * old + c * b;
            };
            for (std::size_t k = 0; k < 3; ++k)
            {
                rotate(values[k][p], values[k][q]);
                rotate(axes[k][p], axes[k][q]);
            }
            for (std::size_t k = 0; k < 3; ++k)
                rotate(values[p][k], values[q][k]);
        }
    }
}

} // namespace TARN_ZEF

#include "finish/NormalTensor.h"

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
void NormalTensor::add(const Vector3& v) noexcept
{
    const double length = v.length();
    if (!(length > 0.0))
        return;
    const std::array<double, 3> n = {v.x(), v.y(), v.z()};
    for (std::size_t i = 0; i < 3; ++i)
        for (std::size_t k = 0; k < 3; ++k)
            m[i][k] += n[i] * n[k] / length;
}

Vector3 NormalTensor::getSmallPart(const Vector3& v, double share) const noexcept
{
    Matrix values = m;
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
    Matrix values = m;
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

// Cyclic Jacobi rotations.
void NormalTensor::diagonalize(Matrix& m, Matrix& axes) noexcept
{
    axes = {{{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}}};
    constexpr int numSweeps = 6;
    for (int sweep = 0; sweep < numSweeps; ++sweep)
    {
        for (const auto& [p, q] : {std::pair<std::size_t, std::size_t>{0, 1}, {0, 2}, {1, 2}})
        {
            if (std::fabs(m[p][q]) <= 1e-15 * (std::fabs(m[p][p]) + std::fabs(m[q][q])))
                continue;
            const double theta = (m[q][q] - m[p][p]) / (2.0 * m[p][q]);
            const double t =
                (theta >= 0.0 ? 1.0 : -1.0) / (std::fabs(theta) + std::sqrt(theta * theta + 1.0));
            const double c = 1.0 / std::sqrt(t * t + 1.0);
            const double s = t * c;
            for (std::size_t k = 0; k < 3; ++k)
            {
                const double kp = m[k][p];
                const double kq = m[k][q];
                m[k][p] = c * kp - s * kq;
                m[k][q] = s * kp + c * kq;
            }
            for (std::size_t k = 0; k < 3; ++k)
            {
                const double pk = m[p][k];
                const double qk = m[q][k];
                m[p][k] = c * pk - s * qk;
                m[q][k] = s * pk + c * qk;
                const double ap = axes[k][p];
                const double aq = axes[k][q];
                axes[k][p] = c * ap - s * aq;
                axes[k][q] = s * ap + c * aq;
            }
        }
    }
}

} // namespace TARN_ZEF

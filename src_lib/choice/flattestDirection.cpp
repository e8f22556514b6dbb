#include "choice/flattestDirection.h"

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
constexpr int NUM_SWEEPS = 6; // each squares what is left beside the diagonal

struct Turn
{
    double c;
    double s;

    void apply(double& x, double& y) const
    {
        const double oldX = x;
        x = c * oldX - s * y;
        y = s * oldX + c * y;
    }
};

// The turn of axes p and q after which their common entry vanishes.
Turn findTurn(const SymmetricMatrix& m, int p, int q)
{
    if (m.a[p][q] == 0.0)
        return {1.0, 0.0};
    const double theta = (m.a[q][q] - m.a[p][p]) / (2.0 * m.a[p][q]);
    const double t = (theta >= 0.0 ? 1.0 : -1.0) / (std::fabs(theta) + std::sqrt(theta * theta + 1.0));
    const double c = 1.0 / std::sqrt(t * t + 1.0);
    return {c, t * c};
}
} // namespace

void SymmetricMatrix::addSquareOf(const Vector3& v)
{
    const double x[3] = {v.x(), v.y(), v.z()};
    for (int i = 0; i < 3; ++i)
        for (int k = 0; k < 3; ++k)
            a[i][k] += x[i] * x[k];
}

Vector3 flattestDirection(SymmetricMatrix moments, double& spread)
{
    constexpr int AXES[3][2] = {{0, 1}, {0, 2}, {1, 2}};
    double v[3][3] = {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};
    for (int i = 0; i < 3 * NUM_SWEEPS; ++i)
    {
        const auto& [p, q] = AXES[i % 3];
        const Turn turn = findTurn(moments, p, q);
        for (int k = 0; k < 3; ++k)
        {
            turn.apply(moments.a[k][p], moments.a[k][q]);
            turn.apply(v[k][p], v[k][q]);
        }
        for (int k = 0; k < 3; ++k)
            turn.apply(moments.a[p][k], moments.a[q][k]);
    }
    int least = 0;
    for (int i = 1; i < 3; ++i)
        if (moments.a[i][i] < moments.a[least][least])
            least = i;
    spread = std::max(0.0, moments.a[least][least]);
    return {v[0][least], v[1][least], v[2][least]};
}

} // namespace TARN_ZEF

#include "finish/QuadricSums.h"

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
// A middle of the points farther off than this share of the radius says that a side is missing: at a straight
// border it lies at 0.29.
constexpr double ONE_SIDED = 0.18;
// Pivots below this share of the weight say that the points do not determine a term.
constexpr double SMALLEST_PIVOT = 1e-6;
constexpr std::size_t PLANE_TERMS = 3;
// Which moment is the sum over the product of two terms; the lower half.
constexpr std::array<std::array<std::size_t, 6>, 6> MOMENT_OF = {
    {{0}, {1, 3}, {2, 4, 5}, {3, 6, 7, 10}, {4, 7, 8, 11, 12}, {5, 8, 9, 12, 13, 14}}};
} // namespace

bool QuadricSums::isOneSided() const noexcept
{
    const double x = moments[1];
    const double y = moments[2];
    return x * x + y * y > ONE_SIDED * ONE_SIDED * moments[0] * moments[0];
}

bool QuadricSums::solve() noexcept
{
    const bool bPlane = num < minPoints || isOneSided();
    return (!bPlane && solveTerms(numTerms)) || solveTerms(PLANE_TERMS);
}

// Cholesky. What is left of the squares follows from the sums alone.
bool QuadricSums::solveTerms(std::size_t numUsed) noexcept
{
    std::array<std::array<double, numTerms>, numTerms> low = {};
    std::array<double, numTerms> half = {};
    for (std::size_t i = 0; i < numUsed; ++i)
    {
        for (std::size_t k = 0; k <= i; ++k)
        {
            double sum = moments[MOMENT_OF[i][k]];
            for (std::size_t j = 0; j < k; ++j)
                sum -= low[i][j] * low[k][j];
            if (i != k)
                low[i][k] = sum / low[k][k];
            else if (sum > SMALLEST_PIVOT * moments[0])
                low[i][i] = std::sqrt(sum);
            else
                return false;
        }
        double sum = right[i];
        for (std::size_t j = 0; j < i; ++j)
            sum -= low[i][j] * half[j];
        half[i] = sum / low[i][i];
    }
    double left = sumSquares;
    for (std::size_t i = numUsed; i-- > 0;)
    {
        left -= half[i] * half[i];
        double sum = half[i];
        for (std::size_t j = i + 1; j < numUsed; ++j)
            sum -= low[j][i] * solution[j];
        solution[i] = sum / low[i][i];
    }
    // Each term takes away the share of a point's noise that points of equal weight would leave it.
    constexpr double leastSpare = 0.1;
    const double taken = static_cast<double>(numUsed) * sumSqWeights / (moments[0] * moments[0]);
    residual = std::sqrt(std::max(0.0, left) / (moments[0] * std::max(leastSpare, 1.0 - taken)));
    return true;
}

} // namespace TARN_ZEF

#ifndef ZEF_FINISH_QUADRICSUMS_H
#define ZEF_FINISH_QUADRICSUMS_H

#include <array>
#include <cstddef>

namespace TARN_ZEF
{
// Least squares of z = a + b x + c y + d x^2 + e x y + f y^2 over points in the unit disc, those in its middle
// counting most. With few points, or all on one side, it is a plane.
class QuadricSums
{
public:
    // Fewer points get a plane.
    static constexpr std::size_t minPoints = 9;

    void add(double x, double y, double z) noexcept;
    // False if the points do not determine the surface. REQUIRES: at least one point.
    [[nodiscard]] bool solve() noexcept;

    [[nodiscard]] std::size_t size() const noexcept { return num; }
    // After solve().
    [[nodiscard]] double getHeight() const noexcept { return solution[0]; }
    [[nodiscard]] double getSlopeX() const noexcept { return solution[1]; }
    [[nodiscard]] double getSlopeY() const noexcept { return solution[2]; }
    // Root of the weighted mean square, corrected for the number of terms.
    [[nodiscard]] double getResidual() const noexcept { return residual; }

private:
    static constexpr std::size_t numTerms = 6;

    [[nodiscard]] bool isOneSided() const noexcept;
    [[nodiscard]] bool solveTerms(std::size_t numUsed) noexcept;

    std::array<std::array<double, numTerms>, numTerms> matrix = {}; // lower half
    std::array<double, numTerms> right = {};
    std::array<double, numTerms> solution = {};
    double sumSquares = 0.0;
    double sumSqWeights = 0.0;
    double residual = 0.0;
    std::size_t num = 0;
};

} // namespace TARN_ZEF

#endif

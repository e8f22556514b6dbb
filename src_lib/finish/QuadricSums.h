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
    static constexpr std::size_t numTerms = 6;

    void add(double x, double y, double z) noexcept
    {
        const double xx = x * x;
        const double yy = y * y;
        const double fade = 1.0 - xx - yy;
        const double weight = fade > 0.0 ? fade * fade : 0.0;
        const double xy = x * y;
        const std::array<double, numTerms> terms = {1.0, x, y, xx, xy, yy};
        // All products of two terms are among these.
        const std::array<double, numMoments> products = {1.0,     x,       y,       xx,      xy,
                                                         yy,      xx * x,  xx * y,  x * yy,  yy * y,
                                                         xx * xx, xx * xy, xx * yy, xy * yy, yy * yy};
        for (std::size_t i = 0; i < numMoments; ++i)
            moments[i] += weight * products[i];
        const double weighted = weight * z;
        for (std::size_t i = 0; i < numTerms; ++i)
            right[i] += weighted * terms[i];
        sumSquares += weighted * z;
        sumSqWeights += weight * weight;
        ++num;
    }
    // False if the points do not determine the surface. REQUIRES: at least one point.
    [[nodiscard]] bool solve() noexcept;

    [[nodiscard]] std::size_t size() const noexcept { return num; }
    // After solve(): a to f.
    [[nodiscard]] const std::array<double, numTerms>& getTerms() const noexcept { return solution; }
    // Root of the weighted mean square, corrected for the number of terms.
    [[nodiscard]] double getResidual() const noexcept { return residual; }

private:
    static constexpr std::size_t numMoments = 15;

    [[nodiscard]] bool isOneSided() const noexcept;
    [[nodiscard]] bool solveTerms(std::size_t numUsed) noexcept;

    std::array<double, numMoments> moments = {}; // sums of weight x^i y^k, by degree and falling i
    std::array<double, numTerms> right = {};
    std::array<double, numTerms> solution = {};
    double sumSquares = 0.0;
    double sumSqWeights = 0.0;
    double residual = 0.0;
    std::size_t num = 0;
};

} // namespace TARN_ZEF

#endif

#include "makeTorus.h"

#include "testDataGenerators.h"

#include <cmath>
#include <vector>

namespace TARN_ZEF
{
RMeshSource makeTorus(std::size_t numVertices, double roughness)
{
    constexpr double PI = 3.14159265358979;
    const auto numSmall = static_cast<std::size_t>(std::sqrt(static_cast<double>(numVertices) / 2.0));
    const std::size_t numBig = 2 * numSmall;
    const double r = static_cast<double>(numSmall) / (2.0 * PI);
    std::vector<double> vNoise;
    generateRandomNumbers(-roughness, roughness, 3 * numBig * numSmall, 1, vNoise);
    RMeshSource source;
    for (std::size_t i = 0; i < numBig; ++i)
        for (std::size_t k = 0; k < numSmall; ++k)
        {
            const double a = 2.0 * PI * static_cast<double>(i) / static_cast<double>(numBig);
            const double b = 2.0 * PI * static_cast<double>(k) / static_cast<double>(numSmall);
            const double rho = r * (2.0 + std::cos(b));
            const double* pNoise = &vNoise[3 * source.vPoints.size()];
            source.vPoints.emplace_back(rho * std::cos(a) + pNoise[0], rho * std::sin(a) + pNoise[1],
                                        r * std::sin(b) + pNoise[2]);
        }
    const auto index = [=](std::size_t i, std::size_t k)
    { return static_cast<std::uint32_t>(i % numBig * numSmall + k % numSmall); };
    for (std::size_t i = 0; i < numBig; ++i)
        for (std::size_t k = 0; k < numSmall; ++k)
        {
            const std::uint32_t a = index(i, k);
            const std::uint32_t c = index(i + 1, k + 1);
            source.vCorners.insert(source.vCorners.end(), {a, index(i + 1, k), c, a, c, index(i, k + 1)});
        }
    return source;
}

} // namespace TARN_ZEF

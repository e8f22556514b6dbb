#include "colorScale.h"

#include <algorithm>
#include <cmath>

namespace TARN_TOOL
{
namespace
{
constexpr Colour NO_NUMBER = {0.6f, 0.6f, 0.6f};
constexpr std::array<Colour, 5> STOPS = {{{0.17f, 0.31f, 0.75f},
                                          {0.15f, 0.65f, 0.75f},
                                          {0.35f, 0.75f, 0.30f},
                                          {0.95f, 0.80f, 0.20f},
                                          {0.82f, 0.15f, 0.12f}}};
} // namespace

Colour colorOf(double share)
{
    if (std::isnan(share))
        return NO_NUMBER;
    const double at = std::clamp(share, 0.0, 1.0) * (STOPS.size() - 1);
    const std::size_t below = std::min(static_cast<std::size_t>(at), STOPS.size() - 2);
    const auto t = static_cast<float>(at - static_cast<double>(below));
    Colour color;
    for (std::size_t k = 0; k < 3; ++k)
        color[k] = STOPS[below][k] + t * (STOPS[below + 1][k] - STOPS[below][k]);
    return color;
}

std::vector<Colour> paintByScale(const std::vector<double>& vValues, double highest)
{
    std::vector<Colour> vColors;
    vColors.reserve(vValues.size());
    for (const double value : vValues)
        vColors.push_back(colorOf(highest > 0.0 ? value / highest : 0.0 * value));
    return vColors;
}

} // namespace TARN_TOOL

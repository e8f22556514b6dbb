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
constexpr std::array<Colour, 3> SIGNED_STOPS = {
    {{0.13f, 0.32f, 0.76f}, {0.88f, 0.88f, 0.86f}, {0.80f, 0.17f, 0.12f}}};

// Between stops at even distances, share from 0 to 1.
template <std::size_t N>
Colour between(const std::array<Colour, N>& stops, double share)
{
    if (std::isnan(share))
        return NO_NUMBER;
    const double at = std::clamp(share, 0.0, 1.0) * (N - 1);
    const std::size_t below = std::min(static_cast<std::size_t>(at), N - 2);
    const auto t = static_cast<float>(at - static_cast<double>(below));
    Colour color;
    for (std::size_t k = 0; k < 3; ++k)
        color[k] = stops[below][k] + t * (stops[below + 1][k] - stops[below][k]);
    return color;
}

// Hue from 0 to 1 all around the wheel, at a strength that leaves room for light and shade.
Colour colorOfHue(double hue, float strength)
{
    Colour color;
    for (std::size_t k = 0; k < 3; ++k)
    {
        const double away = std::fabs(hue - std::floor(hue) - static_cast<double>(k) / 3.0);
        const double near = std::clamp(2.0 - 6.0 * std::min(away, 1.0 - away), 0.0, 1.0);
        color[k] = 0.88f - strength * (1.0f - static_cast<float>(near));
    }
    return color;
}
} // namespace

Colour colorOf(double share)
{
    return between(STOPS, share);
}

Colour signedColorOf(double share)
{
    return between(SIGNED_STOPS, 0.5 + 0.5 * share);
}

Colour colorOfPiece(std::size_t rank)
{
    // The golden ratio puts each next hue into the largest gap; every other piece is paler.
    constexpr double GOLDEN = 0.6180339887498949;
    constexpr std::size_t NUM_COLORS = 20;
    const std::size_t number = rank % NUM_COLORS;
    return colorOfHue(0.58 + GOLDEN * static_cast<double>(number), number % 2 == 0 ? 0.55f : 0.35f);
}

} // namespace TARN_TOOL

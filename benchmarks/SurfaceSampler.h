#ifndef ZEF_BENCHMARKS_SURFACESAMPLER_H
#define ZEF_BENCHMARKS_SURFACESAMPLER_H

#include "ClosedShapes.h"

#include <cstdint>
#include <random>
#include <vector>

namespace TARN_ZEF
{
// Points on a shape, as evenly spread as asked for, at a mean spacing of 1: lengths are scaled to it.
//
// Lines that cross space evenly in all directions meet a surface in points that are evenly random on it, whatever its
// form; their number gives its area.
class SurfaceSampler
{
public:
    struct Wish
    {
        std::size_t num = 60'000;
        // Points keep this distance from each other, in spacings: 0 for random ones, 0.5 jittered, 0.75 even.
        double gap = 0.0;
        double noise = 0.0; // sigma in spacings, in all directions
        std::uint64_t seed = 1;
    };

    explicit SurfaceSampler(const ClosedShape& shape_);

    // The true volume at the scale of sample().
    [[nodiscard]] double getVolume(std::size_t num) const;
    [[nodiscard]] std::vector<Point3> sample(const Wish& wish) const;

private:
    // Where a line runs through the surface.
    void cross(const Point3& from, const Point3& direction, std::vector<double>& vAt) const;
    void crossRandomLine(std::mt19937_64& rng, std::vector<Point3>& vPoints) const;
    [[nodiscard]] double findArea() const;
    [[nodiscard]] double findVolume() const;
    [[nodiscard]] double getSpacing(std::size_t num) const;

    const ClosedShape& shape;
    double area;
    double volume;
};

} // namespace TARN_ZEF

#endif

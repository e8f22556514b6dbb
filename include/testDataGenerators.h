// Generators of test data: random numbers, random points and a sample surface. All are deterministic: the
// same seed gives the same data on every platform.
#ifndef ZEF_TESTDATAGENERATORS_H
#define ZEF_TESTDATAGENERATORS_H

#include "Point3.h"
#include "zef_export.h"

#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
// Appends num numbers, uniform in [minVal, maxVal).
ZEF_API void generateRandomNumbers(double minVal, double maxVal, std::size_t num, unsigned int seed,
                                   std::vector<double>& vNumbers);

// Appends num points, uniform in the square [minVal, maxVal)^2 of the plane z = 0.
ZEF_API void generateRandomPoints(double minVal, double maxVal, std::size_t num, unsigned int seed,
                                  std::vector<Point3>& vPoints);

// Appends num points, uniform in the cube [minVal, maxVal)^3.
ZEF_API void generateRandomPoints3D(double minVal, double maxVal, std::size_t num, unsigned int seed,
                                    std::vector<Point3>& vPoints);

// Appends num points, evenly spread with some jitter, on a closed sample surface: a ball of radius 1 about
// the origin whose radius swings by a tenth. It is the surface behind the name "artificial123.xyz".
ZEF_API void generateSampleSurface(std::size_t num, unsigned int seed, std::vector<Point3>& vPoints);

// Number of points and seed behind the name "artificial123.xyz".
inline constexpr std::size_t SAMPLE_SURFACE_POINTS = 100000;
inline constexpr unsigned int SAMPLE_SURFACE_SEED = 123;

} // namespace TARN_ZEF

#endif

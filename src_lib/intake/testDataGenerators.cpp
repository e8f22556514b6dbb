#include "testDataGenerators.h"

#include "core/definitions.h"

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
constexpr double PI = 3.14159265358979323846;

// SplitMix64 (G. Steele, D. Lea, C. Flood: Fast splittable pseudorandom number generators, OOPSLA 2014).
class Generator
{
public:
    explicit Generator(unsigned int seed) noexcept
        : state(static_cast<u64>(seed) * 0xD1342543DE82EF95u)
    {
    }

    // In [0, 1), in steps of 2^-53.
    double next() noexcept
    {
        state += 0x9E3779B97F4A7C15u;
        u64 word = state;
        word = (word ^ (word >> 30)) * 0xBF58476D1CE4E5B9u;
        word = (word ^ (word >> 27)) * 0x94D049BB133111EBu;
        word ^= word >> 31;
        return static_cast<double>(word >> 11) * 0x1.0p-53;
    }

private:
    u64 state;
};

// Uniform numbers in [minVal, maxVal).
class Uniform
{
public:
    Uniform(double minVal_, double maxVal_, unsigned int seed)
        : generator(seed)
        , minVal(minVal_)
        , maxVal(maxVal_)
    {
        ASSEX(minVal_ <= maxVal_);
    }

    double next() noexcept
    {
        const double value = minVal + generator.next() * (maxVal - minVal);
        // Rounding may reach the end that is excluded.
        return value < maxVal ? value : std::nextafter(maxVal, minVal);
    }

private:
    Generator generator;
    double minVal;
    double maxVal;
};

// Room for num more, without giving up the doubling that repeated appending relies on.
template <typename T>
void reserveMore(std::vector<T>& v, std::size_t num)
{
    if (v.capacity() - v.size() < num)
        v.reserve(std::max(v.size() + num, 2 * v.size()));
}

// Uniform in the disc of the given radius about (0, 0).
void getPointInDisc(Generator& generator, double radius, double& u, double& v) noexcept
{
    do
    {
        u = 2.0 * generator.next() - 1.0;
        v = 2.0 * generator.next() - 1.0;
    } while (u * u + v * v > 1.0);
    u *= radius;
    v *= radius;
}

// Direction i of num on the golden spiral, shifted along the sphere by up to jitter, of length 1. The turn per
// point is the golden section of a full one, as a 64-bit fraction: it is exact for any i.
Vector3 getJitteredDirection(std::size_t i, std::size_t num, double jitter, Generator& generator) noexcept
{
    const double z = 1.0 - (2.0 * static_cast<double>(i) + 1.0) / static_cast<double>(num);
    const double rho = std::sqrt(1.0 - z * z);
    const u64 turn = static_cast<u64>(i) * 0x9E3779B97F4A7C15u;
    const double phi = static_cast<double>(turn >> 11) * 0x1.0p-53 * (2.0 * PI);
    const double cosPhi = std::cos(phi);
    const double sinPhi = std::sin(phi);

    double u, v;
    getPointInDisc(generator, jitter, u, v);
    const Vector3 direction(rho * cosPhi - u * sinPhi - v * z * cosPhi,
                            rho * sinPhi + u * cosPhi - v * z * sinPhi, z + v * rho);
    return direction / direction.length();
}

Point3 getSurfacePoint(const Vector3& direction) noexcept
{
    const double wave = std::sin(7.0 * direction.x()) * std::sin(7.0 * direction.y() + 1.0) *
                        std::sin(7.0 * direction.z() + 2.0);
    return Point3() + direction * (1.0 + 0.1 * wave);
}

void addRandomPoints(double minVal, double maxVal, std::size_t num, unsigned int seed, bool bFlat,
                     std::vector<Point3>& vPoints)
{
    Uniform uniform(minVal, maxVal, seed);
    reserveMore(vPoints, num);
    for (std::size_t i = 0; i < num; ++i)
    {
        const double x = uniform.next();
        const double y = uniform.next();
        vPoints.emplace_back(x, y, bFlat ? 0.0 : uniform.next());
    }
}
} // namespace

void generateRandomNumbers(double minVal, double maxVal, std::size_t num, unsigned int seed,
                           std::vector<double>& vNumbers)
{
    Uniform uniform(minVal, maxVal, seed);
    reserveMore(vNumbers, num);
    for (std::size_t i = 0; i < num; ++i)
        vNumbers.push_back(uniform.next());
}

void generateRandomPoints(double minVal, double maxVal, std::size_t num, unsigned int seed,
                          std::vector<Point3>& vPoints)
{
    addRandomPoints(minVal, maxVal, num, seed, true, vPoints);
}

void generateRandomPoints3D(double minVal, double maxVal, std::size_t num, unsigned int seed,
                            std::vector<Point3>& vPoints)
{
    addRandomPoints(minVal, maxVal, num, seed, false, vPoints);
}

void generateSampleSurface(std::size_t num, unsigned int seed, std::vector<Point3>& vPoints)
{
    Generator generator(seed);
    reserveMore(vPoints, num);
    // Less than half the least distance on the spiral: no two points can meet.
    const double jitter = 0.3 * std::sqrt(4.0 * PI / static_cast<double>(num));
    for (std::size_t i = 0; i < num; ++i)
        vPoints.push_back(getSurfacePoint(getJitteredDirection(i, num, jitter, generator)));
}

} // namespace TARN_ZEF

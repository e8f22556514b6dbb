#ifndef ZEF_CORNERNUMBERING_H
#define ZEF_CORNERNUMBERING_H

#include "Point3.h"
#include "judge/ExactSigns.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// Maps coordinates to [-1, 1] so that most of a mesh fills that range; what lies far outside ends on its rim. Keeps
// the order of coordinates.
class UnitFrame
{
public:
    explicit UnitFrame(const std::vector<Point3>& vPoints);
    [[nodiscard]] double map(double coordinate, int axis) const;

private:
    Place middle = {0.0, 0.0, 0.0}; // halved, as differences of halves do not overflow
    double halfExtent = 1.0;        // halved too
};

// Points numbered by what they are: equal coordinates get one number, and numbers near each other go to points near
// each other, in Morton order. A point with a coordinate that is not finite gets a number of its own behind all others.
//
// The coordinates may be scaled by a power of two, so that their products stay in the range of doubles; never so
// that a bit is lost.
struct CornerNumbering
{
    explicit CornerNumbering(const std::vector<Point3>& vPoints, const UnitFrame& frame);

    std::vector<std::uint32_t> vNumbers; // of each point
    std::vector<Place> vPlaces;          // by number, scaled, the finite ones
    double largest = 0.0;                // magnitude in vPlaces
    int scaling = 0;                     // exponent of the factor that was applied

    [[nodiscard]] bool isFinite(std::uint32_t number) const { return number < vPlaces.size(); }

private:
    using Codes = std::vector<std::pair<std::uint64_t, std::uint32_t>>;
    [[nodiscard]] static Codes sortByCode(const std::vector<Point3>& vPoints, const UnitFrame& frame);
    void numberEqualCodes(const std::vector<Point3>& vPoints, Codes& vCodes, std::size_t from,
                          std::size_t to);
    void scale();
};

} // namespace TARN_ZEF

#endif

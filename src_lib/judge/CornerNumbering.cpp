#include "judge/CornerNumbering.h"

#include "core/spreadBits.h"
#include "parallel/parallelFor.h"
#include "parallel/sortMT2.h"

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
constexpr std::uint64_t NOT_FINITE = ~std::uint64_t{0};
constexpr int BITS_PER_AXIS = 21;

Place placeOf(const Point3& p)
{
    return {p.x(), p.y(), p.z()};
}

bool isFinitePlace(const Place& p)
{
    return std::isfinite(p[0]) && std::isfinite(p[1]) && std::isfinite(p[2]);
}

std::uint64_t codeOf(const Place& p, const UnitFrame& frame)
{
    if (!isFinitePlace(p))
        return NOT_FINITE;
    constexpr double half = (1 << (BITS_PER_AXIS - 1)) - 0.5;
    std::uint64_t code = 0;
    for (int axis = 0; axis < 3; ++axis)
    {
        const double cell = (frame.map(p[static_cast<std::size_t>(axis)], axis) + 1.0) * half;
        code |= spreadBits3(static_cast<u64>(cell)) << axis;
    }
    return code;
}
} // namespace

// From all but the outermost hundredths of a sample, widened to twice: a mesh without outliers is inside, and
// with outliers the rest still spreads out.
UnitFrame::UnitFrame(const std::vector<Point3>& vPoints)
{
    constexpr std::size_t sampleSize = 4096;
    const std::size_t stride = std::max<std::size_t>(1, vPoints.size() / sampleSize);
    std::array<std::vector<double>, 3> vSamples;
    for (std::size_t i = 0; i < vPoints.size(); i += stride)
    {
        const Place p = placeOf(vPoints[i]);
        if (isFinitePlace(p))
            for (std::size_t axis = 0; axis < 3; ++axis)
                vSamples[axis].push_back(0.5 * p[axis]);
    }
    if (vSamples[0].empty())
        return;
    double widest = 0.0;
    for (std::size_t axis = 0; axis < 3; ++axis)
    {
        std::sort(vSamples[axis].begin(), vSamples[axis].end());
        const std::size_t left = vSamples[axis].size() / 100;
        const double low = vSamples[axis][left];
        const double high = vSamples[axis][vSamples[axis].size() - 1 - left];
        middle[axis] = 0.5 * low + 0.5 * high;
        widest = std::max(widest, high - low);
    }
    if (widest > 0.0)
        halfExtent = widest;
}

double UnitFrame::map(double coordinate, int axis) const
{
    return std::clamp((0.5 * coordinate - middle[static_cast<std::size_t>(axis)]) / halfExtent, -1.0, 1.0);
}

CornerNumbering::CornerNumbering(const std::vector<Point3>& vPoints, const UnitFrame& frame)
    : vNumbers(vPoints.size())
{
    Codes vCodes = sortByCode(vPoints, frame);
    vPlaces.reserve(vPoints.size());
    std::size_t from = 0;
    while (from < vCodes.size() && vCodes[from].first != NOT_FINITE)
    {
        std::size_t to = from + 1;
        while (to < vCodes.size() && vCodes[to].first == vCodes[from].first)
            ++to;
        numberEqualCodes(vPoints, vCodes, from, to);
        from = to;
    }
    auto next = static_cast<std::uint32_t>(vPlaces.size());
    for (; from < vCodes.size(); ++from)
        vNumbers[vCodes[from].second] = next++;
    scale();
}

CornerNumbering::Codes CornerNumbering::sortByCode(const std::vector<Point3>& vPoints, const UnitFrame& frame)
{
    Codes vCodes(vPoints.size());
    parallelFor(vPoints.size(), 10'000,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                        vCodes[i] = {codeOf(placeOf(vPoints[i]), frame), static_cast<std::uint32_t>(i)};
                });
    sortByFirstMT(vCodes.begin(), vCodes.end());
    return vCodes;
}

void CornerNumbering::numberEqualCodes(const std::vector<Point3>& vPoints, Codes& vCodes, std::size_t from,
                                       std::size_t to)
{
    const auto first = vCodes.begin() + static_cast<std::ptrdiff_t>(from);
    if (to - from > 1)
        std::stable_sort(first, vCodes.begin() + static_cast<std::ptrdiff_t>(to),
                         [&](const auto& a, const auto& b) { return vPoints[a.second] < vPoints[b.second]; });
    for (std::size_t i = from; i < to; ++i)
    {
        const Point3& p = vPoints[vCodes[i].second];
        if (i == from || p != vPoints[vCodes[i - 1].second])
            vPlaces.push_back(placeOf(p));
        vNumbers[vCodes[i].second] = static_cast<std::uint32_t>(vPlaces.size() - 1);
    }
}

// To about 1, if the coordinates are so large or small that their products leave the range in which plain
// arithmetic can be trusted. If bits would be lost, the exact arithmetic copes with them as they are.
void CornerNumbering::scale()
{
    for (const Place& p : vPlaces)
        for (const double x : p)
            largest = std::max(largest, std::fabs(x));
    if (largest == 0.0 || (largest >= 0x1p-30 && largest <= ExactSigns::LARGEST_PLAIN))
        return;
    const int exponent = -std::ilogb(largest);
    const auto keepsBits = [exponent](const Place& p)
    {
        return std::all_of(p.begin(), p.end(),
                           [exponent](double x)
                           { return std::ldexp(std::ldexp(x, exponent), -exponent) == x; });
    };
    if (!std::all_of(vPlaces.begin(), vPlaces.end(), keepsBits))
        return;
    for (Place& p : vPlaces)
        for (double& x : p)
            x = std::ldexp(x, exponent);
    largest = std::ldexp(largest, exponent);
    scaling = exponent;
}

} // namespace TARN_ZEF

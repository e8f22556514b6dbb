#include "comparison/SurfaceComparer.h"

#include "core/cancel.h"
#include "geometry/isFinite.h"
#include "geometry/tools.h"
#include "parallel/parallelFor.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace TARN_ZEF
{
namespace
{
// 1 / g and 1 / g^2 of the plastic number g: the two steps of the sequence.
constexpr double STEP_U = 0.7548776662466927;
constexpr double STEP_V = 0.5698402909980532;

// Of the triangle from corner i on.
[[nodiscard]] double areaOf(const FiniteSurface& surface, std::size_t i)
{
    const auto corner = [&](std::size_t k) -> const Point3&
    { return surface.vPoints[static_cast<std::size_t>(surface.vCorners[i + k])]; };
    return getAreaByCross(corner(0), corner(1), corner(2));
}

[[nodiscard]] double fractionOf(double x)
{
    return x - std::floor(x);
}

// Place number k of the sequence.
[[nodiscard]] Point3 placeIn(const FiniteSurface& surface, std::size_t i, std::size_t k)
{
    const auto corner = [&](std::size_t c) -> const Point3&
    { return surface.vPoints[static_cast<std::size_t>(surface.vCorners[i + c])]; };
    double u = fractionOf(0.5 + STEP_U * static_cast<double>(k));
    double v = fractionOf(0.5 + STEP_V * static_cast<double>(k));
    if (u + v > 1.0)
    {
        u = 1.0 - u;
        v = 1.0 - v;
    }
    return corner(0) + (corner(1) - corner(0)) * u + (corner(2) - corner(0)) * v;
}
} // namespace

FiniteSurface::FiniteSurface(const std::vector<Point3>& vPoints_, const std::vector<int>& vCorners_)
    : vPoints(vPoints_)
{
    vCorners.reserve(vCorners_.size());
    for (std::size_t i = 0; i < vCorners_.size(); i += 3)
    {
        checkCancelledAt(i);
        const auto first = vCorners_.begin() + static_cast<std::ptrdiff_t>(i);
        if (std::all_of(first, first + 3,
                        [&](int corner) { return isFinite(vPoints[static_cast<std::size_t>(corner)]); }))
            vCorners.insert(vCorners.end(), first, first + 3);
    }
}

double FiniteSurface::getExtent() const
{
    if (vCorners.empty())
        return 0.0;
    Point3 low = vPoints[static_cast<std::size_t>(vCorners[0])];
    Point3 high = low;
    for (const int corner : vCorners)
    {
        const Point3& p = vPoints[static_cast<std::size_t>(corner)];
        low.set(std::min(low.x(), p.x()), std::min(low.y(), p.y()), std::min(low.z(), p.z()));
        high.set(std::max(high.x(), p.x()), std::max(high.y(), p.y()), std::max(high.z(), p.z()));
    }
    return (high - low).getMaxComponent();
}

SurfaceComparer::SurfaceComparer(const FiniteSurface& surface_, const TriangleTree& other_)
    : surface(surface_)
    , other(other_)
{
}

SurfaceDistances SurfaceComparer::run(std::size_t numSamples)
{
    SurfaceDistances found;
    found.vAtPoints = measure(surface.vPoints);
    measureUsedPoints(found);
    const std::vector<Point3> vPlaces = samplePlaces(numSamples);
    const std::vector<double> vDistances = measure(vPlaces);
    includeLargest(vPlaces, vDistances, found);
    sumUp(vDistances, found);
    return found;
}

std::vector<Point3> SurfaceComparer::samplePlaces(std::size_t numSamples) const
{
    double area = 0.0;
    for (std::size_t i = 0; i < surface.vCorners.size(); i += 3)
        area += areaOf(surface, i);
    const double step = area / static_cast<double>(numSamples);
    std::vector<Point3> vPlaces;
    vPlaces.reserve(numSamples);
    double passed = 0.0;
    for (std::size_t i = 0; i < surface.vCorners.size() && step > 0.0; i += 3)
    {
        checkCancelledAt(i);
        passed += areaOf(surface, i);
        while (vPlaces.size() < numSamples && (static_cast<double>(vPlaces.size()) + 0.5) * step < passed)
            vPlaces.push_back(placeIn(surface, i, vPlaces.size()));
    }
    if (vPlaces.empty()) // no area: the corners stand for what there is
        for (const int corner : surface.vCorners)
            vPlaces.push_back(surface.vPoints[static_cast<std::size_t>(corner)]);
    return vPlaces;
}

std::vector<double> SurfaceComparer::measure(const std::vector<Point3>& vPlaces) const
{
    std::vector<double> vDistances(vPlaces.size(), std::numeric_limits<double>::quiet_NaN());
    parallelFor(vPlaces.size(), 500,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                    {
                        if (isFinite(vPlaces[i]))
                            vDistances[i] = std::sqrt(other.find(vPlaces[i]).sqDistance);
                    }
                });
    return vDistances;
}

// What triangles use counts; what stands apart does not.
void SurfaceComparer::measureUsedPoints(SurfaceDistances& found) const
{
    const auto distanceAt = [&](int corner) { return found.vAtPoints[static_cast<std::size_t>(corner)]; };
    const int farthest = *std::max_element(surface.vCorners.begin(), surface.vCorners.end(),
                                           [&](int a, int b) { return distanceAt(a) < distanceAt(b); });
    found.largest = distanceAt(farthest);
    found.largestPlace = surface.vPoints[static_cast<std::size_t>(farthest)];
    found.nearestToThere = other.find(found.largestPlace).place;
}

void SurfaceComparer::includeLargest(const std::vector<Point3>& vPlaces,
                                     const std::vector<double>& vDistances, SurfaceDistances& found) const
{
    const auto it = std::max_element(vDistances.begin(), vDistances.end());
    if (!(*it > found.largest))
        return;
    found.largest = *it;
    found.largestPlace = vPlaces[static_cast<std::size_t>(it - vDistances.begin())];
    found.nearestToThere = other.find(found.largestPlace).place;
}

void SurfaceComparer::sumUp(std::vector<double> vDistances, SurfaceDistances& found) const
{
    const auto num = static_cast<double>(vDistances.size());
    double sum = 0.0;
    double sqSum = 0.0;
    for (const double distance : vDistances)
    {
        sum += distance;
        sqSum += distance * distance;
    }
    found.numSamples = vDistances.size();
    found.mean = sum / num;
    found.rms = std::sqrt(sqSum / num);
    const auto rank = static_cast<std::ptrdiff_t>((99 * vDistances.size() + 99) / 100 - 1);
    std::nth_element(vDistances.begin(), vDistances.begin() + rank, vDistances.end());
    found.percentile99 = vDistances[static_cast<std::size_t>(rank)];
}

} // namespace TARN_ZEF

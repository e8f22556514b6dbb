#include "choice/CloudMeasure.h"

#include "choice/flattestDirection.h"

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
constexpr std::size_t NUM_SAMPLES = 3000;
constexpr std::size_t MIN_SAMPLES = 50; // fewer tell nothing
constexpr double REACH = 2.5;           // of the grid, in detected spacings

// Of n evenly random points on a plane, the sixth is about this many spacings away; the spacing of an even pattern is
// 1.07 of the root of the area of a point.
constexpr std::size_t SIXTH = 6;
constexpr double UNIT_PER_SIXTH = 0.72;

constexpr std::size_t NUM_FIRST = 9; // points of the first fit, the own included
constexpr double SHEET_REACH = 2.3;  // the lengths from here on in spacings around the point
constexpr double MAX_OFF_SHEET = 0.5;
constexpr double MAX_BEND = 0.15; // more for each spacing of distance
constexpr int NUM_REFITS = 2;
constexpr double LEAST_LAYER = 1.0;
constexpr double MOST_LAYER = 2.5;
constexpr double LAYER_WIDTH = 0.8; // beside the normal

double medianOf(std::vector<double>& v)
{
    const auto mid = v.begin() + static_cast<std::ptrdiff_t>(v.size() / 2);
    std::nth_element(v.begin(), mid, v.end());
    return *mid;
}
} // namespace

CloudMeasure::CloudMeasure(const std::vector<Point3>& vPoints_, double spacing_)
    : vPoints(vPoints_)
    , spacing(spacing_)
    , grid(vPoints_, REACH * spacing_)
{
}

CloudFigures CloudMeasure::measure() const
{
    CloudFigures figures;
    figures.spacing = spacing;
    std::vector<double> vNearest;
    std::vector<double> vResiduals;
    std::size_t numLayered = 0;
    Hits vHits;
    Sample sample{};
    const std::size_t step = std::max<std::size_t>(vPoints.size() / NUM_SAMPLES, 1);
    for (std::size_t i = 0; i < vPoints.size(); i += step)
        if (sampleAt(i, vHits, sample))
        {
            vNearest.push_back(sample.toNearest);
            vResiduals.push_back(sample.residual);
            numLayered += sample.bLayered ? 1 : 0;
        }
    if (vNearest.size() < MIN_SAMPLES)
        return figures;
    figures.layers = static_cast<double>(numLayered) / static_cast<double>(vNearest.size());
    figures.evenness = medianOf(vNearest);
    figures.noise = std::sqrt(medianOf(vResiduals));
    return figures;
}

bool CloudMeasure::sampleAt(std::size_t point, Hits& vHits, Sample& sample) const
{
    grid.find(vPoints[point], vHits);
    if (vHits.size() <= NUM_FIRST)
        return false;
    const double unit = UNIT_PER_SIXTH * std::sqrt(vHits[SIXTH].squaredDistance);
    if (unit == 0.0)
        return false;
    Hits vSheet(vHits.begin(), vHits.begin() + NUM_FIRST);
    double residual = 0.0;
    Vector3 normal = fitPlane(point, vSheet, residual);
    for (int i = 0; i < NUM_REFITS; ++i)
    {
        vSheet = keepSheet(point, vHits, normal, unit);
        normal = fitPlane(point, vSheet, residual);
    }
    sample.toNearest = std::sqrt(vHits[1].squaredDistance) / unit;
    sample.residual = residual / (unit * unit);
    sample.bLayered = seesOtherSheet(point, vHits, normal, unit);
    return true;
}

CloudMeasure::Hits CloudMeasure::keepSheet(std::size_t point, const Hits& vHits, const Vector3& normal,
                                           double unit) const
{
    Hits vSheet;
    for (const PointGrid::Hit& hit : vHits)
    {
        const double distance = std::sqrt(hit.squaredDistance);
        const double off = std::fabs(normal * (vPoints[hit.index] - vPoints[point]));
        if (distance < SHEET_REACH * unit && off < MAX_OFF_SHEET * unit + MAX_BEND * distance)
            vSheet.push_back(hit);
    }
    return vSheet;
}

bool CloudMeasure::seesOtherSheet(std::size_t point, const Hits& vHits, const Vector3& normal,
                                  double unit) const
{
    return std::any_of(vHits.begin(), vHits.end(),
                       [&](const PointGrid::Hit& hit)
                       {
                           const Vector3 way = vPoints[hit.index] - vPoints[point];
                           const double off = std::fabs(normal * way) / unit;
                           const double beside =
                               std::sqrt(std::max(0.0, hit.squaredDistance / (unit * unit) - off * off));
                           return off > LEAST_LAYER && off < MOST_LAYER && beside < LAYER_WIDTH;
                       });
}

// In units of the detected spacing, so that squares neither overflow nor vanish.
Vector3 CloudMeasure::fitPlane(std::size_t point, const Hits& vHits, double& residual) const
{
    Vector3 mean;
    for (const PointGrid::Hit& hit : vHits)
        mean.add((vPoints[hit.index] - vPoints[point]) / spacing);
    mean = mean / static_cast<double>(vHits.size());
    SymmetricMatrix moments;
    for (const PointGrid::Hit& hit : vHits)
        moments.addSquareOf((vPoints[hit.index] - vPoints[point]) / spacing + mean * -1.0);
    double spread = 0.0;
    const Vector3 normal = flattestDirection(moments, spread);
    residual = spread / static_cast<double>(vHits.size()) * spacing * spacing;
    return normal;
}

} // namespace TARN_ZEF

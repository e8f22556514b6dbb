// The part of Cloud that refuses what it cannot work with, in words for the user.
#include "intake/Cloud.h"

#include <algorithm>
#include <cmath>

#include "core/memoryLimit.h"
#include "core/numbers.h"
#include "core/refuse.h"
#include "estimateMemory.h"
#include "geometry/tools.h"

namespace TARN_ZEF
{
namespace
{
constexpr std::size_t TRIANGLE_CORNERS = 3;

std::string megabytesText(std::size_t numBytes)
{
    return toText(std::ceil(static_cast<double>(numBytes) / 1e5) / 10.0) + " MB";
}
} // namespace

void Cloud::requireNumber(std::size_t num, const SourceLocation& where)
{
    if (num > MAX_POINTS)
        refuse<ZefTooManyPoints>("v.size() <= MAX_POINTS",
                                 std::to_string(num) + " points are too many; at most " +
                                     std::to_string(MAX_POINTS) + " can be worked with: thin the points out",
                                 where);
}

void Cloud::requireTriangles(std::size_t num, const SourceLocation& where) const
{
    if (bMelt && num % TRIANGLE_CORNERS != 0)
        refuse<ZefBadArgument>(
            "!bMelt || v.size() % TRIANGLE_CORNERS == 0",
            std::to_string(num) +
                " triangle corners are not a multiple of 3; three consecutive corners are one "
                "triangle, and points without triangles are to be reconstructed",
            where);
}

void Cloud::requireCells(std::size_t num, const SourceLocation& where) const
{
    if (num > MAX_POINTS)
        refuse<ZefTooManyPoints>("num <= MAX_POINTS",
                                 "the surface passes through " + std::to_string(num) +
                                     " cells of the spacing " + toText(usedSpacing) + ", at most " +
                                     std::to_string(MAX_POINTS) +
                                     " can be worked with; take a larger spacing",
                                 where);
}

// Before the first cell is filled: there is about one for each unit of area, and no memory for so many.
void Cloud::requireArea(const SourceLocation& where) const
{
    const auto inCells = [this](const Vector3& v)
    { return Vector3(v.x() / cellEdge, v.y() / cellEdge, v.z() / cellEdge); };
    double area = 0.0;
    for (std::size_t i = 0; i + 2 < vPoints.size(); i += TRIANGLE_CORNERS)
    {
        const Vector3 a = inCells(vPoints[i + 1] - vPoints[i]);
        const Vector3 b = inCells(vPoints[i + 2] - vPoints[i]);
        area += 0.5 * std::sqrt(crossProduct(a, b).sqLength());
    }
    constexpr double MAX_COUNTED = 1e18;
    requireCells(static_cast<std::size_t>(std::min(area, MAX_COUNTED)), where);
}

void Cloud::requireMemory(MemoryUse use, const SourceLocation& where) const
{
    if (memoryLimit == NO_MEMORY_LIMIT)
        return;
    const MemoryForecast forecast(vPoints, use);
    const std::size_t numBytes = forecast.getBytes(usedSpacing);
    if (numBytes <= memoryLimit)
        return;
    const double fitting = forecast.findFitting(usedSpacing, memoryLimit);
    std::string reason = "at a spacing of " + toText(usedSpacing) + " the call would take about " +
                         megabytesText(numBytes) + " of memory, and the limit is " +
                         megabytesText(memoryLimit) + "; ";
    if (fitting == 0.0)
        reason += "no spacing would fit, give fewer points";
    else
        reason += "a spacing of " + toText(fitting) + " would fit" +
                  (detectedSpacing > 0.0 ? ", a factor of " + toText(fitting / detectedSpacing) : "");
    reportRefusal("numBytes <= memoryLimit", reason, where);
    throw ZefOverMemoryLimit(reason, numBytes, fitting);
}

void Cloud::refuseExtent(const char* condition, const SourceLocation& where) const
{
    const auto tell = [this](const double(&aPlace)[3])
    {
        const Point3 p = frame.leave({aPlace[0], aPlace[1], aPlace[2]});
        return toText(p.x()) + ", " + toText(p.y()) + ", " + toText(p.z());
    };
    refuse<ZefUnusablePoints>(condition,
                              "the coordinates reach from " + tell(bbMin) + " to " + tell(bbMax) +
                                  ", which is too far to compute with; check the input for damaged numbers",
                              where);
}

void Cloud::refuseCrowd(const char* condition, const SourceLocation& where) const
{
    if (!std::isfinite(getMaxExtent()))
        refuseExtent(condition, where);
    refuse<ZefUnusablePoints>(condition,
                              "no spacing can be detected: the " + std::to_string(numInputPoints) +
                                  " points lie too close together for their extent of " +
                                  toText(getMaxExtent()) +
                                  "; remove far outliers, or give a spacing in place of a factor",
                              where);
}

void Cloud::refuseSpacing(const char* condition, const SourceLocation& where) const
{
    if (spacingBy == SpacingBy::LENGTH)
        refuse<ZefBadArgument>(condition,
                               "spacing is " + toText(spacingAbs) +
                                   "; it must be above 0, a length in units of the points",
                               where);
    if (!(spacingFactor > 0.0) || detectedSpacing > 0.0)
        refuse<ZefBadArgument>(condition,
                               "spacing factor is " + toText(spacingFactor) +
                                   "; it must be above 0: 1.0 suits even clouds, 1.25 to 1.5 random ones",
                               where);
    const bool bSingle = numInputPoints == 1;
    refuse<ZefUnusablePoints>(
        condition,
        "no spacing can be detected: " +
            (bSingle ? std::string("there is a single point")
                     : "all " + std::to_string(numInputPoints) + " points are at the same place") +
            "; give points of a surface",
        where);
}

void Cloud::refuseLattice(const char* condition, const SourceLocation& where) const
{
    const double extent = getMaxExtent();
    if (!std::isfinite(extent) && std::isfinite(usedSpacing))
        refuseExtent(condition, where);
    const bool bTooSmall = usedSpacing < extent;
    const std::string subject = spacingBy == SpacingBy::LENGTH
                                    ? "spacing is " + toText(usedSpacing)
                                    : "spacing factor is " + toText(spacingFactor) +
                                          ", which makes a spacing of " + toText(usedSpacing);
    if (!bTooSmall)
        refuse<ZefBadArgument>(condition, subject + "; that is too large to compute with", where);
    const double smallest = getSmallestSpacing();
    const double bound = spacingBy == SpacingBy::LENGTH ? smallest : smallest / detectedSpacing;
    refuse<ZefBadArgument>(condition,
                           subject + "; that is too small for points that extend over " + toText(extent) +
                               ": take at least " + toText(bound) + ", or remove far outliers",
                           where);
}

} // namespace TARN_ZEF

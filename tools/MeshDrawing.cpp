#include "MeshDrawing.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <numeric>

#include "EdgeUse.h"
#include "PointBox.h"
#include "ToolError.h"
#include "colorScale.h"
#include "meshCurvature.h"
#include "meshPieces.h"

namespace TARN_TOOL
{
using TARN_ZEF::Point3;

namespace
{
// Beyond it all colors are those of the ends: needles and folds would leave the rest in one color.
constexpr double SHOWN_SHARE = 0.95;

// The size that this share of the values does not exceed, NaN left out.
double sizeOfShare(std::vector<double> vValues, double share)
{
    std::erase_if(vValues, [](double x) { return std::isnan(x); });
    if (vValues.empty())
        return 0.0;
    for (double& value : vValues)
        value = std::fabs(value);
    const auto rank = static_cast<std::ptrdiff_t>(share * static_cast<double>(vValues.size() - 1));
    std::nth_element(vValues.begin(), vValues.begin() + rank, vValues.end());
    return vValues[static_cast<std::size_t>(rank)];
}

// Of each piece how many have more points, or as many and a lower number.
std::vector<std::size_t> rankBySize(const std::vector<int>& vPieces)
{
    std::vector<std::size_t> vSizes(
        static_cast<std::size_t>(*std::max_element(vPieces.begin(), vPieces.end()) + 1), 0);
    for (const int piece : vPieces)
        ++vSizes[static_cast<std::size_t>(piece)];
    std::vector<std::size_t> vOrder(vSizes.size());
    std::iota(vOrder.begin(), vOrder.end(), std::size_t{0});
    std::stable_sort(vOrder.begin(), vOrder.end(),
                     [&](std::size_t a, std::size_t b) { return vSizes[a] > vSizes[b]; });
    std::vector<std::size_t> vRanks(vOrder.size());
    for (std::size_t rank = 0; rank < vOrder.size(); ++rank)
        vRanks[vOrder[rank]] = rank;
    return vRanks;
}
} // namespace

MeshDrawing::MeshDrawing(const std::vector<Point3>& vPoints_, const std::vector<int>& vCorners_)
{
    std::vector<int> vNumbers(vPoints_.size(), -1);
    const auto numberOf = [&](int corner)
    {
        int& number = vNumbers[static_cast<std::size_t>(corner)];
        if (number < 0)
        {
            number = static_cast<int>(vPoints.size());
            vPoints.push_back(vPoints_[static_cast<std::size_t>(corner)]);
            vSources.push_back(corner);
        }
        return number;
    };
    vCorners.reserve(vCorners_.size());
    for (std::size_t i = 0; i + 2 < vCorners_.size(); i += 3)
    {
        const auto first = vCorners_.begin() + static_cast<std::ptrdiff_t>(i);
        if (std::all_of(first, first + 3,
                        [&](int corner) { return isFinite(vPoints_[static_cast<std::size_t>(corner)]); }))
            std::transform(first, first + 3, std::back_inserter(vCorners), numberOf);
    }
    if (vCorners.empty())
        throw ToolError("there is no triangle with finite corners to draw");
}

void MeshDrawing::paint(const ColorLegend& legend_, const std::vector<double>& vValues)
{
    legend = legend_;
    vColors.clear();
    vColors.reserve(vValues.size());
    for (const double value : vValues)
    {
        const double share = legend_.high > 0.0 ? value / legend_.high : 0.0 * value;
        vColors.push_back(legend_.bSigned ? signedColorOf(share) : colorOf(share));
    }
}

void MeshDrawing::paintByDistance(const std::vector<double>& vDistances)
{
    paint({.name = "distance", .low = 0.0, .high = sizeOfShare(vDistances, SHOWN_SHARE), .bSigned = false},
          vDistances);
}

void MeshDrawing::paintByDistance(const std::vector<double>& vDistances, double highest)
{
    std::vector<double> vOfPoints(vPoints.size());
    for (std::size_t i = 0; i < vOfPoints.size(); ++i)
        vOfPoints[i] = vDistances[static_cast<std::size_t>(vSources[i])];
    paint({.name = "distance", .low = 0.0, .high = highest, .bSigned = false}, vOfPoints);
}

void MeshDrawing::paintByCurvature()
{
    const std::vector<double> vCurvatures = findCurvatures(vPoints, vCorners);
    const double highest = sizeOfShare(vCurvatures, SHOWN_SHARE);
    paint({.name = "curvature", .low = -highest, .high = highest, .bSigned = true}, vCurvatures);
}

void MeshDrawing::paintByPiece()
{
    const std::vector<int> vPieces = findPieces(vPoints.size(), vCorners);
    const std::vector<std::size_t> vRanks = rankBySize(vPieces);
    legend.reset();
    vColors.clear();
    vColors.reserve(vPieces.size());
    for (const int piece : vPieces)
        vColors.push_back(colorOfPiece(vRanks[static_cast<std::size_t>(piece)]));
}

void MeshDrawing::markEdges()
{
    vMarks.clear();
    forEachEdgeUse(vPoints.size(), vCorners,
                   [&](int a, int b, std::size_t num)
                   {
                       if (num != 2)
                           vMarks.push_back({a, b, num > 2});
                   });
}

} // namespace TARN_TOOL

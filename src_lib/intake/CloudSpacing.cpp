// The part of Cloud that finds the spacing of the points and the lattice that fits it.
#include "intake/Cloud.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

#include "core/CallRecorder.h"
#include "core/Progress.h"
#include "core/largeVectors.h"
#include "geometry/tools.h"
#include "parallel/parallelFor.h"
#include "parallel/sortMT2.h"

namespace TARN_ZEF
{
namespace
{
constexpr std::size_t MIN_CHUNK = 20000;

// The fine lattice on which points are told apart.
constexpr int FINE_LEVELS = 20;
// Neighbours that part below this level are as good as equal.
constexpr int MIN_DIFF_LEVEL = 2;
// From the level where neighbours part to one where a cell of the surface holds a few points.
constexpr int LEVELS_UP = 2;
// Area of the surface in a cell that it passes through, as a divisor of the squared cell edge. Empirical.
constexpr double EDGE_SQ_PER_AREA = 1.307025;
// Squared spacing of points in a dense regular pattern, per area of a point.
constexpr double SPACING_SQ_PER_AREA = 1.5396;

// Cells added to the extent of the points: half of them on either side.
constexpr double FRAME_CELLS = 9.0;

// For each neighbouring pair of sorted codes, the highest level at which they differ; how often each level
// occurs. Equal codes count nowhere.
std::array<std::size_t, FINE_LEVELS + 1> countDiffLevels(const std::vector<CCD>& vCCD)
{
    constexpr u64 usedBits = (u64{1} << (3 * (FINE_LEVELS + 1))) - 1;
    std::array<std::size_t, FINE_LEVELS + 1> aCounts = {};
    for (std::size_t i = 1; i < vCCD.size(); ++i)
    {
        const u64 differing = (vCCD[i - 1] ^ vCCD[i]) & usedBits;
        if (differing != 0)
            ++aCounts[static_cast<std::size_t>(std::bit_width(differing) - 1) / 3];
    }
    return aCounts;
}

// The upper median of the levels that tell something, -1 if there are none.
int findMedianLevel(const std::vector<CCD>& vCCD)
{
    const auto aCounts = countDiffLevels(vCCD);
    std::size_t numAll = 0;
    for (std::size_t level = MIN_DIFF_LEVEL; level < aCounts.size(); ++level)
        numAll += aCounts[level];
    std::size_t numBelow = 0;
    for (std::size_t level = MIN_DIFF_LEVEL; level < aCounts.size(); ++level)
    {
        numBelow += aCounts[level];
        if (numBelow > numAll / 2)
            return static_cast<int>(level);
    }
    return -1;
}

// Different cells at a coarser level; the codes stay sorted when they are cut.
std::size_t countCells(const std::vector<CCD>& vCCD, int level)
{
    const int shift = 3 * level;
    if (shift >= 64)
        return 1;
    std::size_t numCells = 1;
    for (std::size_t i = 1; i < vCCD.size(); ++i)
        numCells += vCCD[i - 1] >> shift != vCCD[i] >> shift ? 1 : 0;
    return numCells;
}
} // namespace

double Cloud::getMaxExtent() const
{
    return getMax(bbMax[0] - bbMin[0], bbMax[1] - bbMin[1], bbMax[2] - bbMin[2]);
}

void Cloud::estimateResolution()
{
    if (spacingAbs > 0.0)
    {
        usedSpacing = spacingAbs;
        return;
    }
    const double maxExtent = getMaxExtent();
    if (maxExtent == 0.0)
        return;
    const StageScope stage("spacing");
    Progress* const pProgress = getRootProgress()->getChildProgressSetTodo("CL_eres", 6);
    pProgress->increment();
    const Calc calc(bbMin[0], bbMin[1], bbMin[2], maxExtent, maxExtent, maxExtent, FINE_LEVELS);
    std::vector<CCD> vCCD;
    growTo(vCCD, vPoints.size());
    parallelFor(vCCD.size(), MIN_CHUNK,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                        vCCD[i] = calc.getCCD(vPoints[i]);
                });
    pProgress->increment();
    sortMT(vCCD.begin(), vCCD.end());
    pProgress->increment();
    const int medianLevel = findMedianLevel(vCCD);
    // Points that all fall together, or a single one, have no spacing.
    if (medianLevel < 0)
        refuseCrowd("!vDiffLevels.empty()");
    pProgress->increment(2);
    const int level = medianLevel + LEVELS_UP;
    const std::size_t numCells = countCells(vCCD, level);
    pProgress->increment();
    const double edge = std::ldexp(calc.getCellSizeX(), level);
    const double cellArea = edge * edge / EDGE_SQ_PER_AREA;
    const double totalArea = static_cast<double>(numCells) * cellArea;
    const double areaPerPoint = totalArea / static_cast<double>(numInputPoints);
    detectedSpacing = std::sqrt(SPACING_SQ_PER_AREA * areaPerPoint);
    usedSpacing = spacingFactor * detectedSpacing;
    if (CallReport* const pReport = getCallReport())
        pReport->detectedSpacing = detectedSpacing;
    pProgress->setFinished(true);
}

// With a little room for rounding.
double Cloud::getSmallestSpacing() const
{
    return 1.001 * getMaxExtent() / (std::ldexp(1.0, MAXLEVELS) - FRAME_CELLS);
}

void Cloud::createCalc()
{
    if (!(usedSpacing > 0))
        refuseSpacing("usedSpacing>0");
    cellEdge = usedSpacing;
    // A double until it is known to be small: extent and spacing may be anything.
    const double numReqC = std::ceil(getMaxExtent() / cellEdge) + FRAME_CELLS;
    const double wantedLevel = std::floor(std::log2(numReqC)) + 1.0;
    int baseLevel = MAXLEVELS;
    if (wantedLevel <= MAXLEVELS)
        baseLevel = static_cast<int>(wantedLevel);
    else
        warningMessage("Cloud", "BaseLevel out of range: " + toText(wantedLevel));
    const double numCReal = std::ldexp(1.0, baseLevel);
    if (!(numCReal >= numReqC))
        refuseLattice("numCReal>=numReqC");
    for (int axis = 0; axis < 3; ++axis)
    {
        bbMin[axis] -= 0.5 * FRAME_CELLS * cellEdge;
        bbMax[axis] += 0.5 * FRAME_CELLS * cellEdge;
    }
    const double edge = numCReal * cellEdge;
    if (!std::isfinite(edge) || !std::isfinite(getMaxExtent()))
        refuseLattice("std::isfinite(edge) && std::isfinite(getMaxExtent())");
    pCalc = std::make_unique<Calc>(bbMin[0], bbMin[1], bbMin[2], edge, edge, edge, baseLevel);
    if (CallReport* const pReport = getCallReport())
    {
        pReport->usedSpacing = usedSpacing;
        pReport->latticeBits = baseLevel;
    }
}

} // namespace TARN_ZEF

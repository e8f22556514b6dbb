#include "intake/MemoryForecast.h"

#include "geometry/tools.h"
#include "lattice/CellIndex.h"
#include "occupancy/SheetGaps.h"
#include "parallel/parallelFor.h"
#include "parallel/sortMT2.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <cstdint>

namespace TARN_ZEF
{
namespace
{
constexpr std::size_t MIN_CHUNK = 20000;

// Bytes, measured; see docs/results.md.
struct Weights
{
    double perPoint;       // of the intake, and per corner
    double perIntakeCell;  // of the intake
    double perCell;        // of the mesh
    double perCellInSheet; // of the mesh, for its triangles
};
constexpr Weights SCAN_WEIGHTS = {34.0, 80.0, 435.0, 420.0};
constexpr Weights SMOOTHED_WEIGHTS = {34.0, 80.0, 390.0, 375.0};
constexpr Weights MELT_WEIGHTS = {85.0, 120.0, 440.0, 430.0};
constexpr Weights SAMPLES_WEIGHTS = {85.0, 150.0, 0.0, 0.0};
// Worker threads and the like.
constexpr double FIXED_BYTES = 2.2e6;
// Of the lesser peak.
constexpr double KEPT_BY_HEAP = 0.15;

// A cell of a plain sheet has as many neighbours, across corners too.
constexpr std::uint64_t NEIGHBOURS_IN_SHEET = 8;
// Cells that a lattice needs beyond the extent, as in Cloud.
constexpr double FRAME_CELLS = 9.0;

constexpr double FIT_MARGIN = 1.02; // on the spacing of each trial
constexpr int MAX_TRIALS = 40;

[[nodiscard]] const Weights& weightsOf(MemoryUse use)
{
    switch (use)
    {
    case MemoryUse::SCAN:
        return SCAN_WEIGHTS;
    case MemoryUse::SMOOTHED_SCAN:
        return SMOOTHED_WEIGHTS;
    case MemoryUse::MELT:
        return MELT_WEIGHTS;
    case MemoryUse::SAMPLES:
        break;
    }
    return SAMPLES_WEIGHTS;
}

std::vector<CCD> findOccupied(const std::vector<Point3>& vPoints, const Calc& calc)
{
    std::vector<CCD> vCCD(vPoints.size());
    parallelFor(vCCD.size(), MIN_CHUNK,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                        vCCD[i] = calc.getCCD(vPoints[i]);
                });
    sortMT(vCCD.begin(), vCCD.end());
    vCCD.erase(std::unique(vCCD.begin(), vCCD.end()), vCCD.end());
    return vCCD;
}

// As whole numbers: the sum does not depend on its order.
std::uint64_t countNeighbours(const CellIndex& index, const Calc& calc, const std::vector<CCD>& vCCD)
{
    std::atomic<std::uint64_t> sum{0};
    parallelFor(vCCD.size(), MIN_CHUNK,
                [&](std::size_t from, std::size_t to)
                {
                    std::uint64_t own = 0;
                    std::array<CCD, 27> block;
                    for (std::size_t i = from; i < to; ++i)
                    {
                        calc.completeArray27(vCCD[i], block.data());
                        const auto numCells = std::count_if(block.begin(), block.end(),
                                                            [&](CCD ccd) { return index.contains(ccd); });
                        own += std::min(static_cast<std::uint64_t>(numCells) - 1, NEIGHBOURS_IN_SHEET);
                    }
                    sum += own;
                });
    return sum;
}
} // namespace

MemoryForecast::MemoryForecast(const std::vector<Point3>& vPoints_, MemoryUse use_)
    : vPoints(vPoints_)
    , use(use_)
    , low(vPoints_.front())
{
    Point3 high = low;
    for (const Point3& p : vPoints)
    {
        low.set(std::min(low.x(), p.x()), std::min(low.y(), p.y()), std::min(low.z(), p.z()));
        high.set(std::max(high.x(), p.x()), std::max(high.y(), p.y()), std::max(high.z(), p.z()));
    }
    maxExtent = (high - low).getMaxComponent();
}

std::size_t MemoryForecast::getBytes(double spacing) const
{
    const Weights& weights = weightsOf(use);
    const Cells cells = countCells(spacing);
    const double intake = getIntakeBytes() + weights.perIntakeCell * cells.num;
    const double mesh = weights.perCell * cells.num + weights.perCellInSheet * cells.inSheet;
    return static_cast<std::size_t>(FIXED_BYTES + std::max(intake, mesh) +
                                    KEPT_BY_HEAP * std::min(intake, mesh));
}

// The number of cells falls with the square of the spacing, or slower where they are few already.
double MemoryForecast::findFitting(double spacing, std::size_t limit) const
{
    if (FIXED_BYTES + getIntakeBytes() > static_cast<double>(limit))
        return 0.0;
    for (int i = 0; i < MAX_TRIALS; ++i)
    {
        const std::size_t bytes = getBytes(spacing);
        if (bytes <= limit)
            return spacing;
        spacing *= FIT_MARGIN * std::sqrt(static_cast<double>(bytes) / static_cast<double>(limit));
    }
    return 0.0;
}

double MemoryForecast::getIntakeBytes() const
{
    return weightsOf(use).perPoint * static_cast<double>(vPoints.size());
}

MemoryForecast::Cells MemoryForecast::countCells(double spacing) const
{
    if (use == MemoryUse::SCAN || use == MemoryUse::SMOOTHED_SCAN)
        return countCellsOfPoints(spacing);
    const double num = countCellsOfTriangles(spacing);
    return {num, num};
}

MemoryForecast::Cells MemoryForecast::countCellsOfPoints(double spacing) const
{
    const Calc calc = makeLattice(spacing);
    std::vector<CCD> vCCD = findOccupied(vPoints, calc);
    {
        const SheetGaps gaps(vCCD, &calc);
        vCCD.insert(vCCD.end(), gaps.getEnclosed().begin(), gaps.getEnclosed().end());
        vCCD.insert(vCCD.end(), gaps.getNeeded().begin(), gaps.getNeeded().end());
    }
    sortMT(vCCD.begin(), vCCD.end());
    const CellIndex index(vCCD);
    const double numNeighbours = static_cast<double>(countNeighbours(index, calc, vCCD));
    return {static_cast<double>(vCCD.size()), numNeighbours / static_cast<double>(NEIGHBOURS_IN_SHEET)};
}

// A plane crosses, of each area of a cell's face, as many cells as its normal has length along all axes together.
double MemoryForecast::countCellsOfTriangles(double spacing) const
{
    double sum = 0.0;
    for (std::size_t i = 0; i + 2 < vPoints.size(); i += 3)
    {
        const Vector3 cross = crossProduct(vPoints[i + 1] - vPoints[i], vPoints[i + 2] - vPoints[i]);
        sum += 0.5 * (std::fabs(cross.x()) + std::fabs(cross.y()) + std::fabs(cross.z()));
    }
    return sum / (spacing * spacing);
}

Calc MemoryForecast::makeLattice(double spacing) const
{
    const double numCells = std::ceil(maxExtent / spacing) + FRAME_CELLS;
    const int numLevels = static_cast<int>(std::floor(std::log2(numCells))) + 1;
    const double edge = std::ldexp(spacing, numLevels);
    const double frame = 0.5 * FRAME_CELLS * spacing;
    return {low.x() - frame, low.y() - frame, low.z() - frame, edge, edge, edge, numLevels};
}

} // namespace TARN_ZEF

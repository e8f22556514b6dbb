#include "sheets/FacingField.h"

#include "core/largeVectors.h"
#include "parallel/parallelFor.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace TARN_ZEF
{
namespace
{
// All lengths in spacings. Coarser cells join sheets that lie two and a half apart, finer ones only take longer.
constexpr double CELL = 0.75;
// Cells around the points: no gap of random points that is wider is to be expected.
constexpr int NEAR_CELLS = 4;
// Points that are farther away than the nearest one by more than that say nothing.
constexpr double KERNEL = 1.6;
// Up to here the points have a say against the neighbours in the lattice, and how much at the most.
constexpr double SURE = 1.4;
constexpr double SURE_WEIGHT = 20.0;
constexpr int NUM_ROUNDS = 15;
// What lies deeper says no more about where the surface is.
constexpr double MOST_DEPTH = 1.5;
constexpr double COVERED = 0.75;
// A lattice has lines for all places of its box, points only near the cloud.
constexpr std::size_t MOST_LINES_A_POINT = 64;
constexpr std::size_t MIN_CHUNK = 1'000;

Place placeOf(const Point3& p)
{
    return {p.x(), p.y(), p.z()};
}

int roundDown(double x)
{
    return static_cast<int>(std::floor(x));
}
} // namespace

FacingField::FacingField(const std::vector<Point3>& vPoints_, const std::vector<Vector3>& vNormals_,
                         const PointGrid& grid_, double spacing_)
    : vPoints(vPoints_)
    , vNormals(vNormals_)
    , grid(grid_)
    , spacing(spacing_)
{
}

bool FacingField::run()
{
    if (!makeLattice())
        return false;
    findNear();
    evaluate();
    smooth();
    return true;
}

bool FacingField::makeLattice()
{
    Place low = placeOf(vPoints.front());
    Place high = low;
    for (const Point3& p : vPoints)
        for (int axis = 0; axis < 3; ++axis)
        {
            low[axis] = std::min(low[axis], placeOf(p)[axis]);
            high[axis] = std::max(high[axis], placeOf(p)[axis]);
        }
    lattice.cell = CELL * spacing;
    constexpr int frame = NEAR_CELLS + 2;
    for (int axis = 0; axis < 3; ++axis)
    {
        const double cells = (high[axis] - low[axis]) / lattice.cell + 2.0 * frame + 1.0;
        if (!(cells < double{1 << HullLattice::BITS}))
            return false;
        lattice.size[axis] = roundDown(cells) + 1;
        low[axis] -= frame * lattice.cell;
    }
    lattice.origin.set(low[0], low[1], low[2]);
    return lattice.numLines(0) <= MOST_LINES_A_POINT * (vPoints.size() + 1'000);
}

void FacingField::findNear()
{
    std::vector<std::pair<std::size_t, int>> vPlaces; // line, place on it
    vPlaces.reserve(vPoints.size());
    for (const Point3& p : vPoints)
    {
        const Place place = lattice.toPlace(p);
        vPlaces.emplace_back(lattice.lineOf(0, {0, roundDown(place[1]), roundDown(place[2])}),
                             roundDown(place[0]));
    }
    std::sort(vPlaces.begin(), vPlaces.end());
    auto it = vPlaces.begin();
    const PointRuns own(lattice,
                        [&](std::size_t line, std::vector<PointRuns::Run>& vLine)
                        {
                            for (; it != vPlaces.end() && it->first == line; ++it)
                                vLine.push_back({it->second, it->second + 2});
                        });
    oNear.emplace(own.widened(NEAR_CELLS));
    vFirst.assign(1, 0);
    vFirst.reserve(lattice.numLines(0) + 1);
    for (std::size_t line = 0; line < lattice.numLines(0); ++line)
    {
        std::size_t num = 0;
        for (const PointRuns::Run& run : oNear->onLine(line))
            num += static_cast<std::size_t>(run.to - run.from);
        vFirst.push_back(vFirst.back() + num);
    }
}

std::uint32_t FacingField::indexOf(const Cell& p) const
{
    const std::size_t line = lattice.lineOf(0, p);
    std::size_t index = vFirst[line];
    for (const PointRuns::Run& run : oNear->onLine(line))
    {
        if (p[0] < run.from)
            break;
        if (p[0] < run.to)
            return static_cast<std::uint32_t>(index + static_cast<std::size_t>(p[0] - run.from));
        index += static_cast<std::size_t>(run.to - run.from);
    }
    return NONE;
}

// Calls f(index, p) for the lattice points near the cloud on lines [from, to).
template <typename F>
void FacingField::forEachOnLines(std::size_t from, std::size_t to, F f) const
{
    for (std::size_t line = from; line < to; ++line)
    {
        std::size_t index = vFirst[line];
        const auto width = static_cast<std::size_t>(lattice.size[1]);
        Cell p = {0, static_cast<int>(line % width), static_cast<int>(line / width)};
        for (const PointRuns::Run& run : oNear->onLine(line))
            for (p[0] = run.from; p[0] < run.to; ++p[0])
                f(index++, p);
    }
}

void FacingField::evaluate()
{
    growTo(vValues, vFirst.back());
    growTo(vWeights, vFirst.back());
    parallelFor(
        lattice.numLines(0), MIN_CHUNK,
        [&](std::size_t from, std::size_t to)
        {
            Hits vHits;
            forEachOnLines(
                from, to,
                [&](std::size_t index, const Cell& p)
                {
                    checkCancelledAt(index);
                    evaluateAt(index, lattice.toPoint({double(p[0]), double(p[1]), double(p[2])}), vHits);
                });
        });
}

// Far from all points nothing is said: value and weight stay 0.
void FacingField::evaluateAt(std::size_t index, const Point3& p, Hits& vHits)
{
    double nearest = std::numeric_limits<double>::infinity();
    vHits.clear();
    grid.visit(p,
               [&](const PointGrid::Hit& hit)
               {
                   vHits.push_back(hit);
                   nearest = std::min(nearest, hit.squaredDistance);
               });
    if (vHits.empty())
        return;
    const double reach = KERNEL * spacing + std::sqrt(nearest);
    double sum = 0.0;
    double sumWeights = 0.0;
    for (const PointGrid::Hit& hit : vHits)
    {
        const double rest = 1.0 - hit.squaredDistance / (reach * reach);
        if (!(rest > 0.0))
            continue;
        const double weight = rest * rest * rest * rest;
        sum += weight * (vNormals[hit.index] * (p - vPoints[hit.index]));
        sumWeights += weight;
    }
    const double value = sum / (sumWeights * spacing);
    vValues[index] = static_cast<float>(std::clamp(value, -MOST_DEPTH, MOST_DEPTH));
    const double sure = std::max(0.0, 1.0 - nearest / (SURE * SURE * spacing * spacing));
    vWeights[index] = static_cast<float>(SURE_WEIGHT * sure * sure);
}

// Towards the mean of the neighbours, against the own first value by its weight.
void FacingField::smooth()
{
    constexpr int NUM_SIDES = 6;
    std::vector<std::array<std::uint32_t, NUM_SIDES>> vNeighbours;
    growTo(vNeighbours, vValues.size());
    parallelFor(lattice.numLines(0), MIN_CHUNK,
                [&](std::size_t from, std::size_t to)
                {
                    forEachOnLines(from, to,
                                   [&](std::size_t index, const Cell& p)
                                   {
                                       for (int side = 0; side < NUM_SIDES; ++side)
                                       {
                                           Cell other = p;
                                           other[side / 2] += side % 2 == 0 ? 1 : -1;
                                           vNeighbours[index][side] = indexOf(other);
                                       }
                                   });
                });
    const std::vector<float> vSaid = vValues;
    std::vector<float> vNext(vValues.size());
    for (int round = 0; round < NUM_ROUNDS; ++round)
    {
        parallelFor(vValues.size(), MIN_CHUNK,
                    [&](std::size_t from, std::size_t to)
                    {
                        for (std::size_t i = from; i < to; ++i)
                        {
                            double sum = double{vWeights[i]} * double{vSaid[i]};
                            double sumWeights = vWeights[i];
                            for (const std::uint32_t neighbour : vNeighbours[i])
                                if (neighbour != NONE)
                                {
                                    sum += vValues[neighbour];
                                    sumWeights += 1.0;
                                }
                            vNext[i] = static_cast<float>(sum / sumWeights);
                        }
                    });
        vValues.swap(vNext);
    }
}

bool FacingField::isWhole(const Cell& cell) const
{
    for (int corner = 0; corner < 8; ++corner)
        if (indexOf({cell[0] + (corner & 1), cell[1] + (corner >> 1 & 1), cell[2] + (corner >> 2)}) == NONE)
            return false;
    return true;
}

std::optional<std::vector<DualSurface::Change>> FacingField::findChanges() const
{
    std::vector<DualSurface::Change> vChanges;
    bool bOpen = false;
    forEachOnLines(0, lattice.numLines(0),
                   [&](std::size_t index, const Cell& p)
                   {
                       checkCancelledAt(index);
                       const bool bInside = vValues[index] < 0.0F;
                       for (int axis = 0; axis < 3; ++axis)
                       {
                           Cell upper = p;
                           ++upper[axis];
                           const std::uint32_t other = indexOf(upper);
                           if (other == NONE || (vValues[other] < 0.0F) == bInside)
                               continue;
                           const int right = HullLattice::after(axis);
                           const int up = HullLattice::before(axis);
                           for (int i = 0; i < 4; ++i)
                           {
                               Cell cell = p;
                               cell[right] -= i & 1;
                               cell[up] -= i >> 1;
                               bOpen = bOpen || !isWhole(cell);
                           }
                           vChanges.push_back({p, axis, bInside});
                       }
                   });
    if (bOpen)
        return std::nullopt;
    return vChanges;
}

double FacingField::interpolate(const Point3& p) const
{
    const Place place = lattice.toPlace(p);
    const Cell low = {roundDown(place[0]), roundDown(place[1]), roundDown(place[2])};
    double sum = 0.0;
    for (int corner = 0; corner < 8; ++corner)
    {
        Cell at = low;
        double weight = 1.0;
        for (int axis = 0; axis < 3; ++axis)
        {
            const double part = place[axis] - low[axis];
            const bool bUpper = (corner >> axis & 1) != 0;
            at[axis] += bUpper ? 1 : 0;
            weight *= bUpper ? part : 1.0 - part;
        }
        sum += weight * double{vValues[indexOf(at)]};
    }
    return sum;
}

double FacingField::getCovered() const
{
    std::size_t num = 0;
    for (std::size_t i = 0; i < vPoints.size(); ++i)
    {
        checkCancelledAt(i);
        if (std::fabs(interpolate(vPoints[i])) <= COVERED)
            ++num;
    }
    return static_cast<double>(num) / static_cast<double>(vPoints.size());
}

} // namespace TARN_ZEF

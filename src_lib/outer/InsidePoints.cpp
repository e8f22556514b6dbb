#include "outer/InsidePoints.h"

#include "core/cancel.h"

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
// Walls are two points thick at most where one triangle passes, somewhat more in its corners.
constexpr int BACKING_PASSES = 3;

int firstBehind(const LineCrossings::Crossing& crossing)
{
    return static_cast<int>(std::floor(crossing.at)) + 1;
}
} // namespace

InsidePoints::InsidePoints(const HullLattice& lattice_, const AllCrossings& crossings_,
                           const std::vector<bool>& vOpen_, int bridgedCells)
    : lattice(lattice_)
    , crossings(crossings_)
    , vOpen(vOpen_)
    , inside(findWound())
    , walls(findWalls())
{
    const int steps = (bridgedCells + 1) / 2;
    const PointRuns taken = inside.unitedWith(walls);
    // What is only narrow comes back with the second widening; what lies behind a gap does not.
    const PointRuns reached = taken.widened(steps).floodAround().widened(steps);
    PointRuns solid = inside.unitedWith(reached.unitedWith(taken).getOthers());
    for (int pass = 0; pass < BACKING_PASSES; ++pass)
        solid = solid.unitedWith(selectWalls([&](const Cell& p) { return isBacked(p, solid); }));
    walls = selectWalls([&](const Cell& p) { return !solid.has(p) && isNeeded(p, solid); });
    inside = solid.unitedWith(walls).floodAround().getOthers();
}

PointRuns InsidePoints::findWound() const
{
    return {lattice, [this](std::size_t line, std::vector<PointRuns::Run>& vLine)
            {
                int winding = 0;
                int from = 0;
                for (const LineCrossings::Crossing& crossing : crossings[0].onLine(line))
                {
                    if (vOpen[crossing.getTriangle()])
                        continue;
                    if (winding == 0)
                        from = firstBehind(crossing);
                    winding += crossing.enters() ? 1 : -1;
                    if (winding == 0)
                        vLine.push_back({from, firstBehind(crossing)});
                }
            }};
}

// Calls f(p, q, triangle) for the points beside each crossing between points that are both not wound round.
template <typename F>
void InsidePoints::forEachUnseen(F f) const
{
    for (int axis = 0; axis < 3; ++axis)
        for (std::size_t line = 0; line < lattice.numLines(axis); ++line)
        {
            checkCancelledAt(line);
            const auto perRow = static_cast<std::size_t>(lattice.size[HullLattice::after(axis)]);
            Cell p = {0, 0, 0};
            p[HullLattice::after(axis)] = static_cast<int>(line % perRow);
            p[HullLattice::before(axis)] = static_cast<int>(line / perRow);
            for (const LineCrossings::Crossing& crossing : crossings[axis].onLine(line))
            {
                Cell q = p;
                q[axis] = firstBehind(crossing);
                p[axis] = q[axis] - 1;
                if (!inside.has(p) && !inside.has(q))
                    f(p, q, crossing.at - p[axis] < 0.5 ? p : q, crossing.getTriangle());
            }
        }
}

// A closed sheet shows within a step if it shows at all; where it does not, it gets walls, and these reach up to where it
// shows again.
PointRuns InsidePoints::findWalls() const
{
    std::vector<Cell> vPoints;
    forEachUnseen(
        [&](const Cell& p, const Cell& q, const Cell& nearer, int triangle)
        {
            if (vOpen[triangle] || (!inside.isNear(p) && !inside.isNear(q)))
                vPoints.push_back(nearer);
        });
    if (vPoints.empty())
        return makeRuns(vPoints);
    const PointRuns sure = makeRuns(vPoints);
    forEachUnseen(
        [&](const Cell& p, const Cell& q, const Cell& nearer, int)
        {
            if (sure.isNear(p) || sure.isNear(q))
                vPoints.push_back(nearer);
        });
    return makeRuns(vPoints);
}

PointRuns InsidePoints::makeRuns(std::vector<Cell>& vPoints) const
{
    std::sort(vPoints.begin(), vPoints.end(),
              [](const Cell& a, const Cell& b) { return HullLattice::keyOf(a) < HullLattice::keyOf(b); });
    auto it = vPoints.begin();
    return {lattice, [&](std::size_t line, std::vector<PointRuns::Run>& vLine)
            {
                for (; it != vPoints.end() && lattice.lineOf(0, *it) == line; ++it)
                    vLine.push_back({(*it)[0], (*it)[0] + 1});
            }};
}

template <typename F>
PointRuns InsidePoints::selectWalls(F isChosen) const
{
    std::vector<Cell> vPoints;
    Cell p = {0, 0, 0};
    for (p[2] = 0; p[2] < lattice.size[2]; ++p[2])
        for (p[1] = 0; p[1] < lattice.size[1]; ++p[1])
        {
            checkCancelledAt(lattice.lineOf(0, p));
            for (const PointRuns::Run& run : walls.onLine(lattice.lineOf(0, p)))
                for (p[0] = run.from; p[0] < run.to; ++p[0])
                    if (isChosen(p))
                        vPoints.push_back(p);
        }
    return makeRuns(vPoints);
}

// Calls f(q, bCrossed) for the six points beside p.
template <typename F>
void InsidePoints::forEachNeighbour(const Cell& p, F f) const
{
    for (int axis = 0; axis < 3; ++axis)
        for (const int step : {-1, 1})
        {
            Cell q = p;
            q[axis] += step;
            f(q, !crossings[axis].after(step < 0 ? q : p).empty());
        }
}

// On the solid side of the triangles: such walls are solid themselves.
bool InsidePoints::isBacked(const Cell& wall, const PointRuns& solid) const
{
    bool bSolidBeside = false;
    bool bOpenBeside = false;
    forEachNeighbour(wall,
                     [&](const Cell& q, bool bCrossed)
                     {
                         const bool bSolid = solid.has(q);
                         bSolidBeside = bSolidBeside || (bSolid && !bCrossed);
                         bOpenBeside = bOpenBeside || (!bSolid && !bCrossed && !walls.has(q));
                     });
    return bSolidBeside && !bOpenBeside;
}

// A wall outside of the triangles that it stands for is not needed where behind these all is solid: the surface is then
// theirs.
bool InsidePoints::isNeeded(const Cell& wall, const PointRuns& solid) const
{
    bool bOpenOutward = false;
    bool bOpenBehind = false;
    forEachNeighbour(wall,
                     [&](const Cell& q, bool bCrossed)
                     {
                         const bool bSolid = solid.has(q);
                         bOpenBehind = bOpenBehind || (bCrossed && !bSolid);
                         bOpenOutward = bOpenOutward || (!bCrossed && !bSolid && !walls.has(q));
                     });
    return bOpenBehind || !bOpenOutward;
}

} // namespace TARN_ZEF

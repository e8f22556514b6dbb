#include "outer/LineCrossings.h"

#include "core/cancel.h"

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
// How far rounding may move the ends of a row, in cells; who stands between them is told exactly.
constexpr double ROW_MARGIN = 1e-6;

int ceilOf(double x)
{
    return static_cast<int>(std::ceil(x));
}

int floorOf(double x)
{
    return static_cast<int>(std::floor(x));
}
} // namespace

LineCrossings::LineCrossings(const HullLattice& lattice_, int axis_, const std::vector<Place>& vPlaces_,
                             const std::vector<int>& vCorners_)
    : lattice(lattice_)
    , axis(axis_)
    , right(HullLattice::after(axis_))
    , up(HullLattice::before(axis_))
    , signs(static_cast<double>(std::max({lattice_.size[0], lattice_.size[1], lattice_.size[2]})))
{
    std::vector<Found> vFound;
    for (std::size_t c = 0; c < vCorners_.size(); c += 3)
    {
        checkCancelledAt(c / 3);
        cross(static_cast<int>(c / 3), vPlaces_, vCorners_, vFound);
    }
    sortIn(vFound);
}

void LineCrossings::cross(int t, const std::vector<Place>& vPlaces, const std::vector<int>& vCorners,
                          std::vector<Found>& vFound) const
{
    std::array<Place, 3> corners;
    for (int k = 0; k < 3; ++k)
        corners[k] = vPlaces[vCorners[3 * t + k]];
    const auto [low, high] = std::minmax({corners[0][up], corners[1][up], corners[2][up]});
    for (int row = ceilOf(low); row <= floorOf(high); ++row)
        crossRow(t, corners, row, vFound);
}

void LineCrossings::crossRow(int t, const std::array<Place, 3>& corners, int row,
                             std::vector<Found>& vFound) const
{
    double low = lattice.size[right];
    double high = 0.0;
    for (int k = 0; k < 3; ++k)
    {
        const Place& p = corners[k];
        const Place& q = corners[(k + 1) % 3];
        if (std::min(p[up], q[up]) > row || std::max(p[up], q[up]) < row)
            continue;
        const double part = p[up] == q[up] ? 0.0 : (row - p[up]) / (q[up] - p[up]);
        const double at = p[right] + part * (q[right] - p[right]);
        low = std::min({low, at, p[up] == q[up] ? q[right] : at});
        high = std::max({high, at, p[up] == q[up] ? q[right] : at});
    }
    const Place& a = corners[0];
    const auto across = [&](int i, int k) {
        return (corners[1][i] - a[i]) * (corners[2][k] - a[k]) -
               (corners[1][k] - a[k]) * (corners[2][i] - a[i]);
    };
    const double normalAlong = across(right, up);
    const double normalRight = across(up, axis);
    const double normalUp = across(axis, right);
    const auto [lowest, highest] = std::minmax({a[axis], corners[1][axis], corners[2][axis]});
    Place p = {0.0, 0.0, 0.0};
    p[up] = row;
    for (int column = ceilOf(low - ROW_MARGIN); column <= floorOf(high + ROW_MARGIN); ++column)
    {
        p[right] = column;
        const int side = sideOf(a, corners[1], p);
        if (side == 0 || sideOf(corners[1], corners[2], p) != side || sideOf(corners[2], a, p) != side)
            continue;
        const double above = normalRight * (column - a[right]) + normalUp * (row - a[up]);
        const double at =
            normalAlong == 0.0 ? lowest : std::clamp(a[axis] - above / normalAlong, lowest, highest);
        HullLattice::Cell cell = {0, 0, 0};
        cell[right] = column;
        cell[up] = row;
        vFound.push_back({lattice.lineOf(axis, cell), {at, side < 0 ? t : ~t}});
    }
}

// Seen from the far end of the axis; a point on the edge counts as moved to the right, and much less up.
int LineCrossings::sideOf(const Place& from, const Place& to, const Place& p) const
{
    const int turn = signs.getTurn(axis, from, to, p);
    if (turn != 0)
        return turn;
    if (to[up] != from[up])
        return to[up] > from[up] ? -1 : 1;
    if (to[right] != from[right])
        return to[right] > from[right] ? 1 : -1;
    return 0;
}

void LineCrossings::sortIn(const std::vector<Found>& vFound)
{
    vOffsets.assign(lattice.numLines(axis) + 1, 0);
    for (const Found& found : vFound)
        ++vOffsets[found.line + 1];
    for (std::size_t line = 0; line + 1 < vOffsets.size(); ++line)
        vOffsets[line + 1] += vOffsets[line];
    vCrossings.resize(vFound.size());
    std::vector<unsigned> vNext(vOffsets.begin(), vOffsets.end() - 1);
    for (const Found& found : vFound)
        vCrossings[vNext[found.line]++] = found.crossing;
    for (std::size_t line = 0; line + 1 < vOffsets.size(); ++line)
        std::sort(vCrossings.begin() + vOffsets[line], vCrossings.begin() + vOffsets[line + 1],
                  [](const Crossing& a, const Crossing& b)
                  { return a.at != b.at ? a.at < b.at : a.getTriangle() < b.getTriangle(); });
}

LineCrossings::Range LineCrossings::after(const HullLattice::Cell& p) const noexcept
{
    const Range all = onLine(lattice.lineOf(axis, p));
    const auto isBefore = [](const Crossing& crossing, double at) { return crossing.at < at; };
    const Crossing* const pBegin =
        std::lower_bound(all.pBegin, all.pEnd, static_cast<double>(p[axis]), isBefore);
    const Crossing* const pEnd =
        std::lower_bound(pBegin, all.pEnd, static_cast<double>(p[axis] + 1), isBefore);
    return {pBegin, pEnd};
}

} // namespace TARN_ZEF

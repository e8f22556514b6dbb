#include "sheets/BodySurface.h"

#include "geometry/tools.h"

namespace TARN_ZEF
{
Point3 BodySurface::findCrossing(const Change& change) const
{
    Cell upper = change.lower;
    ++upper[change.axis];
    const double first = field.at(change.lower);
    const double second = field.at(upper);
    Place place = {double(change.lower[0]), double(change.lower[1]), double(change.lower[2])};
    place[change.axis] += first / (first - second);
    return lattice.toPoint(place);
}

HullVertex BodySurface::makeVertex(const Cell& /*cell*/, const std::vector<const Change*>& vLoop) const
{
    const Point3 base = findCrossing(*vLoop.front());
    Vector3 sum;
    for (const Change* pChange : vLoop)
        sum.add(findCrossing(*pChange) - base);
    const Point3 middle = base + sum * (1.0 / static_cast<double>(vLoop.size()));
    return {middle, middle, 1};
}

bool BodySurface::isFirstDiagonalBetter(const std::array<int, 4>& ring, const Change& /*change*/) const
{
    const auto at = [&](int i) -> const Point3& { return getVertices()[ring[i]].point; };
    return sqDistance(at(0), at(2)) <= sqDistance(at(1), at(3));
}

} // namespace TARN_ZEF

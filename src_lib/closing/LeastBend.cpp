#include "closing/LeastBend.h"

#include "core/cancel.h"
#include "geometry/tools.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace TARN_ZEF
{
namespace
{
// Places of a polygon that are weighed all against all.
constexpr std::size_t MOST_PLACES = 80;

Vector3 unitNormal(const Point3& a, const Point3& b, const Point3& c)
{
    const Vector3 cross = crossProduct(b - a, c - a);
    const double len = cross.length();
    return len > 0.0 ? cross * (1.0 / len) : Vector3();
}

double bendBetween(const Vector3& a, const Vector3& b)
{
    return a.isDegenerate() || b.isDegenerate() ? 0.0 : 1.0 - a * b;
}
} // namespace

LeastBend::LeastBend(const std::vector<Point3>& vPolygon_, const std::vector<Vector3>& vNormals_,
                     bool bAreaAlone_, std::function<bool(std::size_t, std::size_t)> mayJoin_)
    : vPolygon(vPolygon_)
    , vNormals(vNormals_)
    , bAreaAlone(bAreaAlone_)
    , mayJoin(std::move(mayJoin_))
{
}

bool LeastBend::run(std::vector<Triangle>& vTriangles)
{
    std::vector<std::size_t> vAll(vPolygon.size());
    std::iota(vAll.begin(), vAll.end(), std::size_t{0});
    return fillAny(vAll, vNormals, vTriangles);
}

// What is filled beside the coarse polygon shares an edge with it, whose bend nobody weighs.
bool LeastBend::fillAny(const std::vector<std::size_t>& vPart, const std::vector<Vector3>& vBeside,
                        std::vector<Triangle>& vTriangles)
{
    const std::size_t size = vPart.size();
    if (size <= MOST_PLACES)
        return fill(vPart, vBeside, vTriangles);
    const std::size_t step = (size + MOST_PLACES - 1) / MOST_PLACES;
    std::vector<std::size_t> vCoarse;
    std::vector<Vector3> vCoarseBeside;
    for (std::size_t from = 0; from < size; from += step)
    {
        const std::size_t to = std::min(from + step, size);
        vCoarse.push_back(vPart[from]);
        vCoarseBeside.push_back(to - from == 1 ? vBeside[from] : Vector3());
        if (to - from == 1)
            continue;
        std::vector<std::size_t> vArc(vPart.begin() + static_cast<std::ptrdiff_t>(from),
                                      vPart.begin() + static_cast<std::ptrdiff_t>(to));
        vArc.push_back(vPart[to % size]);
        std::vector<Vector3> vArcBeside(vBeside.begin() + static_cast<std::ptrdiff_t>(from),
                                        vBeside.begin() + static_cast<std::ptrdiff_t>(to));
        vArcBeside.emplace_back();
        if (!mayJoin(vArc.front(), vArc.back()) || !fillAny(vArc, vArcBeside, vTriangles))
            return false;
    }
    return fill(vCoarse, vCoarseBeside, vTriangles);
}

bool LeastBend::fill(const std::vector<std::size_t>& vPart, const std::vector<Vector3>& vBeside,
                     std::vector<Triangle>& vTriangles)
{
    num = vPart.size();
    vCuts.assign(num * num, Cut());
    for (std::size_t width = 2; width < num; ++width)
    {
        checkCancelled();
        for (std::size_t i = 0; i + width < num; ++i)
            choose(i, i + width, vPart, vBeside);
    }
    if (!cutOf(0, num - 1).bPossible)
        return false;
    collect(0, num - 1, vPart, vTriangles);
    return true;
}

const Vector3& LeastBend::getNormal(std::size_t i, std::size_t k, const std::vector<Vector3>& vBeside) const
{
    return k == i + 1 ? vBeside[i] : cutOf(i, k).normal;
}

void LeastBend::choose(std::size_t i, std::size_t k, const std::vector<std::size_t>& vPart,
                       const std::vector<Vector3>& vBeside)
{
    Cut& best = cutOf(i, k);
    best.bPossible = false;
    const bool bLast = i == 0 && k + 1 == num; // the edge that closes the part is there already
    if (!bLast && !mayJoin(vPart[i], vPart[k]))
        return;
    for (std::size_t j = i + 1; j < k; ++j)
    {
        const Cut& left = cutOf(i, j);
        const Cut& right = cutOf(j, k);
        if (!left.bPossible || !right.bPossible)
            continue;
        const Point3& a = vPolygon[vPart[k]];
        const Point3& b = vPolygon[vPart[j]];
        const Point3& c = vPolygon[vPart[i]];
        const Vector3 normal = unitNormal(a, b, c);
        if (normal.isDegenerate())
            continue;
        Weight weight;
        weight.bend = bAreaAlone ? 0.0
                                 : std::max({left.weight.bend, right.weight.bend,
                                             bendBetween(normal, getNormal(i, j, vBeside)),
                                             bendBetween(normal, getNormal(j, k, vBeside)),
                                             bLast ? bendBetween(normal, vBeside[k]) : 0.0});
        weight.area = left.weight.area + right.weight.area + getAreaByCross(a, b, c);
        if (!best.bPossible || weight < best.weight)
            best = {weight, normal, j, true};
    }
}

void LeastBend::collect(std::size_t i, std::size_t k, const std::vector<std::size_t>& vPart,
                        std::vector<Triangle>& vTriangles) const
{
    if (k < i + 2)
        return;
    const std::size_t j = cutOf(i, k).middle;
    vTriangles.push_back({vPart[k], vPart[j], vPart[i]});
    collect(i, j, vPart, vTriangles);
    collect(j, k, vPart, vTriangles);
}

} // namespace TARN_ZEF

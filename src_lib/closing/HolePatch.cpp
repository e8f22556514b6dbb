#include "closing/HolePatch.h"

#include "closing/Fairing.h"
#include "closing/LeastBend.h"
#include "core/cancel.h"
#include "geometry/tools.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

namespace TARN_ZEF
{
namespace
{
constexpr double TOO_LONG = 4.0 / 3.0; // in wanted lengths
constexpr double TOO_NEAR = 0.5;       // of a new vertex to another one, in wanted lengths
constexpr int MOST_ROUNDS = 14;        // each halves the longest edges
constexpr int MOST_TURN_PASSES = 20;
constexpr int MOST_VERTICES = 200'000;

Vector3 crossOf(const Point3& a, const Point3& b, const Point3& c)
{
    return crossProduct(b - a, c - a);
}
} // namespace

HolePatch::HolePatch(const Surroundings& around_, const std::vector<int>& vLoop_)
    : around(around_)
    , vLoop(vLoop_)
{
}

std::vector<Vector3> HolePatch::getNormalsBeside() const
{
    std::vector<Vector3> vNormals;
    for (std::size_t i = 0; i < vLoop.size(); ++i)
    {
        const int a = vLoop[i];
        const int b = vLoop[(i + 1) % vLoop.size()];
        const std::uint32_t h = around.mates.findBorder(a, b);
        const int apex = around.mates.to(EdgeMates::next(h));
        const auto place = [this](int v) { return around.vPoints[static_cast<std::size_t>(v)]; };
        const Vector3 cross = crossOf(place(a), place(b), place(apex));
        const double len = cross.length();
        vNormals.push_back(len > 0.0 ? cross * (1.0 / len) : Vector3());
    }
    return vNormals;
}

bool HolePatch::triangulate(bool bAreaAlone)
{
    std::vector<Point3> vPolygon;
    for (const int v : vLoop)
        vPolygon.push_back(around.vPoints[static_cast<std::size_t>(v)]);
    const std::vector<Vector3> vNormals = getNormalsBeside();
    const auto mayJoinPlaces = [this](std::size_t i, std::size_t k)
    {
        return !around.mates.hasEdge(vLoop[i], vLoop[k]) &&
               around.taken.count(EdgeMates::keyOf(vLoop[i], vLoop[k])) == 0;
    };
    std::vector<LeastBend::Triangle> vTriangles;
    if (!LeastBend(vPolygon, vNormals, bAreaAlone, mayJoinPlaces).run(vTriangles))
        return false;
    std::vector<int> vCorners;
    for (const LeastBend::Triangle& triangle : vTriangles)
        for (const std::size_t place : triangle)
            vCorners.push_back(static_cast<int>(place));
    return patch.build(vPolygon, vCorners, &vPlaces);
}

int HolePatch::nameOf(int v) const
{
    const auto num = static_cast<int>(vPlaces.size());
    return v < num ? vLoop[static_cast<std::size_t>(vPlaces[static_cast<std::size_t>(v)])]
                   : static_cast<int>(around.vPoints.size()) + v - num;
}

// An edge across the patch must not be one that the mesh, or another patch, has elsewhere.
bool HolePatch::mayJoin(int v, int u) const
{
    const auto num = static_cast<int>(vPlaces.size());
    return v >= num || u >= num ||
           (!around.mates.hasEdge(nameOf(v), nameOf(u)) &&
            around.taken.count(EdgeMates::keyOf(nameOf(v), nameOf(u))) == 0);
}

// --- Refining ---------------------------------------------------------------------------------------------

void HolePatch::refine()
{
    vSizes.assign(static_cast<std::size_t>(patch.endVertices()), 0.0);
    for (int v = 0; v < patch.endVertices(); ++v)
    {
        const auto at = static_cast<std::size_t>(vPlaces[static_cast<std::size_t>(v)]);
        const auto place = [this](std::size_t i)
        { return around.vPoints[static_cast<std::size_t>(vLoop[i % vLoop.size()])]; };
        vSizes[static_cast<std::size_t>(v)] = 0.5 * ((place(at + 1) - place(at)).length() +
                                                     (place(at + vLoop.size() - 1) - place(at)).length());
    }
    for (int round = 0; round < MOST_ROUNDS && splitLong(); ++round)
        turnEdges();
}

double HolePatch::getRatio(int h) const
{
    const int a = patch.from(h);
    const int b = patch.to(h);
    return (patch.point(b) - patch.point(a)).length() /
           (0.5 * (vSizes[static_cast<std::size_t>(a)] + vSizes[static_cast<std::size_t>(b)]));
}

// The longest first. False if none was split.
bool HolePatch::splitLong()
{
    std::vector<std::pair<double, int>> vLong;
    patch.forEachEdge(
        [&](int h)
        {
            if (!patch.isBorder(h) && getRatio(h) > TOO_LONG)
                vLong.emplace_back(-getRatio(h), h);
        });
    std::sort(vLong.begin(), vLong.end());
    bool bAny = false;
    for (const auto& [ratio, h] : vLong)
    {
        if (patch.endVertices() >= MOST_VERTICES)
            return false;
        const Point3& a = patch.point(patch.from(h));
        const Point3 middle = a + (patch.point(patch.to(h)) - a) * 0.5;
        const double size = 0.5 * (vSizes[static_cast<std::size_t>(patch.from(h))] +
                                   vSizes[static_cast<std::size_t>(patch.to(h))]);
        const auto isNear = [&](int v) { return (patch.point(v) - middle).length() < TOO_NEAR * size; };
        if (isNear(patch.apex(h)) || isNear(patch.apex(patch.partner(h))))
            continue;
        patch.split(h, middle);
        vSizes.push_back(size);
        bAny = true;
    }
    return bAny;
}

void HolePatch::turnEdges()
{
    bool bAny = true;
    for (int pass = 0; pass < MOST_TURN_PASSES && bAny; ++pass)
    {
        bAny = false;
        std::vector<int> vEdges;
        patch.forEachEdge([&vEdges](int h) { vEdges.push_back(h); });
        for (const int h : vEdges)
            if (wantsTurn(h))
            {
                patch.flip(h);
                bAny = true;
            }
    }
}

// Where the angles opposite the edge are more than two right angles together, and the new triangles face as the old.
bool HolePatch::wantsTurn(int h) const
{
    if (!patch.mayFlip(h))
        return false;
    const int c = patch.apex(h);
    const int d = patch.apex(patch.partner(h));
    if (!mayJoin(c, d))
        return false;
    const Point3& pa = patch.point(patch.from(h));
    const Point3& pb = patch.point(patch.to(h));
    const Point3& pc = patch.point(c);
    const Point3& pd = patch.point(d);
    const double lenC = crossOf(pc, pa, pb).length();
    const double lenD = crossOf(pd, pb, pa).length();
    const double dotC = (pa - pc) * (pb - pc);
    const double dotD = (pa - pd) * (pb - pd);
    // The cotangents' sum is below 0; a margin ends turning to and fro.
    if (!(dotC * lenD + dotD * lenC < -1e-9 * lenC * lenD))
        return false;
    const Vector3 before = crossOf(pa, pb, pc) + crossOf(pb, pa, pd);
    return crossOf(pc, pa, pd) * before > 0.0 && crossOf(pd, pb, pc) * before > 0.0;
}

// --- Fairing ----------------------------------------------------------------------------------------------

void HolePatch::fair()
{
    const auto numHeld = static_cast<int>(vPlaces.size());
    if (patch.endVertices() == numHeld)
        return;
    const Point3 origin = patch.point(0);
    Fairing fairing;
    for (int v = 0; v < patch.endVertices(); ++v)
        fairing.add(patch.point(v) - origin, v >= numHeld, true);
    std::map<int, std::size_t> mOutside;
    for (int v = 0; v < patch.endVertices(); ++v)
    {
        patch.forEachNeighbour(v, [&](int u)
                               { fairing.link(static_cast<std::size_t>(v), static_cast<std::size_t>(u)); });
        if (v >= numHeld)
            continue;
        const auto at = static_cast<std::size_t>(vPlaces[static_cast<std::size_t>(v)]);
        const int next = vLoop[(at + 1) % vLoop.size()];
        const int prev = vLoop[(at + vLoop.size() - 1) % vLoop.size()];
        for (const int u : around.rings.get(nameOf(v)))
        {
            if (u == next || u == prev)
                continue;
            auto [it, bNew] = mOutside.try_emplace(u, 0);
            if (bNew)
                it->second = fairing.add(around.vPoints[static_cast<std::size_t>(u)] - origin, false, false);
            fairing.link(static_cast<std::size_t>(v), it->second);
        }
    }
    fairing.run();
    for (int v = numHeld; v < patch.endVertices(); ++v)
    {
        const Vector3& place = fairing.get(static_cast<std::size_t>(v));
        if (std::isfinite(place * place))
            patch.setPoint(v, origin + place);
    }
    turnEdges();
}

// --- Result -----------------------------------------------------------------------------------------------

std::vector<Point3> HolePatch::getNewPoints() const
{
    std::vector<Point3> vNew;
    for (int v = static_cast<int>(vPlaces.size()); v < patch.endVertices(); ++v)
        vNew.push_back(patch.point(v));
    return vNew;
}

std::vector<int> HolePatch::getCorners() const
{
    std::vector<int> vResult;
    for (int t = 0; t < patch.endTriangles(); ++t)
        for (int h = 4 * t; h < 4 * t + 3 && patch.isAlive(t); ++h)
            vResult.push_back(nameOf(patch.from(h)));
    return vResult;
}

} // namespace TARN_ZEF

#include "remesh/EdgeFlipper.h"

#include "core/cancel.h"
#include "remesh/triangles.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace TARN_ZEF
{
namespace
{
using Kind = HalfEdgeMesh::Kind;
// Cosines between the normals of the two triangles before and each one after.
constexpr double COS_FLIP = 0.6;
constexpr double LEAST_SHAPE = 0.1;
constexpr double ROUNDING = 1e-9;
constexpr int MAX_PASSES = 10;
} // namespace

void EdgeFlipper::flipAll(Aim aim)
{
    std::vector<int> vQueue;
    mesh.forEachEdge([&vQueue](int h) { vQueue.push_back(h); });
    flipFrom(std::move(vQueue), aim);
}

void EdgeFlipper::flipFrom(std::vector<int> vQueue, Aim aim, std::vector<int>* pFlipped)
{
    vValence.clear();
    if (aim == Aim::VALENCE)
        countValences();
    vQueued.assign(4 * static_cast<std::size_t>(mesh.endTriangles()), 0);
    for (int pass = 0; pass < MAX_PASSES && !vQueue.empty(); ++pass)
    {
        std::vector<int> vNext;
        CancelStride cancel;
        for (const int h : vQueue)
        {
            cancel.step();
            vQueued[h] = 0;
            if (mesh.feature(h) == 0 && !mesh.isBorder(h) && wantsFlip(h, aim) && mesh.mayFlip(h) &&
                keepsSurface(h))
            {
                flip(h, vNext);
                if (pFlipped != nullptr)
                    pFlipped->push_back(h);
            }
        }
        vQueue = std::move(vNext);
    }
}

void EdgeFlipper::countValences()
{
    vValence.assign(mesh.endVertices(), 0);
    for (int v = 0; v < mesh.endVertices(); ++v)
        if (mesh.isAliveVertex(v))
            vValence[v] = mesh.valence(v);
}

void EdgeFlipper::flip(int h, std::vector<int>& vNext)
{
    if (!vValence.empty())
    {
        --vValence[mesh.from(h)];
        --vValence[mesh.to(h)];
        ++vValence[mesh.apex(h)];
        ++vValence[mesh.apex(mesh.partner(h))];
    }
    mesh.flip(h);
    for (const int side : {h, mesh.partner(h)})
        for (const int g : {HalfEdgeMesh::next(side), HalfEdgeMesh::prev(side)})
            if (vQueued[g] == 0)
            {
                vQueued[g] = 1;
                vNext.push_back(g);
            }
}

bool EdgeFlipper::wantsFlip(int h, Aim aim) const
{
    const auto isFree = [this](int v) { return mesh.kind(v) == Kind::FREE; };
    if (aim == Aim::VALENCE && isFree(mesh.from(h)) && isFree(mesh.to(h)) && isFree(mesh.apex(h)) &&
        isFree(mesh.apex(mesh.partner(h))))
        return evensValences(h);
    return !isDelaunay(h);
}

bool EdgeFlipper::evensValences(int h) const
{
    const auto off = [this](int v, int change)
    {
        const int x = vValence[v] + change - 6;
        return x * x;
    };
    const int a = mesh.from(h);
    const int b = mesh.to(h);
    const int c = mesh.apex(h);
    const int d = mesh.apex(mesh.partner(h));
    return off(a, -1) + off(b, -1) + off(c, 1) + off(d, 1) < off(a, 0) + off(b, 0) + off(c, 0) + off(d, 0);
}

// Whether the angles opposite sum to half a turn at most.
bool EdgeFlipper::isDelaunay(int h) const
{
    const Point3& a = mesh.point(mesh.from(h));
    const Point3& b = mesh.point(mesh.to(h));
    const auto cosAndSin = [&](int v)
    {
        const Vector3 pa = a - mesh.point(v);
        const Vector3 pb = b - mesh.point(v);
        return std::pair(pa * pb, crossProduct(pa, pb).length());
    };
    const auto [cosC, sinC] = cosAndSin(mesh.apex(h));
    const auto [cosD, sinD] = cosAndSin(mesh.apex(mesh.partner(h)));
    const double scale = std::sqrt((cosC * cosC + sinC * sinC) * (cosD * cosD + sinD * sinD));
    return sinC * cosD + cosC * sinD >= -ROUNDING * scale;
}

bool EdgeFlipper::keepsSurface(int h) const
{
    const int t = HalfEdgeMesh::triangleOf(h);
    const int g = mesh.partner(h);
    const Point3& a = mesh.point(mesh.from(h));
    const Point3& b = mesh.point(mesh.to(h));
    const Point3& c = mesh.point(mesh.apex(h));
    const Point3& d = mesh.point(mesh.apex(g));
    const Vector3 before = unitOrNull(rawNormal(a, b, c) + rawNormal(b, a, d));
    const Vector3 first = rawNormal(c, d, b);
    const Vector3 second = rawNormal(d, c, a);
    const double thin = std::min(shapeOf(a, b, c), shapeOf(b, a, d));
    const double thinAfter = std::min(shapeOf(c, d, b), shapeOf(d, c, a));
    if (!(before * first > COS_FLIP * first.length()) || !(before * second > COS_FLIP * second.length()) ||
        (thinAfter < thin && thinAfter < LEAST_SHAPE))
        return false;
    if (work.patchOf(t).bFlat)
        return true;
    const double sqTolerance = work.settings.tolerance * work.settings.tolerance;
    const double sqNew = work.sqDistanceFromPatch(middle(c, d), t);
    return sqNew <= sqTolerance || sqNew <= work.sqDistanceFromPatch(middle(a, b), t);
}

} // namespace TARN_ZEF

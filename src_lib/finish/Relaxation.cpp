#include "finish/Relaxation.h"

#include "finish/NormalTensor.h"
#include "finish/directions.h"
#include "geometry/tools.h"
#include "parallel/collectInOrder.h"
#include "parallel/parallelFor.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
constexpr int NONE = HalfEdgeMesh::NONE;
constexpr std::size_t MIN_CHUNK = 5'000;
// Cosine of 30 degrees: triangles may bend that much at an edge that a flip or collapse makes.
constexpr double MAX_BEND = 0.866;
// Cosine of 25 degrees.
constexpr double WELL_SHAPED = 0.9063;
// A flip has to gain that much of the cosine, so that none is undone.
constexpr double MIN_GAIN = 1e-3;
constexpr int MAX_FLIP_PASSES = 6;
// A direction with this share of the strongest one has shape that smoothing would take away.
constexpr double SHAPE_SHARE = 0.2;
// A border that turns more than 60 degrees at a vertex has a corner there.
constexpr double BORDER_CORNER = 0.5;
// Cosine of the angle by which a triangle may turn when its corners move.
constexpr double SAME_SIDE = 0.7;
// How far a vertex goes to the middle in a round.
constexpr double STEP = 0.8;

Vector3 getTriangleNormal(const Point3& a, const Point3& b, const Point3& c)
{
    return getUnit(crossProduct(b - a, c - a));
}
} // namespace

Relaxation::Relaxation(HalfEdgeMesh& mesh_)
    : mesh(mesh_)
    , vTouched(static_cast<std::size_t>(mesh_.endTriangles()), 0)
{
}

TriangleShape Relaxation::measureT(int t) const
{
    const int h = 4 * t;
    return {mesh.point(mesh.from(h)), mesh.point(mesh.to(h)), mesh.point(mesh.apex(h))};
}

// --- Flips ---

// Most edges are told by the angles of the first new triangle.
bool Relaxation::isBetterFlipped(int h, const TriangleShape& old0, const TriangleShape& old1) const
{
    const Point3& a = mesh.point(mesh.from(h));
    const Point3& b = mesh.point(mesh.to(h));
    const Point3& c = mesh.point(mesh.apex(h));
    const Point3& d = mesh.point(mesh.apex(mesh.partner(h)));
    const double mostCosine = std::max(old0.worstCosine, old1.worstCosine) - MIN_GAIN;
    if (SmallestAngle(c, d, b).hasCosineAbove(mostCosine) ||
        SmallestAngle(d, c, a).hasCosineAbove(mostCosine))
        return false;
    const Vector3 new0 = getTriangleNormal(c, d, b);
    const Vector3 new1 = getTriangleNormal(d, c, a);
    double limit = MAX_BEND;
    for (const TriangleShape* pOld : {&old0, &old1})
    {
        if (pOld->isNeedle())
            continue;
        if (new0 * pOld->normal < MAX_BEND || new1 * pOld->normal < MAX_BEND)
            return false;
    }
    if (!old0.isNeedle() && !old1.isNeedle())
        limit = std::min(limit, old0.normal * old1.normal);
    return new0 * new1 >= limit;
}

// All triangles are measured once, as each is looked at from three edges.
std::vector<int> Relaxation::findCandidates()
{
    vShapes.resize(static_cast<std::size_t>(mesh.endTriangles()));
    forEachIndexMT(mesh.endTriangles(), MIN_CHUNK,
                   [&](int t)
                   {
                       if (mesh.isAlive(t))
                           vShapes[static_cast<std::size_t>(t)] = measureT(t);
                   });
    const auto shapeAt = [&](int h) -> const TriangleShape&
    { return vShapes[static_cast<std::size_t>(HalfEdgeMesh::triangleOf(h))]; };
    return collectInOrder<int>(static_cast<std::size_t>(mesh.endTriangles()),
                               [&](std::size_t from, std::size_t to, std::vector<int>& vFound)
                               {
                                   const int end = 4 * static_cast<int>(to);
                                   for (int h = 4 * static_cast<int>(from); h < end; ++h)
                                       if ((h & 3) != 3 && mesh.isAlive(HalfEdgeMesh::triangleOf(h)) &&
                                           h < mesh.partner(h) && mesh.feature(h) == 0 &&
                                           isBetterFlipped(h, shapeAt(h), shapeAt(mesh.partner(h))))
                                           vFound.push_back(h);
                               });
}

// What was measured for the candidates is kept up to date, as each flip changes but two triangles.
void Relaxation::flip()
{
    std::vector<int> vCandidates = findCandidates();
    const auto shapeAt = [this](int h) -> TriangleShape&
    { return vShapes[static_cast<std::size_t>(HalfEdgeMesh::triangleOf(h))]; };
    for (int pass = 0; pass < MAX_FLIP_PASSES && !vCandidates.empty(); ++pass)
    {
        std::vector<int> vNext;
        for (const int h : vCandidates)
        {
            const int p = mesh.partner(h);
            if (p == NONE || mesh.feature(h) != 0 || !isBetterFlipped(h, shapeAt(h), shapeAt(p)) ||
                !mesh.mayFlip(h))
                continue;
            mesh.flip(h);
            for (const int side : {h, p})
            {
                touch(side);
                shapeAt(side) = measureT(HalfEdgeMesh::triangleOf(side));
                vNext.push_back(HalfEdgeMesh::next(side));
                vNext.push_back(HalfEdgeMesh::prev(side));
            }
        }
        vCandidates = std::move(vNext);
    }
}

// --- Smoothing ---

Point3 Relaxation::proposeOnBorder(int v) const
{
    const Point3& p = mesh.point(v);
    const int h = mesh.outgoing(v);
    int last = h;
    mesh.forEachOutgoing(v, [&](int g) { last = g; });
    const Point3& after = mesh.point(mesh.to(h));
    const Point3& before = mesh.point(mesh.apex(last));
    if (getCosine(after - p, p - before) < BORDER_CORNER)
        return p;
    const Vector3 along = getUnit(after - before);
    const Vector3 way = (after - p) * 0.5 + (before - p) * 0.5;
    return p + along * (STEP * (way * along));
}

// Along the chord of the two neighbours on the chain, so that a straight chain stays straight.
Point3 Relaxation::proposeOnChain(int v) const
{
    const Point3& p = mesh.point(v);
    std::array<int, 2> ends = {NONE, NONE};
    mesh.forEachOutgoing(v,
                         [&](int h)
                         {
                             if (mesh.feature(h) != 0)
                                 ends[ends[0] == NONE ? 0 : 1] = mesh.to(h);
                         });
    if (ends[1] == NONE || mesh.isBorderVertex(v))
        return p;
    const Vector3 after = mesh.point(ends[1]) - p;
    const Vector3 before = mesh.point(ends[0]) - p;
    const Vector3 along = getUnit(mesh.point(ends[1]) - mesh.point(ends[0]));
    return p + along * (STEP * 0.5 * ((after + before) * along));
}

Point3 Relaxation::propose(int v) const
{
    if (!mesh.isAliveVertex(v) || mesh.kind(v) == HalfEdgeMesh::Kind::FIXED)
        return mesh.point(v);
    if (mesh.kind(v) == HalfEdgeMesh::Kind::CHAIN)
        return proposeOnChain(v);
    if (mesh.isBorderVertex(v))
        return proposeOnBorder(v);
    const Point3& p = mesh.point(v);
    NormalTensor tensor;
    Vector3 sum;
    double sumArea = 0.0;
    mesh.forEachOutgoing(v,
                         [&](int h)
                         {
                             const Vector3 a = mesh.point(mesh.to(h)) - p;
                             const Vector3 b = mesh.point(mesh.apex(h)) - p;
                             const Vector3 normal = crossProduct(a, b);
                             const double area = normal.length();
                             tensor.add(normal, area);
                             sum.add((a + b) * (area / 3.0));
                             sumArea += area;
                         });
    if (!(sumArea > 0.0))
        return p;
    return p + tensor.getSmallPart(sum * (STEP / sumArea), SHAPE_SHARE);
}

// Whether the triangle would turn over or nearly, if its corners moved as proposed.
bool Relaxation::turns(int t) const
{
    const int a = mesh.from(4 * t);
    const int b = mesh.to(4 * t);
    const int c = mesh.apex(4 * t);
    const auto at = [&](int u) -> const Point3& { return vProposed[static_cast<std::size_t>(u)]; };
    const Vector3 before = crossProduct(mesh.point(b) - mesh.point(a), mesh.point(c) - mesh.point(a));
    const Vector3 after = crossProduct(at(b) - at(a), at(c) - at(a));
    return !(before * after > SAME_SIDE * std::sqrt(before.sqLength() * after.sqLength()));
}

// All neighbours move at once: corners of triangles that would turn over stay.
void Relaxation::smooth()
{
    vProposed.resize(static_cast<std::size_t>(mesh.endVertices()));
    forEachIndexMT(mesh.endVertices(), MIN_CHUNK,
                   [&](int v) { vProposed[static_cast<std::size_t>(v)] = propose(v); });
    vTurns.resize(static_cast<std::size_t>(mesh.endTriangles()));
    forEachIndexMT(mesh.endTriangles(), MIN_CHUNK,
                   [&](int t) { vTurns[static_cast<std::size_t>(t)] = mesh.isAlive(t) && turns(t); });
    forEachIndexMT(mesh.endVertices(), MIN_CHUNK,
                   [&](int v)
                   {
                       if (mesh.isAliveVertex(v) && isHarmless(v))
                           mesh.setPoint(v, vProposed[static_cast<std::size_t>(v)]);
                   });
}

bool Relaxation::isHarmless(int v) const
{
    bool bHarmless = true;
    mesh.forEachOutgoing(
        v, [&](int h)
        { bHarmless = bHarmless && vTurns[static_cast<std::size_t>(HalfEdgeMesh::triangleOf(h))] == 0; });
    return bHarmless;
}

// --- Collapses ---

int Relaxation::getShortestEdge(int t) const
{
    const auto length = [this](int h)
    { return sqDistance(mesh.point(mesh.from(h)), mesh.point(mesh.to(h))); };
    int best = 4 * t;
    for (int h = 4 * t + 1; h < 4 * t + 3; ++h)
        if (length(h) < length(best))
            best = h;
    return best;
}

bool Relaxation::isBetterCollapsed(int h, const Point3& target, double worst) const
{
    bool bBetter = true;
    for (const int centre : {mesh.from(h), mesh.to(h)})
    {
        const int other = centre == mesh.from(h) ? mesh.to(h) : mesh.from(h);
        mesh.forEachOutgoing(centre,
                             [&](int g)
                             {
                                 const int b = mesh.to(g);
                                 const int c = mesh.apex(g);
                                 if (!bBetter || b == other || c == other)
                                     return;
                                 const TriangleShape before = measureT(HalfEdgeMesh::triangleOf(g));
                                 const TriangleShape after(target, mesh.point(b), mesh.point(c));
                                 bBetter = after.worstCosine < worst - MIN_GAIN &&
                                           (before.isNeedle() || before.normal * after.normal > MAX_BEND);
                             });
    }
    return bBetter;
}

// A vertex on a crease only along it, an end or a corner of creases never.
bool Relaxation::mayVanish(int h) const
{
    switch (mesh.kind(mesh.from(h)))
    {
    case HalfEdgeMesh::Kind::FREE:
        return true;
    case HalfEdgeMesh::Kind::CHAIN:
        return mesh.feature(h) != 0;
    case HalfEdgeMesh::Kind::FIXED:
        return false;
    }
    return false;
}

bool Relaxation::tryCollapse(int h, double worst)
{
    const int a = mesh.from(h);
    const int b = mesh.to(h);
    const bool bPlain = mesh.kind(a) == HalfEdgeMesh::Kind::FREE && mesh.kind(b) == HalfEdgeMesh::Kind::FREE;
    const bool bMiddle = bPlain && mesh.isBorderVertex(a) == mesh.isBorderVertex(b);
    const Point3 middle = mesh.point(a) + (mesh.point(b) - mesh.point(a)) * 0.5;
    for (int way : {h, mesh.partner(h)})
    {
        // A border edge has one half-edge only.
        if (way == NONE || !mayVanish(way) || !mesh.mayCollapse(way))
            continue;
        if (mesh.isBorderVertex(mesh.from(way)) && !mesh.isBorderVertex(mesh.to(way)))
            continue;
        const Point3 target = bMiddle ? middle : mesh.point(mesh.to(way));
        if (!isBetterCollapsed(way, target, worst))
            continue;
        const int kept = mesh.to(way);
        mesh.collapse(way);
        mesh.setPoint(kept, target);
        mesh.forEachOutgoing(kept, [this](int g) { touch(g); });
        return true;
    }
    return false;
}

std::size_t Relaxation::collapse(double maxCosine)
{
    std::vector<std::uint8_t> vIsThin(static_cast<std::size_t>(mesh.endTriangles()), 0);
    forEachIndexMT(mesh.endTriangles(), MIN_CHUNK,
                   [&](int t) {
                       vIsThin[static_cast<std::size_t>(t)] =
                           mesh.isAlive(t) && measureT(t).worstCosine > maxCosine;
                   });
    std::size_t num = 0;
    for (int t = 0; t < static_cast<int>(vIsThin.size()); ++t)
    {
        if (vIsThin[static_cast<std::size_t>(t)] == 0 || !mesh.isAlive(t))
            continue;
        const double worst = measureT(t).worstCosine;
        if (worst > maxCosine && tryCollapse(getShortestEdge(t), worst))
            ++num;
    }
    return num;
}

std::size_t Relaxation::collapseBorder(double minLength)
{
    std::size_t num = 0;
    for (int t = 0; t < mesh.endTriangles(); ++t)
        for (int h = 4 * t; h < 4 * t + 3 && mesh.isAlive(t); ++h)
            if (mesh.isBorder(h) &&
                sqDistance(mesh.point(mesh.from(h)), mesh.point(mesh.to(h))) < minLength * minLength &&
                tryCollapse(h, WELL_SHAPED))
                ++num;
    return num;
}

} // namespace TARN_ZEF

#include "remesh/DistanceKeeper.h"

#include "remesh/EdgeFlipper.h"
#include "remesh/VertexRelaxer.h"
#include "remesh/triangles.h"

#include <algorithm>

namespace TARN_ZEF
{
namespace
{
constexpr int NONE = HalfEdgeMesh::NONE;
constexpr int MAX_ROUNDS = 12;
// Relaxed are what the first rounds put in; the last ones only split, to come to an end.
constexpr int RELAXED_ROUNDS = 8;
constexpr int RELAX_PASSES = 2;
// Triangles that come this near to the tolerance, in squares, are measured at more places, so many times.
constexpr double SUSPICIOUS = 0.25;
constexpr int MAX_DEPTH = 2;
// Long edges of the source are measured at places this far apart, in lengths.
constexpr double STEP = 0.5;
// Another edge than the longest is split from this many lengths on.
constexpr double LEAST_SPLIT = 0.5;

// Beside each triangle of the source a triangle of the result, from the hints of the result. Triangles of the source
// that nobody lies on get what their neighbours have.
std::vector<int> findNear(const WorkSurface& work)
{
    const HalfEdgeMesh& from = work.source.getMesh();
    std::vector<int> vNear(from.endTriangles(), NONE);
    for (int t = 0; t < work.mesh.endTriangles(); ++t)
        if (work.mesh.isAlive(t))
            vNear[work.vHint[t]] = t;
    std::vector<int> vQueue;
    for (int s = 0; s < from.endTriangles(); ++s)
        if (vNear[s] != NONE)
            vQueue.push_back(s);
    for (std::size_t i = 0; i < vQueue.size(); ++i)
        for (int h = 4 * vQueue[i]; h < 4 * vQueue[i] + 3; ++h)
        {
            if (from.feature(h) != 0 || from.isBorder(h))
                continue;
            const int s = HalfEdgeMesh::triangleOf(from.partner(h));
            if (vNear[s] != NONE)
                continue;
            vNear[s] = vNear[vQueue[i]];
            vQueue.push_back(s);
        }
    return vNear;
}
} // namespace

// Triangles never die here, so what is near stays named.
void DistanceKeeper::run()
{
    EdgeFlipper flipper(work);
    VertexRelaxer relaxer(work);
    vNear = findNear(work);
    vKnown.clear();
    for (int round = 0; round < MAX_ROUNDS; ++round)
    {
        std::vector<int> vFar = findFarTriangles();
        const std::vector<int> vBelow = findBelowSource();
        vFar.insert(vFar.end(), vBelow.begin(), vBelow.end());
        std::sort(vFar.begin(), vFar.end());
        vFar.erase(std::unique(vFar.begin(), vFar.end()), vFar.end());
        numFar = static_cast<int>(vFar.size());
        std::vector<int> vFresh;
        for (const int t : vFar)
        {
            if (work.isFull())
                return;
            const int v = splitTriangle(t);
            if (v != NONE)
                vFresh.push_back(v);
        }
        if (vFresh.empty())
            return;
        flipper.flipAll(EdgeFlipper::Aim::SHAPE);
        if (round < RELAXED_ROUNDS)
            relaxAround(vFresh, relaxer);
    }
}

// Vertices that were put in, and their neighbours.
void DistanceKeeper::relaxAround(std::vector<int> vVertices, VertexRelaxer& relaxer)
{
    const std::size_t num = vVertices.size();
    for (std::size_t i = 0; i < num; ++i)
        mesh.forEachNeighbour(vVertices[i], [&](int u) { vVertices.push_back(u); });
    std::sort(vVertices.begin(), vVertices.end());
    vVertices.erase(std::unique(vVertices.begin(), vVertices.end()), vVertices.end());
    for (int pass = 0; pass < RELAX_PASSES; ++pass)
        for (const int v : vVertices)
            if (relaxer.relaxVertex(v, true))
                mesh.forEachOutgoing(v, [this](int h) { forget(HalfEdgeMesh::triangleOf(h)); });
}

// The longest edge; if that cannot be split, another one that is not short. Returns the new vertex, or NONE.
int DistanceKeeper::splitTriangle(int t)
{
    std::array<int, 3> edges = {4 * t, 4 * t + 1, 4 * t + 2};
    std::stable_sort(edges.begin(), edges.end(),
                     [this](int h, int g) { return work.lengthOf(h) > work.lengthOf(g); });
    for (const int h : edges)
    {
        if (h != edges[0] && work.lengthOf(h) < LEAST_SPLIT * work.settings.length)
            break;
        const int v = mesh.feature(h) != 0 ? NONE : work.splitInMiddle(h);
        if (v != NONE)
            return v;
    }
    return NONE;
}

bool DistanceKeeper::isKnown(int t) const
{
    return t < static_cast<int>(vKnown.size()) &&
           vKnown[t] == std::array<int, 3>{mesh.from(4 * t), mesh.from(4 * t + 1), mesh.from(4 * t + 2)};
}

void DistanceKeeper::know(int t)
{
    if (t >= static_cast<int>(vKnown.size()))
        vKnown.resize(mesh.endTriangles(), {NONE, NONE, NONE});
    vKnown[t] = {mesh.from(4 * t), mesh.from(4 * t + 1), mesh.from(4 * t + 2)};
}

void DistanceKeeper::forget(int t)
{
    if (t < static_cast<int>(vKnown.size()))
        vKnown[t] = {NONE, NONE, NONE};
}

std::vector<int> DistanceKeeper::findFarTriangles()
{
    std::vector<int> vFar;
    for (int t = 0; t < mesh.endTriangles(); ++t)
    {
        if (!mesh.isAlive(t) || work.patchOf(t).bFlat || isKnown(t))
            continue;
        if (isFar(t, mesh.point(mesh.from(4 * t)), mesh.point(mesh.from(4 * t + 1)),
                  mesh.point(mesh.from(4 * t + 2)), 0))
            vFar.push_back(t);
        else
            know(t);
    }
    return vFar;
}

// On the part of t between three places.
bool DistanceKeeper::isFar(int t, const Point3& a, const Point3& b, const Point3& c, int depth) const
{
    const double tolerance = work.settings.tolerance;
    const Point3 ab = middle(a, b);
    const Point3 bc = middle(b, c);
    const Point3 ca = middle(c, a);
    double worst = 0.0;
    for (const Point3& p : {centre(a, b, c), ab, bc, ca})
        if (worst <= tolerance * tolerance)
            worst = std::max(worst, work.walker.nearest(p, work.vHint[t], tolerance).sqDist);
    if (worst > tolerance * tolerance)
        return true;
    if (worst < SUSPICIOUS * tolerance * tolerance || depth == MAX_DEPTH)
        return false;
    return isFar(t, a, ab, ca, depth + 1) || isFar(t, ab, b, bc, depth + 1) ||
           isFar(t, ca, bc, c, depth + 1) || isFar(t, ab, bc, ca, depth + 1);
}

// The other way: each vertex of the source has the result near, and so have its long edges. Those of the features are
// followed by the chains.
std::vector<int> DistanceKeeper::findBelowSource()
{
    const double tolerance = work.settings.tolerance;
    const HalfEdgeMesh& from = work.source.getMesh();
    const PatchWalker walker(mesh);
    std::vector<int> vBelow;
    const auto measure = [&](const Point3& p, int s)
    {
        if (vNear[s] == NONE) // nothing of its patch is left
            return;
        const SurfacePlace place = walker.nearest(p, vNear[s], tolerance);
        vNear[s] = place.triangle;
        if (place.sqDist > tolerance * tolerance)
            vBelow.push_back(place.triangle);
    };
    from.forEachEdge(
        [&](int h)
        {
            const int s = HalfEdgeMesh::triangleOf(h);
            if (from.feature(h) != 0 || work.source.getPatches()[from.label(s)].bFlat)
                return;
            const Point3& a = from.point(from.from(h));
            const Vector3 ab = from.point(from.to(h)) - a;
            const int num = static_cast<int>(std::min(ab.length() / (STEP * work.settings.length), 1e6));
            for (int i = 1; i <= num; ++i)
                measure(a + ab * (static_cast<double>(i) / (num + 1)), s);
        });
    for (int v = 0; v < from.endVertices(); ++v)
    {
        const int s = HalfEdgeMesh::triangleOf(from.outgoing(v));
        if (from.kind(v) == HalfEdgeMesh::Kind::FREE && !work.source.getPatches()[from.label(s)].bFlat)
            measure(from.point(v), s);
    }
    return vBelow;
}

} // namespace TARN_ZEF

#include "remesh/DistanceKeeper.h"

#include "remesh/EdgeFlipper.h"
#include "remesh/NearnessProof.h"
#include "remesh/VertexRelaxer.h"
#include "remesh/triangles.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace TARN_ZEF
{
namespace
{
constexpr int NONE = HalfEdgeMesh::NONE;
constexpr int MAX_ROUNDS = 12;
// Relaxed are what the first rounds put in; the last ones only split, to come to an end.
constexpr int RELAXED_ROUNDS = 8;
constexpr int RELAX_PASSES = 2;
// Another edge than the longest is split from this many lengths on.
constexpr double LEAST_SPLIT = 0.5;

std::array<Point3, 3> cornersOf(const HalfEdgeMesh& mesh, int t)
{
    return {mesh.point(mesh.from(4 * t)), mesh.point(mesh.from(4 * t + 1)), mesh.point(mesh.from(4 * t + 2))};
}

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
        sqFarthest = 0.0;
        std::vector<int> vFar = findBelowSource();
        const std::vector<int> vAbove = findFarTriangles();
        vFar.insert(vFar.end(), vAbove.begin(), vAbove.end());
        std::sort(vFar.begin(), vFar.end());
        vFar.erase(std::unique(vFar.begin(), vFar.end()), vFar.end());
        numFar = static_cast<int>(vFar.size());
        if (round + 1 == MAX_ROUNDS)
            return;
        const std::vector<int> vFresh = splitAll(vFar);
        if (vFresh.empty() || work.isFull())
            return;
        flipAround(vFresh, flipper);
        if (round < RELAXED_ROUNDS)
            relaxAround(vFresh, relaxer);
    }
}

// Returns the new vertices.
std::vector<int> DistanceKeeper::splitAll(const std::vector<int>& vFar)
{
    std::vector<int> vFresh;
    for (const int t : vFar)
    {
        const int v = work.isFull() ? NONE : splitTriangle(t);
        if (v != NONE)
            vFresh.push_back(v);
    }
    return vFresh;
}

void DistanceKeeper::flipAround(const std::vector<int>& vVertices, EdgeFlipper& flipper) const
{
    std::vector<int> vQueue;
    for (const int v : vVertices)
        mesh.forEachOutgoing(v,
                             [&](int h)
                             {
                                 vQueue.push_back(h);
                                 vQueue.push_back(HalfEdgeMesh::next(h));
                             });
    flipper.flipFrom(std::move(vQueue), EdgeFlipper::Aim::SHAPE);
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
                forgetAround(v);
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

bool DistanceKeeper::isKnown(int h) const
{
    return h < static_cast<int>(vKnown.size()) && vKnown[h] == std::pair(mesh.from(h), mesh.to(h));
}

void DistanceKeeper::know(int h)
{
    vKnown[h] = {mesh.from(h), mesh.to(h)};
}

// What is known of the edges at a vertex that moved, and of those opposite.
void DistanceKeeper::forgetAround(int v)
{
    mesh.forEachOutgoing(v,
                         [this](int h)
                         {
                             for (const int g : {h, HalfEdgeMesh::next(h), HalfEdgeMesh::prev(h)})
                             {
                                 const int edge = mesh.isEdge(g) ? g : mesh.partner(g);
                                 if (edge < static_cast<int>(vKnown.size()))
                                     vKnown[edge] = {NONE, NONE};
                             }
                         });
}

// A triangle of each edge that is too far off; edges of features are followed by the chains.
std::vector<int> DistanceKeeper::findFarTriangles()
{
    vKnown.resize(4 * static_cast<std::size_t>(mesh.endTriangles()), {NONE, NONE});
    std::vector<int> vFar;
    mesh.forEachEdge(
        [&](int h)
        {
            const int t = HalfEdgeMesh::triangleOf(h);
            if (mesh.feature(h) != 0 || work.patchOf(t).bFlat || isKnown(h))
                return;
            if (isEdgeFar(h))
                vFar.push_back(t);
            else
                know(h);
        });
    return vFar;
}

bool DistanceKeeper::isEdgeFar(int h)
{
    const int t = HalfEdgeMesh::triangleOf(h);
    const int u = HalfEdgeMesh::triangleOf(mesh.partner(h));
    const Point3& a = mesh.point(mesh.from(h));
    const EdgeTrace::End end = trace.follow(work.walker.walk(a, work.vHint[t]), a, mesh.point(mesh.to(h)),
                                            work.normalOf(t) + work.normalOf(u));
    if (end == EdgeTrace::End::LOST)
        return isTriangleFar(t) || isTriangleFar(u);
    if (end == EdgeTrace::End::FAR)
        sqFarthest = std::max(sqFarthest, trace.getFarthest().sqDist);
    return end == EdgeTrace::End::FAR;
}

bool DistanceKeeper::isTriangleFar(int t)
{
    if (proof.run(cornersOf(mesh, t), work.vHint[t]))
        return false;
    sqFarthest = std::max(sqFarthest, proof.getFarthest().sqDist);
    return true;
}

// The other way, for the vertices of the source; those on features are followed by the chains. Returns triangles of the
// result: those that are nearest to what is far.
std::vector<int> DistanceKeeper::findBelowSource()
{
    const HalfEdgeMesh& from = work.source.getMesh();
    const double sqTolerance = work.settings.tolerance * work.settings.tolerance;
    const PatchWalker walker(mesh);
    std::vector<int> vBelow;
    for (int v = 0; v < from.endVertices(); ++v)
    {
        const int s = HalfEdgeMesh::triangleOf(from.outgoing(v));
        const bool bGone = vNear[s] == NONE; // nothing of its patch is left
        if (bGone || from.kind(v) != HalfEdgeMesh::Kind::FREE ||
            work.source.getPatches()[from.label(s)].bFlat)
            continue;
        const SurfacePlace place = walker.nearest(from.point(v), vNear[s], work.settings.length);
        vNear[s] = place.triangle;
        if (place.sqDist <= sqTolerance)
            continue;
        vBelow.push_back(place.triangle);
        sqFarthest = std::max(sqFarthest, place.sqDist);
    }
    return vBelow;
}

} // namespace TARN_ZEF

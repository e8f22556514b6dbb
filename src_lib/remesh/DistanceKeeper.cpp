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
    vProofs.assign(work.source.getMesh().endTriangles(), {});
    vWitnesses.clear();
    for (int round = 0; round < MAX_ROUNDS; ++round)
    {
        sqFarthest = 0.0;
        std::vector<int> vFar = findBelowSource(); // before what changed is known again
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
    NearnessProof proof(work.walker, work.settings.tolerance);
    for (int t = 0; t < mesh.endTriangles(); ++t)
    {
        if (!mesh.isAlive(t) || work.patchOf(t).bFlat || isKnown(t))
            continue;
        if (proof.run(cornersOf(mesh, t), work.vHint[t]))
        {
            know(t);
            continue;
        }
        vFar.push_back(t);
        sqFarthest = std::max(sqFarthest, proof.getFarthest().sqDist);
    }
    return vFar;
}

bool DistanceKeeper::isStillProven(int s) const
{
    const auto& [from, to] = vProofs[s];
    return from < to && std::all_of(vWitnesses.begin() + from, vWitnesses.begin() + to,
                                    [this](int t) { return isKnown(t); });
}

// The other way. Returns triangles of the result: those that are nearest to what is far.
std::vector<int> DistanceKeeper::findBelowSource()
{
    const HalfEdgeMesh& from = work.source.getMesh();
    const PatchWalker walker(mesh);
    NearnessProof proof(walker, work.settings.tolerance, &vWitnesses);
    std::vector<int> vBelow;
    for (int s = 0; s < from.endTriangles(); ++s)
    {
        const bool bGone = vNear[s] == NONE; // nothing of its patch is left
        if (bGone || work.source.getPatches()[from.label(s)].bFlat || isStillProven(s))
            continue;
        const auto begin = static_cast<std::ptrdiff_t>(vWitnesses.size());
        if (proof.run(cornersOf(from, s), vNear[s]))
        {
            vProofs[s] = {begin, static_cast<std::ptrdiff_t>(vWitnesses.size())};
            vNear[s] = proof.getHint();
            continue;
        }
        vWitnesses.resize(begin);
        vProofs[s] = {0, 0};
        vNear[s] = proof.getHint();
        vBelow.push_back(proof.getFarthest().triangle);
        sqFarthest = std::max(sqFarthest, proof.getFarthest().sqDist);
    }
    return vBelow;
}

} // namespace TARN_ZEF

#include "finish/CreaseUnfolding.h"

#include "finish/creaseChains.h"
#include "geometry/tools.h"

#include <algorithm>
#include <array>

namespace TARN_ZEF
{
namespace
{
// Vertices nearer to the crease than this share of a cell end in it.
constexpr double SNAP = 0.4;
// Rounds in which chains are put in order and triangles turned back.
constexpr int UNFOLD_ROUNDS = 12;
// Triangles are bad below this share of an even one's area by squared edges.
constexpr double BAD_SHAPE = 0.2;
// Cosine of the angle between the edges of a chain at a vertex where it turns back.
constexpr double TURNED_BACK = 0.5;

Vector3 getNormal(const Point3& a, const Point3& b, const Point3& c)
{
    return crossProduct(b - a, c - a);
}

} // namespace

CreaseUnfolding::CreaseUnfolding(HalfEdgeMesh& mesh_, const CreaseSides& sides_,
                                 const CreaseCrossings& crossings_, double cellSize_)
    : mesh(mesh_)
    , sides(sides_)
    , vCrossings(crossings_.getCrossings())
    , cellSize(cellSize_)
{
}

void CreaseUnfolding::run(std::vector<int>& vCorners)
{
    straightenChains();
    snapToCrease();
    unfold(vCorners);
}

// Vertices next to the crease, or beyond it by the shape of the cut, make needles and folds.
void CreaseUnfolding::snapToCrease()
{
    for (const Crossing& crossing : vCrossings)
    {
        const int m = crossing.vertex;
        const auto sqLength = [&](int v) { return sqDistance(mesh.point(v), mesh.point(m)); };
        for (const int v : {crossing.a, crossing.b})
        {
            if (!mesh.isAliveVertex(v) || !sides.knows(v))
                continue;
            const int h = mesh.findHalfEdge(v, m);
            if (h != NONE && sqLength(v) < SNAP * SNAP * cellSize * cellSize && mesh.mayCollapse(h) &&
                maySnap(h))
                mesh.collapse(h);
        }
    }
}

// The triangles must face as the sides of their corners do.
bool CreaseUnfolding::maySnap(int h) const
{
    const int v = mesh.from(h);
    const int m = mesh.to(h);
    bool bResult = true;
    mesh.forEachOutgoing(v,
                         [&](int g)
                         {
                             const int b = mesh.to(g);
                             const int c = mesh.apex(g);
                             bResult = bResult && mesh.feature(g) == 0;
                             if (!bResult || b == m || c == m)
                                 return;
                             const Vector3 normal = getNormal(mesh.point(m), mesh.point(b), mesh.point(c));
                             bResult = normal * sides.planeOf(v).normal > 0.7 * normal.length();
                         });
    return bResult;
}

// Where the edges cross the crease need not follow on each other along it: vertices at which a chain turns back move
// to the middle of their neighbours, and so do those neighbours.
void CreaseUnfolding::straightenChains()
{
    std::vector<int> vTurning;
    for (int round = 0; round < UNFOLD_ROUNDS; ++round)
    {
        vTurning.clear();
        for (const Crossing& crossing : vCrossings)
        {
            const auto ends = getChainEnds(mesh, crossing.vertex);
            if (ends[1] == NONE || getTurn(mesh, crossing.vertex, ends) < TURNED_BACK)
                continue;
            vTurning.push_back(crossing.vertex);
            for (const int end : ends)
                if (getChainEnds(mesh, end)[1] != NONE)
                    vTurning.push_back(end);
        }
        for (const int v : vTurning)
        {
            const auto ends = getChainEnds(mesh, v);
            mesh.setPoint(v, mesh.point(ends[0]) + (mesh.point(ends[1]) - mesh.point(ends[0])) * 0.5);
        }
    }
}

// Area by squared edges of the worst triangle at a vertex, 1 for an even one, below 0 for one that is turned over, were
// the vertex at p. Those that vanish with the edge to another one do not count.
double CreaseUnfolding::getShape(int v, const Point3& p, int other) const
{
    constexpr double even = 3.4641016151377544;
    double worst = 1.0;
    const auto measure = [&](int b, int c, int ref)
    {
        const Point3& q = mesh.point(b);
        const Point3& r = mesh.point(c);
        const double sum = sqDistance(p, q) + sqDistance(q, r) + sqDistance(r, p);
        const double area = getNormal(p, q, r) * sides.planeOf(ref).normal;
        worst = std::min(worst, sum > 0.0 ? even * area / sum : 0.0);
    };
    mesh.forEachOutgoing(v,
                         [&](int h)
                         {
                             const int b = mesh.to(h);
                             const int c = mesh.apex(h);
                             if (b == other || c == other)
                                 return;
                             for (const int ref : {v, b, c})
                                 if (sides.has(ref))
                                     return measure(b, c, ref);
                         });
    return worst;
}

// Vertices that lay beyond the crease move back into their side.
void CreaseUnfolding::unfold(std::vector<int>& vCorners)
{
    for (int round = 0; round < UNFOLD_ROUNDS; ++round)
        for (const Crossing& crossing : vCrossings)
            for (const int v : {crossing.a, crossing.b, crossing.vertex})
                if (mesh.isAliveVertex(v))
                    improve(v);
    for (const int v : vCorners)
        dissolve(v);
    std::erase_if(vCorners, [this](int v) { return !mesh.isAliveVertex(v); });
    for (const Crossing& crossing : vCrossings)
        for (const int v : {crossing.a, crossing.b, crossing.vertex})
            if (mesh.isAliveVertex(v) && getShape(v, mesh.point(v), NONE) < BAD_SHAPE)
                dissolve(v);
}

bool CreaseUnfolding::isCorner(int v) const
{
    return getNumFeatures(mesh, v) > 2;
}

// Collapses the edge of a vertex that leaves the best triangles: on a chain one along it, at a corner one to
// another corner close by.
void CreaseUnfolding::dissolve(int v)
{
    const bool bOnCrease = getChainEnds(mesh, v)[0] != NONE;
    const bool bCorner = isCorner(v);
    double best = bCorner ? 0.0 : getShape(v, mesh.point(v), NONE);
    int bestWay = NONE;
    mesh.forEachOutgoing(
        v,
        [&](int h)
        {
            const int to = mesh.to(h);
            const double sqDist = sqDistance(mesh.point(v), mesh.point(to));
            if ((bOnCrease && mesh.feature(h) == 0) ||
                (bCorner && (!isCorner(to) || sqDist > SNAP * SNAP * cellSize * cellSize)) ||
                (sides.has(v) && sides.has(to) && !sides.agree(sides.get(v), sides.get(to))) ||
                !mesh.mayCollapse(h))
                return;
            const double shape = getShape(v, mesh.point(to), to);
            if (shape > best)
            {
                best = shape;
                bestWay = h;
            }
        });
    if (bestWay != NONE)
        mesh.collapse(bestWay);
}

void CreaseUnfolding::improve(int v)
{
    const Point3 p = mesh.point(v);
    double best = getShape(v, p, NONE);
    if (best > BAD_SHAPE)
        return;
    Vector3 way;
    if (sides.has(v))
    {
        mesh.forEachNeighbour(v, [&](int u) { way.add((mesh.point(u) - p) / mesh.valence(v)); });
        way.sub(sides.planeOf(v).normal * (way * sides.planeOf(v).normal));
    }
    else
    {
        const auto ends = getChainEnds(mesh, v);
        if (ends[1] == NONE || getTurn(mesh, v, ends) > -SHARP_TURN)
            return;
        way = (mesh.point(ends[0]) - p) * 0.5 + (mesh.point(ends[1]) - p) * 0.5;
    }
    for (const double step : {1.0, 0.5, 1.5, 0.25})
    {
        const Point3 place = p + way * step;
        const double shape = getShape(v, place, NONE);
        if (shape > best)
        {
            best = shape;
            mesh.setPoint(v, place);
        }
    }
}

} // namespace TARN_ZEF

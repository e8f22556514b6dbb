#include "finish/CreaseMaker.h"

#include "finish/NormalTensor.h"
#include "geometry/tools.h"
#include "parallel/parallelFor.h"

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <numeric>

namespace TARN_ZEF
{
namespace
{
using Kind = HalfEdgeMesh::Kind;

constexpr std::size_t MIN_CHUNK = 2'000;
// Cosines of 30 and 155 degrees: sides that meet under less are one, under more no crease but two sheets.
constexpr double FLATTEST = 0.866;
constexpr double SHARPEST = -0.906;
// A fit is good if the points leave it by no more than so many times the usual, or so many cells.
constexpr double GOOD = 2.0;
constexpr double GOOD_CELLS = 0.01;
// Planes of others are taken if their residual is less than this share of the own one.
constexpr double BETTER = 0.35;
// An edge crosses a crease only if the fit at one of its ends is worse than those of the sides so many times.
constexpr double BROKEN = 3.0;
// How far off the planes of sides are looked for, in cells and in radii of the fits.
constexpr double REACH_CELLS = 2.8;
constexpr double REACH_RADII = 1.15;
// What a cell of distance, a cell of residual, and neighbours that took other sides add to the height over a plane.
constexpr double DISTANCE_COST = 0.03;
constexpr double RESIDUAL_COST = 5.0;
constexpr double DISSENT_COST = 0.3;
constexpr int VOTE_ROUNDS = 3;
// Farthest way of the middle of an edge to the crease, in cells, beside half the edge.
constexpr double FARTHEST = 0.9;
// Farthest way of a vertex to the plane of its side, in cells.
constexpr double FARTHEST_OFF = 0.6;
// A chain crosses about two edges in a cell; shorter ones are noise.
constexpr int FEWEST_CROSSINGS = 8;
// Vertices nearer to the crease than this share of a cell end in it.
constexpr double SNAP = 0.4;
// Rounds in which chains are put in order and triangles turned back.
constexpr int UNFOLD_ROUNDS = 12;
// Triangles are bad below this share of an even one's area by squared edges.
constexpr double BAD_SHAPE = 0.2;
// Cosine of 50 degrees.
constexpr double SHARP_TURN = 0.643;
// Cosine of the angle between the edges of a chain at a vertex where it turns back.
constexpr double TURNED_BACK = 0.5;
// Planes of a corner that hold less in some direction do not say where it is.
constexpr double CORNER_SHARE = 0.02;

Vector3 getNormal(const Point3& a, const Point3& b, const Point3& c)
{
    return crossProduct(b - a, c - a);
}

int findRoot(std::vector<int>& vParent, int i)
{
    while (vParent[static_cast<std::size_t>(i)] != i)
    {
        int& parent = vParent[static_cast<std::size_t>(i)];
        parent = vParent[static_cast<std::size_t>(parent)];
        i = parent;
    }
    return i;
}
} // namespace

CreaseMaker::CreaseMaker(HalfEdgeMesh& mesh_, const Planes& vPlanes_, double cellSize_, double noise_,
                         double radius_)
    : mesh(mesh_)
    , vPlanes(vPlanes_)
    , cellSize(cellSize_)
    , noise(noise_)
    , radius(radius_)
{
}

void CreaseMaker::run()
{
    chooseSides();
    for (int i = 0; i < VOTE_ROUNDS; ++i)
        vote();
    findCrossings();
    findPassages();
    dropShortChains();
    if (vCrossings.empty())
        return;
    putOnSides();
    cut();
    straightenChains();
    snapToCrease();
    unfold();
    setKinds();
}

// --- Sides ---

bool CreaseMaker::isGood(int v) const
{
    const SheetFit::LocalPlane& plane = vPlanes[static_cast<std::size_t>(v)];
    return plane.bUsable && plane.residual <= std::max(GOOD * noise, GOOD_CELLS);
}

void CreaseMaker::chooseSides()
{
    vSide.assign(vPlanes.size(), NONE);
    parallelFor(vSide.size(), MIN_CHUNK,
                [&](std::size_t from, std::size_t to)
                {
                    std::vector<int> vNear;
                    for (std::size_t v = from; v < to; ++v)
                        if (mesh.isAliveVertex(static_cast<int>(v)) && vPlanes[v].bUsable)
                            vSide[v] = findSide(static_cast<int>(v), vNear);
                });
}

// How badly a plane goes with a vertex, in cells.
double CreaseMaker::getCost(int v, int side) const
{
    const SheetFit::LocalPlane& plane = vPlanes[static_cast<std::size_t>(side)];
    const Vector3 way = plane.point - mesh.point(v);
    return (std::fabs(way * plane.normal) + DISTANCE_COST * way.length()) / cellSize +
           RESIDUAL_COST * plane.residual;
}

// The plane of a vertex in the neighbourhood that fits its points and passes nearest.
int CreaseMaker::findSide(int v, std::vector<int>& vNear) const
{
    if (isGood(v))
        return v;
    const double own = vPlanes[static_cast<std::size_t>(v)].residual;
    const double limit = std::max({GOOD * noise, GOOD_CELLS, BETTER * own});
    const double reach = cellSize * std::max(REACH_CELLS, REACH_RADII * radius);
    int best = NONE;
    double leastCost = DBL_MAX;
    const auto visit = [&](int u)
    {
        if (!(sqDistance(mesh.point(v), mesh.point(u)) < reach * reach) ||
            std::find(vNear.begin(), vNear.end(), u) != vNear.end())
            return;
        vNear.push_back(u);
        const SheetFit::LocalPlane& plane = vPlanes[static_cast<std::size_t>(u)];
        if (!plane.bUsable || plane.residual > limit)
            return;
        const double cost = getCost(v, u);
        if (cost < leastCost || (cost == leastCost && u < best))
        {
            leastCost = cost;
            best = u;
        }
    };
    vNear.assign(1, v);
    for (std::size_t i = 0; i < vNear.size(); ++i)
        mesh.forEachNeighbour(vNear[i], visit);
    return best;
}

bool CreaseMaker::agree(int side, int otherSide) const
{
    return vPlanes[static_cast<std::size_t>(side)].normal *
               vPlanes[static_cast<std::size_t>(otherSide)].normal >
           FLATTEST;
}

// Vertices near a crease go with their neighbours, unless the points say much else: a crease is no zigzag.
void CreaseMaker::vote()
{
    const std::vector<int> vOld(vSide);
    const auto oldSide = [&vOld](int v) { return vOld[static_cast<std::size_t>(v)]; };
    const auto getVotedCost = [&](int v, int side)
    {
        double num = 0.0;
        double numDissent = 0.0;
        mesh.forEachNeighbour(v,
                              [&](int u)
                              {
                                  num += 1.0;
                                  if (oldSide(u) != NONE && !agree(side, oldSide(u)))
                                      numDissent += 1.0;
                              });
        return getCost(v, side) + DISSENT_COST * numDissent / num;
    };
    const auto choose = [&](int v)
    {
        int& best = vSide[static_cast<std::size_t>(v)];
        double leastCost = getVotedCost(v, best);
        mesh.forEachNeighbour(v,
                              [&](int u)
                              {
                                  const double cost =
                                      oldSide(u) == NONE ? DBL_MAX : getVotedCost(v, oldSide(u));
                                  if (cost < leastCost || (cost == leastCost && oldSide(u) < best))
                                  {
                                      leastCost = cost;
                                      best = oldSide(u);
                                  }
                              });
    };
    parallelFor(vSide.size(), MIN_CHUNK,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t v = from; v < to; ++v)
                        if (vOld[v] != NONE && !isGood(static_cast<int>(v)))
                            choose(static_cast<int>(v));
                });
}

// --- Crossings ---

// Where the planes of both sides meet, next to the middle of the edge.
bool CreaseMaker::meet(int a, int b, Point3& point) const
{
    const SheetFit::LocalPlane& planeA = sideOf(a);
    const SheetFit::LocalPlane& planeB = sideOf(b);
    const double cosine = planeA.normal * planeB.normal;
    if (!(cosine < FLATTEST && cosine > SHARPEST))
        return false;
    const auto isFarOff = [this](int v)
    { return std::fabs((mesh.point(v) - sideOf(v).point) * sideOf(v).normal) > FARTHEST_OFF * cellSize; };
    if (isFarOff(a) || isFarOff(b))
        return false;
    const Vector3 edge = mesh.point(b) - mesh.point(a);
    const Point3 middle = mesh.point(a) + edge * 0.5;
    const double heightA = (planeA.point - middle) * planeA.normal;
    const double heightB = (planeB.point - middle) * planeB.normal;
    const double det = 1.0 - cosine * cosine;
    const Vector3 move = planeA.normal * ((heightA - cosine * heightB) / det) +
                         planeB.normal * ((heightB - cosine * heightA) / det);
    const double limit = FARTHEST * cellSize + 0.5 * edge.length();
    point = middle + move;
    return move.sqLength() < limit * limit;
}

// Whether the fits over an edge are far worse than those of its sides: else the surface is round there.
bool CreaseMaker::isBroken(int a, int b) const
{
    const auto residual = [this](int v) { return vPlanes[static_cast<std::size_t>(v)].residual; };
    return std::max(residual(a), residual(b)) >
           BROKEN * std::max({sideOf(a).residual, sideOf(b).residual, noise});
}

void CreaseMaker::findCrossings()
{
    vCrossingOf.assign(4 * static_cast<std::size_t>(mesh.endTriangles()), NONE);
    mesh.forEachEdge(
        [&](int h)
        {
            Crossing crossing;
            crossing.a = mesh.from(h);
            crossing.b = mesh.to(h);
            if (mesh.isBorder(h) || vSide[static_cast<std::size_t>(crossing.a)] == NONE ||
                vSide[static_cast<std::size_t>(crossing.b)] == NONE || !isBroken(crossing.a, crossing.b) ||
                !meet(crossing.a, crossing.b, crossing.point))
                return;
            vCrossingOf[static_cast<std::size_t>(h)] = static_cast<int>(vCrossings.size());
            vCrossingOf[static_cast<std::size_t>(mesh.partner(h))] = static_cast<int>(vCrossings.size());
            vCrossings.push_back(crossing);
        });
}

void CreaseMaker::findPassages()
{
    for (int t = 0; t < mesh.endTriangles(); ++t)
    {
        if (!mesh.isAlive(t))
            continue;
        Passage passage;
        for (std::size_t k = 0; k < 3; ++k)
        {
            const int h = 4 * t + static_cast<int>(k);
            passage.vertices[k] = mesh.from(h);
            passage.crossings[k] = vCrossingOf[static_cast<std::size_t>(h)];
            passage.number += passage.crossings[k] != NONE ? 1 : 0;
        }
        if (passage.number > 1)
            vPassages.push_back(passage);
    }
}

void CreaseMaker::dropShortChains()
{
    std::vector<int> vParent(vCrossings.size());
    std::iota(vParent.begin(), vParent.end(), 0);
    for (const Passage& passage : vPassages)
    {
        int first = NONE;
        for (const int crossing : passage.crossings)
        {
            if (crossing == NONE)
                continue;
            const int root = findRoot(vParent, crossing);
            if (first == NONE)
                first = root;
            else
                vParent[static_cast<std::size_t>(std::max(first, root))] = std::min(first, root);
            first = std::min(first, root);
        }
    }
    std::vector<int> vSizes(vCrossings.size(), 0);
    for (std::size_t i = 0; i < vCrossings.size(); ++i)
        ++vSizes[static_cast<std::size_t>(findRoot(vParent, static_cast<int>(i)))];
    std::vector<int> vNew(vCrossings.size(), NONE);
    std::vector<Crossing> vKept;
    for (std::size_t i = 0; i < vCrossings.size(); ++i)
    {
        if (vSizes[static_cast<std::size_t>(findRoot(vParent, static_cast<int>(i)))] < FEWEST_CROSSINGS)
            continue;
        vNew[i] = static_cast<int>(vKept.size());
        vKept.push_back(vCrossings[i]);
    }
    vCrossings = std::move(vKept);
    for (Passage& passage : vPassages)
        for (int& crossing : passage.crossings)
            if (crossing != NONE)
                crossing = vNew[static_cast<std::size_t>(crossing)];
    std::erase_if(
        vPassages, [](const Passage& p)
        { return std::all_of(p.crossings.begin(), p.crossings.end(), [](int c) { return c == NONE; }); });
}

// --- The cut ---

// What a fit over both sides has rounded off is undone.
void CreaseMaker::putOnSides()
{
    for (const Crossing& crossing : vCrossings)
    {
        for (const int v : {crossing.a, crossing.b})
        {
            const SheetFit::LocalPlane& plane = sideOf(v);
            const Point3& p = mesh.point(v);
            mesh.setPoint(v, p + plane.normal * ((plane.point - p) * plane.normal));
        }
    }
}

// A split joins the new vertex with those opposite, so the second one on a triangle is joined with the first.
void CreaseMaker::cut()
{
    for (Crossing& crossing : vCrossings)
        crossing.vertex = mesh.split(mesh.findHalfEdge(crossing.a, crossing.b), crossing.point);
    for (const Passage& passage : vPassages)
    {
        if (passage.number == 3)
        {
            makeCorner(passage);
            continue;
        }
        int first = NONE;
        for (const int crossing : passage.crossings)
        {
            if (crossing == NONE)
                continue;
            const int v = vCrossings[static_cast<std::size_t>(crossing)].vertex;
            if (first != NONE)
                join(first, v);
            first = v;
        }
    }
}

void CreaseMaker::join(int a, int b)
{
    const int h = mesh.findHalfEdge(a, b);
    if (h == NONE)
        return;
    mesh.setFeature(h, 1);
    ++numEdges;
}

// The vertex on the edge that was cut first is joined with the corner opposite, where all three can be joined.
void CreaseMaker::makeCorner(const Passage& passage)
{
    const std::size_t k = static_cast<std::size_t>(
        std::min_element(passage.crossings.begin(), passage.crossings.end()) - passage.crossings.begin());
    std::array<int, 3> ends = {};
    Vector3 toMiddle;
    for (std::size_t i = 0; i < 3; ++i)
    {
        ends[i] = vCrossings[static_cast<std::size_t>(passage.crossings[i])].vertex;
        toMiddle.add((mesh.point(ends[i]) - Point3()) / 3.0);
    }
    const Point3 middle = Point3() + toMiddle;
    NormalTensor tensor;
    Vector3 right;
    for (const int v : passage.vertices)
    {
        const SheetFit::LocalPlane& plane = sideOf(v);
        tensor.add(plane.normal);
        right.add(plane.normal * ((plane.point - middle) * plane.normal));
    }
    const Vector3 move = tensor.solve(right, CORNER_SHARE);
    const int h = mesh.findHalfEdge(ends[k], passage.vertices[(k + 2) % 3]);
    if (h == NONE)
        return;
    const int v = mesh.split(h, move.length() < FARTHEST * cellSize ? middle + move : middle);
    for (const int end : ends)
        join(v, end);
    vCorners.push_back(v);
}

// Vertices next to the crease, or beyond it by the shape of the cut, make needles and folds.
void CreaseMaker::snapToCrease()
{
    for (const Crossing& crossing : vCrossings)
    {
        const int m = crossing.vertex;
        const auto sqLength = [&](int v) { return sqDistance(mesh.point(v), mesh.point(m)); };
        for (const int v : {crossing.a, crossing.b})
        {
            if (!mesh.isAliveVertex(v) || v >= static_cast<int>(vSide.size()))
                continue;
            const int h = mesh.findHalfEdge(v, m);
            if (h != NONE && sqLength(v) < SNAP * SNAP * cellSize * cellSize && mesh.mayCollapse(h) &&
                maySnap(h))
                mesh.collapse(h);
        }
    }
}

// The triangles must face as the sides of their corners do.
bool CreaseMaker::maySnap(int h) const
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
                             bResult = normal * sideOf(v).normal > 0.7 * normal.length();
                         });
    return bResult;
}

// Where the edges cross the crease need not follow on each other along it: vertices at which a chain turns back move
// to the middle of their neighbours, and so do those neighbours.
void CreaseMaker::straightenChains()
{
    std::vector<int> vTurning;
    for (int round = 0; round < UNFOLD_ROUNDS; ++round)
    {
        vTurning.clear();
        for (const Crossing& crossing : vCrossings)
        {
            const auto ends = getChainEnds(crossing.vertex);
            if (ends[1] == NONE || getTurn(crossing.vertex, ends) < TURNED_BACK)
                continue;
            vTurning.push_back(crossing.vertex);
            for (const int end : ends)
                if (getChainEnds(end)[1] != NONE)
                    vTurning.push_back(end);
        }
        for (const int v : vTurning)
        {
            const auto ends = getChainEnds(v);
            mesh.setPoint(v, mesh.point(ends[0]) + (mesh.point(ends[1]) - mesh.point(ends[0])) * 0.5);
        }
    }
}

// The neighbours along the chain; NONE as the second one where there are not two.
std::array<int, 2> CreaseMaker::getChainEnds(int v) const
{
    std::array<int, 2> ends = {NONE, NONE};
    std::size_t number = 0;
    mesh.forEachOutgoing(v,
                         [&](int h)
                         {
                             if (mesh.feature(h) == 0)
                                 return;
                             if (number < 2)
                                 ends[number] = mesh.to(h);
                             ++number;
                         });
    if (number != 2)
        ends[1] = NONE;
    return ends;
}

// Cosine of the angle between both edges of a chain: -1 where it goes straight on.
double CreaseMaker::getTurn(int v, const std::array<int, 2>& ends) const
{
    const Vector3 a = mesh.point(ends[0]) - mesh.point(v);
    const Vector3 b = mesh.point(ends[1]) - mesh.point(v);
    const double lengths = std::sqrt(a.sqLength() * b.sqLength());
    return lengths > 0.0 ? a * b / lengths : 1.0;
}

bool CreaseMaker::hasSide(int v) const
{
    return v < static_cast<int>(vSide.size()) && vSide[static_cast<std::size_t>(v)] != NONE;
}

// Area by squared edges of the worst triangle at a vertex, 1 for an even one, below 0 for one that is turned over, were
// the vertex at p. Those that vanish with the edge to another one do not count.
double CreaseMaker::getShape(int v, const Point3& p, int other) const
{
    constexpr double even = 3.4641016151377544;
    double worst = 1.0;
    const auto measure = [&](int b, int c, int ref)
    {
        const Point3& q = mesh.point(b);
        const Point3& r = mesh.point(c);
        const double sum = sqDistance(p, q) + sqDistance(q, r) + sqDistance(r, p);
        const double area = getNormal(p, q, r) * sideOf(ref).normal;
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
                                 if (hasSide(ref))
                                     return measure(b, c, ref);
                         });
    return worst;
}

// Vertices that lay beyond the crease move back into their side.
void CreaseMaker::unfold()
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

bool CreaseMaker::isCorner(int v) const
{
    int number = 0;
    mesh.forEachOutgoing(v, [&](int h) { number += mesh.feature(h) != 0 ? 1 : 0; });
    return number > 2;
}

// Collapses the edge of a vertex that leaves the best triangles: on a chain one along it, at a corner one to
// another corner close by.
void CreaseMaker::dissolve(int v)
{
    const bool bOnCrease = getChainEnds(v)[0] != NONE;
    const bool bCorner = isCorner(v);
    double best = bCorner ? 0.0 : getShape(v, mesh.point(v), NONE);
    int bestWay = NONE;
    mesh.forEachOutgoing(v,
                         [&](int h)
                         {
                             const int to = mesh.to(h);
                             const double sqDist = sqDistance(mesh.point(v), mesh.point(to));
                             if ((bOnCrease && mesh.feature(h) == 0) ||
                                 (bCorner && (!isCorner(to) || sqDist > SNAP * SNAP * cellSize * cellSize)) ||
                                 (hasSide(v) && hasSide(to) && !agree(sideIndex(v), sideIndex(to))) ||
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

void CreaseMaker::improve(int v)
{
    const Point3 p = mesh.point(v);
    double best = getShape(v, p, NONE);
    if (best > BAD_SHAPE)
        return;
    Vector3 way;
    if (hasSide(v))
    {
        mesh.forEachNeighbour(v, [&](int u) { way.add((mesh.point(u) - p) / mesh.valence(v)); });
        way.sub(sideOf(v).normal * (way * sideOf(v).normal));
    }
    else
    {
        const auto ends = getChainEnds(v);
        if (ends[1] == NONE || getTurn(v, ends) > -SHARP_TURN)
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

// --- Kinds ---

void CreaseMaker::setKinds()
{
    for (int v = 0; v < mesh.endVertices(); ++v)
    {
        if (!mesh.isAliveVertex(v))
            continue;
        int number = 0;
        mesh.forEachOutgoing(v, [&](int h) { number += mesh.feature(h) != 0 ? 1 : 0; });
        if (number == 2 && !mesh.isBorderVertex(v))
            mesh.setKind(v, getTurn(v, getChainEnds(v)) > -SHARP_TURN ? Kind::FIXED : Kind::CHAIN);
        else if (number > 0)
            mesh.setKind(v, Kind::FIXED);
    }
}

} // namespace TARN_ZEF

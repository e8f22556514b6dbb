#include "remesh/Remesher.h"

#include "remesh/ChainSampler.h"
#include "remesh/triangles.h"

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
using Kind = HalfEdgeMesh::Kind;
constexpr int NONE = HalfEdgeMesh::NONE;

// In wanted lengths.
constexpr double TOO_LONG = 4.0 / 3.0;
constexpr double TOO_SHORT = 4.0 / 5.0;
constexpr double CHORD_ERROR = 0.6; // of chains, in tolerances
constexpr double SIZE_SLOPE = 0.35;
constexpr double LEAST_SIZE = 0.08;
constexpr double SIZE_TOLERANCE = 0.8; // distances that sizes are made for, in tolerances

// Cosines between the normals of a triangle before and after.
constexpr double COS_COLLAPSE = 0.6;
constexpr double COS_MOVE = 0.5;
constexpr double COS_FLIP = 0.5;
// Least height over the longest edge.
constexpr double LEAST_HEIGHT = 1e-3;

constexpr int NUM_ROUNDS = 6;
constexpr int NUM_SHAPE_ROUNDS = 3;
constexpr int MAX_SPLIT_PASSES = 40;
constexpr int MAX_FLIP_PASSES = 10;
constexpr int MAX_MEND_ROUNDS = 12;
} // namespace

Remesher::Remesher(const SourceSurface& source_, const Settings& settings_)
    : source(source_)
    , settings(settings_)
    , walker(source_.getMesh())
    , mesh(source_.getMesh())
    , vSize(mesh.endVertices(), settings_.length)
    , vHint(mesh.endTriangles())
{
    for (int t = 0; t < mesh.endTriangles(); ++t)
        vHint[t] = t;
}

void Remesher::run(const std::function<void(double)>& progress)
{
    const int numSteps = NUM_ROUNDS + NUM_SHAPE_ROUNDS + 2;
    int numDone = 0;
    const auto tell = [&] { progress(static_cast<double>(++numDone) / numSteps); };
    flipAll(FlipAim::SHAPE);
    cutChains();
    collapseShort(true);
    findSizes();
    tell();
    for (int round = 0; round < NUM_ROUNDS; ++round)
    {
        splitUntilDone();
        collapseShort(false);
        flipAll(round + 2 < NUM_ROUNDS ? FlipAim::VALENCE : FlipAim::SHAPE);
        relax(false);
        findSizes();
        tell();
    }
    for (int round = 0; round < NUM_SHAPE_ROUNDS; ++round)
    {
        flipAll(FlipAim::SHAPE);
        relax(true);
        tell();
    }
    keepTolerance();
    tell();
}

// --- Measures ---

Vector3 Remesher::normalOf(int t) const
{
    return unitOrNull(rawNormal(mesh.point(mesh.from(4 * t)), mesh.point(mesh.from(4 * t + 1)),
                                mesh.point(mesh.from(4 * t + 2))));
}

double Remesher::lengthOf(int h) const
{
    return (mesh.point(mesh.to(h)) - mesh.point(mesh.from(h))).length();
}

double Remesher::sizeOf(int h) const
{
    return 0.5 * (vSize[mesh.from(h)] + vSize[mesh.to(h)]);
}

// far: how far away the place may be before the tree is asked.
Point3 Remesher::onPatch(const Point3& p, int t, double far, int* pTriangle) const
{
    const Patch& patch = patchOf(t);
    if (pTriangle != nullptr)
        *pTriangle = vHint[t];
    if (patch.bExact)
        return p + patch.normal * -((p - patch.base) * patch.normal);
    const SurfacePlace place = walker.nearest(p, vHint[t], far);
    if (pTriangle != nullptr)
        *pTriangle = place.triangle;
    return place.point;
}

double Remesher::sqDistanceFromPatch(const Point3& p, int t) const
{
    if (patchOf(t).bFlat)
        return 0.0;
    return walker.walk(p, vHint[t]).sqDist;
}

// --- Chains ---

int Remesher::edgeBetween(int a, int b) const
{
    const int h = mesh.findHalfEdge(a, b);
    return h != NONE ? h : mesh.findHalfEdge(b, a);
}

void Remesher::cutChains()
{
    ChainSampler sampler(source, settings.length, CHORD_ERROR * settings.tolerance, settings.bGraded);
    sampler.run();
    for (std::size_t i = 0; i < source.getChains().size(); ++i)
    {
        const CreaseChain& chain = source.getChains()[i];
        cutChain(chain, sampler.getSamples()[i]);
        for (const int end : {chain.vVertices.front(), chain.vVertices.back()})
            vSize[end] = sampler.sizeAt(end);
    }
}

void Remesher::cutChain(const CreaseChain& chain, const std::vector<ChainSample>& vSamples)
{
    int last = NONE; // the newest vertex on the current segment
    int segment = -1;
    for (const ChainSample& s : vSamples)
    {
        const int begin = chain.vVertices[s.segment];
        const int end = chain.vVertices[s.segment + 1];
        int v = s.along <= 0.0 ? begin : NONE;
        if (v == NONE)
        {
            const int start = segment == s.segment ? last : begin;
            const int h = edgeBetween(start, end);
            v = mesh.split(h, s.point);
            noteSplit(h, v, NONE);
            segment = s.segment;
            last = v;
        }
        mesh.setKind(v, Kind::FIXED);
        vSize[v] = s.size;
    }
}

// --- Splitting ---

// The new triangles lie where the old ones lay.
void Remesher::noteSplit(int h, int m, int sourceTriangle)
{
    vHint.resize(mesh.endTriangles(), 0);
    vSize.resize(mesh.endVertices(), settings.length);
    const int piece = mesh.outgoing(m);
    const auto handOn = [&](int fresh, int old)
    {
        if (sourceTriangle != NONE)
            vHint[old] = sourceTriangle;
        vHint[fresh] = vHint[old];
    };
    handOn(HalfEdgeMesh::triangleOf(piece), HalfEdgeMesh::triangleOf(h));
    if (!mesh.isBorder(h))
        handOn(HalfEdgeMesh::triangleOf(mesh.partner(piece)), HalfEdgeMesh::triangleOf(mesh.partner(h)));
}

// In the middle, on the patch. Returns the new vertex, or NONE where a triangle would fold.
int Remesher::splitAt(int h)
{
    const int t = HalfEdgeMesh::triangleOf(h);
    const int g = mesh.partner(h);
    const Point3& a = mesh.point(mesh.from(h));
    const Point3& b = mesh.point(mesh.to(h));
    int place = NONE;
    const Point3 m = onPatch(middle(a, b), t, lengthOf(h), &place);
    for (const int side : {h, g})
    {
        const Point3& c = mesh.point(mesh.apex(side));
        const Vector3 before = normalOf(HalfEdgeMesh::triangleOf(side));
        const Vector3 first = rawNormal(mesh.point(mesh.from(side)), m, c);
        const Vector3 second = rawNormal(m, mesh.point(mesh.to(side)), c);
        if (!(before * first > COS_MOVE * first.length()) || !(before * second > COS_MOVE * second.length()))
            return NONE;
    }
    const double half = SIZE_SLOPE * 0.5 * lengthOf(h);
    const double size = std::min({settings.length, vSize[mesh.from(h)] + half, vSize[mesh.to(h)] + half});
    const int v = mesh.split(h, m);
    noteSplit(h, v, place);
    vSize[v] = size;
    return v;
}

// The longest first. Returns the new vertices.
std::vector<int> Remesher::splitLong()
{
    std::vector<std::pair<double, int>> vLong;
    mesh.forEachEdge(
        [&](int h)
        {
            const double ratio = mesh.feature(h) != 0 ? 0.0 : lengthOf(h) / sizeOf(h);
            if (ratio > TOO_LONG)
                vLong.emplace_back(-ratio, h);
        });
    std::sort(vLong.begin(), vLong.end());
    std::vector<int> vNew;
    for (const auto& entry : vLong)
    {
        const int v = splitAt(entry.second);
        if (v != NONE)
            vNew.push_back(v);
    }
    return vNew;
}

// Flips between the passes keep the pieces from getting thin.
void Remesher::splitUntilDone()
{
    for (int pass = 0; pass < MAX_SPLIT_PASSES; ++pass)
    {
        std::vector<int> vQueue;
        for (const int v : splitLong())
            mesh.forEachOutgoing(v,
                                 [&](int h)
                                 {
                                     vQueue.push_back(h);
                                     vQueue.push_back(HalfEdgeMesh::next(h));
                                 });
        if (vQueue.empty())
            return;
        flipFrom(vQueue, FlipAim::SHAPE);
    }
}

// --- Collapsing ---

// Whether the fan of from(h), drawn to to(h), stays on the surface and unfolded.
bool Remesher::keepsSurface(int h, double longest) const
{
    const int a = mesh.from(h);
    const int b = mesh.to(h);
    const Point3& q = mesh.point(b);
    bool bOK = true;
    const auto isNear = [&](const Point3& p, int t)
    { return sqDistanceFromPatch(p, t) <= settings.tolerance * settings.tolerance; };
    // The cheap tests for all first.
    mesh.forEachOutgoing(
        a,
        [&](int g)
        {
            const int x = mesh.to(g);
            const int y = mesh.apex(g);
            if (!bOK || x == b || y == b)
                return;
            const Point3& px = mesh.point(x);
            const Point3& py = mesh.point(y);
            if (longest > 0.0 && std::max(sqDistance(q, px) / (vSize[x] * vSize[x]),
                                          sqDistance(q, py) / (vSize[y] * vSize[y])) > longest * longest)
            {
                bOK = false;
                return;
            }
            const Vector3 before = normalOf(HalfEdgeMesh::triangleOf(g));
            const Vector3 after = rawNormal(q, px, py);
            bOK = isHigh(q, px, py, LEAST_HEIGHT) && before * after > COS_COLLAPSE * after.length();
        });
    if (!bOK)
        return false;
    mesh.forEachOutgoing(a,
                         [&](int g)
                         {
                             const int t = HalfEdgeMesh::triangleOf(g);
                             const int x = mesh.to(g);
                             const int y = mesh.apex(g);
                             if (!bOK || x == b || y == b || patchOf(t).bFlat)
                                 return;
                             bOK = isNear(middle(q, mesh.point(x)), t) &&
                                   isNear(middle(q, mesh.point(y)), t) &&
                                   isNear(centre(q, mesh.point(x), mesh.point(y)), t);
                         });
    return bOK;
}

bool Remesher::tryCollapse(int h)
{
    const int a = mesh.from(h);
    const bool bSurplus = mesh.kind(a) == Kind::CHAIN && mesh.feature(h) != 0;
    if (mesh.kind(a) != Kind::FREE && !bSurplus)
        return false;
    if (!keepsSurface(h, bSurplus ? 0.0 : TOO_LONG) || !mesh.mayCollapse(h))
        return false;
    mesh.collapse(h);
    return true;
}

// Shorter ones first, in two classes: the order within a class is that of the numbers.
int Remesher::collapseShort(bool bOnlySurplus)
{
    int num = 0;
    for (const double limit : {0.5 * TOO_SHORT, TOO_SHORT})
        for (int t = 0; t < mesh.endTriangles(); ++t)
            for (int h = 4 * t; h < 4 * t + 3; ++h)
            {
                if (!mesh.isAlive(t))
                    break;
                const Kind kind = mesh.kind(mesh.from(h));
                const bool bSurplus = kind == Kind::CHAIN && mesh.feature(h) != 0;
                if (bSurplus)
                {
                    // Along a border the half-edge runs one way only.
                    num += tryCollapse(h) ? 1 : 0;
                    continue;
                }
                if (bOnlySurplus || kind != Kind::FREE || lengthOf(h) >= limit * sizeOf(h))
                    continue;
                num += tryCollapse(h) ? 1 : 0;
            }
    return num;
}

// --- Flipping ---

bool Remesher::wantsFlip(int h, FlipAim aim) const
{
    const int g = mesh.partner(h);
    const int a = mesh.from(h);
    const int b = mesh.to(h);
    const int c = mesh.apex(h);
    const int d = mesh.apex(g);
    if (aim == FlipAim::VALENCE)
    {
        const auto off = [this](int v, int change)
        {
            const int best = mesh.isBorderVertex(v) ? 4 : 6;
            const int x = vValence[v] + change - best;
            return x * x;
        };
        const bool bAllFree = mesh.kind(a) == Kind::FREE && mesh.kind(b) == Kind::FREE &&
                              mesh.kind(c) == Kind::FREE && mesh.kind(d) == Kind::FREE;
        if (bAllFree)
            return off(a, -1) + off(b, -1) + off(c, 1) + off(d, 1) <
                   off(a, 0) + off(b, 0) + off(c, 0) + off(d, 0);
    }
    // Delaunay: the angles opposite sum to more than half a turn.
    const Point3& pa = mesh.point(a);
    const Point3& pb = mesh.point(b);
    const auto cosAndSin = [&](const Point3& p, double& cosine, double& sine)
    {
        cosine = (pa - p) * (pb - p);
        sine = crossProduct(pa - p, pb - p).length();
    };
    double cosC = 0.0;
    double sinC = 0.0;
    double cosD = 0.0;
    double sinD = 0.0;
    cosAndSin(mesh.point(c), cosC, sinC);
    cosAndSin(mesh.point(d), cosD, sinD);
    const double sum = sinC * cosD + cosC * sinD;
    const double scale = std::sqrt((cosC * cosC + sinC * sinC) * (cosD * cosD + sinD * sinD));
    return sum < -1e-9 * scale;
}

bool Remesher::keepsSurfaceFlipped(int h) const
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
    const double limit = patchOf(t).bFlat ? COS_COLLAPSE : std::max(COS_FLIP, COS_COLLAPSE);
    const double thin = std::min(shapeOf(a, b, c), shapeOf(b, a, d));
    const double thinAfter = std::min(shapeOf(c, d, b), shapeOf(d, c, a));
    if (!(before * first > limit * first.length()) || !(before * second > limit * second.length()) ||
        (thinAfter < thin && thinAfter < 0.1))
        return false;
    if (patchOf(t).bFlat)
        return true;
    const double sqTolerance = settings.tolerance * settings.tolerance;
    const double sqNew = sqDistanceFromPatch(middle(c, d), t);
    return sqNew <= sqTolerance || sqNew <= sqDistanceFromPatch(middle(a, b), t);
}

void Remesher::flipAll(FlipAim aim)
{
    std::vector<int> vQueue;
    mesh.forEachEdge([&vQueue](int h) { vQueue.push_back(h); });
    flipFrom(vQueue, aim);
}

// In rounds: the edges of a list, then those around what was flipped.
void Remesher::flipFrom(std::vector<int>& vQueue, FlipAim aim)
{
    if (aim == FlipAim::VALENCE)
    {
        vValence.assign(mesh.endVertices(), 0);
        for (int v = 0; v < mesh.endVertices(); ++v)
            if (mesh.isAliveVertex(v))
                vValence[v] = mesh.valence(v);
    }
    vQueued.assign(4 * static_cast<std::size_t>(mesh.endTriangles()), 0);
    for (int pass = 0; pass < MAX_FLIP_PASSES && !vQueue.empty(); ++pass)
    {
        std::vector<int> vNext;
        for (const int h : vQueue)
        {
            vQueued[h] = 0;
            if (mesh.feature(h) != 0 || mesh.isBorder(h) || !wantsFlip(h, aim) || !mesh.mayFlip(h) ||
                !keepsSurfaceFlipped(h))
                continue;
            if (aim == FlipAim::VALENCE)
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
        vQueue = std::move(vNext);
    }
}

// --- Relaxing ---

// The mean of the fan's centres, by area over the size squared: where small triangles are wanted they pull.
Point3 Remesher::middleOfFan(int v) const
{
    const Point3& p = mesh.point(v);
    Vector3 sum;
    double weights = 0.0;
    mesh.forEachOutgoing(v,
                         [&](int h)
                         {
                             const int x = mesh.to(h);
                             const int y = mesh.apex(h);
                             const Vector3 vx = mesh.point(x) - p;
                             const Vector3 vy = mesh.point(y) - p;
                             const double size = vSize[x] + vSize[y];
                             const double weight = crossProduct(vx, vy).length() / (size * size);
                             sum.add((vx + vy) * (weight / 3.0));
                             weights += weight;
                         });
    return weights > 0.0 ? p + sum / weights : p;
}

bool Remesher::mayMove(int v, const Point3& p, bool bOnlyBetter) const
{
    bool bOK = true;
    double worstBefore = 1.0;
    double worstAfter = 1.0;
    mesh.forEachOutgoing(v,
                         [&](int h)
                         {
                             if (!bOK)
                                 return;
                             const Point3& x = mesh.point(mesh.to(h));
                             const Point3& y = mesh.point(mesh.apex(h));
                             const Vector3 before = rawNormal(mesh.point(v), x, y);
                             const Vector3 after = rawNormal(p, x, y);
                             const double product = before.length() * after.length();
                             bOK = before * after > COS_MOVE * product;
                             worstBefore = std::min(worstBefore, shapeOf(mesh.point(v), x, y));
                             worstAfter = std::min(worstAfter, shapeOf(p, x, y));
                         });
    return bOK && (worstAfter > worstBefore || (!bOnlyBetter && worstAfter > 0.3));
}

void Remesher::relax(bool bOnlyBetter)
{
    for (int v = 0; v < mesh.endVertices(); ++v)
    {
        if (!mesh.isAliveVertex(v) || mesh.kind(v) != Kind::FREE)
            continue;
        const int t = HalfEdgeMesh::triangleOf(mesh.outgoing(v));
        int place = NONE;
        const Point3 p = onPatch(middleOfFan(v), t, vSize[v], &place);
        if (!mayMove(v, p, bOnlyBetter))
            continue;
        mesh.setPoint(v, p);
        vHint[t] = place;
    }
}

// --- Sizes ---

// Chains keep theirs. A free vertex gets what the distance from the source allows, then no more than its neighbours
// and the slope.
void Remesher::findSizes()
{
    for (int v = 0; v < mesh.endVertices(); ++v)
        if (mesh.isAliveVertex(v) && mesh.kind(v) == Kind::FREE)
            vSize[v] = settings.length;
    sizeByDistance();
    spreadSizes();
}

void Remesher::spreadSizes()
{
    for (int pass = 0; pass < 2; ++pass)
    {
        const int end = mesh.endVertices();
        for (int i = 0; i < end; ++i)
        {
            const int v = pass == 0 ? i : end - 1 - i;
            if (!mesh.isAliveVertex(v) || mesh.kind(v) != Kind::FREE)
                continue;
            mesh.forEachOutgoing(v,
                                 [&](int h)
                                 {
                                     if (vSize[mesh.to(h)] < vSize[v])
                                         vSize[v] =
                                             std::min(vSize[v], vSize[mesh.to(h)] + SIZE_SLOPE * lengthOf(h));
                                 });
        }
    }
}

// How far an edge stands off its patch goes with the square of its length.
void Remesher::sizeByDistance()
{
    const double allowed = SIZE_TOLERANCE * settings.tolerance;
    mesh.forEachEdge(
        [&](int h)
        {
            const int t = HalfEdgeMesh::triangleOf(h);
            if (mesh.feature(h) != 0 || patchOf(t).bFlat)
                return;
            const double len = lengthOf(h);
            const Point3 m = middle(mesh.point(mesh.from(h)), mesh.point(mesh.to(h)));
            const SurfacePlace place = walker.walk(m, vHint[t]);
            vHint[t] = place.triangle;
            const double off = std::sqrt(place.sqDist);
            if (off * settings.length * settings.length <= allowed * len * len)
                return;
            const double wanted = std::max(LEAST_SIZE * settings.length, len * std::sqrt(allowed / off));
            for (const int v : {mesh.from(h), mesh.to(h)})
                if (mesh.kind(v) == Kind::FREE)
                    vSize[v] = std::min(vSize[v], wanted);
        });
}

// --- Tolerance ---

void Remesher::keepTolerance()
{
    for (int round = 0; round < MAX_MEND_ROUNDS; ++round)
    {
        numFar = 0;
        const int num = splitFarTriangles() + splitBelowSource();
        if (num == 0)
            return;
        flipAll(FlipAim::SHAPE);
    }
}

bool Remesher::splitTriangle(int t)
{
    int longest = NONE;
    for (int h = 4 * t; h < 4 * t + 3; ++h)
        if (mesh.feature(h) == 0 && (longest == NONE || lengthOf(h) > lengthOf(longest)))
            longest = h;
    return longest != NONE && splitAt(longest) != NONE;
}

int Remesher::splitFarTriangles()
{
    const double sqTolerance = settings.tolerance * settings.tolerance;
    int num = 0;
    const int end = mesh.endTriangles();
    for (int t = 0; t < end; ++t)
    {
        if (!mesh.isAlive(t) || patchOf(t).bFlat)
            continue;
        const Point3& a = mesh.point(mesh.from(4 * t));
        const Point3& b = mesh.point(mesh.from(4 * t + 1));
        const Point3& c = mesh.point(mesh.from(4 * t + 2));
        bool bFar = false;
        for (const Point3& p : {centre(a, b, c), middle(a, b), middle(b, c), middle(c, a)})
            bFar = bFar || walker.nearest(p, vHint[t], settings.tolerance).sqDist > sqTolerance;
        if (!bFar)
            continue;
        ++numFar;
        num += splitTriangle(t) ? 1 : 0;
    }
    return num;
}

// The other way: each vertex of the source has the result near.
int Remesher::splitBelowSource()
{
    std::vector<int> vStart(source.getPatches().size(), NONE); // a triangle of the result in each patch
    std::vector<int> vNear(source.getMesh().endTriangles(), NONE);
    for (int t = 0; t < mesh.endTriangles(); ++t)
        if (mesh.isAlive(t))
        {
            vStart[mesh.label(t)] = t;
            vNear[vHint[t]] = t;
        }
    const HalfEdgeMesh& from = source.getMesh();
    const PatchWalker back(mesh);
    std::vector<int> vFar;
    for (int v = 0; v < from.endVertices(); ++v)
    {
        const int s = HalfEdgeMesh::triangleOf(from.outgoing(v));
        const int patch = from.label(s);
        if (from.kind(v) != Kind::FREE || source.getPatches()[patch].bFlat)
            continue;
        int start = vStart[patch];
        from.forEachOutgoing(v,
                             [&](int h)
                             {
                                 if (vNear[HalfEdgeMesh::triangleOf(h)] != NONE)
                                     start = vNear[HalfEdgeMesh::triangleOf(h)];
                             });
        const SurfacePlace place = back.nearest(from.point(v), start, settings.tolerance);
        vStart[patch] = place.triangle;
        if (place.sqDist > settings.tolerance * settings.tolerance)
            vFar.push_back(place.triangle);
    }
    numFar += static_cast<int>(vFar.size());
    std::sort(vFar.begin(), vFar.end());
    vFar.erase(std::unique(vFar.begin(), vFar.end()), vFar.end());
    int num = 0;
    for (const int t : vFar)
        num += splitTriangle(t) ? 1 : 0;
    return num;
}

} // namespace TARN_ZEF

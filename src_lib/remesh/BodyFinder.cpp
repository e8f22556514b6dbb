#include "remesh/BodyFinder.h"

#include "remesh/SoupEdgeTable.h"
#include "remesh/triangles.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace TARN_ZEF
{
namespace
{
constexpr int ABSENT = -1;

using Triple = std::array<int, 3>;

// A triangle at an edge, seen along it from its low end.
struct Leaf
{
    double angle;
    int apex;
    int order; // of copies: all edges of them must agree on it
    int up;    // the side that looks to larger angles
    int down;

    // Of faces that lie on one another, the one whose body stands below comes first.
    [[nodiscard]] int byFacing() const { return up % 2; }
};

// Leaves this near to one another lie on one another, up to rounding.
constexpr double SAME_ANGLE = 1e-7;
// Height of a flat tetrahedron, in edges.
constexpr double FLAT_HEIGHT = 1e-6;

// Puts leaves of one angle in order: copies as all their edges agree, others by their facing. From the angle of the
// first leaf, 0, a little less than a full turn is the same.
void sortLeaves(std::vector<Leaf>& vLeaves)
{
    for (Leaf& leaf : vLeaves)
        if (leaf.angle > 4.0 - SAME_ANGLE)
            leaf.angle -= 4.0;
    std::sort(vLeaves.begin(), vLeaves.end(),
              [](const Leaf& p, const Leaf& q)
              { return p.angle != q.angle ? p.angle < q.angle : p.order < q.order; });
    for (auto from = vLeaves.begin(); from != vLeaves.end();)
    {
        auto to = from + 1;
        bool bCopies = false;
        for (; to != vLeaves.end() && to->angle < from->angle + SAME_ANGLE; ++to)
            bCopies = bCopies || to->apex == from->apex;
        std::sort(from, to,
                  [bCopies](const Leaf& p, const Leaf& q)
                  {
                      if (!bCopies && p.byFacing() != q.byFacing())
                          return p.byFacing() < q.byFacing();
                      return p.order < q.order;
                  });
        from = to;
    }
}

// Two triangles on an edge, as the quadrangle that they fill.
struct Quad
{
    std::array<int, 4> corners; // the lower diagonal, then the other one, each low end first
    bool bHigher;               // the edge is the second diagonal
    int first;                  // corners that begin the edge
    int second;

    [[nodiscard]] bool operator<(const Quad& other) const
    {
        return std::tie(corners, bHigher, first) < std::tie(other.corners, other.bHigher, other.first);
    }
};

Quad quadOf(const FlatSoup& soup, const int* pCorners)
{
    const int c = pCorners[0];
    const std::pair<int, int> edge = std::minmax(soup.vCorners[c], soup.vCorners[FlatSoup::next(c)]);
    const int p = soup.vCorners[FlatSoup::prev(c)];
    const int q = soup.vCorners[FlatSoup::prev(pCorners[1])];
    const std::pair<int, int> other = std::minmax(p, q);
    const bool bHigher = other < edge;
    const auto& low = bHigher ? other : edge;
    const auto& high = bHigher ? edge : other;
    return {{low.first, low.second, high.first, high.second}, bHigher, c, pCorners[1]};
}

bool isFlat(const FlatSoup& soup, const std::array<int, 4>& corners)
{
    const Vector3 a = soup.vPoints[corners[1]] - soup.vPoints[corners[0]];
    const Vector3 b = soup.vPoints[corners[2]] - soup.vPoints[corners[0]];
    const Vector3 c = soup.vPoints[corners[3]] - soup.vPoints[corners[0]];
    const Vector3 normal = crossProduct(a, b);
    return std::fabs(normal * c) <= FLAT_HEIGHT * normal.length() * a.length();
}

// Each triangle loses one end of the edge and gets the other one's corner; both stay turned as they are.
void cutOtherwise(FlatSoup& soup, const Quad& quad)
{
    const int begin = soup.vCorners[quad.first];
    const int p = soup.vCorners[FlatSoup::prev(quad.first)];
    const int q = soup.vCorners[FlatSoup::prev(quad.second)];
    soup.vCorners[FlatSoup::next(quad.first)] = q;
    const int c = quad.second;
    soup.vCorners[soup.vCorners[c] == begin ? c : FlatSoup::next(c)] = p;
}

// Whether the corners stand in the order of their numbers, but for a rotation.
bool isEven(const int* pCorners)
{
    return (pCorners[0] < pCorners[1]) + (pCorners[1] < pCorners[2]) + (pCorners[2] < pCorners[0]) == 2;
}
} // namespace

BodyFinder::BodyFinder(FlatSoup& soup_)
    : soup(soup_)
    , sides(2 * soup_.numTriangles())
    , vCrowded(soup_.numTriangles(), false)
{
}

void BodyFinder::run()
{
    findCrowded();
    if (numCrowded == 0)
        return;
    matchDiagonals();
    joinSides(SoupEdgeTable(soup.vPoints.size(), soup.vCorners));
    groupCopies();
    measure();
    emit();
}

void BodyFinder::findCrowded()
{
    SoupEdgeTable(soup.vPoints.size(), soup.vCorners)
        .forEachEdge(
            [&](const int* pCorners, int num)
            {
                for (int i = 0; i < num && num > 2; ++i)
                    vCrowded[pCorners[i] / 3] = true;
                numCrowded += num > 2 ? 1 : 0;
            });
}

// Faces of touching bodies may be cut along different diagonals: two triangles of one and two of the other are a flat
// tetrahedron then. The second ones are cut as the first.
void BodyFinder::matchDiagonals()
{
    std::vector<Quad> vQuads;
    SoupEdgeTable(soup.vPoints.size(), soup.vCorners)
        .forEachEdge(
            [&](const int* pCorners, int num)
            {
                if (num == 2 && vCrowded[pCorners[0] / 3] && vCrowded[pCorners[1] / 3])
                    vQuads.push_back(quadOf(soup, pCorners));
            });
    std::sort(vQuads.begin(), vQuads.end());
    std::vector<bool> vCut(soup.numTriangles(), false);
    for (std::size_t i = 1; i < vQuads.size(); ++i)
    {
        const Quad& quad = vQuads[i];
        const int t = quad.first / 3;
        const int u = quad.second / 3;
        if (quad.corners != vQuads[i - 1].corners || vCut[t] || vCut[u] || !isFlat(soup, quad.corners))
            continue;
        vCut[t] = vCut[u] = true;
        cutOtherwise(soup, quad);
    }
}

void BodyFinder::joinSides(const SoupEdgeTable& edges)
{
    edges.forEachEdge([this](const int* pCorners, int num) { joinRound(pCorners, num); });
}

void BodyFinder::joinRound(const int* pCorners, int num)
{
    const int c0 = pCorners[0];
    const int low = std::min(soup.vCorners[c0], soup.vCorners[FlatSoup::next(c0)]);
    const int high = std::max(soup.vCorners[c0], soup.vCorners[FlatSoup::next(c0)]);
    const Point3& a = soup.vPoints[low];
    const Vector3 axis = unitOrNull(soup.vPoints[high] - a);
    const auto awayFrom = [&](int c)
    {
        const Vector3 v = soup.pointOf(FlatSoup::prev(c)) - a;
        return v + axis * -(v * axis);
    };
    const Vector3 x = unitOrNull(awayFrom(c0));
    const Vector3 y = crossProduct(axis, x);
    std::vector<Leaf> vLeaves;
    for (int i = 0; i < num; ++i)
    {
        const int c = pCorners[i];
        const int t = c / 3;
        const Vector3 v = awayFrom(c);
        const int apex = soup.vCorners[FlatSoup::prev(c)];
        const bool bUpwards = !(low < apex && apex < high);
        const bool bForward = soup.vCorners[c] == low;
        vLeaves.push_back({pseudoAngle(v * x, v * y), apex, bUpwards ? t : -t, bForward ? 2 * t : 2 * t + 1,
                           bForward ? 2 * t + 1 : 2 * t});
    }
    sortLeaves(vLeaves);
    for (int i = 0; i < num; ++i)
        static_cast<void>(sides.join(vLeaves[i].up, vLeaves[(i + 1) % num].down, false));
}

void BodyFinder::groupCopies()
{
    std::vector<std::pair<Triple, int>> vTriples;
    for (int t = 0; t < soup.numTriangles(); ++t)
    {
        if (!vCrowded[t])
            continue;
        Triple triple = {soup.vCorners[3 * t], soup.vCorners[3 * t + 1], soup.vCorners[3 * t + 2]};
        std::sort(triple.begin(), triple.end());
        vTriples.emplace_back(triple, t);
    }
    std::sort(vTriples.begin(), vTriples.end());
    vCopy.resize(soup.numTriangles());
    for (int t = 0; t < soup.numTriangles(); ++t)
        vCopy[t] = t;
    for (std::size_t i = 1; i < vTriples.size(); ++i)
        if (vTriples[i].first == vTriples[i - 1].first)
            vCopy[vTriples[i].second] = vCopy[vTriples[i - 1].second];
    vWays.assign(soup.numTriangles(), 0);
    for (int t = 0; t < soup.numTriangles(); ++t)
        vWays[vCopy[t]] |= isEven(&soup.vCorners[3 * t]) ? 1 : 2;
}

// Whether the triangle, or a copy of it, faces away from the space on that side.
bool BodyFinder::looksOut(int side) const
{
    const int t = side / 2;
    const bool bOutEven = isEven(&soup.vCorners[3 * t]) == (side % 2 == 1);
    return (vWays[vCopy[t]] & (bOutEven ? 1 : 2)) != 0;
}

void BodyFinder::measure()
{
    vSpaces.assign(2 * static_cast<std::size_t>(soup.numTriangles()), {});
    for (int side = 0; side < 2 * soup.numTriangles(); ++side)
    {
        const int t = side / 2;
        if (sides.find(side).set == sides.find(side ^ 1).set)
            continue;
        Space& space = vSpaces[sides.find(side).set];
        if (space.anyTriangle == ABSENT)
            space.anyTriangle = t;
        const Point3& base = soup.pointOf(3 * space.anyTriangle);
        const Vector3 a = soup.pointOf(3 * t) - base;
        const Vector3 b = soup.pointOf(3 * t + 1) - base;
        const Vector3 c = soup.pointOf(3 * t + 2) - base;
        const double area = crossProduct(b + a * -1.0, c + a * -1.0).length();
        space.volume += crossProduct(a, b) * c * (side % 2 == 1 ? 1.0 : -1.0);
        space.area += area;
        space.outArea += looksOut(side) ? area : 0.0;
        space.bCrowded = space.bCrowded || vCrowded[t];
    }
}

bool BodyFinder::isBody(const Space& space) const
{
    return space.bCrowded && enclosesSpace(space.volume / 6.0, 0.5 * space.area) &&
           space.outArea > 0.5 * space.area;
}

void BodyFinder::emit()
{
    std::vector<std::pair<int, int>> vOfBodies; // name of the set, side
    std::vector<bool> vTaken(soup.numTriangles(), false);
    for (int side = 0; side < 2 * soup.numTriangles(); ++side)
    {
        const int set = sides.find(side).set;
        if (!isBody(vSpaces[set]) || set == sides.find(side ^ 1).set)
            continue;
        vOfBodies.emplace_back(set, side);
        vTaken[vCopy[side / 2]] = true;
    }
    std::sort(vOfBodies.begin(), vOfBodies.end());
    std::vector<int> vCorners;
    for (int t = 0; t < soup.numTriangles(); ++t)
        if (!vTaken[vCopy[t]])
            vCorners.insert(vCorners.end(), &soup.vCorners[3 * t], &soup.vCorners[3 * t] + 3);
    std::vector<std::pair<int, int>> vFresh(soup.vPoints.size(), {ABSENT, ABSENT}); // set, vertex
    for (const auto& [set, side] : vOfBodies)
    {
        const bool bTurn = side % 2 == (looksOut(side) ? 0 : 1);
        for (const int k : {0, bTurn ? 2 : 1, bTurn ? 1 : 2})
        {
            auto& fresh = vFresh[soup.vCorners[3 * (side / 2) + k]];
            if (fresh.first != set)
            {
                fresh = {set, static_cast<int>(soup.vPoints.size())};
                soup.vPoints.emplace_back(soup.pointOf(3 * (side / 2) + k));
            }
            vCorners.push_back(fresh.second);
        }
    }
    soup.vCorners = std::move(vCorners);
}

} // namespace TARN_ZEF

#include "finish/NeedleRemoval.h"

#include "finish/TriangleShape.h"
#include "parallel/collectInOrder.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
constexpr int NONE = HalfEdgeMesh::NONE;
// Cosine of 7 degrees.
constexpr double THIN = 0.9925;
constexpr int NUM_PASSES = 3;
// Cosine of 60 degrees: how far a triangle may turn.
constexpr double MAX_TURN = 0.5;
// A shortest side below this share of the longest one collapses first, else the longest one flips.
constexpr double NEEDLE_SHARE = 0.3;
// A border may get longer by that much.
constexpr double MAX_GROWTH = 1.05;
// Cosine of a thousandth of a degree: without any extent that counts.
constexpr double FLAT = 1.0 - 1.5e-10;

bool isThinShape(const TriangleShape& shape)
{
    return shape.worstCosine > THIN;
}

bool isSmooth(const TriangleShape& before, const TriangleShape& after)
{
    return before.isNeedle() || before.normal * after.normal > MAX_TURN;
}
} // namespace

// What an edit does to the triangles around: good if none of them gets worse than the worst was, or fewer are thin.
class NeedleRemoval::Change
{
public:
    explicit Change(double worst_)
        : worst(worst_)
    {
    }
    void addGone(const TriangleShape& shape) { numThinLess += isThinShape(shape) ? 1 : 0; }
    void add(const TriangleShape& before, const TriangleShape& after)
    {
        numThinLess += (isThinShape(before) ? 1 : 0) - (isThinShape(after) ? 1 : 0);
        bBetter = bBetter && after.worstCosine < worst;
        bFolds = bFolds || after.worstCosine > FLAT || !isSmooth(before, after);
    }
    [[nodiscard]] bool isGood() const { return !bFolds && (bBetter || numThinLess > 0); }

private:
    double worst;
    int numThinLess = 0;
    bool bBetter = true;
    bool bFolds = false;
};

NeedleRemoval::NeedleRemoval(HalfEdgeMesh& mesh_)
    : mesh(mesh_)
    , vTouched(static_cast<std::size_t>(mesh_.endTriangles()), 0)
    , vLeaving(vTouched)
{
}

std::size_t NeedleRemoval::run()
{
    const auto isThin = [this](int t) { return mesh.isAlive(t) && isThinShape(getShape(t)); };
    std::size_t num = 0;
    for (int pass = 0; pass < NUM_PASSES; ++pass)
    {
        const std::vector<int> vThin =
            collectInOrder<int>(static_cast<std::size_t>(mesh.endTriangles()),
                                [&](std::size_t from, std::size_t to, std::vector<int>& vFound)
                                {
                                    for (int t = static_cast<int>(from); t < static_cast<int>(to); ++t)
                                        if (isThin(t))
                                            vFound.push_back(t);
                                });
        const std::size_t before = num;
        for (const int t : vThin)
            if (isThin(t) && mend(t))
                ++num;
        if (num == before)
            break;
    }
    for (int t = 0; t < mesh.endTriangles(); ++t)
    {
        std::uint8_t& leaves = vLeaving[static_cast<std::size_t>(t)];
        const bool bLeft = isThin(t);
        if (bLeft && leaves == 0)
            vStubborn.push_back(t);
        leaves = leaves != 0 && bLeft ? 1 : 0;
        num += leaves;
    }
    return num;
}

TriangleShape NeedleRemoval::getShape(int t) const
{
    return {mesh.point(mesh.from(4 * t)), mesh.point(mesh.to(4 * t)), mesh.point(mesh.apex(4 * t))};
}

bool NeedleRemoval::mend(int t)
{
    const auto sqLength = [this](int h)
    { return sqDistance(mesh.point(mesh.from(h)), mesh.point(mesh.to(h))); };
    std::array<int, 3> sides = {4 * t, 4 * t + 1, 4 * t + 2};
    std::sort(sides.begin(), sides.end(), [&](int g, int h) { return sqLength(g) < sqLength(h); });
    const bool bNeedle = sqLength(sides[0]) < NEEDLE_SHARE * NEEDLE_SHARE * sqLength(sides[2]);
    return (bNeedle && tryCollapse(sides[0])) || tryFlip(sides[2]) || tryDrop(t) || tryCollapse(sides[0]) ||
           tryCollapse(sides[1]) || tryFlip(sides[1]);
}

void NeedleRemoval::touchAround(int v)
{
    mesh.forEachOutgoing(v, [this](int h)
                         { vTouched[static_cast<std::size_t>(HalfEdgeMesh::triangleOf(h))] = 1; });
}

// Of the triangles at centre, if it moves to the target and meets the other vertex.
void NeedleRemoval::addChange(int centre, int other, const Point3& target, Change& change) const
{
    mesh.forEachOutgoing(centre,
                         [&](int h)
                         {
                             const int b = mesh.to(h);
                             const int c = mesh.apex(h);
                             if (b == other || c == other)
                                 return;
                             change.add(TriangleShape(mesh.point(centre), mesh.point(b), mesh.point(c)),
                                        TriangleShape(target, mesh.point(b), mesh.point(c)));
                         });
}

// To an end of the edge, or to its middle.
bool NeedleRemoval::tryCollapse(int h)
{
    const double worst = getShape(HalfEdgeMesh::triangleOf(h)).worstCosine;
    for (const int way : {h, mesh.partner(h)})
    {
        if (way == NONE || !mesh.mayCollapse(way))
            continue;
        const int a = mesh.from(way);
        const int b = mesh.to(way);
        if (mesh.isBorderVertex(a) && !mesh.isBorderVertex(b))
            continue;
        const Point3 end = mesh.point(b);
        const Point3 middle = end + (mesh.point(a) - end) * 0.5;
        for (const Point3& target : {end, middle})
        {
            Change change(worst);
            for (const int side : {way, mesh.partner(way)})
                if (side != NONE)
                    change.addGone(getShape(HalfEdgeMesh::triangleOf(side)));
            addChange(a, b, target, change);
            addChange(b, a, target, change);
            if (!change.isGood())
                continue;
            mesh.collapse(way);
            mesh.setPoint(b, target);
            touchAround(b);
            return true;
        }
    }
    return false;
}

bool NeedleRemoval::tryFlip(int h)
{
    const int p = mesh.partner(h);
    if (p == NONE)
        return false;
    const Point3& a = mesh.point(mesh.from(h));
    const Point3& b = mesh.point(mesh.to(h));
    const Point3& c = mesh.point(mesh.apex(h));
    const Point3& d = mesh.point(mesh.apex(p));
    const TriangleShape old(a, b, c);
    const TriangleShape beyond(b, a, d);
    const std::array<TriangleShape, 2> now = {TriangleShape(c, d, b), TriangleShape(d, c, a)};
    Change change(old.worstCosine);
    // Each of the new ones lies where both were.
    change.add(old, now[0]);
    change.add(beyond, now[1]);
    if (!change.isGood() || !isSmooth(old, now[1]) || !isSmooth(beyond, now[0]) ||
        !(now[0].normal * now[1].normal > MAX_TURN))
        return false;
    const std::uint8_t feature = mesh.feature(h);
    mesh.setFeature(h, 0);
    if (!mesh.mayFlip(h))
    {
        mesh.setFeature(h, feature);
        return false;
    }
    mesh.flip(h);
    touchAround(mesh.from(h));
    touchAround(mesh.to(h));
    return true;
}

// Off the border, if that gets hardly longer. Where the others would hang together in a corner only, the triangle is
// left to the caller, who can part corners.
bool NeedleRemoval::tryDrop(int t)
{
    double lengthBefore = 0.0;
    double lengthAfter = 0.0;
    bool bParts = false;
    for (int h = 4 * t; h < 4 * t + 3; ++h)
    {
        const double length = std::sqrt(sqDistance(mesh.point(mesh.from(h)), mesh.point(mesh.to(h))));
        (mesh.isBorder(h) ? lengthBefore : lengthAfter) += length;
        bParts = bParts || (!mesh.isBorder(h) && !mesh.isBorder(HalfEdgeMesh::next(h)) &&
                            mesh.isBorderVertex(mesh.to(h)));
    }
    if (!(lengthAfter > 0.0 && lengthAfter < MAX_GROWTH * lengthBefore))
        return false;
    if (bParts)
    {
        vLeaving[static_cast<std::size_t>(t)] = 1;
        return false;
    }
    const std::array<int, 3> corners = {mesh.from(4 * t), mesh.to(4 * t), mesh.apex(4 * t)};
    mesh.killTriangle(t);
    for (const int v : corners)
        if (mesh.isAliveVertex(v))
            touchAround(v);
    return true;
}

} // namespace TARN_ZEF

#include "outer/HullTidier.h"

#include "core/cancel.h"
#include "core/definitions.h"
#include "remesh/triangles.h"

#include <algorithm>
#include <array>

namespace TARN_ZEF
{
namespace
{
constexpr double SHORT_EDGE = 0.3; // in cells
constexpr double COS_KEPT = 0.3;   // between the normals of a triangle before and after
constexpr double LEAST_HEIGHT = 1e-3;
constexpr double NEAR_EDGE =
    0.05; // in cells: the ends of such an edge of a flat triangle stand too close together
constexpr int MOST_PASSES = 10;
constexpr double MUCH_FLATTER = 0.05; // in the sum of cosines round two triangles
} // namespace

HullTidier::HullTidier(const std::vector<HullVertex>& vVertices, const std::vector<int>& vCorners,
                       double cell_)
    : cell(cell_)
{
    std::vector<Point3> vPoints;
    vPoints.reserve(vVertices.size());
    for (const HullVertex& vertex : vVertices)
        vPoints.push_back(vertex.point);
    std::vector<int> vOrigin;
    ASSEX_TEXT(mesh.build(vPoints, vCorners, &vOrigin), "the surface of the hull is no oriented manifold");
    for (const int origin : vOrigin)
    {
        vRank.push_back(vVertices[origin].rank);
        vSpare.push_back(vVertices[origin].spare);
    }
}

void HullTidier::run()
{
    collapseShort(SHORT_EDGE);
    flipToCreases();
    collapseShort(SHORT_EDGE);
    for (int pass = 0; pass < MOST_PASSES && mendFlat() > 0; ++pass)
        collapseShort(SHORT_EDGE);
    mesh.compact();
}

Vector3 HullTidier::normalOf(int h) const
{
    return unitOrNull(rawNormal(mesh.point(mesh.from(h)), mesh.point(mesh.to(h)), mesh.point(mesh.apex(h))));
}

void HullTidier::collapseShort(double part)
{
    const double sqLimit = part * part * cell * cell;
    CancelStride cancel;
    for (int t = 0; t < mesh.endTriangles(); ++t)
    {
        cancel.step();
        for (int h = 4 * t; h < 4 * t + 3 && mesh.isAlive(t); ++h)
            if (sqDistance(mesh.point(mesh.from(h)), mesh.point(mesh.to(h))) < sqLimit && mayVanish(h))
                mesh.collapse(h);
    }
}

// From(h) into to(h): of lower or equal rank, and no triangle folds or loses its height.
bool HullTidier::mayVanish(int h) const
{
    const int a = mesh.from(h);
    const int b = mesh.to(h);
    if (vRank[a] > vRank[b])
        return false;
    bool bOK = true;
    mesh.forEachOutgoing(a,
                         [&](int g)
                         {
                             const int x = mesh.to(g);
                             const int y = mesh.apex(g);
                             if (!bOK || x == b || y == b)
                                 return;
                             const Vector3 after = rawNormal(mesh.point(b), mesh.point(x), mesh.point(y));
                             const Vector3 before = normalOf(g);
                             bOK = (before.isDegenerate() || before * after > COS_KEPT * after.length()) &&
                                   isHigh(mesh.point(b), mesh.point(x), mesh.point(y), LEAST_HEIGHT);
                         });
    return bOK && mesh.mayCollapse(h);
}

void HullTidier::flipToCreases()
{
    for (int pass = 0; pass < MOST_PASSES; ++pass)
    {
        int numFlips = 0;
        CancelStride cancel;
        for (int h = 0; h < 4 * mesh.endTriangles(); ++h)
        {
            cancel.step();
            if (h % 4 == 3 || !mesh.isAlive(h / 4) || !mesh.isEdge(h) || !mesh.mayFlip(h) || !wantsFlip(h))
                continue;
            mesh.flip(h);
            ++numFlips;
        }
        if (numFlips == 0)
            return;
    }
}

// Whether the surface round the two triangles gets flatter: an edge that cuts a crease leaves a tooth on one side and a
// notch on the other.
bool HullTidier::wantsFlip(int h) const
{
    const int g = mesh.partner(h);
    const Point3& a = mesh.point(mesh.from(h));
    const Point3& b = mesh.point(mesh.to(h));
    const Point3& c = mesh.point(mesh.apex(h));
    const Point3& d = mesh.point(mesh.apex(g));
    const Vector3 first = normalOf(h);
    const Vector3 second = normalOf(g);
    const Vector3 newFirst = unitOrNull(rawNormal(a, d, c));
    const Vector3 newSecond = unitOrNull(rawNormal(d, b, c));
    if (newFirst.isDegenerate() || newSecond.isDegenerate() || !isHigh(a, d, c, 0.02) ||
        !isHigh(d, b, c, 0.02))
        return false;
    const auto beside = [&](int edge) { return normalOf(mesh.partner(edge)); };
    const Vector3 ofA = beside(HalfEdgeMesh::prev(h)); // of c-a
    const Vector3 ofB = beside(HalfEdgeMesh::next(h)); // of b-c
    const Vector3 ofC = beside(HalfEdgeMesh::next(g)); // of a-d
    const Vector3 ofD = beside(HalfEdgeMesh::prev(g)); // of d-b
    const double before = first * second + first * ofA + first * ofB + second * ofC + second * ofD;
    const double after =
        newFirst * newSecond + newFirst * ofA + newFirst * ofC + newSecond * ofB + newSecond * ofD;
    return after > before + MUCH_FLATTER;
}

int HullTidier::mendFlat()
{
    int num = 0;
    CancelStride cancel;
    for (int t = 0; t < mesh.endTriangles(); ++t)
    {
        cancel.step();
        if (mesh.isAlive(t) && isFlat(t) && mend(t))
            ++num;
    }
    return num;
}

bool HullTidier::isFlat(int t) const
{
    return !isHigh(mesh.point(mesh.from(4 * t)), mesh.point(mesh.from(4 * t + 1)),
                   mesh.point(mesh.from(4 * t + 2)), LEAST_HEIGHT);
}

// Vertices that stand close together go apart again; a middle vertex that stands on the opposite edge loses that edge.
bool HullTidier::mend(int t)
{
    const auto sqLength = [&](int h) { return sqDistance(mesh.point(mesh.from(h)), mesh.point(mesh.to(h))); };
    const std::array<int, 3> edges = {4 * t, 4 * t + 1, 4 * t + 2};
    const auto [itShort, itLong] = std::minmax_element(
        edges.begin(), edges.end(), [&](int a, int b) { return sqLength(a) < sqLength(b); });
    const int longest = *itLong;
    const int shortest = *itShort;
    if (sqLength(shortest) > NEAR_EDGE * NEAR_EDGE * cell * cell && mesh.mayFlip(longest))
    {
        mesh.flip(longest);
        return true;
    }
    const bool bFirst = vRank[mesh.from(shortest)] <= vRank[mesh.to(shortest)];
    return takeSpare(bFirst ? mesh.from(shortest) : mesh.to(shortest)) ||
           takeSpare(bFirst ? mesh.to(shortest) : mesh.from(shortest));
}

bool HullTidier::takeSpare(int v)
{
    if (isEqual(mesh.point(v), vSpare[v]))
        return false;
    mesh.setPoint(v, vSpare[v]);
    vRank[v] = 1;
    return true;
}

} // namespace TARN_ZEF

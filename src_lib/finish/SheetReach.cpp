#include "finish/SheetReach.h"

#include "finish/directions.h"
#include "geometry/tools.h"
#include "parallel/parallelFor.h"

#include <algorithm>

namespace TARN_ZEF
{
namespace
{
constexpr int NONE = HalfEdgeMesh::NONE;
constexpr std::size_t MIN_CHUNK = 2'000;
// Cosine of 66 degrees.
constexpr double SAME_SHEET = 0.4;
} // namespace

SheetReach::SheetReach(const HalfEdgeMesh& mesh_, const std::vector<Point3>& vCloud, double cellSize,
                       double maxReach, const std::vector<int>& vAsked)
    : mesh(mesh_)
    , owners(mesh_, vCloud, cellSize, maxReach, vAsked)
{
    fillNormals();
    fillFacings();
}

Vector3 SheetReach::getRawNormal(int v) const
{
    Vector3 sum;
    mesh.forEachOutgoing(v,
                         [&](int h)
                         {
                             const Point3& p = mesh.point(mesh.from(h));
                             sum.add(crossProduct(mesh.point(mesh.to(h)) - p, mesh.point(mesh.apex(h)) - p));
                         });
    return getUnit(sum);
}

// Area-weighted, then once over the neighbours: single triangles of a noisy mesh say little. Vertices on creases have
// none: what they would give is neither side's.
void SheetReach::fillNormals()
{
    const auto num = static_cast<std::size_t>(mesh.endVertices());
    std::vector<Vector3> vRaw(num);
    vNormals.assign(num, Vector3());
    const auto isPlain = [this](int v)
    { return mesh.isAliveVertex(v) && mesh.kind(v) == HalfEdgeMesh::Kind::FREE; };
    forEachIndexMT(mesh.endVertices(), MIN_CHUNK,
                   [&](int v)
                   {
                       if (isPlain(v))
                           vRaw[static_cast<std::size_t>(v)] = getRawNormal(v);
                   });
    forEachIndexMT(mesh.endVertices(), MIN_CHUNK,
                   [&](int v)
                   {
                       if (!isPlain(v))
                           return;
                       Vector3 sum = vRaw[static_cast<std::size_t>(v)];
                       mesh.forEachNeighbour(v, [&](int u)
                                             { sum.add(vRaw[static_cast<std::size_t>(u)] * 0.5); });
                       vNormals[static_cast<std::size_t>(v)] = getUnit(sum);
                   });
}

Vector3 SheetReach::getSideNormal(const std::vector<int>& vSide) const
{
    Vector3 sum;
    for (const int t : vSide)
    {
        const Point3& p = mesh.point(mesh.from(4 * t));
        sum.add(crossProduct(mesh.point(mesh.to(4 * t)) - p, mesh.point(mesh.apex(4 * t)) - p));
    }
    return getUnit(sum);
}

// Where a triangle looks: the sum of the normals of its corners says more than its own.
Vector3 SheetReach::getFacing(int t) const
{
    Vector3 sum;
    for (int h = 4 * t; h < 4 * t + 3; ++h)
        sum.add(getNormal(mesh.from(h)));
    return sum.sqLength() > 0.0 ? getUnit(sum) : getSideNormal({t});
}

void SheetReach::fillFacings()
{
    vFacings.resize(static_cast<std::size_t>(mesh.endTriangles()));
    forEachIndexMT(mesh.endTriangles(), MIN_CHUNK,
                   [&](int t)
                   {
                       if (!mesh.isAlive(t))
                           return;
                       const Vector3 facing = getFacing(t);
                       vFacings[static_cast<std::size_t>(t)] = {static_cast<float>(facing.x()),
                                                                static_cast<float>(facing.y()),
                                                                static_cast<float>(facing.z())};
                   });
}

bool SheetReach::faces(int t, const Vector3& normal) const
{
    const Facing& facing = vFacings[static_cast<std::size_t>(t)];
    return Vector3(facing[0], facing[1], facing[2]) * normal > SAME_SHEET;
}

void SheetReach::reachTriangles(const Point3& centre, const Vector3& normal, double reach,
                                Scratch& scratch) const
{
    scratch.vStamps.resize(static_cast<std::size_t>(mesh.endTriangles()), 0);
    ++scratch.stamp;
    scratch.vReached.clear();
    const auto stampOf = [&scratch](int t) -> std::uint32_t&
    { return scratch.vStamps[static_cast<std::size_t>(t)]; };
    for (const int t : scratch.vSeeds)
    {
        if (stampOf(t) == scratch.stamp)
            continue;
        stampOf(t) = scratch.stamp;
        const auto sqDistanceOf = [&](int h) { return sqDistance(centre, mesh.point(mesh.from(h))); };
        scratch.vReached.push_back(
            {t, {sqDistanceOf(4 * t), sqDistanceOf(4 * t + 1), sqDistanceOf(4 * t + 2)}});
    }
    for (std::size_t i = 0; i < scratch.vReached.size(); ++i)
    {
        const Reached near = scratch.vReached[i];
        for (std::size_t k = 0; k < 3; ++k)
        {
            const int h = 4 * near.t + static_cast<int>(k);
            const int other = mesh.partner(h);
            // The nearer end of the edge stands for the triangle beyond it.
            if (other == NONE ||
                !(std::min(near.sqDistances[k], near.sqDistances[(k + 1) % 3]) < reach * reach))
                continue;
            const int t = HalfEdgeMesh::triangleOf(other);
            if (stampOf(t) == scratch.stamp || mesh.feature(h) != 0 || !faces(t, normal))
                continue;
            stampOf(t) = scratch.stamp;
            scratch.vReached.push_back(reachAcross(h, near, centre));
        }
    }
}

// The triangle beyond h has two corners of the near one.
SheetReach::Reached SheetReach::reachAcross(int h, const Reached& near, const Point3& centre) const
{
    const int other = mesh.partner(h);
    const auto nearCorner = static_cast<std::size_t>(h & 3);
    const auto corner = static_cast<std::size_t>(other & 3);
    Reached result = {HalfEdgeMesh::triangleOf(other), {}};
    result.sqDistances[corner] = near.sqDistances[(nearCorner + 1) % 3];
    result.sqDistances[(corner + 1) % 3] = near.sqDistances[nearCorner];
    result.sqDistances[(corner + 2) % 3] = sqDistance(centre, mesh.point(mesh.apex(other)));
    return result;
}

void SheetReach::gather(const Point3& centre, const Vector3& normal, double reach, Scratch& scratch,
                        Surroundings& result) const
{
    reachTriangles(centre, normal, reach, scratch);
    for (auto* pValues : {&result.vX, &result.vY, &result.vZ})
        pValues->clear();
    for (const Reached& reached : scratch.vReached)
    {
        for (const Point3& p : owners.getPoints(reached.t))
        {
            const Vector3 way = p - centre;
            if (!(way.sqLength() < reach * reach))
                continue;
            result.vX.push_back(way.x());
            result.vY.push_back(way.y());
            result.vZ.push_back(way.z());
        }
    }
}

} // namespace TARN_ZEF

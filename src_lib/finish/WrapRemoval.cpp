#include "finish/WrapRemoval.h"

#include "finish/ParityUnion.h"
#include "finish/cellNumber.h"
#include "geometry/tools.h"

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
// Wraps are thinner, in cells.
constexpr double MAX_THICKNESS = 1.0 / 3.0;
// An opposed triangle faces the other way within 60 degrees,
constexpr double OPPOSED = -0.5;
// and is at most so far away, in cells.
constexpr double MAX_DISTANCE = 1.0;
// Wraps that stand alone go altogether up to this number of triangles, as open pieces of that size do when the surface
// is repaired.
constexpr std::size_t MAX_DEBRIS = 100;

struct GridEntry
{
    u64 cell;
    FlatMesh::Index facet;
};
} // namespace

WrapRemoval::WrapRemoval(FlatMesh& mesh_, SeamTable& seams_, double cellSize_)
    : mesh(mesh_)
    , seams(seams_)
    , cellSize(cellSize_)
{
}

std::size_t WrapRemoval::run()
{
    if (!(cellSize > 0.0) || !std::isfinite(cellSize))
        return 0;
    const std::vector<std::vector<Index>> vWraps = findWraps();
    if (vWraps.empty())
        return 0;
    vKeep.assign(mesh.getNumT(), 1);
    for (const std::vector<Index>& vTriangles : vWraps)
    {
        readFacets(vTriangles);
        linkNeighbours(vTriangles);
        linkOpposed();
        const Flags vSides = tellSides();
        const std::uint8_t kept = chooseSide(vSides);
        const bool bDebris = vFacets.size() <= MAX_DEBRIS && !isAtSeam();
        for (std::size_t i = 0; i < vFacets.size(); ++i)
            vKeep[vFacets[i].t] = vSides[i] == kept && !bDebris ? 1 : 0;
    }
    const std::size_t before = mesh.getNumT();
    mesh.keepTriangles(vKeep);
    seams = SeamTable(mesh);
    return before - mesh.getNumT();
}

// Patches whose every side has a mate or one other side of the same patch at its seam.
WrapRemoval::Flags WrapRemoval::findClosedPatches(const PatchTable& patches) const
{
    Flags vClosed(patches.vNumT.size(), 1);
    for (Index h = 0; h < mesh.vCorners.size(); ++h)
    {
        const Index patch = patches.vPatchOfT[h / 3];
        if (seams.isBorder(h))
            vClosed[patch] = 0;
        if (seams.getSeam(h) == FlatMesh::NONE)
            continue;
        const auto sides = seams.getSides(seams.getSeam(h));
        const auto own = std::count_if(sides.begin(), sides.end(),
                                       [&](Index side) { return patches.vPatchOfT[side / 3] == patch; });
        if (own != 2)
            vClosed[patch] = 0;
    }
    return vClosed;
}

// The thickness of a slab is twice its volume over its area. Volumes are summed from a corner of the patch.
std::vector<std::vector<FlatMesh::Index>> WrapRemoval::findWraps() const
{
    const PatchTable patches(mesh, seams.getMates());
    const Flags vClosed = findClosedPatches(patches);
    struct Measure
    {
        Index base = FlatMesh::NONE;
        double volume = 0.0; // times 6
        double area = 0.0;   // times 2
    };
    std::vector<Measure> vMeasures(vClosed.size());
    for (Index t = 0; t < mesh.getNumT(); ++t)
    {
        Measure& measure = vMeasures[patches.vPatchOfT[t]];
        if (vClosed[patches.vPatchOfT[t]] == 0)
            continue;
        if (measure.base == FlatMesh::NONE)
            measure.base = mesh.vCorners[3 * t];
        const Vector3 a = mesh.at(3 * t) - mesh.vPoints[measure.base];
        const Vector3 cross =
            crossProduct(mesh.at(3 * t + 1) - mesh.at(3 * t), mesh.at(3 * t + 2) - mesh.at(3 * t));
        measure.volume += a * cross;
        measure.area += cross.length();
    }
    std::vector<Index> vNumbers(vClosed.size(), FlatMesh::NONE);
    std::vector<std::vector<Index>> vWraps;
    for (Index t = 0; t < mesh.getNumT(); ++t)
    {
        const Index patch = patches.vPatchOfT[t];
        const Measure& measure = vMeasures[patch];
        if (vClosed[patch] == 0 ||
            !(2.0 * std::fabs(measure.volume) / 3.0 < MAX_THICKNESS * cellSize * measure.area))
            continue;
        if (vNumbers[patch] == FlatMesh::NONE)
        {
            vNumbers[patch] = static_cast<Index>(vWraps.size());
            vWraps.emplace_back();
        }
        vWraps[vNumbers[patch]].push_back(t);
    }
    return vWraps;
}

void WrapRemoval::readFacets(const std::vector<Index>& vTriangles)
{
    vFacets.clear();
    vLinks.clear();
    for (const Index t : vTriangles)
    {
        const Point3& p = mesh.at(3 * t);
        const Vector3 ab = mesh.at(3 * t + 1) - p;
        const Vector3 ac = mesh.at(3 * t + 2) - p;
        const Vector3 cross = crossProduct(ab, ac);
        const double length = cross.length();
        vFacets.push_back({t, p + (ab + ac) / 3.0, length > 0.0 ? cross / length : Vector3(), 0.5 * length});
    }
}

// vTriangles is ascending.
void WrapRemoval::linkNeighbours(const std::vector<Index>& vTriangles)
{
    for (Index a = 0; a < vFacets.size(); ++a)
    {
        for (Index h = 3 * vFacets[a].t; h < 3 * vFacets[a].t + 3; ++h)
        {
            const Index mate = seams.getMates()[h];
            if (mate == FlatMesh::NONE || mate < h)
                continue;
            const auto it = std::lower_bound(vTriangles.begin(), vTriangles.end(), mate / 3);
            const auto b = static_cast<Index>(it - vTriangles.begin());
            const double cosine = vFacets[a].normal * vFacets[b].normal;
            vLinks.push_back({std::fabs(cosine), a, b, static_cast<std::uint8_t>(cosine < 0.0 ? 1 : 0)});
        }
    }
}

void WrapRemoval::linkOpposed()
{
    const auto low = [&](double x) { return std::floor(x / (MAX_DISTANCE * cellSize)); };
    std::vector<GridEntry> vGrid;
    for (Index i = 0; i < vFacets.size(); ++i)
    {
        const Point3& c = vFacets[i].centre;
        vGrid.push_back({getCellNumber(low(c.x()), low(c.y()), low(c.z())), i});
    }
    const auto isLess = [](const GridEntry& a, const GridEntry& b)
    { return a.cell != b.cell ? a.cell < b.cell : a.facet < b.facet; };
    std::sort(vGrid.begin(), vGrid.end(), isLess);
    for (Index i = 0; i < vFacets.size(); ++i)
    {
        const Facet& facet = vFacets[i];
        double nearest = MAX_DISTANCE * cellSize;
        Index opposed = FlatMesh::NONE;
        const auto look = [&](u64 cell)
        {
            for (auto it = std::lower_bound(vGrid.begin(), vGrid.end(), GridEntry{cell, 0}, isLess);
                 it != vGrid.end() && it->cell == cell; ++it)
            {
                const Facet& other = vFacets[it->facet];
                const Vector3 way = other.centre - facet.centre;
                if (other.normal * facet.normal > OPPOSED || way * facet.normal > 0.0 ||
                    !(way.length() < nearest))
                    continue;
                nearest = way.length();
                opposed = it->facet;
            }
        };
        for (double x = -1.0; x <= 1.0; x += 1.0)
            for (double y = -1.0; y <= 1.0; y += 1.0)
                for (double z = -1.0; z <= 1.0; z += 1.0)
                    look(getCellNumber(low(facet.centre.x()) + x, low(facet.centre.y()) + y,
                                       low(facet.centre.z()) + z));
        if (opposed != FlatMesh::NONE)
            vLinks.push_back({1.0 - 0.5 * nearest / (MAX_DISTANCE * cellSize), i, opposed, 1});
    }
}

// The surest links first; a later one that contradicts counts nothing.
WrapRemoval::Flags WrapRemoval::tellSides()
{
    std::stable_sort(vLinks.begin(), vLinks.end(),
                     [](const Link& a, const Link& b) { return a.weight > b.weight; });
    ParityUnion groups(vFacets.size());
    for (const Link& link : vLinks)
        groups.unite(link.a, link.b, link.bUnlike);
    Flags vSides(vFacets.size());
    for (Index i = 0; i < vFacets.size(); ++i)
        (void)groups.find(i, vSides[i]);
    return vSides;
}

std::uint8_t WrapRemoval::chooseSide(const Flags& vSides) const
{
    double agreement[2] = {0.0, 0.0};
    double upward[2] = {0.0, 0.0};
    for (std::size_t i = 0; i < vFacets.size(); ++i)
    {
        agreement[vSides[i]] += getAgreement(vFacets[i].t);
        upward[vSides[i]] += vFacets[i].normal.z() * vFacets[i].area;
    }
    if (agreement[0] != agreement[1])
        return agreement[0] < agreement[1] ? 1 : 0;
    return upward[0] < upward[1] ? 1 : 0;
}

bool WrapRemoval::isAtSeam() const
{
    return std::any_of(vFacets.begin(), vFacets.end(),
                       [this](const Facet& facet)
                       {
                           const Index h = 3 * facet.t;
                           return seams.getSeam(h) != FlatMesh::NONE ||
                                  seams.getSeam(h + 1) != FlatMesh::NONE ||
                                  seams.getSeam(h + 2) != FlatMesh::NONE;
                       });
}

// How many sides at its seams face as the triangle does, less those that face the other way. Those of the wrap itself
// are two at each seam and count alike for both.
double WrapRemoval::getAgreement(Index t) const
{
    double sum = 0.0;
    for (Index h = 3 * t; h < 3 * t + 3; ++h)
        if (seams.getSeam(h) != FlatMesh::NONE)
            for (const Index side : seams.getSides(seams.getSeam(h)))
                sum += mesh.from(side) != mesh.from(h) ? 1.0 : -1.0;
    return sum;
}

} // namespace TARN_ZEF

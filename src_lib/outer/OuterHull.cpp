#include "outer/OuterHull.h"

#include "geometry/tools.h"
#include "judge/judgeMesh.h"
#include "outer/HullLattice.h"
#include "outer/HullSurface.h"
#include "outer/HullTidier.h"
#include "outer/InsidePoints.h"
#include "outer/SheetSealer.h"
#include "remesh/PartTurner.h"
#include "remesh/SoupEdgeTable.h"
#include "remesh/TurnedSets.h"
#include "remesh/triangles.h"

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
constexpr double CELLS_PER_LENGTH = 2.0;
constexpr double MOST_CELLS = 1500.0; // along an axis
// The lattice begins this part of a cell beside whole cells: faces along the axes then pass no points.
constexpr double SHIFT = 0.3819660112501051;

HullLattice makeLattice(const FlatSoup& soup, double length, int bridgedCells)
{
    Point3 low = soup.vPoints.front();
    Point3 high = low;
    for (const Point3& p : soup.vPoints)
    {
        low.set(std::min(low.x(), p.x()), std::min(low.y(), p.y()), std::min(low.z(), p.z()));
        high.set(std::max(high.x(), p.x()), std::max(high.y(), p.y()), std::max(high.z(), p.z()));
    }
    const Vector3 extents = high - low;
    HullLattice lattice;
    lattice.cell = std::max(length / CELLS_PER_LENGTH, extents.getMaxComponent() / MOST_CELLS);
    const double frame = bridgedCells + 4.0 + SHIFT;
    const Vector3 away = Vector3(1.0, 1.0, 1.0) * (frame * lattice.cell);
    lattice.origin = low - away;
    for (int axis = 0; axis < 3; ++axis)
        lattice.size[axis] =
            static_cast<int>(std::ceil(extents.getCartesian(axis) / lattice.cell + 2.0 * frame)) + 1;
    return lattice;
}
} // namespace

void OuterHull::run(FlatSoup& soup)
{
    SheetSealer sealer(soup);
    sealer.run();
    numSealed = sealer.getNumSealed();
    const Parts parts = findParts(soup);
    const bool bAllSolid = std::find(parts.vSolid.begin(), parts.vSolid.end(), false) == parts.vSolid.end();
    bFromLattice = bridgedCells > 0 || !bAllSolid || !areApart(soup);
    if (bFromLattice)
        runOnLattice(soup, parts);
    else
        keepOutermost(soup, parts);
}

// Turns closed parts outward, too, but those that are cavities.
OuterHull::Parts OuterHull::findParts(FlatSoup& soup)
{
    TurnedSets sets(soup.numTriangles());
    SoupEdgeTable(soup.vPoints.size(), soup.vCorners)
        .forEachEdge(
            [&](const int* pCorners, int num)
            {
                for (int i = 1; i < num; ++i)
                    static_cast<void>(sets.join(pCorners[0] / 3, pCorners[i] / 3, false));
            });
    Parts parts;
    std::vector<int> vNumber(soup.numTriangles(), -1);
    for (int t = 0; t < soup.numTriangles(); ++t)
    {
        int& number = vNumber[sets.find(t).set];
        if (number < 0)
            number = parts.num++;
        parts.vPart.push_back(number);
    }
    std::vector<bool> vTurned(soup.numTriangles(), false);
    PartTurner turner(soup, parts.vPart, parts.num, vTurned);
    turner.run();
    for (int i = 0; i < parts.num; ++i)
    {
        parts.vSolid.push_back(turner.isSolid(i));
        parts.vWithin.push_back(turner.isWithinOther(i));
    }
    return parts;
}

bool OuterHull::areApart(const FlatSoup& soup)
{
    CheckOptions options;
    options.maxPlaces = 1;
    const MeshCheck check = judgeShapes(soup.vPoints, soup.vCorners, options);
    return check.isFreeOfIntersections() && check.numDuplicates == 0 && check.numFlat == 0;
}

void OuterHull::keepOutermost(FlatSoup& soup, const Parts& parts)
{
    std::vector<int> vKept;
    for (int t = 0; t < soup.numTriangles(); ++t)
        if (!parts.vWithin[parts.vPart[t]])
            vKept.insert(vKept.end(), &soup.vCorners[3 * t], &soup.vCorners[3 * t] + 3);
    soup.vCorners = std::move(vKept);
}

void OuterHull::runOnLattice(FlatSoup& soup, const Parts& parts) const
{
    const HullLattice lattice = makeLattice(soup, length, bridgedCells);
    std::vector<Place> vPlaces;
    for (const Point3& p : soup.vPoints)
        vPlaces.push_back(lattice.toPlace(p));
    const auto crossAlong = [&](int axis) { return LineCrossings(lattice, axis, vPlaces, soup.vCorners); };
    const AllCrossings crossings = {crossAlong(0), crossAlong(1), crossAlong(2)};
    std::vector<bool> vOpen;
    for (const int part : parts.vPart)
        vOpen.push_back(!parts.vSolid[part]);
    const InsidePoints points(lattice, crossings, vOpen, bridgedCells);
    HalfEdgeMesh surface;
    ASSEX_TEXT(surface.build(soup.vPoints, soup.vCorners), "sealed sheets are no oriented manifold");
    HullSurface dual(lattice, crossings, points, surface);
    dual.run();
    HullTidier tidier(dual.getVertices(), dual.getCorners(), lattice.cell);
    tidier.run();
    tidier.getMesh().getFlat(soup.vPoints, soup.vCorners);
}

} // namespace TARN_ZEF

#include "finish/SheetParter.h"

#include "judge/judgeMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <string>

namespace TARN_ZEF
{
namespace
{
using Index = FlatMesh::Index;

MeshCheck check(const FlatMesh& mesh)
{
    return judgeMesh(mesh.vPoints, std::vector<int>(mesh.vCorners.begin(), mesh.vCorners.end()),
                     CheckOptions());
}

// A square of num x num fields over the plane z = height, facing up.
void addSheet(FlatMesh& mesh, Index num, double height)
{
    const auto first = static_cast<Index>(mesh.vPoints.size());
    for (Index y = 0; y <= num; ++y)
        for (Index x = 0; x <= num; ++x)
            mesh.vPoints.emplace_back(x, y, height);
    for (Index y = 0; y < num; ++y)
    {
        for (Index x = 0; x < num; ++x)
        {
            const Index a = first + y * (num + 1) + x;
            const Index c = a + num + 1;
            mesh.vCorners.insert(mesh.vCorners.end(), {a, a + 1, c + 1, a, c + 1, c});
        }
    }
}

// A sheet of six fields with triangles that hang on its edge from (2, 2) to (3, 2).
FlatMesh makeSheetWith(const std::vector<Point3>& vTips)
{
    FlatMesh mesh;
    addSheet(mesh, 6, 0.0);
    const Index a = 2 * 7 + 2;
    for (const Point3& tip : vTips)
    {
        mesh.vPoints.push_back(tip);
        mesh.vCorners.insert(mesh.vCorners.end(), {a, a + 1, static_cast<Index>(mesh.vPoints.size() - 1)});
    }
    return mesh;
}

// A high wall that stands on the middle row of a sheet, or goes through it.
FlatMesh makeWall(bool bCross)
{
    FlatMesh mesh;
    addSheet(mesh, 6, 0.0);
    for (const double up : {1.0, -1.0})
    {
        if (up < 0.0 && !bCross)
            break;
        std::vector<Index> vRow;
        for (Index x = 0; x <= 6; ++x)
            vRow.push_back(3 * 7 + x);
        for (int row = 1; row <= 12; ++row)
        {
            std::vector<Index> vNext;
            for (Index x = 0; x <= 6; ++x)
            {
                vNext.push_back(static_cast<Index>(mesh.vPoints.size()));
                mesh.vPoints.emplace_back(x, 3.0, up * row);
            }
            for (Index x = 0; x < 6; ++x)
                mesh.vCorners.insert(mesh.vCorners.end(),
                                     {vRow[x], vRow[x + 1], vNext[x + 1], vRow[x], vNext[x + 1], vNext[x]});
            vRow = vNext;
        }
    }
    return mesh;
}

// Two tetrahedra on both sides of a common edge, blunt there, so that each is flatter than the way across.
FlatMesh makeTouching()
{
    FlatMesh mesh;
    const Point3 places[] = {{0, 0, -1}, {0, 0, 1}, {1, 2, 0}, {1, -2, 0}, {-1, 2, 0}, {-1, -2, 0}};
    mesh.vPoints.assign(std::begin(places), std::end(places));
    const auto tetrahedron = [&mesh](Index a, Index b, Index c, Index d) {
        mesh.vCorners.insert(mesh.vCorners.end(), {a, b, c, a, d, b, b, d, c, c, d, a});
    };
    tetrahedron(0, 1, 2, 3);
    tetrahedron(0, 1, 5, 4);
    return mesh;
}

struct PartCase
{
    const char* name;
    FlatMesh mesh;
    std::size_t numPieces;
    std::size_t numT;
    std::size_t numBorderEdges;
};

TEST(SheetParter, plantedSituations)
{
    FlatMesh turned;
    addSheet(turned, 6, 0.0);
    for (std::size_t t = 0; t < 20; ++t)
        std::swap(turned.vCorners[3 * t + 1], turned.vCorners[3 * t + 2]);
    FlatMesh doubled;
    addSheet(doubled, 6, 0.0);
    doubled.vCorners.insert(doubled.vCorners.end(), {8, 1, 0, 3, 3, 4, 0, 1, 2});
    const PartCase cases[] = {
        {"some turned", turned, 1, 72, 24},
        // One of them upside down, one with a corner twice, one along the border without area.
        {"useless triangles", doubled, 1, 72, 24},
        {"a fin", makeSheetWith({{2.5, 2.0, 1.0}}), 1, 72, 24},
        {"two fins on one edge", makeSheetWith({{2.5, 1.5, 1.0}, {2.5, 2.5, 1.0}}), 1, 72, 24},
        {"a wall on a floor", makeWall(false), 2, 72 + 144, 24 + 36},
        // Sheets do not cross: each turns from the floor into a wall.
        {"walls that cross", makeWall(true), 2, 72 + 288, 24 + 60},
        {"closed pieces with a common edge", makeTouching(), 2, 8, 0},
    };
    for (const PartCase& c : cases)
    {
        SCOPED_TRACE(c.name);
        FlatMesh mesh = c.mesh;
        PartReport report;
        SheetParter(mesh, report).run();
        const MeshCheck result = check(mesh);
        EXPECT_TRUE(result.isManifold() && result.isOriented());
        EXPECT_EQ(result.numPieces, c.numPieces);
        EXPECT_EQ(result.numTriangles, c.numT);
        EXPECT_EQ(result.numBorderEdges, c.numBorderEdges);
    }
}

// A closed slab over num x num fields: a sheet at z = 0 facing down, one at the thickness facing up, and a rim between.
FlatMesh makeSlab(Index num, double thickness)
{
    FlatMesh mesh;
    addSheet(mesh, num, 0.0);
    for (std::size_t t = 0; t < mesh.getNumT(); ++t)
        std::swap(mesh.vCorners[3 * t + 1], mesh.vCorners[3 * t + 2]);
    addSheet(mesh, num, thickness);
    const Index row = num + 1;
    const auto wall = [&](Index a, Index b) // from a to b along the lower sheet, seen from outside
    {
        mesh.vCorners.insert(mesh.vCorners.end(), {a, b, b + row * row, a, b + row * row, a + row * row});
    };
    for (Index i = 0; i < num; ++i)
    {
        wall(i, i + 1);
        wall(num * row + i + 1, num * row + i);
        wall((i + 1) * row, i * row);
        wall(i * row + num, (i + 1) * row + num);
    }
    return mesh;
}

// In cells of 1: what is thinner than a third of one is no body.
TEST(SheetParter, thinWrapsBecomeOneSheet)
{
    const struct
    {
        const char* name;
        FlatMesh mesh;
        bool bClosed;
        bool bEmpty;
    } cases[] = {
        {"a body", makeSlab(12, 0.6), true, false},
        {"a wrap around a sheet", makeSlab(12, 0.2), false, false},
        {"debris", makeSlab(3, 0.2), false, true},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.name);
        FlatMesh mesh = c.mesh;
        PartReport report;
        SheetParter(mesh, report, 1.0).run();
        const MeshCheck result = check(mesh);
        EXPECT_TRUE(result.isManifold() && result.isOriented());
        EXPECT_EQ(mesh.getNumT() == 0, c.bEmpty);
        EXPECT_EQ(report.numWrapT > 0, !c.bClosed);
        if (c.bClosed || c.bEmpty)
            continue;
        EXPECT_EQ(result.numPieces, 1U);
        EXPECT_EQ(result.numBorderLoops, 1U);
        // The upper side alone, but for triangles of the rim.
        EXPECT_NEAR(static_cast<double>(mesh.getNumT()), 288.0, 48.0);
        for (Index t = 0; t < mesh.getNumT(); ++t)
            EXPECT_GT(mesh.at(3 * t).z() + mesh.at(3 * t + 1).z() + mesh.at(3 * t + 2).z(), 0.0);
    }
}

// A sheet whose side from (12, 0) to (12, 12) goes on twice: above and below a hollow of the given thickness,
// three cells wide, that tapers to nothing at both ends.
FlatMesh makeSheetWithDoubledRim(double thickness)
{
    FlatMesh mesh;
    addSheet(mesh, 12, 0.0);
    const auto seamAt = [](Index y) { return y * 13 + 12; };
    // Across the rim, from the seam over its upper side to the tip and back below.
    const auto makeRing = [&](Index y)
    {
        std::vector<Index> vRing(6, seamAt(y));
        if (y == 0 || y == 12)
            return vRing;
        const double z[] = {0.0, thickness / 2, thickness / 2, 0.0, -thickness / 2, -thickness / 2};
        for (std::size_t k = 1; k < 6; ++k)
        {
            vRing[k] = static_cast<Index>(mesh.vPoints.size());
            mesh.vPoints.emplace_back(k < 4 ? 12.0 + k : 18.0 - k, y, z[k]);
        }
        return vRing;
    };
    std::vector<Index> vRing = makeRing(0);
    for (Index y = 1; y <= 12; ++y)
    {
        const std::vector<Index> vNext = makeRing(y);
        for (std::size_t k = 0; k < 6; ++k)
        {
            const std::size_t l = (k + 1) % 6;
            for (const auto& [a, b, c] :
                 {std::array{vRing[k], vRing[l], vNext[l]}, {vRing[k], vNext[l], vNext[k]}})
                if (a != b && b != c && c != a)
                    mesh.vCorners.insert(mesh.vCorners.end(), {a, b, c});
        }
        vRing = vNext;
    }
    return mesh;
}

// Somewhat thicker ones become one sheet where borders get no longer: the rim of the sheet goes round the hollow then.
TEST(SheetParter, doubledRimsBecomeOneSheetButBodiesStay)
{
    FlatMesh rim = makeSheetWithDoubledRim(0.6);
    PartReport report;
    SheetParter(rim, report, 1.0).run();
    MeshCheck result = check(rim);
    EXPECT_TRUE(result.isManifold() && result.isOriented());
    EXPECT_EQ(result.numPieces, 1U);
    EXPECT_EQ(result.numBorderLoops, 1U);
    EXPECT_EQ(result.numBorderEdges, 48U);
    // As far out as the hollow was.
    double farthest = 0.0;
    for (std::size_t h = 0; h < rim.vCorners.size(); ++h)
        farthest = std::max(farthest, rim.vPoints[rim.vCorners[h]].x());
    EXPECT_EQ(farthest, 15.0);

    FlatMesh body = makeSlab(12, 0.45);
    body.vPoints.emplace_back(6.5, 6.0, 3.0);
    const Index edge = 6 * 13 + 6;
    body.vCorners.insert(body.vCorners.end(), {edge, edge + 1, static_cast<Index>(body.vPoints.size() - 1)});
    SheetParter(body, report, 1.0).run();
    result = check(body);
    EXPECT_EQ(result.numPieces, 1U);
    EXPECT_EQ(result.numBorderEdges, 0U);
}

// Few vertices and many triangles: edges of ten triangles, twins, bubbles, strips with one side.
TEST(SheetParter, heapsOfTrianglesEndManifold)
{
    std::mt19937 rng(11);
    for (int i = 0; i < 300; ++i)
    {
        SCOPED_TRACE(i);
        FlatMesh mesh;
        const Index numPoints = 4 + static_cast<Index>(rng() % 12);
        for (Index k = 0; k < numPoints; ++k)
            mesh.vPoints.emplace_back(rng() % 4, rng() % 4, rng() % 4);
        const std::size_t numT = rng() % 60;
        for (std::size_t k = 0; k < 3 * numT; ++k)
            mesh.vCorners.push_back(static_cast<Index>(rng() % numPoints));
        PartReport report;
        SheetParter(mesh, report).run();
        const MeshCheck result = check(mesh);
        EXPECT_TRUE(result.isManifold() && result.isOriented());
        EXPECT_EQ(result.numNotFinite, 0U);
    }
}

} // namespace
} // namespace TARN_ZEF

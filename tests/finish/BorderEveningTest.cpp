#include "finish/BorderEvening.h"

#include "finish/DebrisRemoval.h"
#include "geometry/tools.h"
#include "helpers/squareMesh.h"

#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <vector>

namespace TARN_ZEF
{
namespace
{
// Fields of a square of num x num that are wanted, each cut in two along one diagonal, over the plane z = 0.
HalfEdgeMesh makeFields(int num, const std::function<bool(int, int, bool)>& isWanted)
{
    return makeSquareMesh(
        num, [](int, int) { return 0.0; }, isWanted);
}

int countBorder(const HalfEdgeMesh& mesh)
{
    int num = 0;
    mesh.forEachEdge([&](int h) { num += mesh.isBorder(h) ? 1 : 0; });
    return num;
}

double getArea(const HalfEdgeMesh& mesh)
{
    double sum = 0.0;
    for (int t = 0; t < mesh.endTriangles(); ++t)
        if (mesh.isAlive(t))
            sum += crossProduct(mesh.point(mesh.to(4 * t)) - mesh.point(mesh.from(4 * t)),
                                mesh.point(mesh.apex(4 * t)) - mesh.point(mesh.from(4 * t)))
                       .z() /
                   2.0;
    return sum;
}

TEST(BorderEvening, teethGoAndCornersStay)
{
    const auto isInside = [](int, int y, bool) { return y > 0; };
    const struct
    {
        const char* name;
        std::function<bool(int, int, bool)> isWanted;
        int numBorder;
        double area;
    } cases[] = {
        {"a square", [](int, int, bool) { return true; }, 40, 100.0},
        {"a square with a square window", [](int x, int y, bool) { return x < 3 || x > 6 || y < 3 || y > 6; },
         56, 84.0},
        // Every second triangle of the lowest row is missing: a saw of 90 and 45 degrees.
        {"a saw", [&](int x, int y, bool bUpper) { return isInside(x, y, bUpper) || bUpper; }, 40, 100.0},
        {"a tooth", [&](int x, int y, bool bUpper) { return isInside(x, y, bUpper) || (x == 4 && bUpper); },
         38, 90.0},
        {"a triangle alone", [](int x, int y, bool bUpper) { return x == 4 && y == 4 && bUpper; }, 3, 0.5},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.name);
        HalfEdgeMesh mesh = makeFields(10, c.isWanted);
        BorderEvening(mesh).trim();
        EXPECT_EQ(mesh.getFault(), "");
        EXPECT_LE(std::abs(countBorder(mesh) - c.numBorder), 1);
        EXPECT_NEAR(getArea(mesh), c.area, 0.5);
    }
}

TEST(BorderEvening, tatteredSheetsStayManifoldAndTurnNoTriangle)
{
    std::mt19937 rng(5);
    for (int i = 0; i < 200; ++i)
    {
        SCOPED_TRACE(i);
        HalfEdgeMesh mesh = makeFields(8, [&](int, int, bool) { return rng() % 4 != 0; });
        const int before = countBorder(mesh);
        BorderEvening borders(mesh);
        borders.trim();
        EXPECT_EQ(mesh.getFault(), "");
        EXPECT_LE(countBorder(mesh), before);
        borders.smooth();
        for (int t = 0; t < mesh.endTriangles(); ++t)
        {
            if (!mesh.isAlive(t))
                continue;
            const Vector3 normal = crossProduct(mesh.point(mesh.to(4 * t)) - mesh.point(mesh.from(4 * t)),
                                                mesh.point(mesh.apex(4 * t)) - mesh.point(mesh.from(4 * t)));
            EXPECT_GT(normal.z(), 0.0);
        }
    }
}

// Two triangles far from the sheet: crumbs if they were part of it, or else what they always were.
TEST(DebrisRemoval, onlyCrumbsOfSomethingLargeGo)
{
    const auto isWanted = [](int x, int y, bool) { return y < 8 || (y == 9 && x == 4); };
    for (const bool bWasOfLarge : {false, true})
    {
        HalfEdgeMesh mesh = makeFields(10, isWanted);
        DebrisRemoval::Flags vIsOfLarge(static_cast<std::size_t>(mesh.endVertices()), 1);
        for (int v = 0; v < mesh.endVertices(); ++v)
            if (mesh.point(v).y() > 8.5 && !bWasOfLarge)
                vIsOfLarge[static_cast<std::size_t>(v)] = 0;
        DebrisRemoval debris(mesh);
        debris.label(vIsOfLarge);
        EXPECT_EQ(debris.run(), bWasOfLarge ? 2U : 0U);
        EXPECT_EQ(mesh.getNumTriangles(), bWasOfLarge ? 160 : 162);
        EXPECT_EQ(mesh.getFault(), "");
    }
}

} // namespace
} // namespace TARN_ZEF

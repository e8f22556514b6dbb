#include "remesh/EdgeTrace.h"

#include "remesh/triangles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <random>

using namespace TARN_ZEF;

namespace
{
constexpr int NUM_CELLS = 9;

// A square of NUM_CELLS cells a side, with bumps that high.
HalfEdgeMesh makeField(double height)
{
    std::vector<Point3> vPoints;
    std::vector<int> vCorners;
    for (int y = 0; y <= NUM_CELLS; ++y)
        for (int x = 0; x <= NUM_CELLS; ++x)
        {
            vPoints.emplace_back(x, y, height * std::sin(1.3 * x) * std::cos(0.9 * y + 0.2 * x));
            const int v = y * (NUM_CELLS + 1) + x;
            if (x < NUM_CELLS && y < NUM_CELLS)
                vCorners.insert(vCorners.end(),
                                {v, v + 1, v + NUM_CELLS + 2, v, v + NUM_CELLS + 2, v + NUM_CELLS + 1});
        }
    HalfEdgeMesh mesh;
    EXPECT_TRUE(mesh.build(vPoints, vCorners));
    return mesh;
}

SurfacePlace placeOn(const HalfEdgeMesh& mesh, int t, double u, double v)
{
    const Point3& a = mesh.point(mesh.from(4 * t));
    return {t, a + (mesh.point(mesh.from(4 * t + 1)) - a) * u + (mesh.point(mesh.from(4 * t + 2)) - a) * v,
            0.0};
}

double distanceOf(const HalfEdgeMesh& mesh, const PatchWalker& walker, const Point3& p)
{
    double sqDist = DBL_MAX;
    for (int t = 0; t < mesh.endTriangles(); ++t)
        sqDist = std::min(sqDist, walker.sqDistanceTo(p, t));
    return std::sqrt(sqDist);
}

// Largest distance at many places of a line, by looking at all triangles.
double farthestOf(const HalfEdgeMesh& mesh, const PatchWalker& walker, const Point3& a, const Point3& b)
{
    constexpr int numPlaces = 40;
    double farthest = 0.0;
    for (int i = 0; i <= numPlaces; ++i)
        farthest = std::max(farthest, distanceOf(mesh, walker, a + (b - a) * (1.0 * i / numPlaces)));
    return farthest;
}

TEST(EdgeTrace, nearAndFarLinesAreThoseThatAllTrianglesTell)
{
    const HalfEdgeMesh mesh = makeField(0.3);
    const PatchWalker walker(mesh);
    std::mt19937 random(5);
    const auto part = [&random] { return (random() % 1000) / 2000.0; };
    std::array<int, 3> numEnds{};
    for (int i = 0; i < 600; ++i)
    {
        const SurfacePlace from = placeOn(
            mesh, static_cast<int>(random() % static_cast<unsigned>(mesh.endTriangles())), part(), part());
        const SurfacePlace to = placeOn(
            mesh, static_cast<int>(random() % static_cast<unsigned>(mesh.endTriangles())), part(), part());
        const double tolerance = 0.1 + 0.5 * part();
        EdgeTrace trace(walker, tolerance);
        const EdgeTrace::End end = trace.follow(from, from.point, to.point, Vector3(0.0, 0.0, 1.0));
        ++numEnds[static_cast<std::size_t>(end)];
        const double farthest = farthestOf(mesh, walker, from.point, to.point);
        if (end == EdgeTrace::End::NEAR)
        {
            EXPECT_LE(farthest, tolerance * (1.0 + 1e-9)) << i;
        }
        if (end == EdgeTrace::End::FAR)
        {
            EXPECT_GT(std::sqrt(trace.getFarthest().sqDist), tolerance) << i;
            EXPECT_GT(farthest, 0.9 * tolerance) << i; // the places tried lie beside that one
        }
    }
    EXPECT_GT(numEnds[0], 50);
    EXPECT_GT(numEnds[1], 50);
    EXPECT_LT(numEnds[2], 150);
}

// Through vertices and along edges: each step is a tie there.
TEST(EdgeTrace, linesBetweenVerticesOfAPlaneAreNear)
{
    const HalfEdgeMesh mesh = makeField(0.0);
    const PatchWalker walker(mesh);
    EdgeTrace trace(walker, 1e-6);
    for (int v = 0; v < mesh.endVertices(); ++v)
        for (int u = 0; u < mesh.endVertices(); u += 3)
        {
            const SurfacePlace start{HalfEdgeMesh::triangleOf(mesh.outgoing(v)), mesh.point(v), 0.0};
            const bool bAlongBorder = mesh.isBorderVertex(v) && mesh.isBorderVertex(u);
            if (u == v || bAlongBorder)
                continue;
            EXPECT_EQ(
                static_cast<int>(trace.follow(start, mesh.point(v), mesh.point(u), Vector3(0.0, 0.0, 1.0))),
                static_cast<int>(EdgeTrace::End::NEAR))
                << v << " to " << u;
        }
}
} // namespace

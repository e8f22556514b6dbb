#include "surface/HalfEdgeMesh.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

using namespace TARN_ZEF;

namespace
{
struct Flat
{
    std::vector<Point3> vPoints;
    std::vector<int> vCorners;
};

// A sheet of n by n squares; bRound closes it in both directions.
Flat makeGrid(int n, bool bRound)
{
    Flat flat;
    const int row = bRound ? n : n + 1;
    for (int y = 0; y < row; ++y)
        for (int x = 0; x < row; ++x)
            flat.vPoints.emplace_back(x, y, 0.1 * x * y);
    const auto at = [&](int x, int y) { return (y % row) * row + x % row; };
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x)
            for (const int v :
                 {at(x, y), at(x + 1, y), at(x + 1, y + 1), at(x, y), at(x + 1, y + 1), at(x, y + 1)})
                flat.vCorners.push_back(v);
    return flat;
}

Flat makeTetrahedron()
{
    return {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, {0, 2, 1, 0, 1, 3, 1, 2, 3, 2, 0, 3}};
}

struct Counts
{
    int euler = 0;
    int numBorder = 0;
};

Counts countOf(const HalfEdgeMesh& mesh)
{
    Counts counts;
    counts.euler = mesh.getNumVertices() + mesh.getNumTriangles();
    mesh.forEachEdge(
        [&](int h)
        {
            --counts.euler;
            counts.numBorder += mesh.isBorder(h) ? 1 : 0;
        });
    return counts;
}

struct GrowCase
{
    const char* name;
    Flat flat;
    int euler;
    bool bClosed;
};

std::vector<GrowCase> growCases()
{
    Flat twoFans = makeGrid(4, false);
    // Two sheets that share one corner are two vertices there.
    const int shift = static_cast<int>(twoFans.vPoints.size());
    for (int i = 1; i < shift; ++i)
        twoFans.vPoints.push_back({-twoFans.vPoints[i].x(), -twoFans.vPoints[i].y(), 0.0});
    for (const int v : makeGrid(4, false).vCorners)
        twoFans.vCorners.push_back(v == 0 ? 0 : v + shift - 1);
    return {{"tetrahedron", makeTetrahedron(), 2, true},
            {"sheet", makeGrid(6, false), 1, false},
            {"torus", makeGrid(6, true), 0, true},
            {"two sheets on one corner", twoFans, 2, false}};
}

// One random operation, if it is allowed.
void operate(HalfEdgeMesh& mesh, std::mt19937& rng)
{
    const int t = static_cast<int>(rng() % static_cast<unsigned>(mesh.endTriangles()));
    if (!mesh.isAlive(t))
        return;
    const int h = 4 * t + static_cast<int>(rng() % 3);
    const Point3 a = mesh.point(mesh.from(h));
    const Point3 b = mesh.point(mesh.to(h));
    switch (rng() % 4)
    {
    case 0:
    {
        const int m = mesh.split(h, {0.5 * (a.x() + b.x()), 0.5 * (a.y() + b.y()), 0.5 * (a.z() + b.z())});
        EXPECT_EQ(mesh.to(h), m);
        EXPECT_EQ(mesh.point(mesh.to(mesh.outgoing(m))), b);
        break;
    }
    case 1:
        if (mesh.mayFlip(h))
        {
            const int c = mesh.apex(h);
            const int d = mesh.apex(mesh.partner(h));
            mesh.flip(h);
            EXPECT_EQ(mesh.from(h), d);
            EXPECT_EQ(mesh.to(h), c);
        }
        break;
    default:
        if (mesh.mayCollapse(h))
            mesh.collapse(h);
    }
}

TEST(HalfEdgeMesh, everyOperationKeepsTheSurfaceSound)
{
    std::mt19937 rng(11);
    for (const GrowCase& c : growCases())
    {
        SCOPED_TRACE(c.name);
        HalfEdgeMesh mesh;
        ASSERT_TRUE(mesh.build(c.flat.vPoints, c.flat.vCorners));
        ASSERT_EQ(mesh.getFault(), "");
        for (int i = 0; i < 1500; ++i)
        {
            operate(mesh, rng);
            ASSERT_EQ(mesh.getFault(), "") << i;
            const Counts counts = countOf(mesh);
            ASSERT_EQ(counts.euler, c.euler) << i;
            ASSERT_EQ(counts.numBorder == 0, c.bClosed) << i;
        }
    }
}

TEST(HalfEdgeMesh, featuresAndLabelsTravelAndCompactingKeepsThem)
{
    HalfEdgeMesh mesh;
    const Flat flat = makeGrid(6, false);
    ASSERT_TRUE(mesh.build(flat.vPoints, flat.vCorners));
    // A chain along y = 3 parts the sheet; the labels are its sides.
    mesh.forEachEdge(
        [&](int h)
        {
            if (mesh.point(mesh.from(h)).y() == 3.0 && mesh.point(mesh.to(h)).y() == 3.0)
                mesh.setFeature(h, 1);
        });
    for (int t = 0; t < mesh.endTriangles(); ++t)
        mesh.setLabel(t, t < 36 ? 0 : 1);
    std::mt19937 rng(3);
    const auto expectParted = [&]
    {
        mesh.forEachEdge(
            [&](int h)
            {
                if (mesh.isBorder(h))
                    return;
                const int g = mesh.partner(h);
                const bool bSides = mesh.label(mesh.triangleOf(h)) != mesh.label(mesh.triangleOf(g));
                ASSERT_EQ(bSides, mesh.feature(h) == 1);
            });
    };
    for (int i = 0; i < 600; ++i)
    {
        // Without collapses across the chain, which its owner must not ask for.
        const int t = static_cast<int>(rng() % static_cast<unsigned>(mesh.endTriangles()));
        const int h = 4 * t + static_cast<int>(rng() % 3);
        if (i % 10 == 0 || (mesh.feature(h) == 1 && i < 150))
            static_cast<void>(mesh.split(h, mesh.point(mesh.from(h))));
        else if (mesh.mayFlip(h))
            mesh.flip(h);
        if (i % 100 == 0)
            mesh.compact();
        ASSERT_EQ(mesh.getFault(), "") << i;
        expectParted();
    }
}

TEST(HalfEdgeMesh, killedTrianglesLeaveABorder)
{
    HalfEdgeMesh mesh;
    const Flat flat = makeTetrahedron();
    ASSERT_TRUE(mesh.build(flat.vPoints, flat.vCorners));
    for (int t = 0; t < 4; ++t)
    {
        mesh.killTriangle(t);
        ASSERT_EQ(mesh.getFault(), "") << t;
    }
    EXPECT_EQ(mesh.getNumVertices(), 0);
}

struct RefusalCase
{
    const char* name;
    std::vector<int> vCorners;
    bool bOK;
};

TEST(HalfEdgeMesh, buildRefusesWhatIsNoOrientedManifold)
{
    const std::vector<Point3> vPoints = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {1, 1, 1}};
    const RefusalCase cases[] = {{"nothing", {}, true},
                                 {"two neighbours", {0, 1, 2, 1, 0, 3}, true},
                                 {"equal corners", {0, 1, 1}, false},
                                 {"neighbours turned against each other", {0, 1, 2, 0, 1, 3}, false},
                                 {"three on an edge", {0, 1, 2, 1, 0, 3, 1, 0, 4}, false}};
    for (const RefusalCase& c : cases)
    {
        SCOPED_TRACE(c.name);
        HalfEdgeMesh mesh;
        EXPECT_EQ(mesh.build(vPoints, c.vCorners), c.bOK);
        EXPECT_EQ(mesh.getFault(), "");
        EXPECT_EQ(mesh.getNumTriangles(), c.bOK ? static_cast<int>(c.vCorners.size() / 3) : 0);
    }
}
} // namespace

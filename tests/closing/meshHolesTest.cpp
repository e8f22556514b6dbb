// Borders in order, rims and holes told apart, and what closes them.
#include "meshHoles.h"

#include "ZefRefusedException.h"
#include "checkMesh.h"
#include "closing/LeastBend.h"
#include "geometry/tools.h"
#include "helpers/meshShapes.h"

#include "Mesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <set>

namespace TARN_ZEF
{
namespace
{
std::shared_ptr<Mesh> makeMesh(const RMeshSource& source)
{
    return std::make_shared<Mesh>(new RMesh(source));
}

// Without the triangles that have their centre where isGone says.
template <typename F>
RMeshSource cutOut(const RMeshSource& source, F isGone)
{
    RMeshSource result = source;
    result.vCorners.clear();
    for (std::size_t c = 0; c < source.vCorners.size(); c += 3)
    {
        double x = 0.0;
        double y = 0.0;
        double z = 0.0;
        for (std::size_t k = 0; k < 3; ++k)
            source.vPoints[source.vCorners[c + k]].addWeightedOwnCoords(1.0 / 3.0, x, y, z);
        if (!isGone(Point3(x, y, z)))
            result.vCorners.insert(result.vCorners.end(), &source.vCorners[c], &source.vCorners[c] + 3);
    }
    return result;
}

std::size_t countRims(const std::vector<BorderLoop>& vLoops)
{
    return static_cast<std::size_t>(
        std::count_if(vLoops.begin(), vLoops.end(), [](const BorderLoop& loop) { return loop.bRim; }));
}

// The tube of a torus' small circle, straightened: n around, m along, both ends open.
RMeshSource tubeSource(int n, int m)
{
    RMeshSource source;
    for (int i = 0; i <= m; ++i)
        for (int k = 0; k < n; ++k)
        {
            const double a = 6.28318530717959 * k / n;
            const double r = n / 6.28318530717959;
            source.vPoints.emplace_back(r * std::cos(a), r * std::sin(a), i);
        }
    const auto index = [=](int i, int k) { return static_cast<std::uint32_t>(i * n + k % n); };
    for (int i = 0; i < m; ++i)
        for (int k = 0; k < n; ++k)
            addQuad(source, index(i, k), index(i, k + 1), index(i + 1, k + 1), index(i + 1, k));
    return source;
}

struct Shape
{
    const char* name;
    RMeshSource source;
    std::size_t numLoops;
    std::size_t numRims;
};

std::vector<Shape> getShapes()
{
    const RMeshSource ball = cubeSource(8, true);
    const auto above = [&](double height)
    { return cutOut(ball, [=](const Point3& p) { return p.z() > height; }); };
    const RMeshSource window = cutOut(planeSource(20), [](const Point3& p)
                                      { return std::fabs(p.x() - 10) < 3.0 && std::fabs(p.y() - 10) < 3.0; });
    const RMeshSource wideWindow =
        cutOut(planeSource(20),
               [](const Point3& p) { return std::fabs(p.x() - 10) < 9.0 && std::fabs(p.y() - 10) < 9.0; });
    const RMeshSource pinched = cutOut(planeSource(20),
                                       [](const Point3& p)
                                       {
                                           return (p.x() > 5 && p.x() < 10 && p.y() > 5 && p.y() < 10) ||
                                                  (p.x() > 10 && p.x() < 15 && p.y() > 10 && p.y() < 15);
                                       });
    return {
        {"ball", ball, 0, 0},
        {"half a ball", above(0.0), 1, 1},
        {"ball with a window", above(6.5), 1, 0},
        {"plane", planeSource(5), 1, 1},
        {"plane with a hole", window, 2, 1},
        {"frame", wideWindow, 2, 1},
        {"two holes that touch", pinched, 3, 1},
        {"short tube", tubeSource(20, 3), 2, 2},
        {"long tube", tubeSource(20, 60), 2, 0},
    };
}

TEST(BorderLoops, areRimsAndHolesAsOneSeesThem)
{
    for (const Shape& shape : getShapes())
    {
        SCOPED_TRACE(shape.name);
        const std::shared_ptr<Mesh> pMesh = makeMesh(shape.source);
        const std::vector<BorderLoop> vLoops = findBorderLoops(*pMesh);
        EXPECT_EQ(vLoops.size(), shape.numLoops);
        EXPECT_EQ(countRims(vLoops), shape.numRims);
        std::size_t numEdges = 0;
        double length = 0.0;
        for (const BorderLoop& loop : vLoops)
        {
            EXPECT_TRUE(loop.bClosed);
            EXPECT_FALSE(loop.reason.empty());
            EXPECT_EQ(std::set<int>(loop.vVertices.begin(), loop.vVertices.end()).size(),
                      loop.vVertices.size());
            numEdges += loop.vVertices.size();
            length += loop.length;
        }
        const MeshCheck check = checkMesh(*pMesh);
        EXPECT_EQ(numEdges, check.numBorderEdges);
        EXPECT_NEAR(length, check.borderLength, 1e-9 * length);
    }
}

TEST(BorderLoops, runInOrderAndEncloseWhatTheyEnclose)
{
    const RMeshSource source = cutOut(planeSource(20), [](const Point3& p)
                                      { return std::fabs(p.x() - 10) < 3.0 && std::fabs(p.y() - 10) < 2.0; });
    const std::shared_ptr<Mesh> pMesh = makeMesh(source);
    std::vector<Point3*> vPoints;
    pMesh->getPoints(vPoints);
    const std::vector<BorderLoop> vLoops = findBorderLoops(*pMesh);
    ASSERT_EQ(vLoops.size(), 2U);
    for (const BorderLoop& loop : vLoops)
    {
        EXPECT_DOUBLE_EQ(loop.length, loop.bRim ? 80.0 : 20.0);
        EXPECT_DOUBLE_EQ(loop.area, loop.bRim ? 400.0 : 24.0);
        for (std::size_t i = 0; i < loop.vVertices.size(); ++i)
        {
            const auto a = static_cast<std::size_t>(loop.vVertices[i]);
            const auto b = static_cast<std::size_t>(loop.vVertices[(i + 1) % loop.vVertices.size()]);
            EXPECT_EQ((*vPoints[a] - *vPoints[b]).length(), 1.0);
        }
    }
}

// A strip turned over once has one border and no side; an edge of three triangles ends a chain.
TEST(BorderLoops, comeFromAnyHeapOfTriangles)
{
    std::vector<Point3> vPoints;
    std::vector<int> vCorners;
    const int n = 30;
    for (int i = 0; i < n; ++i)
        for (const double side : {-1.0, 1.0})
        {
            const double a = 6.28318530717959 * i / n;
            const double r = 5.0 + side * std::cos(a / 2);
            vPoints.emplace_back(r * std::cos(a), r * std::sin(a), side * std::sin(a / 2));
        }
    for (int i = 0; i < n; ++i)
    {
        const bool bLast = i + 1 == n;
        const int c = bLast ? 1 : 2 * i + 2;
        const int d = bLast ? 0 : 2 * i + 3;
        vCorners.insert(vCorners.end(), {2 * i, 2 * i + 1, c, c, 2 * i + 1, d});
    }
    const std::vector<BorderLoop> vMoebius = findBorderLoops(vPoints, vCorners);
    ASSERT_EQ(vMoebius.size(), 1U);
    EXPECT_EQ(vMoebius[0].vVertices.size(), 2U * n);

    const std::vector<Point3> vFan = {{0, 0, 0}, {0, 0, 1}, {1, 0, 0}, {0, 1, 0}, {-1, 0, 0}};
    const std::vector<BorderLoop> vOfFan = findBorderLoops(vFan, {0, 1, 2, 0, 1, 3, 0, 1, 4});
    EXPECT_EQ(vOfFan.size(), 3U);
    for (const BorderLoop& loop : vOfFan)
        EXPECT_FALSE(loop.bClosed);
    EXPECT_TRUE(findBorderLoops({}, {}).empty());
    EXPECT_TRUE(findBorderLoops(vFan, {0, 0, 1}).empty());
    EXPECT_THROW(static_cast<void>(findBorderLoops(vFan, {0, 1})), ZefBadArgument);
    EXPECT_THROW(static_cast<void>(findBorderLoops(vFan, {0, 1, 5})), ZefBadArgument);
}

// Whatever is chosen and however it is filled, the mesh is no less sound, and what was filled is closed.
TEST(FillHoles, leavesASoundMeshAndNoneOfTheChosenLoops)
{
    for (const Shape& shape : getShapes())
        for (const FillOptions& options :
             {FillOptions{true, true}, FillOptions{true, false}, FillOptions{false, false}})
        {
            SCOPED_TRACE(shape.name);
            const std::shared_ptr<Mesh> pMesh = makeMesh(shape.source);
            const std::vector<BorderLoop> vLoops = findBorderLoops(*pMesh);
            std::vector<FillResult> vResults;
            const std::shared_ptr<Mesh> pFilled = fillHoles(*pMesh, vLoops, options, &vResults);
            ASSERT_EQ(vResults.size(), vLoops.size());
            const auto numFilled = static_cast<std::size_t>(std::count_if(
                vResults.begin(), vResults.end(), [](const FillResult& result) { return result.bFilled; }));
            const std::vector<BorderLoop> vLeft = findBorderLoops(*pFilled);
            EXPECT_EQ(vLeft.size(), vLoops.size() - numFilled);
            const MeshCheck before = checkMesh(*pMesh);
            const MeshCheck after = checkMesh(*pFilled);
            EXPECT_EQ(after.numIntersections, 0U);
            EXPECT_EQ(after.numFlat + after.numDuplicates + after.numNonManifoldEdges +
                          after.numDisagreeingEdges,
                      0U);
            EXPECT_EQ(after.eulerNumber, before.eulerNumber + static_cast<std::int64_t>(numFilled));
            for (std::size_t i = 0; i < vLoops.size(); ++i)
                EXPECT_TRUE(vResults[i].bFilled || !vResults[i].reason.empty());
        }
}

// The cap of a ball: the fill goes on round where it is faired, and its edges are as long as those around.
TEST(FillHoles, goesOnAsTheSurfaceDoes)
{
    const double radius = 8.0;
    const RMeshSource ball = cubeSource(8, true);
    const std::shared_ptr<Mesh> pOpen = makeMesh(cutOut(ball, [](const Point3& p) { return p.z() > 5.0; }));
    const std::vector<BorderLoop> vLoops = findBorderLoops(*pOpen);
    ASSERT_EQ(vLoops.size(), 1U);
    const double rim = vLoops[0].length / static_cast<double>(vLoops[0].vVertices.size());
    std::vector<FillResult> vResults;
    const std::shared_ptr<Mesh> pFaired = fillHoles(*pOpen, vLoops, FillOptions{true, true}, &vResults);
    ASSERT_TRUE(vResults[0].bFilled);
    EXPECT_TRUE(checkMesh(*pFaired).isSound() && checkMesh(*pFaired).isClosed());
    std::vector<Point3*> vPoints;
    std::vector<int> vCorners;
    pFaired->getVertexIndexData(vPoints, vCorners);
    const std::size_t numOld = vPoints.size() - vResults[0].numVertices;
    double top = 0.0;
    for (std::size_t v = numOld; v < vPoints.size(); ++v)
    {
        const double distance = (*vPoints[v] - Point3()).length();
        EXPECT_GT(distance, 0.9 * radius);
        EXPECT_LT(distance, 1.1 * radius);
        top = std::max(top, vPoints[v]->z());
    }
    EXPECT_GT(top, 0.9 * radius); // a skin would end at 5
    for (std::size_t c = vCorners.size() - 3 * vResults[0].numTriangles; c < vCorners.size(); ++c)
    {
        const Point3& a = *vPoints[static_cast<std::size_t>(vCorners[c])];
        const Point3& b = *vPoints[static_cast<std::size_t>(vCorners[c % 3 == 2 ? c - 2 : c + 1])];
        EXPECT_LT((a - b).length(), 2.0 * rim);
        EXPECT_GT((a - b).length(), 0.2 * rim);
    }
}

// A sheet of a size above the bottom of a bowl: the lid of the bowl would cut a spike that looks out of it.
TEST(FillHoles, leavesOpenWhatWouldCutTheSurface)
{
    RMeshSource bowl = cutOut(cubeSource(6, true), [](const Point3& p) { return p.z() > 0.0; });
    const auto first = static_cast<std::uint32_t>(bowl.vPoints.size());
    for (const Point3& p :
         {Point3(0.1, 0.2, -3), Point3(1.3, 0.2, -3), Point3(0.2, 1.4, -3), Point3(0.5, 0.5, 9)})
        bowl.vPoints.push_back(p);
    for (const std::uint32_t i : {0U, 2U, 1U, 0U, 1U, 3U, 1U, 2U, 3U, 2U, 0U, 3U})
        bowl.vCorners.push_back(first + i);
    const std::shared_ptr<Mesh> pMesh = makeMesh(bowl);
    const std::vector<BorderLoop> vLoops = findBorderLoops(*pMesh);
    ASSERT_EQ(vLoops.size(), 1U);
    std::vector<FillResult> vResults;
    const std::shared_ptr<Mesh> pFilled = fillHoles(*pMesh, vLoops, FillOptions(), &vResults);
    EXPECT_FALSE(vResults[0].bFilled);
    EXPECT_FALSE(vResults[0].reason.empty());
    EXPECT_TRUE(checkMesh(*pFilled).isSound());
    EXPECT_EQ(findBorderLoops(*pFilled).size(), 1U);
}

TEST(FillHoles, refusesLoopsOfAnotherMesh)
{
    const std::shared_ptr<Mesh> pMesh = makeMesh(planeSource(4));
    std::vector<BorderLoop> vLoops = findBorderLoops(*pMesh);
    ASSERT_EQ(vLoops.size(), 1U);
    std::vector<BorderLoop> vBad = vLoops;
    std::swap(vBad[0].vVertices[0], vBad[0].vVertices[2]);
    EXPECT_THROW(static_cast<void>(fillHoles(*pMesh, vBad)), ZefBadArgument);
    vBad = vLoops;
    vBad[0].vVertices[3] = 1000;
    EXPECT_THROW(static_cast<void>(fillHoles(*pMesh, vBad)), ZefBadArgument);
}

// Random holes in a ball, all closed at once.
TEST(FillHoles, manyAtATime)
{
    std::mt19937 random(3);
    for (int trial = 0; trial < 10; ++trial)
    {
        std::vector<Point3> vSpots;
        for (int i = 0; i < 12; ++i)
        {
            const auto coordinate = [&] { return 24.0 * std::generate_canonical<double, 32>(random) - 12.0; };
            vSpots.emplace_back(coordinate(), coordinate(), coordinate());
        }
        const RMeshSource source =
            cutOut(cubeSource(12, true),
                   [&](const Point3& p)
                   {
                       return std::any_of(vSpots.begin(), vSpots.end(),
                                          [&](const Point3& spot) { return (spot - p).length() < 4.0; });
                   });
        const std::shared_ptr<Mesh> pMesh = makeMesh(source);
        std::vector<BorderLoop> vLoops = findBorderLoops(*pMesh);
        // Of what was cut free, nothing but its own back would close the border.
        std::erase_if(vLoops, [](const BorderLoop& loop) { return loop.bRim; });
        std::vector<FillResult> vResults;
        const std::shared_ptr<Mesh> pFilled = fillHoles(*pMesh, vLoops, FillOptions(), &vResults);
        const MeshCheck check = checkMesh(*pFilled);
        EXPECT_EQ(check.numIntersections + check.numFlat + check.numNonManifoldEdges, 0U) << trial;
        EXPECT_EQ(static_cast<std::size_t>(std::count_if(vResults.begin(), vResults.end(),
                                                         [](const FillResult& r) { return r.bFilled; })),
                  vLoops.size())
            << trial;
    }
}

// Long polygons are filled in parts: each inner edge comes twice, each edge of the polygon once, against it.
TEST(LeastBend, coversPolygonsOfEveryLength)
{
    for (const std::size_t num : {3U, 4U, 79U, 80U, 81U, 161U, 1000U, 7001U})
    {
        std::vector<Point3> vPolygon;
        for (std::size_t i = 0; i < num; ++i)
        {
            const double a = 6.28318530717959 * static_cast<double>(i) / static_cast<double>(num);
            vPolygon.emplace_back(std::cos(a), std::sin(a), 0.1 * std::cos(7 * a));
        }
        const std::vector<Vector3> vNone(num);
        std::vector<LeastBend::Triangle> vTriangles;
        ASSERT_TRUE(
            LeastBend(vPolygon, vNone, false, [](std::size_t, std::size_t) { return true; }).run(vTriangles));
        EXPECT_EQ(vTriangles.size(), num - 2);
        std::set<std::pair<std::size_t, std::size_t>> sEdges;
        for (const LeastBend::Triangle& t : vTriangles)
            for (std::size_t k = 0; k < 3; ++k)
                EXPECT_TRUE(sEdges.emplace(t[k], t[(k + 1) % 3]).second);
        for (std::size_t i = 0; i < num; ++i)
            EXPECT_EQ(sEdges.count({(i + 1) % num, i}), 1U);
    }
}

} // namespace
} // namespace TARN_ZEF

#include "checkMesh.h"
#include "helpers/finishedMeshes.h"
#include "remesh.h"

#include "ZefRefusedException.h"
#include "geometry/tools.h"
#include "remesh/solidShapes.h"
#include "remesh/triangles.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <random>
#include <string>
#include <vector>

using namespace TARN_ZEF;
using namespace ZEF_TESTS;

namespace
{
using Soup = std::vector<Point3>;

Soup scaled(Soup soup, double factor)
{
    for (Point3& p : soup)
        p.set(p.x() * factor, p.y() * factor, p.z() * factor);
    return soup;
}

RemeshOptions outerOptions(double length, int numBridgedCells = 0)
{
    RemeshOptions options;
    options.length = length;
    options.bOuter = true;
    options.numBridgedCells = numBridgedCells;
    return options;
}

double distanceTo(const Soup& soup, const Point3& p)
{
    double sqDist = 1e300;
    for (std::size_t i = 0; i < soup.size(); i += 3)
        sqDist = std::min(sqDist, nearestOnTriangle(p, soup[i], soup[i + 1], soup[i + 2]).sqDist);
    return std::sqrt(sqDist);
}

double farthestOff(const Soup& places, const Soup& soup)
{
    double farthest = 0.0;
    for (const Point3& p : places)
        farthest = std::max(farthest, distanceTo(soup, p));
    return farthest;
}

MeshCheck judge(const Mesh& mesh)
{
    CheckOptions options;
    options.bFindIntersections = false;
    return checkMesh(mesh, options);
}

void expectHull(const Mesh& mesh)
{
    const MeshCheck check = judge(mesh);
    EXPECT_TRUE(check.isManifold());
    EXPECT_TRUE(check.isOriented());
    EXPECT_TRUE(check.isClosed());
    EXPECT_EQ(check.numFlat, 0U);
    EXPECT_GT(computeVolume(getCorners(mesh)), 0.0);
}

TEST(OuterHull, damagedSolidsComeOutWhole)
{
    const std::vector<SolidShape> vShapes = makeSolidShapes();
    for (std::size_t i = 0; i < vShapes.size(); ++i)
    {
        const SolidShape& shape = vShapes[i];
        if (shape.volume == 0.0)
            continue;
        SCOPED_TRACE(shape.name);
        // Where fifty boxes share their faces, what is missing is missing from two of them, and neither is closed: these
        // stay whole.
        const auto seed = static_cast<unsigned>(i);
        const Soup damaged = shape.numParts < 50 ? damage(shape.vTriCorners, 0.01, 0.01, 0.05, seed)
                                                 : messUp(shape.vTriCorners, seed);
        const std::shared_ptr<Mesh> pMesh = remesh(damaged, outerOptions(shape.length));
        ASSERT_TRUE(pMesh);
        expectHull(*pMesh);
        const Soup hull = getCorners(*pMesh);
        EXPECT_NEAR(computeVolume(hull), shape.hullVolume, 0.01 * shape.hullVolume);
        EXPECT_LT(farthestOff(hull, shape.vTriCorners), shape.length);
        if (shape.numParts == 1)
        {
            EXPECT_LT(farthestOff(shape.vTriCorners, hull), shape.length);
        }
    }
}

SolidShape shapeNamed(const std::string& name)
{
    for (const SolidShape& shape : makeSolidShapes())
        if (shape.name == name)
            return shape;
    ADD_FAILURE() << name;
    return {};
}

// A cube of six plates that leave gaps of 0.04 at the edges, every second one turned over.
Soup makePlates()
{
    Soup soup;
    for (int axis = 0; axis < 3; ++axis)
        for (const double side : {0.0, 1.0})
        {
            const auto at = [&](double right, double up)
            {
                double x[3];
                x[axis] = side;
                x[(axis + 1) % 3] = right;
                x[(axis + 2) % 3] = up;
                return Point3(x[0] + 0.1 * x[1], x[1] - 0.2 * x[2], x[2] + 0.15 * x[0]);
            };
            const double low = 0.04;
            const double high = 0.96;
            soup.insert(soup.end(), {at(low, low), at(high, low), at(high, high)});
            soup.insert(soup.end(), {at(low, low), at(high, high), at(low, high)});
        }
    return soup;
}

TEST(OuterHull, gapsAreBridgedWhereAskedFor)
{
    const Soup plates = makePlates();
    const double whole = 1.0 * (1.0 + 0.2 * 0.15) + 0.1 * (-0.2 * 0.15); // of the sheared cube: see at()
    RemeshReport report;
    const std::shared_ptr<Mesh> pBridged = remesh(plates, outerOptions(0.05, 4), &report);
    ASSERT_TRUE(pBridged);
    EXPECT_TRUE(report.bFromLattice);
    expectHull(*pBridged);
    EXPECT_NEAR(computeVolume(getCorners(*pBridged)), whole, 0.05 * whole);
    const std::shared_ptr<Mesh> pOpen = remesh(plates, outerOptions(0.05));
    ASSERT_TRUE(pOpen);
    expectHull(*pOpen);
    EXPECT_LT(computeVolume(getCorners(*pOpen)), 0.5 * whole);
}

TEST(OuterHull, sheetGetsTwoSides)
{
    const SolidShape sheet = shapeNamed("sheet");
    const std::shared_ptr<Mesh> pMesh = remesh(sheet.vTriCorners, outerOptions(0.1));
    ASSERT_TRUE(pMesh);
    expectHull(*pMesh);
    EXPECT_LT(farthestOff(getCorners(*pMesh), sheet.vTriCorners), 0.1);
    EXPECT_LT(farthestOff(sheet.vTriCorners, getCorners(*pMesh)), 0.1);
}

TEST(OuterHull, powerOfTwoScalesTheResultToTheLastBit)
{
    const Soup soup = shapeNamed("crossing boxes").vTriCorners;
    const std::shared_ptr<Mesh> pPlain = remesh(soup, outerOptions(0.1));
    ASSERT_TRUE(pPlain);
    for (const double factor : {std::ldexp(1.0, -60), std::ldexp(1.0, 90)})
    {
        const std::shared_ptr<Mesh> pScaled = remesh(scaled(soup, factor), outerOptions(0.1 * factor));
        ASSERT_TRUE(pScaled);
        EXPECT_TRUE(getCorners(*pScaled) == scaled(getCorners(*pPlain), factor)) << factor;
    }
}

// Corners on a lattice of few places, so that triangles cross, touch and double one another in every way.
TEST(OuterHull, heapsOfTrianglesGetSoundHulls)
{
    for (unsigned seed = 0; seed < 12; ++seed)
    {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const auto place = [&] { return static_cast<double>(random() % (seed % 2 == 0 ? 4U : 1000U)); };
        Soup soup;
        for (int i = 0; i < 60; ++i)
        {
            const double x = place();
            const double y = place();
            soup.emplace_back(x, y, place());
        }
        const double extent = seed % 2 == 0 ? 3.0 : 1000.0;
        const std::shared_ptr<Mesh> pMesh =
            remesh(soup, outerOptions(0.1 * extent, static_cast<int>(seed % 3)));
        ASSERT_TRUE(pMesh);
        expectHull(*pMesh);
    }
}

TEST(OuterHull, bridgesAreRefusedWhereTheyMakeNoSense)
{
    for (const int numCells : {-1, 101})
        EXPECT_FALSE(outerOptions(1.0, numCells).getFault().empty()) << numCells;
    RemeshOptions options;
    options.numBridgedCells = 1;
    EXPECT_FALSE(options.getFault().empty());
    EXPECT_THROW(static_cast<void>(remesh(makePlates(), options)), ZefBadArgument);
}
} // namespace

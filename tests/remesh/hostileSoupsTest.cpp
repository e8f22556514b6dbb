#include "remesh.h"

#include "ProgressBase.h"
#include "ZefRefusedException.h"
#include "helpers/finishedMeshes.h"
#include "surface/HalfEdgeMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

using namespace TARN_ZEF;

namespace
{
using Soup = std::vector<Point3>;

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double INFINITE = std::numeric_limits<double>::infinity();

void addTriangle(Soup& soup, const Point3& a, const Point3& b, const Point3& c)
{
    soup.insert(soup.end(), {a, b, c});
}

Soup scaled(Soup soup, double factor)
{
    for (Point3& p : soup)
        p.set(p.x() * factor, p.y() * factor, p.z() * factor);
    return soup;
}

Soup joined(Soup soup, const Soup& other)
{
    soup.insert(soup.end(), other.begin(), other.end());
    return soup;
}

Soup makeTetrahedron()
{
    const Point3 a(0.1, 0.2, 0.3);
    const Point3 b(1.2, 0.1, 0.4);
    const Point3 c(0.3, 1.1, 0.2);
    const Point3 d(0.5, 0.4, 1.3);
    return {a, c, b, a, b, d, b, c, d, c, a, d};
}

Soup makeCopies(int num)
{
    Soup soup;
    for (int i = 0; i < num; ++i)
        addTriangle(soup, {0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.1});
    return soup;
}

// A book: all pages share its back.
Soup makePages(int num)
{
    Soup soup;
    for (int i = 0; i < num; ++i)
        addTriangle(soup, {0.0, 0.0, 0.0}, {0.0, 0.0, 1.0},
                    {std::cos(6.28 * i / num), std::sin(6.28 * i / num), 0.5});
    return soup;
}

Soup makeNeedles(int num)
{
    Soup soup;
    for (int i = 0; i < num; ++i)
    {
        const double y = 1e-4 * i;
        addTriangle(soup, {0.0, y, 0.0}, {100.0, y + 1e-4, 0.0}, {100.0, y, 1.0});
    }
    return soup;
}

// Corners on a lattice of few places: equal, crossing, touching and zero-height triangles all at once.
Soup makeHeap(unsigned seed, int num, int numPlaces)
{
    std::mt19937 random(seed);
    const auto place = [&] { return static_cast<double>(random() % static_cast<unsigned>(numPlaces)); };
    Soup soup;
    for (int i = 0; i < 3 * num; ++i)
    {
        const double x = place();
        const double y = place();
        soup.emplace_back(x, y, place());
    }
    return soup;
}

// Corners that lie within the weld tolerance of one another, because of one far triangle.
Soup makeCrowdAndFarTriangle(unsigned seed, int num)
{
    Soup soup = scaled(makeHeap(seed, num, 1000), 1e-3);
    addTriangle(soup, {1e7, 0.0, 0.0}, {1e7, 1.0, 0.0}, {1e7, 0.0, 1.0});
    return soup;
}

struct HostileCase
{
    std::string name;
    Soup soup;
    RemeshOptions options;
    // What it ends in: a mesh, an empty pointer, a refusal.
    enum class End
    {
        MESH,
        NOTHING,
        REFUSED
    } end;
};

RemeshOptions withLength(double length)
{
    RemeshOptions options;
    options.length = length;
    return options;
}

RemeshOptions withMost(int maxTriangles, double length = RemeshOptions::FOUND)
{
    RemeshOptions options = withLength(length);
    options.maxTriangles = maxTriangles;
    return options;
}

std::vector<HostileCase> makeHostileCases()
{
    using End = HostileCase::End;
    const Soup tetrahedron = makeTetrahedron();
    const Soup bad = {{NOT_A_NUMBER, 0.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0},
                      {0.0, INFINITE, 0.0},     {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}};
    Soup small;
    addTriangle(small, {0.0, 0.0, 0.0}, {1e-300, 0.0, 0.0}, {0.0, 1e-300, 0.0});
    Soup line;
    addTriangle(line, {0.0, 0.0, 0.0}, {1.0, 1.0, 1.0}, {3.0, 3.0, 3.0});
    std::vector<HostileCase> vCases = {
        {"empty", {}, {}, End::NOTHING},
        {"only NaN and infinite", bad, {}, End::NOTHING},
        {"NaN and infinite beside a body", joined(bad, tetrahedron), {}, End::MESH},
        {"1e300", scaled(tetrahedron, 1e300), {}, End::REFUSED},
        {"1e300 beside a body", joined(tetrahedron, scaled(tetrahedron, 1e300)), {}, End::REFUSED},
        {"1e-300", scaled(tetrahedron, 1e-300), {}, End::REFUSED},
        {"1e-300 beside a body", joined(tetrahedron, small), {}, End::MESH},
        {"denormals", scaled(tetrahedron, 1e-310), {}, End::REFUSED},
        {"1e90", scaled(tetrahedron, 1e90), {}, End::MESH},
        {"1e-90", scaled(tetrahedron, 1e-90), {}, End::MESH},
        {"one point", Soup(30, Point3(1.0, 2.0, 3.0)), {}, End::NOTHING},
        {"no area", line, {}, End::NOTHING},
        {"one triangle", makeCopies(1), {}, End::MESH},
        {"a thousand copies", makeCopies(1000), {}, End::MESH},
        {"a hundred thousand copies", makeCopies(100000), {}, End::MESH},
        {"three on one edge", makePages(3), withLength(0.2), End::MESH},
        {"a thousand on one edge", makePages(1000), withLength(1.0), End::MESH},
        {"needles", makeNeedles(50), withLength(10.0), End::MESH},
        {"a length of 1e-9", tetrahedron, withLength(1e-9), End::REFUSED},
        {"a length of 1e-300", tetrahedron, withLength(1e-300), End::REFUSED},
        {"a length of 1e300", tetrahedron, withLength(1e300), End::MESH},
        {"a short length on needles", makeNeedles(500), withLength(1e-5), End::REFUSED},
        {"a length of 1e300 on many", makePages(3000), withLength(1e300), End::MESH},
        {"at most 100", tetrahedron, withMost(100), End::MESH},
        {"at most 100, and a length that makes some more", tetrahedron, withMost(100, 0.15), End::REFUSED},
        {"at most 100 of a heap", makeHeap(1, 400, 10), withMost(100), End::REFUSED},
        {"a crowd within the weld tolerance", makeCrowdAndFarTriangle(2, 20000), {}, End::NOTHING},
    };
    for (unsigned seed = 0; seed < 12; ++seed)
        vCases.push_back({"heap " + std::to_string(seed), makeHeap(seed, 20 + 15 * static_cast<int>(seed), 3),
                          withMost(20000, seed % 2 == 0 ? 0.5 : RemeshOptions::FOUND), End::MESH});
    return vCases;
}

void expectSound(const Mesh& mesh, int maxTriangles)
{
    std::vector<Point3*> vPointers;
    std::vector<int> vCorners;
    mesh.getVertexIndexData(vPointers, vCorners);
    std::vector<Point3> vPoints;
    for (const Point3* pPoint : vPointers)
    {
        vPoints.push_back(*pPoint);
        EXPECT_TRUE(std::isfinite(pPoint->x()) && std::isfinite(pPoint->y()) && std::isfinite(pPoint->z()));
    }
    EXPECT_LE(vCorners.size() / 3, static_cast<std::size_t>(maxTriangles));
    HalfEdgeMesh halfEdges;
    ASSERT_TRUE(halfEdges.build(vPoints, vCorners));
    EXPECT_EQ(halfEdges.getNumVertices(), static_cast<int>(vPoints.size())) << "a vertex with several fans";
}

TEST(Remesh, hostileSoupsEndSoundOrRefused)
{
    for (const HostileCase& hostile : makeHostileCases())
    {
        SCOPED_TRACE(hostile.name);
        HostileCase::End end = HostileCase::End::REFUSED;
        try
        {
            const std::shared_ptr<Mesh> pMesh = remesh(hostile.soup, hostile.options);
            end = pMesh ? HostileCase::End::MESH : HostileCase::End::NOTHING;
            if (pMesh)
                expectSound(*pMesh, hostile.options.maxTriangles);
        }
        catch (const ZefBadArgument& refusal)
        {
            EXPECT_FALSE(std::string(refusal.what()).empty());
        }
        EXPECT_EQ(end, hostile.end);
    }
}

TEST(Remesh, lengthThatIsFoundKeepsTheLargestNumberOfTriangles)
{
    RemeshReport free;
    RemeshReport bounded;
    const Soup soup = makeTetrahedron();
    ASSERT_TRUE(remesh(soup, RemeshOptions(), &free));
    ASSERT_TRUE(remesh(soup, withMost(200), &bounded));
    EXPECT_GT(free.numTriangles, 200);
    EXPECT_LE(bounded.numTriangles, 200);
    EXPECT_GT(bounded.numTriangles, 50);
    EXPECT_GT(bounded.length, free.length);
}

TEST(Remesh, powerOfTwoScalesTheResultToTheLastBit)
{
    for (const Soup& soup : {makeTetrahedron(), makeHeap(5, 60, 4)})
    {
        const std::shared_ptr<Mesh> pPlain = remesh(soup, withLength(0.25));
        ASSERT_TRUE(pPlain);
        for (const double factor : {std::ldexp(1.0, -60), 0.5, std::ldexp(1.0, 90)})
        {
            const std::shared_ptr<Mesh> pScaled = remesh(scaled(soup, factor), withLength(0.25 * factor));
            ASSERT_TRUE(pScaled);
            EXPECT_TRUE(getCorners(*pScaled) == scaled(getCorners(*pPlain), factor)) << factor;
        }
    }
}

class Recorder : public ProgressBase
{
public:
    void update(const std::string& name, double fraction) override
    {
        EXPECT_EQ(name, "Remesh");
        vFractions.push_back(fraction);
    }
    std::vector<double> vFractions;
};

// A length that is found can be tried again; the fraction never falls back.
TEST(Remesh, progressRisesToOne)
{
    for (const int maxTriangles : {100, 500000})
    {
        Recorder recorder;
        subscribe(&recorder);
        ASSERT_TRUE(remesh(makeTetrahedron(), withMost(maxTriangles)));
        EXPECT_GT(recorder.vFractions.size(), 10U);
        EXPECT_TRUE(std::is_sorted(recorder.vFractions.begin(), recorder.vFractions.end()));
        EXPECT_EQ(recorder.vFractions.back(), 1.0);
    }
}
} // namespace

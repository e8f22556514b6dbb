#include "remesh.h"
#include "checkMesh.h"

#include "geometry/tools.h"
#include "remesh/SoupRemesh.h"
#include "remesh/solidShapes.h"
#include "surface/HalfEdgeMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

using namespace TARN_ZEF;
using namespace ZEF_TESTS;

namespace
{
FlatSoup remeshFlat(const std::vector<Point3>& vTriCorners, const RemeshOptions& options,
                    RemeshReport& report)
{
    SoupRemesh soupRemesh(options);
    EXPECT_TRUE(soupRemesh.run(vTriCorners, [](double) {}));
    report = soupRemesh.getReport();
    return soupRemesh.getResult();
}

struct Measures
{
    double volume = 0.0;
    double area = 0.0;
    int euler = 0;
    int numBorder = 0;
};

Measures measure(const FlatSoup& flat, const HalfEdgeMesh& mesh)
{
    Measures m;
    std::vector<Point3> vLoose;
    for (const int v : flat.vCorners)
        vLoose.push_back(flat.vPoints[v]);
    m.volume = computeVolume(vLoose);
    for (std::size_t i = 0; i < vLoose.size(); i += 3)
        m.area += getAreaByCross(vLoose[i], vLoose[i + 1], vLoose[i + 2]);
    m.euler = mesh.getNumVertices() + mesh.getNumTriangles();
    mesh.forEachEdge(
        [&](int h)
        {
            --m.euler;
            m.numBorder += mesh.isBorder(h) ? 1 : 0;
        });
    return m;
}

// The part of a crease that edges of the mesh run along.
double coveredPart(const HalfEdgeMesh& mesh, const Point3& a, const Point3& b)
{
    const Vector3 ab = b - a;
    std::vector<std::pair<double, double>> vPieces;
    mesh.forEachEdge(
        [&](int h)
        {
            const Vector3 p = mesh.point(mesh.from(h)) - a;
            const Vector3 q = mesh.point(mesh.to(h)) - a;
            const double s = (p * ab) / ab.sqLength();
            const double t = (q * ab) / ab.sqLength();
            if (std::max((p + ab * -s).length(), (q + ab * -t).length()) < 1e-9)
                vPieces.emplace_back(std::clamp(std::min(s, t), 0.0, 1.0),
                                     std::clamp(std::max(s, t), 0.0, 1.0));
        });
    std::sort(vPieces.begin(), vPieces.end());
    double covered = 0.0;
    double end = 0.0;
    for (const auto& [from, to] : vPieces)
    {
        covered += std::max(0.0, to - std::max(from, end));
        end = std::max(end, to);
    }
    return covered;
}

void expectTrue(const SolidShape& shape, const FlatSoup& flat, const RemeshReport& report)
{
    HalfEdgeMesh mesh;
    ASSERT_TRUE(mesh.build(flat.vPoints, flat.vCorners));
    ASSERT_EQ(mesh.getNumVertices(), static_cast<int>(flat.vPoints.size())) << "a vertex with several fans";
    const Measures m = measure(flat, mesh);
    const double slack = shape.bExact ? 1e-12 : 0.02 * report.length * shape.area;
    // Within the tolerance a round of radius 0.5 loses up to twice that part of its girth.
    const double inexactArea = std::max(0.02, 2.0 * report.tolerance) * shape.area;
    EXPECT_EQ(report.numParts, shape.numParts);
    EXPECT_EQ(report.numCavities, shape.numCavities);
    EXPECT_EQ(report.numFarPlaces, 0);
    EXPECT_EQ(m.euler, shape.euler);
    EXPECT_EQ(m.numBorder == 0, shape.volume != 0.0);
    EXPECT_NEAR(shape.volume != 0.0 ? m.volume : 0.0, shape.volume, slack);
    EXPECT_NEAR(m.area, shape.area, shape.bExact ? 1e-12 * std::max(1.0, shape.area) : inexactArea);
    for (const auto& [a, b] : shape.vCreases)
        EXPECT_NEAR(coveredPart(mesh, a, b), 1.0, 1e-6);
}

constexpr double FOUND = RemeshOptions::FOUND;

TEST(Remesh, solidsKeepVolumeCreasesPartsAndHandlesWhateverTheirSoup)
{
    const std::vector<SolidShape> vShapes = makeSolidShapes();
    ASSERT_GE(vShapes.size(), 40U);
    for (std::size_t i = 0; i < vShapes.size(); ++i)
        for (const double factor : {FOUND, 0.25, 1.0, 5.0, 20.0})
            for (const bool bMessy : {false, true})
            {
                // Where many triangles come out, the harder soup of the two is enough, and at a quarter some shapes.
                if (factor < 1.0 && (!bMessy || (factor != FOUND && i % 4 != 0)))
                    continue;
                const SolidShape& shape = vShapes[i];
                SCOPED_TRACE(shape.name + ", " + std::to_string(factor) +
                             (bMessy ? " lengths, messy" : " lengths"));
                RemeshOptions options;
                if (factor != FOUND)
                    options.length = factor * shape.length;
                RemeshReport report;
                const FlatSoup flat = remeshFlat(bMessy ? messUp(shape.vTriCorners, static_cast<unsigned>(i))
                                                        : shape.vTriCorners,
                                                 options, report);
                expectTrue(shape, flat, report);
            }
}

TEST(Remesh, bodiesThatTouchHaveTheSameTrianglesInTheCommonFace)
{
    for (const SolidShape& shape : makeSolidShapes())
    {
        if (shape.name.rfind("stack", 0) != 0 && shape.name.rfind("assembly", 0) != 0)
            continue;
        SCOPED_TRACE(shape.name);
        RemeshOptions options;
        options.length = 0.4 * shape.length;
        RemeshReport report;
        const FlatSoup flat = remeshFlat(messUp(shape.vTriCorners, 1), options, report);
        expectTrue(shape, flat, report);
        const MeshCheck check = checkMesh(flat.vPoints, flat.vCorners);
        EXPECT_TRUE(check.bAllPairsJudged);
        EXPECT_EQ(check.numIntersections, 0U);
        EXPECT_GT(check.numDuplicates, 0U);
    }
}
} // namespace

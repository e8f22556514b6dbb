#include "finish/SmallHoles.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

namespace TARN_ZEF
{
namespace
{
constexpr int AROUND = 10;
constexpr int LENGTH = 4;

// Rings of ten vertices that get from one circle to another: a tube, a ring in a plane, or a cone in between.
HalfEdgeMesh makeRings(double firstRadius, double lastRadius, double height)
{
    std::vector<Point3> vPoints;
    for (int ring = 0; ring <= LENGTH; ++ring)
        for (int i = 0; i < AROUND; ++i)
        {
            const double share = static_cast<double>(ring) / LENGTH;
            const double radius = firstRadius + (lastRadius - firstRadius) * share;
            const double angle = 2.0 * std::numbers::pi * (i + 0.5 * ring) / AROUND;
            vPoints.emplace_back(radius * std::cos(angle), radius * std::sin(angle), height * share);
        }
    std::vector<int> vCorners;
    for (int ring = 0; ring < LENGTH; ++ring)
        for (int i = 0; i < AROUND; ++i)
        {
            const int a = ring * AROUND + i;
            const int b = ring * AROUND + (i + 1) % AROUND;
            const int c = a + AROUND;
            const int d = b + AROUND;
            vCorners.insert(vCorners.end(), {a, b, c, b, d, c});
        }
    HalfEdgeMesh mesh;
    EXPECT_TRUE(mesh.build(vPoints, vCorners));
    return mesh;
}

struct Case
{
    const char* name;
    double firstRadius;
    double lastRadius;
    double height;
    std::size_t numHoles; // of the two borders
};

// In a plane the inner border is a hole and the outer one the rim. A border of a cone becomes a hole where the
// cone is flatter than 30 degrees: its angles leave half a turn to straight ones there.
TEST(SmallHoles, holesCloseAndRimsAndTubesStay)
{
    for (const Case& test : {Case{"plane", 1.0, 4.0, 0.0, 1}, Case{"tube", 1.0, 1.0, 3.0, 0},
                             Case{"flat cone", 1.0, 4.0, 1.2, 1}, Case{"steep cone", 1.0, 2.0, 6.0, 0}})
    {
        HalfEdgeMesh mesh = makeRings(test.firstRadius, test.lastRadius, test.height);
        const int before = mesh.getNumTriangles();
        EXPECT_EQ(SmallHoles(mesh).close(AROUND - 1), 0U) << test.name;
        EXPECT_EQ(SmallHoles(mesh).close(AROUND), test.numHoles) << test.name;
        EXPECT_EQ(mesh.getNumTriangles(), before + static_cast<int>(test.numHoles) * (AROUND - 2))
            << test.name;
        EXPECT_EQ(mesh.getFault(), "") << test.name;
        // The inner circle, on which vertices come first.
        EXPECT_EQ(mesh.isBorderVertex(0), test.numHoles == 0) << test.name;
    }
}

} // namespace
} // namespace TARN_ZEF

#include "finish/NeedleRemoval.h"

#include "geometry/tools.h"
#include "helpers/squareMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <vector>

namespace TARN_ZEF
{
namespace
{
constexpr int SIZE = 12;

// Vertices close to the end of an edge, or at the middle of one and a little to the side where that is inside.
void addNeedles(HalfEdgeMesh& mesh, std::mt19937& rng)
{
    std::uniform_real_distribution<double> share(0.0, 1.0);
    for (int i = 0; i < 60; ++i)
    {
        const int t = std::uniform_int_distribution<int>(0, mesh.endTriangles() - 1)(rng);
        const int h = 4 * t + std::uniform_int_distribution<int>(0, 2)(rng);
        const Point3 from = mesh.point(mesh.from(h));
        const Vector3 way = mesh.point(mesh.to(h)) - from;
        const Vector3 aside = mesh.isBorder(h) ? Vector3() : (mesh.point(mesh.apex(h)) - from) * 0.01;
        (void)mesh.split(h, from + way * (share(rng) < 0.5 ? 0.02 : 0.5) + aside * share(rng));
    }
}

TEST(NeedleRemoval, aSquareFullOfNeedlesEndsFlatWholeAndWithoutThem)
{
    for (unsigned seed = 0; seed < 20; ++seed)
    {
        std::mt19937 rng(seed);
        HalfEdgeMesh mesh = makeSquareMesh(SIZE, [](int, int) { return 0.0; });
        addNeedles(mesh, rng);
        NeedleRemoval needles(mesh);
        EXPECT_GT(needles.run(), 0U);
        ASSERT_EQ(mesh.getFault(), "");
        double area = 0.0;
        for (int t = 0; t < mesh.endTriangles(); ++t)
        {
            if (!mesh.isAlive(t))
                continue;
            const Point3& a = mesh.point(mesh.from(4 * t));
            const Vector3 normal =
                crossProduct(mesh.point(mesh.to(4 * t)) - a, mesh.point(mesh.apex(4 * t)) - a);
            EXPECT_GT(normal.z(), 0.0) << "seed " << seed;
            area += 0.5 * normal.z();
            double smallest = 0.0;
            double largest = 0.0;
            getCornerAngles(a, mesh.point(mesh.to(4 * t)), mesh.point(mesh.apex(4 * t)), smallest, largest);
            EXPECT_GT(smallest, 6.99) << "seed " << seed;
        }
        EXPECT_TRUE(needles.getStubborn().empty());
        // Corners of the square may move by a hundredth of an edge; no more of it is lost.
        EXPECT_NEAR(area, SIZE * SIZE, 0.5);
    }
}

} // namespace
} // namespace TARN_ZEF

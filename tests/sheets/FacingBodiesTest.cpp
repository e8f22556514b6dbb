// Bodies whose walls and gaps are a few spacings wide, by random points at a spacing of 1.
#include "sheets/FacingBodies.h"

#include "core/ProgressScope.h"
#include "geometry/tools.h"
#include "judge/judgeMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

namespace TARN_ZEF
{
namespace
{
using Points = std::vector<Point3>;

class RandomPoints
{
public:
    // On the sides of a box, turned against the axes at the end.
    void addBox(const Point3& low, const Vector3& size)
    {
        const std::array<double, 3> from = {low.x(), low.y(), low.z()};
        const std::array<double, 3> extent = {size.x(), size.y(), size.z()};
        for (int axis = 0; axis < 3; ++axis)
            for (const double side : {0.0, 1.0})
            {
                const int right = (axis + 1) % 3;
                const int up = (axis + 2) % 3;
                const int num = static_cast<int>(std::lround(extent[right] * extent[up]));
                for (int i = 0; i < num; ++i)
                {
                    std::array<double, 3> p = from;
                    p[axis] += side * extent[axis];
                    p[right] += draw() * extent[right];
                    p[up] += draw() * extent[up];
                    vPoints.emplace_back(p[0], p[1], p[2]);
                }
            }
    }
    void addBall(double radius)
    {
        constexpr double PI = 3.14159265358979323846;
        const int num = static_cast<int>(4.0 * PI * radius * radius);
        for (int i = 0; i < num; ++i)
        {
            const double z = 2.0 * draw() - 1.0;
            const double angle = 2.0 * PI * draw();
            const double width = std::sqrt(1.0 - z * z);
            vPoints.emplace_back(radius * width * std::cos(angle), radius * width * std::sin(angle),
                                 radius * z);
        }
    }
    [[nodiscard]] Points getTurned() const
    {
        Points vTurned;
        for (const Point3& p : vPoints)
        {
            const double x = 0.8 * p.x() - 0.6 * p.y();
            const double y = 0.6 * p.x() + 0.8 * p.y();
            vTurned.emplace_back(0.96 * x - 0.28 * p.z(), y, 0.28 * x + 0.96 * p.z());
        }
        return vTurned;
    }

private:
    double draw() { return std::generate_canonical<double, 32>(random); }

    std::mt19937 random{5};
    Points vPoints;
};

double getVolume(const FacingBodies& bodies)
{
    const std::vector<int>& v = bodies.getCorners();
    const Point3& base = bodies.getVertices()[0];
    const auto way = [&](std::size_t i) { return bodies.getVertices()[v[i]] - base; };
    double sum = 0.0;
    for (std::size_t i = 0; i < v.size(); i += 3)
        sum += way(i) * crossProduct(way(i + 1), way(i + 2)) / 6.0;
    return sum;
}

Points makeCard()
{
    RandomPoints points;
    points.addBox({0, 0, 0}, {60, 40, 2.8});
    return points.getTurned();
}
} // namespace

TEST(FacingBodies, wallsAndGapsOfAFewSpacingsAreToldApart)
{
    RandomPoints plates;
    plates.addBox({0, 0, 0}, {40, 30, 3});
    plates.addBox({0, 0, 6}, {40, 30, 3});
    RandomPoints shell;
    shell.addBall(20.0);
    shell.addBall(16.0);
    struct Row
    {
        const char* name;
        Points vPoints;
        long long eulerNumber;
        std::size_t numPieces;
        double volume;
    };
    const double ofBalls = 4.0 / 3.0 * 3.14159265358979 * (20.0 * 20.0 * 20.0 - 16.0 * 16.0 * 16.0);
    for (const Row& row : {Row{"card", makeCard(), 2, 1, 60 * 40 * 2.8},
                           Row{"two plates", plates.getTurned(), 4, 2, 2.0 * 40 * 30 * 3},
                           Row{"shell", shell.getTurned(), 4, 2, ofBalls}})
    {
        SCOPED_TRACE(row.name);
        const ProgressScope progress("Bodies");
        FacingBodies bodies(row.vPoints, 0.6);
        ASSERT_TRUE(bodies.run());
        const MeshCheck check = judgeMesh(bodies.getVertices(), bodies.getCorners(), CheckOptions());
        EXPECT_TRUE(check.isClosed());
        EXPECT_TRUE(check.isManifold());
        EXPECT_TRUE(check.isOriented());
        EXPECT_EQ(check.eulerNumber, row.eulerNumber);
        EXPECT_EQ(check.numPieces, row.numPieces);
        // Above 0: outward, and inward round the cavity.
        EXPECT_NEAR(getVolume(bodies), row.volume, 0.03 * row.volume);
    }
}

TEST(FacingBodies, isTheSameAtAnyScaleAndInAnyOrder)
{
    const ProgressScope progress("Bodies");
    const Points vCard = makeCard();
    FacingBodies bodies(vCard, 0.6);
    ASSERT_TRUE(bodies.run());
    Points vShuffled = vCard;
    std::shuffle(vShuffled.begin(), vShuffled.end(), std::mt19937(7));
    FacingBodies shuffled(vShuffled, 0.6);
    ASSERT_TRUE(shuffled.run());
    EXPECT_TRUE(shuffled.getVertices() == bodies.getVertices());
    EXPECT_TRUE(shuffled.getCorners() == bodies.getCorners());
    for (const double scale : {0x1p-40, 0x1p30})
    {
        Points vScaled;
        for (const Point3& p : vCard)
            vScaled.emplace_back(scale * p.x(), scale * p.y(), scale * p.z());
        FacingBodies scaled(vScaled, scale * 0.6);
        ASSERT_TRUE(scaled.run());
        EXPECT_TRUE(scaled.getCorners() == bodies.getCorners());
        for (std::size_t i = 0; i < bodies.getVertices().size(); ++i)
        {
            const Point3& p = bodies.getVertices()[i];
            ASSERT_TRUE(scaled.getVertices()[i] == Point3(scale * p.x(), scale * p.y(), scale * p.z()));
        }
    }
}

TEST(FacingBodies, whatBoundsNothingGivesNothing)
{
    Points vSheet;
    Points vLine;
    for (int i = 0; i < 50; ++i)
        for (int k = 0; k < 50; ++k)
        {
            vSheet.emplace_back(i, k, 0.0);
            vLine.emplace_back(50.0 * i + k, 0.0, 0.0);
        }
    Points vDense = makeCard(); // but for one place
    for (int i = 0; i < 50'000; ++i)
        vDense.emplace_back(1e-5 * i, 0.0, 0.0);
    for (const Points& vPoints : {vSheet, vLine, vDense, Points(500, Point3(1, 2, 3)), Points()})
    {
        const ProgressScope progress("Bodies");
        FacingBodies bodies(vPoints, 1.0);
        EXPECT_FALSE(bodies.run());
        EXPECT_TRUE(bodies.getCorners().empty());
    }
    // A spacing that says nothing of the cloud.
    const Points vCard = makeCard();
    const ProgressScope progress("Bodies");
    FacingBodies bodies(vCard, 1e9);
    EXPECT_FALSE(bodies.run());
}

} // namespace TARN_ZEF

#include "checkMesh.h"
#include "finishSurface.h"
#include "helpers/evenBall.h"
#include "zef_api_functions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cfloat>
#include <cmath>
#include <random>

namespace TARN_ZEF
{
namespace
{
constexpr double STEP = 0.05;

// Turned against all axes.
Point3 turn(double x, double y, double z)
{
    return {0.36 * x + 0.48 * y - 0.8 * z, -0.8 * x + 0.6 * y, 0.48 * x + 0.64 * y + 0.6 * z};
}

// An upright prism of height 2 over a polygon, as jittered points on its sides.
struct Prism
{
    std::vector<std::array<double, 2>> vOutline; // counter-clockwise
    double noise = 0.0;                          // in spacings, across the sides

    [[nodiscard]] std::vector<Point3> makePoints() const
    {
        std::mt19937 rng(11);
        std::uniform_real_distribution<double> jitter(-0.3 * STEP, 0.3 * STEP);
        std::uniform_real_distribution<double> across(-noise * STEP, noise * STEP);
        std::vector<Point3> vPoints;
        for (std::size_t i = 0; i < vOutline.size(); ++i)
        {
            const auto& a = vOutline[i];
            const auto& b = vOutline[(i + 1) % vOutline.size()];
            const double length = std::hypot(b[0] - a[0], b[1] - a[1]);
            const std::array<double, 2> along = {(b[0] - a[0]) / length, (b[1] - a[1]) / length};
            for (double s = 0.5 * STEP; s < length; s += STEP)
                for (double z = -1.0 + 0.5 * STEP; z < 1.0; z += STEP)
                {
                    const double way = std::clamp(s + jitter(rng), 0.0, length);
                    const double off = across(rng);
                    vPoints.push_back(turn(a[0] + way * along[0] + off * along[1],
                                           a[1] + way * along[1] - off * along[0],
                                           std::clamp(z + jitter(rng), -1.0, 1.0)));
                }
        }
        for (double x = -1.0 + 0.5 * STEP; x < 1.0; x += STEP)
            for (double y = -1.0 + 0.5 * STEP; y < 1.0; y += STEP)
                for (const double z : {-1.0, 1.0})
                {
                    const double px = x + jitter(rng);
                    const double py = y + jitter(rng);
                    if (isInside(px, py))
                        vPoints.push_back(turn(px, py, z + across(rng)));
                }
        return vPoints;
    }

    [[nodiscard]] std::vector<Point3> sampleEdges() const
    {
        std::vector<Point3> vPoints;
        for (std::size_t i = 0; i < vOutline.size(); ++i)
        {
            const auto& a = vOutline[i];
            const auto& b = vOutline[(i + 1) % vOutline.size()];
            for (int k = 0; k <= 20; ++k)
            {
                const double s = 0.05 * k;
                for (const double z : {-1.0, 1.0})
                    vPoints.push_back(turn(a[0] + s * (b[0] - a[0]), a[1] + s * (b[1] - a[1]), z));
                vPoints.push_back(turn(a[0], a[1], 2.0 * s - 1.0));
            }
        }
        return vPoints;
    }

private:
    [[nodiscard]] bool isInside(double x, double y) const
    {
        for (std::size_t i = 0; i < vOutline.size(); ++i)
        {
            const auto& a = vOutline[i];
            const auto& b = vOutline[(i + 1) % vOutline.size()];
            if ((b[0] - a[0]) * (y - a[1]) < (b[1] - a[1]) * (x - a[0]))
                return false;
        }
        return true;
    }
};

// To the nearest edge: it is not enough that some triangle passes by.
double getDistance(const Mesh& mesh, const Point3& p)
{
    std::vector<Point3*> vCorners;
    mesh.getTriangles(vCorners);
    double least = DBL_MAX;
    for (std::size_t i = 0; i < vCorners.size(); ++i)
    {
        const Point3& a = *vCorners[i];
        const Vector3 edge = *vCorners[i % 3 == 2 ? i - 2 : i + 1] - a;
        const double share = std::clamp((p - a) * edge / edge.sqLength(), 0.0, 1.0);
        least = std::min(least, (p - (a + edge * share)).sqLength());
    }
    return std::sqrt(least);
}

// Share of the true edges that have an edge of the mesh within a tenth of a spacing and the noise.
double getShareMet(const Mesh& mesh, const Prism& prism)
{
    const std::vector<Point3> vSamples = prism.sampleEdges();
    const auto num = std::count_if(vSamples.begin(), vSamples.end(),
                                   [&](const Point3& p)
                                   { return getDistance(mesh, p) < (0.1 + 2.0 * prism.noise) * STEP; });
    return static_cast<double>(num) / static_cast<double>(vSamples.size());
}

TEST(CreaseMaker, edgesOfACubeAreMet)
{
    for (const double noise : {0.0, 0.03})
    {
        SCOPED_TRACE(noise);
        const Prism prism{{{-1.0, -1.0}, {1.0, -1.0}, {1.0, 1.0}, {-1.0, 1.0}}, noise};
        std::vector<Point3> vPoints = prism.makePoints();
        const std::shared_ptr<Mesh> pPlain = reconstruct_auto(vPoints, false, 1.0);
        FinishReport report;
        const std::shared_ptr<Mesh> pMesh = finishSurface(*pPlain, vPoints, FinishOptions(), &report);
        EXPECT_TRUE(checkMesh(*pMesh).isSound() && checkMesh(*pMesh).isClosed());
        EXPECT_GE(report.numCreaseCorners, 8U);
        EXPECT_GT(getShareMet(*pMesh, prism), 0.95);

        const std::shared_ptr<Mesh> pRound =
            finishSurface(*pPlain, vPoints, FinishOptions{.bKeepCreases = false}, &report);
        EXPECT_EQ(report.numCreaseEdges, 0U);
        EXPECT_LT(getShareMet(*pRound, prism), 0.5);
    }
}

// No noise looks like a crease.
TEST(CreaseMaker, aBallHasNone)
{
    for (const double noise : {0.0, 0.1, 0.5})
    {
        SCOPED_TRACE(noise);
        std::mt19937 rng(5);
        std::normal_distribution<double> off(0.0, 0.046); // the points lie so far apart
        std::vector<Point3> vPoints = makeEvenBall(6000, [&] { return 1.0 + noise * off(rng); });
        const std::shared_ptr<Mesh> pPlain = reconstruct_auto(vPoints, false, 1.0);
        FinishReport report;
        (void)finishSurface(*pPlain, vPoints, FinishOptions(), &report);
        EXPECT_EQ(report.numCreaseEdges, 0U);
    }
}

} // namespace
} // namespace TARN_ZEF

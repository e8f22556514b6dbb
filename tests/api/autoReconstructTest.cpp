// The choice from end to end: what comes out is the mesh of the chosen factor, and is never worse than plain defaults.
#include "zef.h"

#include "choice/countTrialFaults.h"
#include "core/zefRand.h"
#include "helpers/PipelineMesh.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace TARN_ZEF
{
namespace
{
struct FlatMesh
{
    std::vector<Point3> vPoints;
    std::vector<int> vCorners;
    bool operator==(const FlatMesh&) const = default;
};

FlatMesh flatten(const Mesh& mesh)
{
    FlatMesh flat;
    std::vector<Point3*> vVertices;
    mesh.getVertexIndexData(vVertices, flat.vCorners);
    for (const Point3* pVertex : vVertices)
        flat.vPoints.push_back(*pVertex);
    return flat;
}
} // namespace

TEST(AutoReconstruct, makesTheMeshOfItsChoiceAndNoWorseThanPlain)
{
    for (NamedCloud& cloud : getClouds())
    {
        SCOPED_TRACE(cloud.name);
        // What repair moves by chance goes on from call to call, so each starts anew.
        const ZefRandom start = threadRandom();
        const std::shared_ptr<Mesh> pPlain = reconstruct_auto(cloud.vPoints, false, 1.0);
        AutoReport report;
        threadRandom() = start;
        const std::shared_ptr<Mesh> pMesh = autoReconstruct(cloud.vPoints, AutoOptions(), &report);
        ASSERT_TRUE(pMesh && pPlain);
        ASSERT_FALSE(report.bByFacing);
        threadRandom() = start;
        EXPECT_TRUE(flatten(*pMesh) ==
                    flatten(*reconstruct_auto(cloud.vPoints, report.bSmooth, report.factor)));
        const MeshCheck plain = checkMesh(*pPlain);
        const MeshCheck chosen = checkMesh(*pMesh);
        EXPECT_LE(chosen.numBorderEdges, plain.numBorderEdges);
        EXPECT_LE(chosen.numBorderLoops, plain.numBorderLoops);
        EXPECT_LE(chosen.numNonManifoldEdges, plain.numNonManifoldEdges);
        EXPECT_LE(chosen.numPieces, plain.numPieces);
        EXPECT_EQ(report.vTrials.front().numBorderEdges, plain.numBorderEdges);
        EXPECT_EQ(report.cloud.spacing, estimateAvgSpacing(cloud.vPoints));
    }
}

TEST(AutoReconstruct, answersOddInputAsPlainDefaultsDo)
{
    std::vector<Point3> vNone;
    AutoReport report;
    EXPECT_EQ(autoReconstruct(vNone, AutoOptions(), &report), nullptr);
    EXPECT_TRUE(report.vTrials.empty());
    std::vector<Point3> vSame(100, Point3(1, 1, 1));
    EXPECT_THROW((void)autoReconstruct(vSame), ZefUnusablePoints);
    std::vector<Point3> vCloud = makeCloud(2000, 0.0, 0.0);
    EXPECT_THROW((void)autoReconstruct(vCloud, AutoOptions{.largestFactor = 0.5}), ZefBadArgument);
    const ZefRandom start = threadRandom();
    const std::shared_ptr<Mesh> pClean = autoReconstruct(vCloud);
    vCloud.emplace_back(0.0, std::numeric_limits<double>::quiet_NaN(), 0.0);
    threadRandom() = start;
    const std::shared_ptr<Mesh> pDirty = autoReconstruct(vCloud);
    ASSERT_TRUE(pClean && pDirty);
    EXPECT_TRUE(flatten(*pClean) == flatten(*pDirty));
}

// Random points on both sides and the rim of a card, at a spacing of 1: no cell tells its sides apart.
TEST(AutoReconstruct, tellsThinWallsApartWhereNoFactorDoes)
{
    std::mt19937 random(3);
    const auto draw = [&](double width) { return width * std::generate_canonical<double, 32>(random); };
    std::vector<Point3> vCloud;
    for (int i = 0; i < 24000; ++i)
        vCloud.emplace_back(draw(200.0), draw(60.0), i % 2 == 0 ? 0.0 : 2.8);
    for (int i = 0; i < 1120; ++i)
        vCloud.emplace_back(draw(200.0), i % 2 == 0 ? 0.0 : 60.0, draw(2.8));
    for (int i = 0; i < 336; ++i)
        vCloud.emplace_back(i % 2 == 0 ? 0.0 : 200.0, draw(60.0), draw(2.8));
    AutoReport report;
    const std::shared_ptr<Mesh> pMesh = autoReconstruct(vCloud, AutoOptions(), &report);
    ASSERT_TRUE(pMesh);
    EXPECT_TRUE(report.bByFacing);
    EXPECT_TRUE(report.vTrials.back().bByFacing);
    const MeshCheck check = checkMesh(*pMesh);
    EXPECT_TRUE(check.isClosed() && check.isEdgeManifold());
    EXPECT_EQ(check.eulerNumber, 2);
    AutoOptions options;
    options.bTellSheetsApart = false;
    const std::shared_ptr<Mesh> pPlain = autoReconstruct(vCloud, options, &report);
    ASSERT_TRUE(pPlain);
    EXPECT_FALSE(report.bByFacing);
    EXPECT_TRUE(flatten(*pPlain) == flatten(*reconstruct_auto(vCloud, false, 1.0)));
}

// A board of squares: its rim, a hole of one square, and a hole that touches it in a corner.
TEST(AutoReconstruct, holesAreShortBorders)
{
    constexpr int N = 9;
    std::vector<Point3> vPoints;
    std::vector<int> vCorners;
    for (int i = 0; i < N * N; ++i)
    {
        vPoints.emplace_back(i % N, i / N, 0.0);
        const bool bHole = i % N == i / N && (i / N == 3 || i / N == 4);
        if (i % N == N - 1 || i / N == N - 1 || bHole)
            continue;
        vCorners.insert(vCorners.end(), {i, i + 1, i + N + 1, i, i + N + 1, i + N});
    }
    AutoTrial trial;
    countTrialFaults(vPoints, vCorners, 24, trial);
    EXPECT_EQ(trial.numHoles, 1u);
    EXPECT_EQ(trial.numRims, 1u);
    EXPECT_EQ(trial.numNonManifoldVertices, 1u);
    EXPECT_EQ(trial.numBorderEdges, 40u);
    countTrialFaults(vPoints, vCorners, 32, trial);
    EXPECT_EQ(trial.numHoles, 2u);
    countTrialFaults(vPoints, vCorners, 7, trial);
    EXPECT_EQ(trial.numHoles, 0u);
}

} // namespace TARN_ZEF

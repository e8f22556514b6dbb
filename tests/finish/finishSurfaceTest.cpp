#include "finishSurface.h"

#include "ProgressBase.h"
#include "ZefRefusedException.h"
#include "checkMesh.h"
#include "core/Progress.h"
#include "finish/Finisher.h"
#include "geometry/tools.h"
#include "helpers/evenBall.h"
#include "helpers/finishedMeshes.h"
#include "parallel/WorkerPool.h"
#include "zef_api_functions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace TARN_ZEF
{
namespace
{
MeshCheck check(const FlatMesh& mesh)
{
    return checkMesh(mesh.vPoints, std::vector<int>(mesh.vCorners.begin(), mesh.vCorners.end()));
}

// A ball of radius 1, each point off by up to noise along the radius.
std::vector<Point3> makeBall(int num, double noise)
{
    std::mt19937 rng(5);
    std::uniform_real_distribution<double> length(1.0 - noise, 1.0 + noise);
    return makeEvenBall(num, [&] { return length(rng); });
}

// Mean distance of the vertices from a ball of radius 1.
double getMeanError(const Mesh& mesh)
{
    std::vector<Point3*> vVertices;
    mesh.getPoints(vVertices);
    double sum = 0.0;
    for (const Point3* pVertex : vVertices)
        sum += std::fabs((*pVertex - Point3()).length() - 1.0);
    return sum / static_cast<double>(vVertices.size());
}

struct HostileCase
{
    const char* name;
    double (*coordinate)(std::mt19937& rng);
};

// Whatever comes in, what goes out is sound, with a cloud of the same kind and without.
TEST(FinishSurface, hostileMeshesEndSound)
{
    const HostileCase cases[] = {
        {"a coarse lattice", [](std::mt19937& rng) { return static_cast<double>(rng() % 4); }},
        {"random", [](std::mt19937& rng) { return static_cast<double>(rng() % 1000) / 1000.0; }},
        {"all in one plane",
         [](std::mt19937& rng) { return rng() % 3 == 0 ? 0.0 : static_cast<double>(rng() % 9); }},
        {"huge", [](std::mt19937& rng) { return (static_cast<double>(rng() % 9) - 4.0) * 1e300; }},
        {"tiny beside large",
         [](std::mt19937& rng) { return rng() % 2 == 0 ? 1e-300 : static_cast<double>(rng() % 5); }},
        {"steps of the last bit", [](std::mt19937& rng)
         { return 1.0 + static_cast<double>(rng() % 4) * std::numeric_limits<double>::epsilon(); }},
        {"not finite",
         [](std::mt19937& rng) {
             return rng() % 9 == 0   ? std::nan("")
                    : rng() % 9 == 0 ? HUGE_VAL
                                     : static_cast<double>(rng() % 7);
         }},
    };
    for (const HostileCase& c : cases)
    {
        std::mt19937 rng(3);
        for (int i = 0; i < 40; ++i)
        {
            SCOPED_TRACE(std::string(c.name) + " " + std::to_string(i));
            FlatMesh mesh;
            const auto makePoint = [&]
            { return Point3(c.coordinate(rng), c.coordinate(rng), c.coordinate(rng)); };
            const std::size_t numPoints = 3 + rng() % 40;
            for (std::size_t k = 0; k < numPoints; ++k)
                mesh.vPoints.push_back(makePoint());
            const std::size_t numT = rng() % 100;
            for (std::size_t k = 0; k < 3 * numT; ++k)
                mesh.vCorners.push_back(static_cast<FlatMesh::Index>(rng() % numPoints));
            std::vector<Point3> vCloud;
            for (int k = 0; k < 60 * (i % 2); ++k)
                vCloud.push_back(makePoint());
            FinishReport report;
            const FinishOptions options;
            prepareProgress("Finish");
            Finisher(mesh, vCloud, options, report).run();
            finishProgress();
            EXPECT_TRUE(check(mesh).isSound());
        }
    }
}

TEST(FinishSurface, finishedMeshesOfAllKindsEndSound)
{
    for (const FinishedMesh& finished : finishedMeshes())
    {
        SCOPED_TRACE(finished.name);
        const std::shared_ptr<Mesh> pMesh = makeFinished(finished.source);
        FinishOptions options;
        options.bRoundToFloat = true;
        const std::shared_ptr<Mesh> pResult = finishSurface(*pMesh, options);
        EXPECT_TRUE(checkMesh(*pResult).isSound());
        std::vector<Point3*> vVertices;
        pResult->getPoints(vVertices);
        for (const Point3* pVertex : vVertices)
            EXPECT_EQ(static_cast<double>(static_cast<float>(pVertex->x())), pVertex->x());
        EXPECT_EQ(checkMesh(*pResult).isClosed(), checkMesh(*pMesh).isClosed());
    }
}

TEST(FinishSurface, aBallEndsEvenAndOnItsPoints)
{
    std::vector<Point3> vPoints = makeBall(6000, 0.0);
    const std::shared_ptr<Mesh> pPlain = reconstruct_auto(vPoints, false, 1.0);
    FinishReport report;
    const std::shared_ptr<Mesh> pMesh = finishSurface(*pPlain, vPoints, FinishOptions(), &report);
    const MeshCheck result = checkMesh(*pMesh);
    EXPECT_TRUE(result.isSound() && result.isClosed());
    EXPECT_EQ(result.eulerNumber, 2);
    EXPECT_EQ(report.numFoldT, 0U);
    std::vector<Point3*> vCorners;
    pMesh->getTriangles(vCorners);
    EXPECT_GT(computeVolume(vCorners), 0.99 * 4.18879);
    double sumAngles = 0.0;
    for (std::size_t i = 0; i < vCorners.size(); i += 3)
    {
        double smallest = 0.0;
        double largest = 0.0;
        getCornerAngles(*vCorners[i], *vCorners[i + 1], *vCorners[i + 2], smallest, largest);
        EXPECT_GT(smallest, 15.0);
        sumAngles += smallest;
    }
    EXPECT_GT(sumAngles / static_cast<double>(vCorners.size() / 3), 46.0);
    // Points lie 0.046 apart.
    EXPECT_LT(getMeanError(*pMesh), 0.0003);
}

// Averages the noise instead of following it, and the answer does not depend on the workers.
TEST(FinishSurface, noiseIsAveragedTheSameOnEveryNumberOfThreads)
{
    std::vector<Point3> vPoints = makeBall(6000, 0.01);
    const std::shared_ptr<Mesh> pPlain = reconstruct_auto(vPoints, false, 1.0);
    const int before = getNumThreads();
    setNumThreads(1);
    const std::shared_ptr<Mesh> pOne = finishSurface(*pPlain, vPoints);
    setNumThreads(3);
    const std::shared_ptr<Mesh> pThree = finishSurface(*pPlain, vPoints);
    setNumThreads(before);
    EXPECT_LT(getMeanError(*pOne), 0.5 * getMeanError(*pPlain));
    EXPECT_EQ(getCorners(*pOne), getCorners(*pThree));
}

// Often enough for a bar, never backwards, up to the end.
TEST(FinishSurface, aMeshHandedOverIsFreedAndFinishedAlike)
{
    std::vector<Point3> vPoints = makeBall(2000, 0.0);
    std::shared_ptr<Mesh> pMesh = reconstruct_auto(vPoints, false, 1.0);
    ASSERT_NE(pMesh, nullptr);
    const std::weak_ptr<Mesh> pOld = pMesh;
    const std::shared_ptr<Mesh> pKept = finishSurface(*pMesh, vPoints);
    const std::shared_ptr<Mesh> pFinished = finishSurface(std::move(pMesh), vPoints);
    EXPECT_TRUE(pOld.expired());
    EXPECT_EQ(getCorners(*pKept), getCorners(*pFinished));
    EXPECT_THROW((void)finishSurface(std::shared_ptr<Mesh>(), vPoints), ZefBadArgument);
}

TEST(FinishSurface, progressRisesToOne)
{
    struct Recorder : ProgressBase
    {
        void update(const std::string& name, double fraction) override
        {
            EXPECT_EQ(name, "Finish");
            vFractions.push_back(fraction);
        }
        std::vector<double> vFractions;
    };
    std::vector<Point3> vPoints = makeBall(6000, 0.0);
    const std::shared_ptr<Mesh> pPlain = reconstruct_auto(vPoints, false, 1.0);
    Recorder recorder;
    subscribe(&recorder);
    EXPECT_TRUE(checkMesh(*finishSurface(*pPlain, vPoints)).isSound());
    EXPECT_GT(recorder.vFractions.size(), 10U);
    EXPECT_LT(recorder.vFractions.front(), 0.2);
    EXPECT_TRUE(std::is_sorted(recorder.vFractions.begin(), recorder.vFractions.end()));
    EXPECT_EQ(recorder.vFractions.back(), 1.0);
    EXPECT_TRUE(ownsProgress());
}

TEST(FinishSurface, optionsOutOfRangeAreRefused)
{
    const std::shared_ptr<Mesh> pMesh = makeFinished(finishedMeshes().front().source);
    EXPECT_THROW((void)finishSurface(*pMesh, FinishOptions{.maxMove = 0.0}), ZefBugException);
    EXPECT_THROW((void)finishSurface(*pMesh, FinishOptions{.cellSize = -1.0}), ZefBugException);
    EXPECT_THROW((void)finishSurface(*pMesh, FinishOptions{.maxMove = std::nan("")}), ZefBugException);
}

} // namespace
} // namespace TARN_ZEF

// What calls tell of themselves: the books add up, each entry shows what happened, and nobody gets another's figures.
#include "zef.h"

#include "helpers/PipelineMesh.h"
#include "helpers/finishedMeshes.h"
#include "helpers/meshShapes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <random>
#include <thread>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace TARN_ZEF
{
namespace
{
using Points = std::vector<Point3>;

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();

// A noisy ball with unusable points among the others.
Points oddBall()
{
    Points cloud = makeCloud(4000, 0.0, 0.6);
    cloud.insert(cloud.begin() + 7, Point3(NaN, 0.0, 0.0));
    cloud.emplace_back(0.0, 0.0, std::numeric_limits<double>::infinity());
    return cloud;
}

// A box, a triangle without area, and one that is not finite.
Points oddSoup()
{
    Points soup = boxSoup({0.0, 0.0, 0.0}, {7.0, 3.0, 1.0});
    soup.insert(soup.end(), {{0.0, 0.0, 0.0}, {1.0, 0.0, 0.0}, {2.0, 0.0, 0.0}});
    soup.insert(soup.begin(), {{NaN, 0.0, 0.0}, {1.0, 0.0, 0.0}, {2.0, 1.0, 0.0}});
    return soup;
}

std::shared_ptr<Mesh> ballMesh()
{
    static Points cloud = makeCloud(4000, 0.0, 0.3);
    return reconstruct_auto(cloud, false, 1.0);
}

template <typename F>
CallReport reportOf(F call)
{
    CallReport report;
    const ReportScope scope(report);
    call();
    return report;
}

// The books as the header tells them, and the mesh by other means.
void expectSquare(const CallReport& report, const Mesh* pMesh)
{
    EXPECT_TRUE(report.bFinished);
    EXPECT_EQ(report.numUsedPoints + report.numNotFinite + report.numFlatCorners, report.numPoints);
    EXPECT_EQ(report.numPointCells + report.numFilledCells + report.numMovedCells,
              report.numCells + report.numRemovedCells);
    std::size_t numT = report.numRawT;
    for (const PassReport& pass : report.vPasses)
    {
        EXPECT_LE(pass.numKilledT, numT + pass.numAddedT) << pass.name;
        numT = numT + pass.numAddedT - pass.numKilledT;
    }
    EXPECT_EQ(numT, report.numT);
    double seconds = 0.0;
    std::size_t peak = 0;
    for (const StageReport& stage : report.vStages)
    {
        seconds += stage.seconds;
        peak = std::max(peak, stage.peakBytes);
    }
    EXPECT_NEAR(seconds, report.seconds, 1e-9);
    EXPECT_EQ(peak, report.peakBytes);
    if (pMesh == nullptr)
        return;
    EXPECT_EQ(report.numT, getCorners(*pMesh).size() / 3);
    EXPECT_EQ(report.numBorderLoops, checkMesh(*pMesh).numBorderLoops);
    EXPECT_EQ(report.eulerNumber, checkMesh(*pMesh).eulerNumber);
}

struct ReportCase
{
    const char* call;
    std::function<std::shared_ptr<Mesh>()> run;
    // That must not be 0.
    std::vector<std::size_t CallReport::*> vEntries;
};

std::vector<ReportCase> getCases()
{
    using R = CallReport;
    static Points cloud = oddBall();
    static Points soup = oddSoup();
    static const std::shared_ptr<Mesh> pBall = ballMesh();
    return {
        {"reconstruct_auto",
         [] { return reconstruct_auto(cloud, true, 1.1); },
         {&R::numNotFinite, &R::numFilledCells, &R::numMovedCells, &R::numRemovedCells,
          &R::numPiecesDropped}},
        {"reconstruct_abs",
         [] { return reconstruct_abs(cloud, false, 0.35); },
         {&R::numNotFinite, &R::numHolesClosed, &R::numBorderLoops, &R::numNonManifoldEdges}},
        {"autoReconstruct", [] { return autoReconstruct(cloud); }, {&R::numNotFinite, &R::numCells}},
        {"melt",
         [] { return melt(soup, 0.3, 30.0); },
         {&R::numNotFinite, &R::numFlatCorners, &R::numCells, &R::numRawT}},
        {"remesh", [] { return remesh(soup); }, {&R::numNotFinite, &R::numRawT}},
        {"finishSurface",
         [] { return finishSurface(*pBall, cloud); },
         {&R::numNotFinite, &R::numRawT, &R::numPieces}},
        {"fillHoles",
         []
         {
             RMeshSource ball = cubeSource(4, true);
             ball.vCorners.resize(ball.vCorners.size() - 6);
             const auto pBroken = makeFinished(ball);
             return fillHoles(*pBroken, findBorderLoops(*pBroken));
         },
         {&R::numHolesClosed, &R::numRawT}},
    };
}

std::vector<ReportCase> getImprovers()
{
    static std::shared_ptr<Mesh> pMesh;
    const auto with = [](auto improve)
    {
        return [improve]
        {
            pMesh = ballMesh();
            improve();
            return pMesh;
        };
    };
    using R = CallReport;
    return {
        {"reduce", with([] { reduce(pMesh, 2.0, 60.0, true); }), {&R::numRawT, &R::numT}},
        {"edgeFlips", with([] { edgeFlips(pMesh); }), {&R::numRawT}},
        {"edgeFlipsSimA", with([] { edgeFlipsSimA(pMesh); }), {&R::numRawT}},
        {"laplacianSmoothing", with([] { laplacianSmoothing(pMesh, 2); }), {&R::numRawT}},
    };
}
} // namespace

TEST(CallReport, booksAddUpAndEntriesTellWhatHappened)
{
    std::vector<ReportCase> vCases = getCases();
    for (const ReportCase& one : getImprovers())
        vCases.push_back(one);
    for (const ReportCase& one : vCases)
    {
        SCOPED_TRACE(one.call);
        std::shared_ptr<Mesh> pMesh;
        const CallReport report = reportOf([&] { pMesh = one.run(); });
        ASSERT_TRUE(pMesh);
        EXPECT_EQ(report.call, one.call);
        expectSquare(report, pMesh.get());
        for (std::size_t i = 0; i < one.vEntries.size(); ++i)
            EXPECT_GT(report.*one.vEntries[i], 0u) << "entry " << i;
    }
}

TEST(CallReport, pointsOfASoupAreItsCells)
{
    Points soup = oddSoup();
    Points samples;
    const CallReport report = reportOf([&] { toCloud(soup, 0.3, 30.0, samples); });
    expectSquare(report, nullptr);
    EXPECT_EQ(report.numCells, samples.size());
    EXPECT_EQ(report.numFlatCorners, 3u);
    EXPECT_EQ(report.usedSpacing, 0.3);
    // 7 / 0.3 and the frame of nine cells need 33 of them.
    EXPECT_EQ(report.latticeBits, 6);
}

TEST(CallReport, aChoiceTellsOfItsMeshAndOfTheWayThere)
{
    // At random, so that factor 1 leaves holes.
    std::mt19937 random(1);
    Points cloud;
    for (int i = 0; i < 6000; ++i)
    {
        const auto draw = [&] { return std::generate_canonical<double, 32>(random) - 0.5; };
        const Point3 place(draw(), draw(), draw());
        const double length = Vector3(place.x(), place.y(), place.z()).length();
        cloud.emplace_back(place.x() / length, place.y() / length, place.z() / length);
    }
    AutoReport choice;
    const CallReport report = reportOf([&] { (void)autoReconstruct(cloud, AutoOptions(), &choice); });
    ASSERT_GT(choice.vTrials.size(), 1u); // or there was no choice
    const CallReport alone = reportOf([&] { (void)reconstruct_auto(cloud, choice.bSmooth, choice.factor); });
    EXPECT_EQ(report.numCells, alone.numCells);
    EXPECT_EQ(report.usedSpacing, alone.usedSpacing);
    EXPECT_EQ(report.numRawT, alone.numRawT);
    EXPECT_GT(report.seconds, alone.seconds);
    expectSquare(report, nullptr);
}

TEST(CallReport, aCallThatFailsTellsHowFarItCame)
{
    Points one(5, Point3(1.0, 1.0, 1.0));
    CallReport report;
    const ReportScope scope(report);
    EXPECT_THROW((void)reconstruct_auto(one, false, 1.0), ZefRefusedException);
    EXPECT_EQ(report.call, "reconstruct_auto");
    EXPECT_FALSE(report.bFinished);
    EXPECT_EQ(report.numPoints, 5u);
    // The next one starts it afresh.
    Points cloud = makeCloud(500, 0.0, 0.0);
    (void)reconstruct_auto(cloud, false, 1.0);
    EXPECT_EQ(report.numPoints, 500u);
    expectSquare(report, nullptr);
}

TEST(CallReport, innerScopesTakeOverAndCallsOutsideLeaveItAlone)
{
    Points small = makeCloud(500, 0.0, 0.0);
    Points large = makeCloud(900, 0.0, 0.0);
    CallReport outer;
    CallReport inner;
    {
        const ReportScope scope(outer);
        (void)reconstruct_auto(large, false, 1.0);
        {
            const ReportScope innerScope(inner);
            (void)reconstruct_auto(small, false, 1.0);
        }
    }
    (void)reconstruct_auto(small, false, 1.0);
    EXPECT_EQ(outer.numPoints, 900u);
    EXPECT_EQ(inner.numPoints, 500u);
}

TEST(CallReport, threadsDoNotMix)
{
    std::vector<CallReport> vAlone(4);
    std::vector<CallReport> vTogether(4);
    const auto run = [](std::size_t i, CallReport& report)
    {
        Points cloud = makeCloud(1000 + 300 * i, 0.0, 0.3);
        const ReportScope scope(report);
        for (int k = 0; k < 3; ++k)
            (void)reconstruct_auto(cloud, i % 2 == 1, 1.0);
    };
    std::vector<std::thread> vThreads;
    for (std::size_t i = 0; i < vTogether.size(); ++i)
        vThreads.emplace_back(run, i, std::ref(vTogether[i]));
    for (std::thread& thread : vThreads)
        thread.join();
    for (std::size_t i = 0; i < vAlone.size(); ++i)
    {
        run(i, vAlone[i]);
        expectSquare(vTogether[i], nullptr);
        EXPECT_EQ(vTogether[i].numCells, vAlone[i].numCells);
        EXPECT_EQ(vTogether[i].numFilledCells, vAlone[i].numFilledCells);
        EXPECT_EQ(vTogether[i].numPiecesDropped, vAlone[i].numPiecesDropped);
        ASSERT_EQ(vTogether[i].vPasses.size(), vAlone[i].vPasses.size());
        for (std::size_t k = 0; k < vAlone[i].vPasses.size(); ++k)
            EXPECT_EQ(vTogether[i].vPasses[k].numKilledT, vAlone[i].vPasses[k].numKilledT);
    }
}

#if defined(__GLIBC__) && !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__)
TEST(CallReport, memoryGoesToItsStage)
{
    Points cloud = makeCloud(300000, 0.0, 0.0);
    malloc_trim(0); // what earlier calls have freed must not hide what this one takes
    const CallReport report = reportOf([&] { (void)reconstruct_auto(cloud, false, 1.0); });
    const auto peakOf = [&](const char* name)
    {
        const auto it = std::find_if(report.vStages.begin(), report.vStages.end(),
                                     [name](const StageReport& stage) { return stage.name == name; });
        return it != report.vStages.end() ? it->peakBytes : 0;
    };
    EXPECT_GT(peakOf("extraction"), peakOf("spacing"));
    // A copy of the points, and less than all that the call could ever hold.
    EXPECT_GT(report.peakBytes, report.bytesAtStart + 24 * cloud.size());
    EXPECT_LT(report.peakBytes, report.bytesAtStart + 2000 * cloud.size());
}
#endif

} // namespace TARN_ZEF

#include "core/Progress.h"
#include "core/zefRand.h"
#include "helpers/StreamCapture.h"
#include "helpers/TempFile.h"
#include "helpers/meshShapes.h"
#include "intake/CloudMgr.h"
#include "intake/Smooth.h"
#include "parallel/WorkerPool.h"
#include "zef_api_functions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <map>
#include <string>
#include <vector>

namespace TARN_ZEF
{
namespace
{
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double INF = std::numeric_limits<double>::infinity();

// All calls of the intake need a tree.
class CloudIntake : public ::testing::Test
{
protected:
    CloudIntake() { prepareProgress("Reconstruct"); }
    ~CloudIntake() override { getRootProgress()->reset(); }
};

// On the plane that is spanned by two vectors at right angles of the given length.
std::vector<Point3> makeGrid(int num, const Vector3& u, const Vector3& v)
{
    std::vector<Point3> vPoints;
    for (int i = 0; i < num; ++i)
        for (int k = 0; k < num; ++k)
            vPoints.push_back(Point3(100.0, 200.0, -300.0) + u * i + v * k);
    return vPoints;
}

std::vector<Point3> makeRandomSheet(int num, double size, double noise)
{
    ZefRandom random(11);
    const auto draw = [&] { return (random.next() * 32768.0 + random.next()) / (32768.0 * 32768.0); };
    std::vector<Point3> v;
    for (int i = 0; i < num; ++i)
    {
        const double x = size * draw();
        const double y = size * draw();
        v.emplace_back(x, y, 0.1 * size * std::sin(6.0 * x / size) + noise * draw());
    }
    return v;
}

// What the intake makes of points: the cells and their points.
std::map<u64, Point3> takeIn(const std::vector<Point3>& vPoints, double spacingAbs, bool bMelt, bool bSmooth)
{
    CloudMgr mgr;
    mgr.addPoints(vPoints, spacingAbs, 1.0, bMelt, 20.0, bSmooth);
    std::vector<Bundle*> vBundles;
    Calc* pCalc = nullptr;
    mgr.getBundles(vBundles, pCalc);
    std::map<u64, Point3> mResult;
    u64 previous = 0;
    for (const Bundle* pBundle : vBundles)
    {
        EXPECT_GT(pBundle->ccd, previous);
        previous = pBundle->ccd;
        mResult.emplace(pBundle->ccd, *pBundle->pPoint);
    }
    return mResult;
}
} // namespace

TEST_F(CloudIntake, DetectsTheSpacingOfGrids)
{
    const Vector3 tilted1(0.8, 0.36, 0.48), tilted2(-0.6, 0.48, 0.64);
    for (const int num : {20, 50, 200, 400})
        for (const double step : {1e-3, 1.0, 700.0})
            for (const bool bTilted : {false, true})
            {
                SCOPED_TRACE(std::to_string(num) + " * " + std::to_string(step));
                const Vector3 u = (bTilted ? tilted1 : Vector3(1.0, 0.0, 0.0)) * step;
                const Vector3 v = (bTilted ? tilted2 : Vector3(0.0, 1.0, 0.0)) * step;
                Cloud cloud("grid", -1.0, 2.0, false);
                cloud.setPoints(makeGrid(num, u, v));
                cloud.estimateResolution();
                EXPECT_GT(cloud.getSpacing(), 0.95 * step);
                EXPECT_LT(cloud.getSpacing(), 1.35 * step);
                EXPECT_EQ(cloud.getUsedSpacing(), 2.0 * cloud.getSpacing());
            }
}

TEST_F(CloudIntake, LatticeHoldsExtentAndFrame)
{
    const struct
    {
        double extent, spacing;
        int numLevels;
    } rows[] = {{100.0, 1.0, 7}, {118.0, 1.0, 7}, {119.0, 1.0, 8}, {0.0, 1.0, 4}, {1.0, 1.0 / (1 << 20), 21}};
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.extent);
        Cloud cloud("pair", row.spacing, -1.0, false);
        const Point3 low(-5.0, 7.0, 9.0);
        cloud.setPoints({low, low + Vector3(0.0, row.extent, 0.0)});
        cloud.estimateResolution();
        cloud.createCalc();
        EXPECT_EQ(cloud.getSpacing(), -1.0);
        EXPECT_EQ(cloud.getCalc()->getNumLevels(), row.numLevels);
        EXPECT_EQ(cloud.getCalc()->getCellSizeX(), row.spacing);
        // 4.5 cells of frame: the lowest point stands in the middle of cell 4.
        EXPECT_EQ(cloud.getCalc()->getRCD(cloud.getFrame().enter(low)), makeRCD(4, 4, 4));
    }
}

TEST_F(CloudIntake, RefusesWhatHasNoLattice)
{
    const Point3 a(1.0, 2.0, 3.0);
    const std::vector<Point3> vGrid = makeGrid(10, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0});
    const struct
    {
        const char* name;
        std::vector<Point3> vPoints;
        double spacingAbs, spacingFactor;
        bool bMelt;
        const char* condition;
    } rows[] = {
        {"identical points", {a, a, a}, -1.0, 1.0, false, "usedSpacing>0"},
        {"spacing not a number", vGrid, NOT_A_NUMBER, -1.0, false, "usedSpacing>0"},
        {"infinite spacing", vGrid, INF, -1.0, false, ""},
        {"spacing too fine", vGrid, 1e-6, -1.0, false, "numCReal>=numReqC"},
        {"infinite extent", {{-1e308, 0, 0}, {1e308, 0, 0}}, 1.0, -1.0, false, "numCReal>=numReqC"},
        {"infinite extent, no spacing",
         {{-1e308, 0, 0}, {1e308, 0, 0}, {5, 0, 0}},
         -1.0,
         1.0,
         false,
         "!vDiffLevels.empty()"},
        {"huge extent", {{0, 0, 0}, {1e308, 0, 0}, {1e307, 0, 0}}, -1.0, 1.0, false, ""},
        {"not whole triangles", {a, a, a, a}, 1.0, -1.0, true, "!bMelt || v.size() % TRIANGLE_CORNERS == 0"},
    };
    for (const auto& row : rows)
    {
        SCOPED_TRACE(row.name);
        const StreamCapture out;
        CloudMgr mgr;
        EXPECT_THROW(mgr.addPoints(row.vPoints, row.spacingAbs, row.spacingFactor, row.bMelt, 20.0, false),
                     ZefBugException);
        EXPECT_TRUE(out.contains(row.condition)) << out.text();
    }
}

TEST_F(CloudIntake, LeavesNonFinitePointsOut)
{
    const std::vector<Point3> vSheet = makeRandomSheet(2000, 1000.0, 3.0);
    std::vector<Point3> vSpoilt = vSheet;
    vSpoilt.insert(vSpoilt.begin(), {NOT_A_NUMBER, 0.0, 0.0});
    vSpoilt.insert(vSpoilt.begin() + 1000, {0.0, INF, 0.0});
    vSpoilt.emplace_back(0.0, 0.0, -INF);
    const std::vector<Point3> vBox = boxSoup({}, {1000.0, 1000.0, 1000.0});
    std::vector<Point3> vSpoiltBox = vBox;
    vSpoiltBox.insert(vSpoiltBox.begin() + 6, {{0, 0, 0}, {NOT_A_NUMBER, 0, 0}, {5e5, 0, 0}});

    const StreamCapture out;
    const auto mSheet = takeIn(vSpoilt, -1.0, false, false);
    EXPECT_TRUE(out.contains("Skipped 3 non-finite points"));
    EXPECT_EQ(mSheet, takeIn(vSheet, -1.0, false, false));
    EXPECT_EQ(takeIn(vSpoiltBox, 40.0, true, false), takeIn(vBox, 40.0, true, false));
    EXPECT_TRUE(out.contains("Skipped 1 non-finite triangles"));
    EXPECT_FALSE(mSheet.empty());
}

TEST_F(CloudIntake, EmptyInputGivesNoLattice)
{
    for (const bool bMelt : {false, true})
        for (const std::vector<Point3>& v :
             {std::vector<Point3>(), std::vector<Point3>(3, {NOT_A_NUMBER, 0, 0})})
        {
            const StreamCapture out;
            CloudMgr mgr;
            EXPECT_EQ(mgr.addPoints(v, -1.0, 1.0, bMelt, 20.0, false), -1.0);
            EXPECT_TRUE(out.contains("Nothing to do for cloud inputPointsViaMemory"));
            std::vector<Bundle*> vBundles;
            Calc* pCalc = mgr.getClouds()[0]->getCalc();
            mgr.getBundles(vBundles, pCalc);
            EXPECT_EQ(pCalc, nullptr);
            EXPECT_TRUE(vBundles.empty());
        }
    std::vector<std::pair<u64, u64>> v;
    EXPECT_THROW(CloudMgr().getFeatures(v), ZefBugException);
}

// Judge: the rule for one node after the other, in maps.
TEST_F(CloudIntake, BundlesFollowFromTheNodes)
{
    for (const bool bSmooth : {false, true})
    {
        const std::vector<Point3> vPoints = makeRandomSheet(4000, 2000.0, 60.0);
        CloudMgr mgr;
        mgr.addPoints(vPoints, -1.0, 1.0, false, 361.0, bSmooth);
        std::vector<Bundle*> vBundles;
        Calc* pCalc = nullptr;
        mgr.getBundles(vBundles, pCalc);
        Smooth smooth(vPoints, pCalc);
        smooth.run(bSmooth);
        std::map<std::pair<u64, std::uint32_t>, std::size_t> mNodes;
        for (std::size_t i = 0; i < smooth.getNodes().size(); ++i)
            mNodes.emplace(
                std::pair(pCalc->getCCD(smooth.getNodes()[i].getPoint()), smooth.getNodes()[i].getNumber()),
                i);
        std::map<u64, Point3> mExpected;
        u64 previous = ~u64{0};
        int numProjected = 0;
        int numFillers = 0;
        for (const auto& [cellAndNumber, i] : mNodes)
        {
            const u64 ccd = cellAndNumber.first;
            const SNode& node = smooth.getNodes()[i];
            const bool bFiller = node.getNumPoints() == SNode::GAP_FILLER;
            const bool bProject = !bFiller && smooth.getLinks(i).size() > 7 && !node.isCrease();
            if (ccd != previous && node.hasPlane())
            {
                const Point3 mid = pCalc->getMid(ccd);
                const Point3 p = bFiller    ? smooth.seatOnSheet(i, mid)
                                 : bProject ? node.projection(mid)
                                            : node.getPoint();
                mExpected.emplace(bFiller ? ccd : pCalc->getCCD(p), p);
                numFillers += bFiller ? 1 : 0;
                numProjected += bProject ? 1 : 0;
            }
            previous = ccd;
        }
        EXPECT_GT(numProjected, 100);
        EXPECT_GT(numFillers, 20);
        EXPECT_EQ(takeIn(vPoints, -1.0, false, bSmooth), mExpected);
    }
}

TEST_F(CloudIntake, ResultIsTheSameForEveryNumberOfThreads)
{
    const int numThreads = getNumThreads();
    const std::vector<Point3> vPoints = makeRandomSheet(60000, 5000.0, 30.0);
    setNumThreads(1);
    const auto mOne = takeIn(vPoints, -1.0, false, true);
    for (const int num : {2, 3, 8})
    {
        setNumThreads(num);
        EXPECT_EQ(takeIn(vPoints, -1.0, false, true), mOne) << num;
    }
    setNumThreads(numThreads);
}

TEST_F(CloudIntake, WeldsByExactCoordinates)
{
    std::vector<Point3> vBox = boxSoup({}, {1000.0, 1000.0, 1000.0});
    const auto countBorders = [](const std::vector<Point3>& v)
    {
        CloudMgr mgr;
        EXPECT_EQ(mgr.addPoints(v, 40.0, -1.0, true, 20.0, false), -1.0);
        std::vector<std::pair<u64, u64>> vBorders;
        mgr.getBorders(vBorders);
        return vBorders.size();
    };
    EXPECT_EQ(countBorders(vBox), 0u);
    vBox[0] = {-0.0, 0.0, -0.0};
    EXPECT_EQ(countBorders(vBox), 0u);
    vBox[0] = {std::numeric_limits<double>::denorm_min(), 0.0, 0.0};
    EXPECT_GT(countBorders(vBox), 0u);
}

TEST_F(CloudIntake, FilesGiveWhatTheirPointsGive)
{
    std::vector<Point3> vPoints = makeRandomSheet(1500, 1000.0, 3.0);
    vPoints.emplace_back(0.0, NOT_A_NUMBER, 0.0);
    const StreamCapture out;
    const TempFile file(".bin");
    ASSERT_TRUE(writePoints_BIN(file.c_str(), vPoints));
    CloudMgr mgr;
    mgr.readFiles({file.path}, -1.0, 1.5, false, false);
    CloudMgr mgrOfPoints;
    mgrOfPoints.addPoints(vPoints, -1.0, 1.5, false, 361.0, false);
    EXPECT_EQ(mgr.getClouds()[0]->getNumInputPoints(), 1500u);
    EXPECT_EQ(mgr.getClouds()[0]->getUsedSpacing(), mgrOfPoints.getClouds()[0]->getUsedSpacing());

    for (const std::vector<std::string>& vFiles : {std::vector<std::string>{"a.xyz", "b.xyz"}, {"a.stl"}})
        EXPECT_THROW(CloudMgr().readFiles(vFiles, -1.0, 1.0, false, false), ZefBugException);
    EXPECT_THROW(CloudMgr().readFiles({"a.stl"}, -1.0, 1.0, true, false), ZefBugException);
    EXPECT_NO_THROW(CloudMgr().readFiles({"/no such.xyz"}, -1.0, 1.0, false, false));
}

} // namespace TARN_ZEF

// Whatever comes in, a call ends in a sound mesh, in nothing with a reason, or in a refusal that says why; and none
// changes what the next one gives.
#include "zef.h"

#include "helpers/meshHash.h"
#include "helpers/oddInput.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <map>
#include <numeric>
#include <random>

namespace TARN_ZEF
{
namespace
{
using Points = std::vector<Point3>;

std::string describe(const MeshCheck& check)
{
    return std::to_string(check.numTriangles) + " triangles, flat " + std::to_string(check.numFlat) +
           ", not finite " + std::to_string(check.numNotFinite) + ", copies " +
           std::to_string(check.numDuplicates) + ", edges " + std::to_string(check.numNonManifoldEdges) +
           ", vertices " + std::to_string(check.numNonManifoldVertices) + ", facing " +
           std::to_string(check.numDisagreeingEdges) + ", intersections " +
           std::to_string(check.numIntersections);
}

// Counts what the library has to say for the time of a test.
class OddInputCalls : public ::testing::Test
{
protected:
    OddInputCalls()
    {
        setMessageReceiver([this](const Message&) { ++numMessages; });
    }
    ~OddInputCalls() override { setMessageReceiver(nullptr); }

    // A hash of the result; 0 for a refusal.
    std::uint64_t run(const char* what, const std::function<std::shared_ptr<Mesh>()>& call,
                      const std::function<void(const std::shared_ptr<Mesh>&)>& use)
    {
        SCOPED_TRACE(what);
        const int numBefore = numMessages;
        try
        {
            const std::shared_ptr<Mesh> pMesh = call();
            const std::uint64_t hash = getHash(pMesh);
            if (pMesh == nullptr)
                EXPECT_GT(numMessages, numBefore) << "nothing, and no reason";
            else
                use(pMesh);
            return hash * 31 + getHash(pMesh);
        }
        catch (const ZefRefusedException& e)
        {
            EXPECT_GT(std::string(e.what()).size(), 10U);
        }
        catch (const std::exception& e)
        {
            ADD_FAILURE() << e.what();
        }
        return 0;
    }

    static void expectSound(const std::shared_ptr<Mesh>& pMesh)
    {
        const MeshCheck check = checkMesh(*pMesh);
        EXPECT_TRUE(check.isSound()) << describe(check);
    }

    // A surface without faults of its connections; where the soup crosses or overlaps itself, so does it, until it is
    // finished.
    static void expectManifold(const std::shared_ptr<Mesh>& pMesh)
    {
        const MeshCheck check = checkMesh(*pMesh);
        EXPECT_TRUE(check.isManifold() && check.isOriented()) << describe(check);
        EXPECT_EQ(check.numNotFinite + check.numFlat, 0U) << describe(check);
        if (const std::shared_ptr<Mesh> pDone = finishSurface(*pMesh))
            expectSound(pDone);
    }

    // Sound once finished, and still after the improvements, which must do with the unfinished mesh.
    static void finishAndImprove(const std::shared_ptr<Mesh>& pMesh, const Points& cloud)
    {
        const auto finish = [&]
        {
            if (const std::shared_ptr<Mesh> pDone = finishSurface(*pMesh, cloud))
                expectSound(pDone);
        };
        finish();
        edgeFlips(pMesh);
        static_cast<void>(reduce(pMesh, 2.0 * pMesh->getAverageEdgeLength(), 20.0, true));
        laplacianSmoothing(pMesh, 2);
        finish();
    }

    std::uint64_t runCloud(const Points& points)
    {
        Points v = points;
        const auto finish = [&](const std::shared_ptr<Mesh>& pMesh) { finishAndImprove(pMesh, points); };
        std::uint64_t hash = run(
            "reconstruct", [&] { return reconstruct_auto(v, false, 1.2); }, finish);
        hash = 31 * hash + run(
                               "smoothed", [&] { return reconstruct_auto(v, true, 1.5); }, finish);
        hash = 31 * hash + run(
                               "chosen", [&] { return autoReconstruct(v); }, finish);
        return hash;
    }

    std::uint64_t runSoup(const Points& soup)
    {
        Points v = soup;
        const double spacing = getSpacing(soup);
        const auto finish = [](const std::shared_ptr<Mesh>& pMesh) { finishAndImprove(pMesh, {}); };
        std::uint64_t hash = run(
            "melt", [&] { return melt(v, spacing, 30.0); }, finish);
        RemeshOptions options;
        options.maxTriangles = 4000;
        hash = 31 * hash + run(
                               "remesh", [&] { return remesh(soup, options); }, expectManifold);
        return hash;
    }

    // Twice in an order of chance: the same each time.
    template <typename F>
    void runAll(const std::vector<OddInput>& vInputs, const F& f)
    {
        std::map<std::string, std::uint64_t> mFirst;
        std::vector<std::size_t> vOrder(vInputs.size());
        std::iota(vOrder.begin(), vOrder.end(), std::size_t{0});
        std::mt19937 rng(11);
        for (int pass = 0; pass < 2; ++pass)
        {
            for (const std::size_t i : vOrder)
            {
                SCOPED_TRACE(vInputs[i].name);
                const std::uint64_t hash = f(vInputs[i].vPoints);
                EXPECT_EQ(mFirst.emplace(vInputs[i].name, hash).first->second, hash);
            }
            std::shuffle(vOrder.begin(), vOrder.end(), rng);
        }
        EXPECT_EQ(mFirst.size(), vInputs.size()) << "two of one name";
    }

private:
    // A sixteenth of the extent of what is finite.
    static double getSpacing(const Points& soup)
    {
        double largest = 0.0;
        for (const Point3& p : soup)
            for (const double c : {p.x(), p.y(), p.z()})
                if (std::isfinite(c))
                    largest = std::max(largest, std::fabs(c));
        return largest > 0.0 ? largest / 16.0 : 1.0;
    }

    int numMessages = 0;
};

TEST_F(OddInputCalls, oddCloudsEndWell)
{
    const std::vector<OddInput> vClouds = makeOddClouds();
    EXPECT_GE(vClouds.size(), 60U);
    runAll(vClouds, [this](const Points& v) { return runCloud(v); });
}

TEST_F(OddInputCalls, aPointThatLeavesNoSurfaceIsNamed)
{
    std::mt19937 rng(3);
    std::uniform_real_distribution<double> unit(0.0, 1.0);
    Points cloud;
    for (int i = 0; i < 1000; ++i)
        cloud.emplace_back(unit(rng), unit(rng), 7.0);
    cloud.emplace_back(0.5, -1e12, 7.0);
    std::string told;
    setMessageReceiver([&told](const Message& message)
                       { told += message.label + ": " + message.text + "\n"; });
    EXPECT_EQ(reconstruct_auto(cloud, false, 1.2), nullptr);
    EXPECT_NE(told.find("1 of 1001 points lie far from all others"), std::string::npos) << told;
    EXPECT_NE(told.find("0.5, -1e+12, 7"), std::string::npos) << told;
    EXPECT_EQ(told.find("Hal::"), std::string::npos) << told;
}

// What a reconstruction gives that finds nothing, handed on untested.
TEST_F(OddInputCalls, noMeshIsRefusedByEveryCallOnOne)
{
    const std::map<std::string, std::function<void(const std::shared_ptr<Mesh>&)>> mCalls = {
        {"reduce", [](const auto& pMesh) { static_cast<void>(reduce(pMesh, 1.0, 10.0)); }},
        {"reduce, keeping the topology",
         [](const auto& pMesh) { static_cast<void>(reduce(pMesh, 1.0, 10.0, true)); }},
        {"edgeFlips", [](const auto& pMesh) { edgeFlips(pMesh); }},
        {"edgeFlipsSimA", [](const auto& pMesh) { edgeFlipsSimA(pMesh); }},
        {"laplacianSmoothing", [](const auto& pMesh) { laplacianSmoothing(pMesh, 1); }},
        {"finishSurface", [](const auto& pMesh) { static_cast<void>(finishSurface(pMesh, Points())); }},
        {"findHoles", [](const auto& pMesh) { findHoles(pMesh); }},
        {"writeMesh_auto",
         [](const auto& pMesh) { static_cast<void>(writeMesh_auto("none.ply", pMesh, true)); }},
    };
    for (const auto& [name, call] : mCalls)
        try
        {
            call(nullptr);
            ADD_FAILURE() << name;
        }
        catch (const ZefBadArgument& e)
        {
            EXPECT_NE(std::string(e.what()).find("the mesh pointer is empty"), std::string::npos) << name;
        }
}

// Once each, within some minutes and 600 MB: what is quadratic takes hours.
TEST_F(OddInputCalls, aMillionAtOnePlaceEndWell)
{
    Points cloud;
    generateSampleSurface(2000, 1, cloud);
    for (int i = 0; i < 1'000'000; ++i)
        cloud.push_back(cloud[0] + Vector3(1e-9 * (i % 1000), 1e-9 * (i / 1000), 0.0));
    Points soup;
    for (int i = 0; i < 1'000'000; ++i)
        soup.insert(soup.end(), {Point3(0, 0, 0), Point3(4, 0, 0), Point3(0, 4, 0)});
    const std::map<std::string, std::function<std::shared_ptr<Mesh>()>> mCalls = {
        {"cloud", [&] { return reconstruct_auto(cloud, false, 1.2); }},
        {"smoothed cloud", [&] { return reconstruct_auto(cloud, true, 1.2); }},
        {"melted soup", [&] { return melt(soup, 0.5, 30.0); }},
        {"remeshed soup", [&] { return remesh(soup); }},
    };
    for (const auto& [name, call] : mCalls)
    {
        CallReport report;
        const ReportScope scope(report);
        static_cast<void>(run(name.c_str(), call, expectManifold));
        EXPECT_LT(report.seconds, 300.0) << name;
        EXPECT_LT(report.peakBytes, report.bytesAtStart + 600'000'000) << name;
    }
}

TEST_F(OddInputCalls, oddSoupsEndWell)
{
    const std::vector<OddInput> vSoups = makeOddSoups();
    EXPECT_GE(vSoups.size(), 40U);
    runAll(vSoups, [this](const Points& v) { return runSoup(v); });
}

} // namespace
} // namespace TARN_ZEF

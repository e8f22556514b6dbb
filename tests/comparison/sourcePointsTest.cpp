#include "sourcePoints.h"

#include "ZefRefusedException.h"
#include "helpers/StreamCapture.h"
#include "parallel/WorkerPool.h"
#include "testDataGenerators.h"
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
constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();

// Numbers of few values, so that points coincide and lie at the same distance.
[[nodiscard]] std::vector<Point3> makeCoarsePoints(std::size_t num, unsigned int numValues,
                                                   std::mt19937_64& rng)
{
    const auto some = [&] { return static_cast<double>(rng() % numValues); };
    std::vector<Point3> vPoints;
    for (std::size_t i = 0; i < num; ++i)
    {
        const double x = some();
        const double y = some();
        vPoints.emplace_back(rng() % 50 == 0 ? NOT_A_NUMBER : x, y, some());
    }
    return vPoints;
}

[[nodiscard]] std::int64_t lookAtAll(const Point3& place, const std::vector<Point3>& vCloud)
{
    std::int64_t best = -1;
    double bestSquare = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < vCloud.size(); ++i)
    {
        const double square = (vCloud[i] - place).sqLength();
        if (square < bestSquare)
        {
            bestSquare = square;
            best = static_cast<std::int64_t>(i);
        }
    }
    return best;
}
} // namespace

TEST(SourcePoints, AreWhatALookAtAllPointsFinds)
{
    std::mt19937_64 rng(5);
    for (const unsigned int numValues : {1U, 3U, 20U, 100000U})
        for (const std::size_t num : {0U, 1U, 8U, 9U, 300U})
        {
            const std::vector<Point3> vCloud = makeCoarsePoints(num, numValues, rng);
            const std::vector<Point3> vPlaces = makeCoarsePoints(60, numValues, rng);
            const std::vector<std::int64_t> vSources = findSourcePoints(vPlaces, vCloud);
            ASSERT_EQ(vSources.size(), vPlaces.size());
            for (std::size_t i = 0; i < vPlaces.size(); ++i)
                EXPECT_EQ(vSources[i], lookAtAll(vPlaces[i], vCloud)) << num << " points, place " << i;
        }
}

TEST(SourcePoints, OfAMeshAreNearItsVerticesForEveryNumberOfThreads)
{
    std::vector<Point3> vCloud;
    generateSampleSurface(5000, 3, vCloud);
    const double spacing = estimateAvgSpacing(vCloud);
    const std::shared_ptr<Mesh> pMesh = reconstruct_auto(vCloud, false, 1.0);
    std::vector<Point3*> vVertices;
    pMesh->getPoints(vVertices);
    const int numThreads = getNumThreads();
    setNumThreads(1);
    const std::vector<std::int64_t> vSources = findSourcePoints(*pMesh, vCloud);
    setNumThreads(4);
    EXPECT_EQ(findSourcePoints(*pMesh, vCloud), vSources);
    setNumThreads(numThreads);
    ASSERT_EQ(vSources.size(), vVertices.size());
    for (std::size_t i = 0; i < vSources.size(); ++i)
        EXPECT_LT((vCloud[static_cast<std::size_t>(vSources[i])] - *vVertices[i]).length(), spacing);
}

// A search that looked at each of them would take minutes.
TEST(SourcePoints, AreFoundQuicklyAmongManyInOnePlace)
{
    const std::vector<Point3> vCloud(200000, Point3(1.0, 2.0, 3.0));
    const std::vector<std::int64_t> vSources = findSourcePoints(vCloud, vCloud);
    EXPECT_TRUE(std::all_of(vSources.begin(), vSources.end(), [](std::int64_t i) { return i == 0; }));
}

TEST(SourcePoints, ExtentsWithoutSquaresAreRefused)
{
    const StreamCapture silence;
    for (const double extent : {1e-101, 1e101, 1e308})
    {
        const std::vector<Point3> vPoints = {Point3(-extent, 0.0, 0.0), Point3(extent, 0.0, 0.0)};
        EXPECT_THROW(static_cast<void>(findSourcePoints(vPoints, vPoints)), ZefBadArgument) << extent;
    }
}

} // namespace TARN_ZEF

#include "rmesh/edgeFlips.h"

#include "geometry/tools.h"
#include "helpers/finishedMeshes.h"
#include "helpers/meshShapes.h"
#include "parallel/WorkerPool.h"
#include "rmesh/REdgeEnergy.h"
#include "zef_api_functions.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <map>
#include <thread>

namespace TARN_ZEF
{
namespace
{
using Candidate = std::pair<double, REdge*>;

// The pipeline's own order of things: a map in which equal keys keep their order.
void flipByMap(RMesh& mesh)
{
    std::vector<Candidate> vImpRE;
    const std::vector<REdge*> vRE = mesh.getAllRE();
    mesh.getEdgeFlipCandidates_MT(vRE, 0.005, 0.0, vImpRE);
    std::multimap<double, REdge*, std::greater<double>> mmPrioq;
    for (const Candidate& candidate : vImpRE)
        mmPrioq.emplace(candidate);
    REdgeEnergy energy(&mesh, nullptr);
    while (!mmPrioq.empty())
    {
        const auto [saved, pRE] = *mmPrioq.begin();
        mmPrioq.erase(mmPrioq.begin());
        const double fresh = energy.getImprovement(pRE);
        if (fresh >= saved)
            pRE->tryFlipEdge(&mesh, nullptr, nullptr);
        else if (fresh > 0.005)
            mmPrioq.emplace(fresh, pRE);
    }
}

struct Receiver : ProgressBase
{
    void update(const std::string& name, double fraction) override
    {
        EXPECT_GE(fraction, lastFraction) << name;
        lastName = name;
        lastFraction = fraction;
    }
    std::string lastName;
    double lastFraction = 0.0;
};
} // namespace

TEST(EdgeFlips, greedyFlipsLowerTheEnergyAndKeepTheMeshSound)
{
    for (const FinishedMesh& shape : finishedMeshes())
    {
        SCOPED_TRACE(shape.name);
        const std::shared_ptr<Mesh> pMesh = makeFinished(shape.source);
        RMesh& mesh = *pMesh->getRMesh();
        const Topology before(mesh);
        const std::size_t numNonManifold = countEdges(mesh, -1);
        double energy = getEnergySum(mesh);
        for (int pass = 0; pass < 3; ++pass)
        {
            edgeFlips(pMesh);
            const double lower = getEnergySum(mesh);
            EXPECT_LE(lower, energy + 1e-3) << "pass " << pass;
            energy = lower;
            expectSound(mesh, before);
            EXPECT_EQ(countEdges(mesh, -1), numNonManifold);
        }
    }
}

TEST(EdgeFlips, greedyFlipsComeInTheOrderOfAMultimap)
{
    for (const FinishedMesh& shape : finishedMeshes())
    {
        SCOPED_TRACE(shape.name);
        const PreparedTree tree;
        RMesh mesh(shape.source);
        RMesh judge(shape.source);
        flipGreedily(&mesh);
        flipByMap(judge);
        EXPECT_EQ(getCorners(mesh), getCorners(judge));
    }
}

TEST(EdgeFlips, annealingEndsNoWorseThanGreedyFlips)
{
    for (const FinishedMesh& shape : finishedMeshes())
    {
        SCOPED_TRACE(shape.name);
        const std::shared_ptr<Mesh> pGreedy = makeFinished(shape.source);
        edgeFlips(pGreedy);
        const std::shared_ptr<Mesh> pMesh = makeFinished(shape.source);
        const Topology before(*pMesh->getRMesh());
        edgeFlipsSimA(pMesh);
        EXPECT_LE(getEnergySum(*pMesh->getRMesh()), getEnergySum(*pGreedy->getRMesh()) + 1e-3);
        expectSound(*pMesh->getRMesh(), before);
    }
}

TEST(EdgeFlips, annealingIsTheSameForEveryNumberOfThreads)
{
    const int numBefore = getNumThreads();
    std::vector<std::vector<Point3>> vResults;
    for (const int numThreads : {1, 2, 5})
    {
        setNumThreads(numThreads);
        const auto anneal = [&]
        {
            const std::shared_ptr<Mesh> pMesh = makeFinished(jittered(cubeSource(10, true), 0.3, 21));
            edgeFlipsSimA(pMesh);
            vResults.push_back(getCorners(*pMesh));
        };
        std::thread(anneal).join(); // its random numbers start afresh
        EXPECT_EQ(vResults.back(), vResults.front());
    }
    setNumThreads(numBefore);
}

TEST(EdgeFlips, temperatureLetsLossesInByChance)
{
    const PreparedTree tree;
    RMesh mesh(jittered(cubeSource(10, true), 0.2, 22));
    const auto count = [&mesh](double minImprovement, double temperature)
    {
        std::vector<Candidate> vImpRE;
        mesh.getEdgeFlipCandidates_MT(mesh.getAllRE(), minImprovement, temperature, vImpRE);
        std::size_t numLosses = 0;
        for (std::size_t i = 0; i < vImpRE.size(); ++i)
        {
            numLosses += vImpRE[i].first < 0.0 ? 1 : 0;
            EXPECT_TRUE(i == 0 || vImpRE[i - 1].first <= vImpRE[i].first);
        }
        return std::pair(vImpRE.size() - numLosses, numLosses);
    };
    const auto cold = count(0.0, 0.0);
    EXPECT_EQ(cold.second, 0u);
    EXPECT_EQ(count(0.5, 0.0), cold) << "the bar throws out losses only";

    // The expected number of accepted losses, from all of them.
    std::vector<Candidate> vAll;
    mesh.getEdgeFlipCandidates_MT(mesh.getAllRE(), -1e300, 0.0, vAll);
    const double temperature = 0.2;
    double expected = 0.0;
    for (const auto& [improvement, pRE] : vAll)
        expected += improvement < 0.0 ? std::exp(improvement / temperature) : 0.0;
    double sum = 0.0;
    const int numPasses = 20;
    for (int pass = 0; pass < numPasses; ++pass)
    {
        const auto warm = count(0.0, temperature);
        EXPECT_EQ(warm.first, cold.first);
        sum += static_cast<double>(warm.second);
    }
    EXPECT_NEAR(sum / numPasses, expected, 4.0 * std::sqrt(expected / numPasses));
}

TEST(PostProcessing, eachCallReportsUnderItsOwnName)
{
    struct Row
    {
        const char* name;
        std::function<void(std::shared_ptr<Mesh>)> call;
    };
    const std::vector<Row> vRows = {{"EdgeFlips", [](auto pMesh) { edgeFlips(pMesh); }},
                                    {"EdgeFlipsS", [](auto pMesh) { edgeFlipsSimA(pMesh); }},
                                    {"Reduce", [](auto pMesh) { reduce(pMesh, 1.5, 20.0); }},
                                    {"Smoothing", [](auto pMesh) { laplacianSmoothing(pMesh, 3); }}};
    for (const Row& row : vRows)
    {
        SCOPED_TRACE(row.name);
        const std::shared_ptr<Mesh> pMesh = makeFinished(jittered(cubeSource(6, true), 0.1, 1));
        Receiver receiver;
        getRootProgress()->subscribe(&receiver);
        row.call(pMesh);
        EXPECT_EQ(receiver.lastName, row.name);
        EXPECT_EQ(receiver.lastFraction, 1.0);
        EXPECT_TRUE(ownsProgress()) << "the tree must be free again";

        prepareProgress("Reconstruct"); // as if inside another call
        receiver.lastFraction = 0.0;
        row.call(pMesh);
        EXPECT_EQ(getRootProgress()->getName(), "Reconstruct");
        EXPECT_NE(receiver.lastFraction, 1.0);
        finishProgress();
        getRootProgress()->unsubscribe();
        EXPECT_THROW(row.call(nullptr), ZefBugException);
        EXPECT_TRUE(ownsProgress());
    }
}

} // namespace TARN_ZEF

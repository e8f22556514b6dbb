#include "holes/Chain.h"

#include "cmesh/ConEdge.h"
#include "geometry/tools.h"
#include "helpers/QuadMesh.h"
#include "helpers/checkMesh.h"
#include "holes/ChainMgr.h"
#include "holes/VcdEdgeMap.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>
#include <set>

namespace TARN_ZEF
{
namespace
{

// Sizes of the chains that are not empty, ascending, the closed ones or the open ones.
std::vector<std::size_t> sizesOf(const ChainMgr& mgr, bool bClosed)
{
    std::vector<std::size_t> vSizes;
    for (std::size_t i = 0; i < mgr.getNumChains(); ++i)
        if (mgr.getChain(i)->size() != 0 && mgr.getChain(i)->isClosed() == bClosed)
            vSizes.push_back(mgr.getChain(i)->size());
    std::sort(vSizes.begin(), vSizes.end());
    return vSizes;
}

std::size_t numTwisted(const ChainMgr& mgr)
{
    std::size_t num = 0;
    for (std::size_t i = 0; i < mgr.getNumChains(); ++i)
        num += mgr.getChain(i)->isClosed() && mgr.getChain(i)->hasMoebius() ? 1 : 0;
    return num;
}

// Edges join end to end in the directions that they carry, and no corner comes twice.
void expectLinked(const Chain& chain)
{
    const std::vector<CEdge*>& vCE = chain.getEdges();
    u64 vcd = 0;
    u64 right = 0;
    chain.getEnds(vcd, right);
    std::set<u64> sSeen;
    for (const CEdge* pCE : vCE)
    {
        EXPECT_EQ(pCE->getSource(), vcd);
        EXPECT_TRUE(sSeen.insert(vcd).second) << "corner visited twice";
        vcd = pCE->getTarget();
    }
    EXPECT_EQ(vcd, right);
    EXPECT_EQ(sSeen.count(right), chain.isClosed() ? 1u : 0u);
}
} // namespace

// Judge: the container that the text of the operations has in mind.
TEST(VcdEdgeMap, behavesLikeAMultimap)
{
    SheetMesh m;
    m.addSheet(6);
    std::vector<CEdge*> vAll;
    m.mesh.getAllCE(vAll);
    std::mt19937 rng(5);
    for (int round = 0; round < 20; ++round)
    {
        std::shuffle(vAll.begin(), vAll.end(), rng);
        VcdEdgeMap map({vAll.begin(), vAll.begin() + 30});
        std::multimap<u64, CEdge*> judge;
        const auto enter = [&judge](CEdge* pCE)
        {
            judge.emplace(pCE->v0, pCE);
            judge.emplace(pCE->v1, pCE);
        };
        std::for_each(vAll.begin(), vAll.begin() + 30, enter);
        for (int step = 0; !judge.empty(); ++step)
        {
            CEdge* pCE = vAll[rng() % 60];
            const auto isIt = [=](const auto& entry) { return entry.second == pCE; };
            if (step % 3 == 0 && step < 60 && std::none_of(judge.begin(), judge.end(), isIt))
            {
                map.addEdge(pCE);
                enter(pCE);
            }
            else if (step % 7 == 0)
            {
                map.eraseVCD(pCE->v0);
                judge.erase(pCE->v0);
            }
            else
            {
                map.eraseEdge(pCE);
                std::erase_if(judge, isIt);
            }
            ASSERT_EQ(map.size(), judge.size());
            std::vector<CEdge*> vMine, vJudge;
            map.getAllEdges(vMine);
            for (const auto& entry : judge)
                vJudge.push_back(entry.second);
            ASSERT_EQ(vMine, vJudge);
            ASSERT_EQ(map.count(pCE->v1), judge.count(pCE->v1));
            ASSERT_TRUE(judge.empty() || (map.getFirstVCD() == judge.begin()->first &&
                                          map.getFirstEdge() == judge.begin()->second));
        }
    }
}

TEST(ChainMgr, splitsBorders)
{
    struct Case
    {
        const char* name;
        bool (*isHole)(int x, int y);
        std::vector<std::size_t> vClosed;
    };
    const Case cases[] = {
        {"two holes apart", [](int x, int y) { return y == 2 && (x == 1 || x == 4); }, {4, 4, 24}},
        {"touching in a corner",
         [](int x, int y) { return (x == 1 && y == 1) || (x == 2 && y == 2); },
         {4, 4, 24}},
        {"row of three", [](int x, int y) { return x == y && x >= 1 && x < 4; }, {4, 4, 4, 24}},
        // The hole touches the rim in one corner, where rim and hole are cut apart.
        {"touching the rim", [](int x, int y) { return (x == 0 && y == 0) || (x == 1 && y == 1); }, {4, 24}},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.name);
        SheetMesh m;
        m.addSheet(6, c.isHole);
        const ChainMgr mgr(&m.mesh, VcdEdgeMap(m.getBorders()), true);
        EXPECT_EQ(sizesOf(mgr, true), c.vClosed);
        EXPECT_EQ(sizesOf(mgr, false), std::vector<std::size_t>());
        for (std::size_t i = 0; i < mgr.getNumChains(); ++i)
            if (mgr.getChain(i)->size() != 0)
                expectLinked(*mgr.getChain(i));
    }
}

TEST(ChainMgr, keepsEveryEdgeInAtMostOneChain)
{
    std::mt19937 rng(11);
    for (int round = 0; round < 200; ++round)
    {
        SCOPED_TRACE(round);
        SheetMesh m;
        m.addSheet(5);
        std::vector<CEdge*> vAll;
        m.mesh.getAllCE(vAll);
        std::shuffle(vAll.begin(), vAll.end(), rng);
        const std::vector<CEdge*> vCE(vAll.begin(), vAll.begin() + 1 + round % 60);
        const bool bTryClose = round % 2 == 0;
        const ChainMgr mgr(&m.mesh, VcdEdgeMap(vCE), bTryClose);

        std::set<CEdge*> sUsed;
        std::size_t numUsed = 0;
        for (std::size_t i = 0; i < mgr.getNumChains(); ++i)
        {
            const Chain& chain = *mgr.getChain(i);
            if (chain.size() != 0)
                expectLinked(chain);
            sUsed.insert(chain.getEdges().begin(), chain.getEdges().end());
            numUsed += chain.size();
        }
        EXPECT_EQ(sUsed.size(), numUsed);

        if (bTryClose)
            continue;
        const std::set<CEdge*> sInput(vCE.begin(), vCE.end());
        EXPECT_TRUE(std::includes(sInput.begin(), sInput.end(), sUsed.begin(), sUsed.end()));
        // Only what lies between two junctions may be left over.
        const VcdEdgeMap input(vCE);
        for (CEdge* pCE : vCE)
            EXPECT_TRUE(sUsed.count(pCE) != 0 || (input.count(pCE->v0) > 2 && input.count(pCE->v1) > 2));
    }
}

TEST(ChainMgr, closesWithTheLeastDegrees)
{
    // A path a - b - c on a fan around the corner m, where another triangle hangs on m - c.
    SheetMesh m;
    const u64 a = m.cell(1, 1, 1), b = m.cell(2, 1, 1), c = m.cell(3, 1, 1);
    const u64 mid = m.cell(2, 3, 1), low = m.cell(2, 5, 1), d = m.cell(5, 5, 5);
    m.add(a, b, mid);
    m.add(b, c, mid);
    m.add(c, d, mid);
    m.add(a, low, d);
    m.add(low, c, m.cell(6, 6, 6));
    const std::vector<CEdge*> vPath{m.mesh.getCE(a, b), m.mesh.getCE(b, c)};

    const ChainMgr mgr(&m.mesh, VcdEdgeMap(vPath), true);
    ASSERT_EQ(sizesOf(mgr, true), std::vector<std::size_t>{4});
    std::vector<u64> vVCD;
    mgr.getChain(0)->getVCDs(vVCD);
    EXPECT_TRUE(std::binary_search(vVCD.begin(), vVCD.end(), low)) << "degrees 1 + 1 beat 1 + 2";

    // An edge between the ends comes before any pair.
    m.add(a, c, d);
    EXPECT_EQ(sizesOf(ChainMgr(&m.mesh, VcdEdgeMap(vPath), true), true), std::vector<std::size_t>{3});
    expectConsistent(m.mesh);
}

TEST(Chain, findsAndUndoesATwist)
{
    for (const int num : {5, 6, 13})
    {
        SCOPED_TRACE(num);
        SheetMesh plain;
        plain.addRing(num, false);
        EXPECT_EQ(numTwisted(ChainMgr(&plain.mesh, VcdEdgeMap(plain.getBorders()), true)), 0u);

        SheetMesh m;
        m.addRing(num, true);
        ASSERT_FALSE(m.orient());
        const std::size_t numT = m.mesh.getNumAliveT();
        ChainMgr mgr(&m.mesh, VcdEdgeMap(m.getBorders()), true);
        ASSERT_EQ(sizesOf(mgr, true), std::vector<std::size_t>{2u * static_cast<std::size_t>(num)});
        ASSERT_TRUE(mgr.getChain(0)->hasMoebius());
        mgr.getChain(0)->fixMoebius();

        expectConsistent(m.mesh);
        EXPECT_EQ(m.mesh.getNumAliveT(), numT);
        EXPECT_TRUE(m.orient());
        const ChainMgr repaired(&m.mesh, VcdEdgeMap(m.getBorders()), true);
        EXPECT_EQ(sizesOf(repaired, true).size(), 2u) << "an untwisted ring has two borders";
        EXPECT_EQ(numTwisted(repaired), 0u);
    }
}

// Flaps on one edge along y, each given by the angle of its tip around that edge.
TEST(ConEdge, ratesByTheBendBetweenTheMembers)
{
    struct Case
    {
        const char* name;
        std::vector<double> vTips; // degrees; the first two are members
        std::size_t numMembers;
        double value;
        bool bManifold;
    };
    const Case cases[] = {
        {"flat", {0, 180}, 2, 0.0, true},
        {"right angle", {0, 90}, 2, 90.0, true},
        {"sharp fold", {0, 30}, 2, 150.0, true},
        {"non-manifold, sheets back to back", {0, 20, 200}, 2, 20.0, false},
        {"non-manifold, flat", {0, 180, 90}, 2, 180.0, false},
        {"three members", {0, 90, 180, 270}, 3, 181.0, true},
    };
    for (const Case& c : cases)
        for (int flips = 0; flips < 4; ++flips)
        {
            SCOPED_TRACE(c.name);
            const Fan fan(c.vTips);
            for (std::size_t i = 0; i < 2; ++i)
                if (((flips >> i) & 1) != 0)
                    fan.vT[i]->flipOrientation();
            const ConEdge ce(&fan.mesh, fan.pCE,
                             [&](CTriangle* pCT) { return pCT->getNumber() < c.numMembers; });
            EXPECT_NEAR(ce.value, c.value, 1e-4);
            EXPECT_EQ(ce.bManifold, c.bManifold);
            EXPECT_EQ(ce.numMemT, static_cast<int>(c.numMembers));
        }
}

} // namespace TARN_ZEF

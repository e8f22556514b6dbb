#include "extraction/Voro.h"
#include "repair/CrossingDiagonals.h"

#include "cmesh/CMesh.h"
#include "helpers/LatticeMesh.h"
#include "helpers/finishedMeshes.h"
#include "lattice/CellIndex.h"
#include "lattice/CubeWalk.h"
#include "repair/Top.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <set>
#include <vector>

namespace TARN_ZEF
{
namespace
{
using Corners = std::array<u64, 3>;

// The extraction again, in the plainest way: the cubes one by one, and sets. It is the judge of the block
// walk's consumer.
class PlainExtraction
{
public:
    PlainExtraction(const Calc& calc_, const std::vector<u64>& vCells)
        : calc(calc_)
    {
        std::vector<std::vector<u64>> vFlat;
        const CellIndex index(vCells);
        CubeWalk(index).walk(
            [&](const CubeWalk::Cube& cube)
            {
                const int cfg = cube.getCfg();
                CCD array[8];
                array[5] = cube.getBase();
                calc.completeArray8Down(array);
                std::vector<CCD> vTri;
                casx.getTriangles(cfg, array, vTri, TUT);
                if (cfg == 15 || cfg == 51 || cfg == 102 || cfg == 153 || cfg == 204 || cfg == 240)
                    vFlat.push_back(vTri);
                else
                    for (std::size_t i = 0; i < vTri.size(); i += 3)
                        make(vTri[i], vTri[i + 1], vTri[i + 2]);
            });
        for (const std::vector<u64>& square : vFlat)
            solveSquare(square);
    }

    std::vector<Corners> vTriangles;

private:
    void solveSquare(const std::vector<u64>& v)
    {
        u64 v0 = v[0], v1 = v[1], v2 = v[2];
        const u64 v3 =
            *std::find_if(v.begin() + 3, v.end(), [&](u64 c) { return c != v0 && c != v1 && c != v2; });
        if (calc.getNeigType(v3, v0) != NT_EDGE)
            std::swap(v0, v1);
        if (calc.getNeigType(v3, v0) != NT_EDGE)
            std::swap(v0, v2);
        const bool bOther = sEdges.count(std::minmax(v1, v2)) != 0;
        make(v0, v1, bOther ? v2 : v3);
        bOther ? make(v2, v1, v3) : make(v0, v3, v2);
    }
    void make(u64 a, u64 b, u64 c)
    {
        Corners key{a, b, c};
        std::sort(key.begin(), key.end());
        if (!sMade.insert(key).second)
            return;
        vTriangles.push_back({a, b, c});
        for (const auto& edge : {std::minmax(a, b), std::minmax(b, c), std::minmax(a, c)})
            sEdges.insert({edge.first, edge.second});
    }

    const Calc& calc;
    Casx casx{TM_FAT, false};
    std::set<Corners> sMade;
    std::set<std::pair<u64, u64>> sEdges;
};

std::vector<Corners> aliveCorners(const CMesh& mesh)
{
    std::vector<CTriangle*> vT;
    mesh.getAliveT(vT);
    std::vector<Corners> v;
    for (const CTriangle* pCT : vT)
        v.push_back({pCT->getC0(), pCT->getC1(), pCT->getC2()});
    return v;
}

// Cells of a noisy ball's surface across the rims of blocks, or at the low rim of the lattice, plus some anywhere.
void fillRandomCells(LatticeMesh& lm, std::mt19937& rng, int numExtra, bool bAtLowRim = false)
{
    const int radius = 3 + static_cast<int>(rng() % 6);
    const int midX = bAtLowRim ? radius / 2 + 1 : 24;
    for (int x = -radius - 1; x <= radius + 1; ++x)
        for (int y = -radius - 1; y <= radius + 1; ++y)
            for (int z = -radius - 1; z <= radius + 1; ++z)
                if (std::abs(x * x + y * y + z * z - radius * radius) <= radius && rng() % 12 != 0 &&
                    midX + x > 0)
                    lm.cell(midX + x, 31 + y, 32 + z);
    for (int i = 0; i < numExtra; ++i)
        lm.cell(12 + static_cast<int>(rng() % 30), 16 + static_cast<int>(rng() % 30),
                20 + static_cast<int>(rng() % 20));
}

// All that a mesh holds by number, and every order that a pass can see.
struct Contents
{
    explicit Contents(const CMesh& mesh)
    {
        const auto add = [this](const std::vector<CTriangle*>& vT)
        {
            for (const CTriangle* pCT : vT)
                v.push_back(pCT->getNumber());
            v.push_back(~u64{0});
        };
        for (const CTriangle* pCT : mesh.getAllT())
        {
            v.insert(v.end(), {pCT->getNumber(), pCT->getC0(), pCT->getC1(), pCT->getC2(),
                               pCT->getGeneratingVCD(), static_cast<u64>(pCT->getCfg())});
            for (int i = 0; i < 3; ++i)
                v.push_back(pCT->getCEdge(i)->getNumber());
            v.push_back(pCT->isAlive());
            v.push_back(pCT->bVisited);
            v.push_back(pCT->getPatch() != nullptr);
        }
        std::vector<CEdge*> vCE;
        mesh.getAllCE(vCE);
        for (int deg = 1; deg <= 6; ++deg)
            mesh.getDegN(deg, vCE);
        for (const CEdge* pCE : vCE)
        {
            v.insert(v.end(), {pCE->getNumber(), pCE->v0, pCE->v1});
            add({pCE->vCT.begin(), pCE->vCT.end()});
        }
        std::vector<u64> vUsed;
        mesh.getUsedCCDs(vUsed);
        for (const u64 ccd : vUsed)
        {
            std::vector<CTriangle*> vT;
            mesh.getIncT(ccd, vT);
            add(vT);
        }
        v.push_back(mesh.getNumAliveT());
        v.push_back(mesh.getNumEdges());
    }

    std::vector<u64> v;
};

// Whatever passes do to a mesh between two extractions.
void disturb(CMesh& mesh, Calc& calc, std::mt19937& rng)
{
    const auto pick = [&]() -> CTriangle* { return mesh.getAllT()[rng() % mesh.getAllT().size()]; };
    Top top(&mesh, &calc);
    for (int i = 0; i < 40; ++i)
    {
        CTriangle* pCT = pick();
        if (!pCT->isAlive())
            continue;
        switch (rng() % 3)
        {
        case 0:
            pCT->kill(&mesh);
            break;
        case 1:
            pCT->flipOrientation();
            break;
        default:
        {
            const u64 other = pick()->getC0();
            if (other != pCT->getC0() && other != pCT->getC1())
                mesh.createT(pCT->getC1(), pCT->getC0(), other, 0, -1);
        }
        }
    }
    top.unifyDiagonals();
    top.solvePatches(rng() % 2 == 0);
    std::vector<CEdge*> vBorders;
    top.getBordersKillDeg1nn(vBorders);
}

std::vector<u64> cellsOf(const LatticeMesh& lm)
{
    std::vector<u64> v;
    lm.map.forEach([&v](u64 ccd, const Bundle*) { v.push_back(ccd); });
    return v;
}
} // namespace

TEST(Voro, makesTheTrianglesOfThePlainExtractionInOrder)
{
    const PreparedTree tree;
    std::mt19937 rng(11);
    for (int run = 0; run < 30; ++run)
    {
        SCOPED_TRACE(run);
        LatticeMesh lm;
        fillRandomCells(lm, rng, run * 20);
        Voro voro(&lm.calc, &lm.map, TM_FAT);
        voro.fatExtractTriangles();
        EXPECT_EQ(aliveCorners(*voro.getCMesh()), PlainExtraction(lm.calc, cellsOf(lm)).vTriangles);
        expectConsistent(*voro.getCMesh());
        const std::vector<Corners> vFirst = aliveCorners(*voro.getCMesh());
        voro.fatExtractTriangles();
        EXPECT_EQ(aliveCorners(*voro.getCMesh()), vFirst) << "a second extraction on the same cells";
    }
}

TEST(Voro, borderFixLeavesEveryCornerWithABundle)
{
    const PreparedTree tree;
    std::mt19937 rng(3);
    for (int run = 0; run < 20; ++run)
    {
        SCOPED_TRACE(run);
        LatticeMesh lm;
        fillRandomCells(lm, rng, 300);
        const std::vector<u64> vBefore = cellsOf(lm);
        Voro voro(&lm.calc, &lm.map, TM_FAT);
        voro.fatExtractTriangles();
        std::vector<u64> vGenerating;
        for (const CTriangle* pCT : voro.getCMesh()->getAllT())
            vGenerating.push_back(pCT->getGeneratingVCD());
        CMesh* pCMesh = voro.borderFix(vGenerating);
        EXPECT_EQ(pCMesh, voro.getCMesh()) << "the mesh object stays";
        EXPECT_TRUE(std::is_sorted(voro.getCells().begin(), voro.getCells().end()));
        EXPECT_NE(voro.getCells(), vBefore);
        std::vector<u64> vUsed;
        pCMesh->getUsedCCDs(vUsed);
        for (const u64 ccd : vUsed)
        {
            EXPECT_NE(pCMesh->findBundle(ccd), nullptr);
            EXPECT_TRUE(std::binary_search(voro.getCells().begin(), voro.getCells().end(), ccd));
        }
        expectConsistent(*pCMesh);
    }
}

// Two fixes in a row, each after passes and of a few cubes; the judge extracts everything anew each time.
TEST(Voro, borderFixLeavesTheMeshOfAWholeExtraction)
{
    const PreparedTree tree;
    int numRenewed = 0;
    std::size_t numCrossing = 0;
    for (unsigned int run = 0; run < 60; ++run)
    {
        SCOPED_TRACE(run);
        LatticeMesh aLM[2];
        for (LatticeMesh& lm : aLM)
        {
            std::mt19937 rng(run);
            fillRandomCells(lm, rng, static_cast<int>(run) * 8, run % 4 == 3);
        }
        Voro voro(&aLM[0].calc, &aLM[0].map, TM_FAT);
        Voro judge(&aLM[1].calc, &aLM[1].map, TM_FAT);
        voro.fatExtractTriangles();
        judge.fatExtractTriangles();
        std::mt19937 rng(run + 1000);
        CrossingDiagonals crossing; // goes on from the extraction before
        for (int round = 0; round < 2; ++round)
        {
            ASSERT_TRUE(crossing.find(*voro.getCMesh()));
            const std::vector<CTriangle*>& vT = judge.getCMesh()->getAllT();
            std::vector<u64> vGenerating;
            for (int i = 0; i < 4; ++i)
                vGenerating.push_back(vT[rng() % vT.size()]->getGeneratingVCD());
            disturb(*voro.getCMesh(), aLM[0].calc, rng);
            voro.borderFix(vGenerating);
            judge.getCMesh()->clearAll();
            judge.borderFix(vGenerating);
            ASSERT_EQ(voro.getCells(), judge.getCells());
            ASSERT_EQ(Contents(*voro.getCMesh()).v, Contents(*judge.getCMesh()).v) << "round " << round;
            expectConsistent(*voro.getCMesh());
            CrossingDiagonals judgeCrossing;
            ASSERT_TRUE(crossing.find(*voro.getCMesh()) && judgeCrossing.find(*voro.getCMesh()));
            EXPECT_EQ(crossing.get(), judgeCrossing.get());
            numCrossing += crossing.get().size();
            numRenewed += voro.getCMesh()->getNumEdgeSlots() > voro.getCMesh()->getNumEdges();
        }
    }
    EXPECT_GT(numCrossing, 0u);
    EXPECT_GT(numRenewed, 60) << "the cells are to change so little that most of the mesh stays";
}

} // namespace TARN_ZEF

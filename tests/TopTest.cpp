#include "Top.h"

#include "CPatch.h"
#include "Progress.h"
#include "TriangleUnion.h"
#include "ZefBugException.h"
#include "helpers/CellMesh.h"
#include "helpers/SheetMesh.h"
#include "helpers/StreamCapture.h"
#include "helpers/checkMesh.h"
#include "tools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <map>
#include <memory>
#include <set>

namespace TARN_ZEF
{
namespace
{
const auto NO_HOLE = [](int, int) { return false; };
const auto CLOSED = [](int, int, int) { return false; };

// The passes as they read, patch by patch on fresh patches: the judge of the quick ones.
class PlainTop : public Top
{
public:
    using Top::cleanSeams;
    using Top::partTouchingSheets;
    using Top::Top;

    bool solvePatchesPlainly(bool bStrict)
    {
        std::vector<CPatch*> vPatches, vClosed, vOpen;
        std::map<u64, CPatch*> mBorderCCD2Patch;
        std::vector<CEdge*> vBorderME;
        std::vector<PatchPair> vPairs;
        pCMesh->createPatches(nullptr, vPatches, mBorderCCD2Patch, vBorderME);
        classifyPatches(vPatches, vPairs, vClosed, vOpen);
        const double sumArea = pCMesh->getArea();
        bool bChanged = false;
        for (const auto& [p0, p1] : vPairs)
            bChanged = solvePair(p0, p1, sumArea) || bChanged;
        std::sort(vClosed.begin(), vClosed.end(),
                  [](const CPatch* pA, const CPatch* pB) {
                      return pA->getSize() != pB->getSize() ? pA->getSize() < pB->getSize()
                                                            : pA->getId() < pB->getId();
                  });
        for (CPatch* pPatch : vClosed)
        {
            if (!pPatch->isAlive() || !pPatch->isClosed())
                continue;
            std::vector<CEdge*> vCE, vTwo;
            pPatch->getAllCE(vCE);
            pPatch->getCEByDegree(2, vTwo);
            if (pPatch->getSize() < 7 && vCE.size() == vTwo.size())
                pPatch->kill();
            else if (pPatch->canBeSplit() && pPatch->splitClosedPatchKill(bStrict))
                bChanged = true;
        }
        return bChanged;
    }

    void unifyDiagonalsPlainly()
    {
        std::vector<CEdge*> vAllCE;
        pCMesh->getAllCE(vAllCE);
        for (const CEdge* pCE : vAllCE)
        {
            const int comp = pCalc->getUniqueSameComponent(pCE->v0, pCE->v1);
            if (comp < 0 || pCE->getDegree() != 2)
                continue;
            CTriangle* pCT0 = pCE->vCT[0];
            CTriangle* pCT1 = pCE->vCT[1];
            const u64 ccd0 = pCT0->getThirdCCD(pCE->v0, pCE->v1);
            const u64 ccd1 = pCT1->getThirdCCD(pCE->v0, pCE->v1);
            const u64 mask = getMask(comp);
            if (ccd0 == ccd1 || pCalc->getUniqueSameComponent(ccd0, ccd1) != comp ||
                (pCE->v0 & mask) != (ccd0 & mask) || pCMesh->getCE(ccd0, ccd1) == nullptr)
                continue;
            pCT0->kill(pCMesh);
            pCT1->kill(pCMesh);
            const CEdge* pOtherCE = pCMesh->getCE(ccd0, ccd1);
            if (!pOtherCE->hasTriangle(ccd0, ccd1, pCE->v0))
                pCMesh->createT(ccd0, ccd1, pCE->v0, 0, 0);
            if (!pOtherCE->hasTriangle(ccd0, ccd1, pCE->v1))
                pCMesh->createT(ccd0, ccd1, pCE->v1, 0, 0);
        }
    }

    void killTinyPlainly(int maxNumT)
    {
        std::vector<CEdge*> vCE;
        pCMesh->getDegN(1, vCE);
        std::set<const CEdge*> sUsedCE;
        for (const CEdge* pSeedCE : vCE)
        {
            const std::size_t start = sUsedCE.size();
            if (!sUsedCE.insert(pSeedCE).second || pSeedCE->vCT.empty())
                continue;
            std::vector<CTriangle*> vResult{pSeedCE->vCT[0]};
            std::set<CTriangle*> sUsedT{pSeedCE->vCT[0]};
            for (std::size_t i = 0; i < vResult.size(); ++i)
                for (int ici = 0; ici < 3; ++ici)
                {
                    const CEdge* pCE = vResult[i]->getCEdge(ici);
                    if (pCE->getDegree() == 1)
                        sUsedCE.insert(pCE);
                    CTriangle* pNeigT = pCE->getNeigT(vResult[i]);
                    if (pNeigT != nullptr && sUsedT.insert(pNeigT).second)
                        vResult.push_back(pNeigT);
                }
            const std::size_t numBorder = sUsedCE.size() - start;
            const std::size_t numT = vResult.size();
            const double ratio = static_cast<double>(numBorder) / static_cast<double>(numT);
            if (numT <= static_cast<std::size_t>(maxNumT) &&
                (ratio > 0.2 || (numT < 25 && numBorder >= 2) || (numT < 7 && numBorder >= 1)))
                for (CTriangle* pCT : vResult)
                    pCT->kill(pCMesh);
        }
    }
};

struct CellsAndTop
{
    template <typename IsIn>
    CellsAndTop(int size, unsigned int seed, const IsIn& isIn)
        : cells(size, seed, isIn)
        , top(&cells.mesh(), &cells.calc)
    {
    }
    CellMesh cells;
    PlainTop top;
};

struct SheetAndTop : SheetMesh
{
    SheetAndTop()
        : top(&mesh, &calc)
    {
        prepareProgress("Reconstruct");
    }
    PlainTop top;
};

// Each piece over edges of degree 2 agrees in itself, unless it is twisted, and the normals of its triangles
// at one of its topmost corners do not point down.
void expectOriented(CMesh& mesh, const Calc& calc)
{
    TriangleUnion pieces(mesh.getAllT().size());
    std::vector<CEdge*> vCE;
    mesh.getDegN(2, vCE);
    std::vector<unsigned int> vTwisted;
    for (const CEdge* pCE : vCE)
    {
        const CTriangle* pT0 = pCE->vCT[0];
        const CTriangle* pT1 = pCE->vCT[1];
        if (!pieces.unite(pT0->getNumber(), pT1->getNumber(), pT0->needFlip(pT1)))
            vTwisted.push_back(pT0->getNumber());
    }
    std::set<unsigned int> sTwisted;
    for (const unsigned int number : vTwisted)
        sTwisted.insert(pieces.findRoot(number));
    std::map<unsigned int, std::map<u64, std::map<u64, double>>> mUp; // by piece, height, corner
    for (const CTriangle* pCT : mesh.getAllT())
    {
        if (!pCT->isAlive())
            continue;
        const TriangleUnion::Found found = pieces.find(pCT->getNumber());
        EXPECT_TRUE(!found.bTurned || sTwisted.count(found.root) != 0);
        for (const u64 ccd : {pCT->getC0(), pCT->getC1(), pCT->getC2()})
            mUp[found.root][ccd & SPARSE_Z][ccd] += getLatticeNormal(calc, *pCT).z();
    }
    for (const auto& [root, mByHeight] : mUp)
    {
        const auto& mTop = mByHeight.rbegin()->second;
        EXPECT_TRUE(
            std::any_of(mTop.begin(), mTop.end(), [](const auto& entry) { return entry.second > -1e-9; }));
    }
}
} // namespace

// --- Flat faces and flat triangles -------------------------------------------------------------------------

TEST(TopDiagonals, aFaceWithBothDiagonalsKeepsOne)
{
    struct Row
    {
        const char* name;
        bool bThird, bFourth; // of the triangles on the second diagonal
        bool bParallel;       // the second diagonal is one cell above
        std::size_t expected;
    };
    const Row rows[] = {
        {"both sides", true, true, false, 2},
        {"one side exists", true, false, false, 2},
        {"parallel planes", true, true, true, 4},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        SheetAndTop s;
        const u64 a = s.cell(8, 8, 8), b = s.cell(9, 8, 8), c = s.cell(9, 9, 8), d = s.cell(8, 9, 8);
        const int z = row.bParallel ? 9 : 8;
        const u64 b2 = s.cell(9, 8, z), d2 = s.cell(8, 9, z);
        s.add(a, b, c);
        s.add(a, c, d);
        if (row.bThird)
            s.add(b2, d2, a);
        if (row.bFourth)
            s.add(d2, b2, c);
        s.top.unifyDiagonals();
        EXPECT_EQ(s.mesh.getNumAliveT(), row.expected);
        EXPECT_EQ(s.mesh.hasEdge(a, c) && s.mesh.hasEdge(b2, d2), row.bParallel);
        expectConsistent(s.mesh);
    }
}

TEST(TopDiagonals, aFlatNewTriangleIsSplitAway)
{
    SheetAndTop s;
    const u64 a = s.cell(8, 8, 8), b = s.cell(9, 8, 8), c = s.cell(9, 9, 8), d = s.cell(8, 9, 8);
    // The lowest corner goes on the other diagonal, which becomes an edge of a flat triangle.
    s.mesh.getVtx(a)->set(9.0, 9.0, 8.5);
    s.add(a, b, c);
    s.add(a, c, d);
    s.add(d, b, s.cell(8, 8, 9));
    s.top.unifyDiagonals();
    const StreamCapture capture(std::cout);
    EXPECT_TRUE(s.mesh.checkNoDegenerate("after"));
    expectConsistent(s.mesh);
}

TEST(TopQuickPasses, agreeWithThePlainOnesOnRoughMeshes)
{
    int numSolved = 0;
    int numKilled = 0;
    for (unsigned int seed = 0; seed < 40; ++seed)
    {
        SCOPED_TRACE(seed);
        const auto cells = randomCells(20 + 5 * (seed % 8));
        const int size = 5 + static_cast<int>(seed % 7);
        CellsAndTop quick(size, seed, cells);
        CellsAndTop plain(size, seed, cells);
        quick.top.unifyDiagonals();
        plain.top.unifyDiagonalsPlainly();
        ASSERT_EQ(quick.cells.getTriples(), plain.cells.getTriples());
        for (const bool bStrict : {true, false})
        {
            for (bool bChanged = true; bChanged;)
            {
                bChanged = plain.top.solvePatchesPlainly(bStrict);
                ASSERT_EQ(quick.top.solvePatches(bStrict), bChanged);
                ASSERT_EQ(quick.cells.getTriples(), plain.cells.getTriples());
                numSolved += bChanged ? 1 : 0;
            }
            const std::size_t numBefore = quick.cells.mesh().getNumAliveT();
            quick.top.killTinyBorderPatches(bStrict ? 40 : 8);
            plain.top.killTinyPlainly(bStrict ? 40 : 8);
            ASSERT_EQ(quick.cells.getTriples(), plain.cells.getTriples());
            numKilled += quick.cells.mesh().getNumAliveT() < numBefore ? 1 : 0;
        }
        expectConsistent(quick.cells.mesh());
    }
    EXPECT_GT(numSolved, 20);
    EXPECT_GT(numKilled, 20);
}

TEST(TopKillDegenerate, leavesNoFlatTriangleInASheet)
{
    for (unsigned int seed = 0; seed < 10; ++seed)
    {
        SCOPED_TRACE(seed);
        SheetAndTop s;
        s.addSheet(8, NO_HOLE);
        std::mt19937 rng(seed);
        for (int i = 0; i < 3; ++i)
        {
            const int x = 2 * i + static_cast<int>(rng() % 2);
            const int y = static_cast<int>(rng() % 7);
            const Point3 p = s.mesh.getAvgPoint(s.cell(x, y, 8));
            s.mesh.getVtx(s.cell(x + 1, y + 1, 8))->set(p.x() + 0.5, p.y(), p.z());
        }
        const StreamCapture capture(std::cout);
        s.top.killDegenerate();
        EXPECT_TRUE(s.mesh.checkNoDegenerate("after"));
        expectConsistent(s.mesh);
    }
    SheetAndTop lost; // closed, with all corners in one place: nothing helps
    lost.addCube(2, CLOSED);
    lost.map.forEach([](u64, Bundle* pBundle) { pBundle->pPoint->set(1, 1, 1); });
    const StreamCapture capture(std::cout);
    EXPECT_THROW(lost.top.killDegenerate(), ZefBugException);
    EXPECT_TRUE(capture.contains("No success of trySplitNeigsKillT() and laplacianForOne()"));
}

// --- Borders -----------------------------------------------------------------------------------------------

TEST(TopBorders, integrateTakesTheFreeCornerIntoTheFin)
{
    SheetAndTop s;
    s.addSheet(4, NO_HOLE);
    const u64 a = s.cell(2, 2, 8), b = s.cell(3, 2, 8);
    // On an inner edge, its free corner nearly on it.
    const u64 free = s.cellAt(2, 2, 9, Point3(3.0, 2.5, 8.6));
    CTriangle* pFin = s.add(a, b, free);
    CTriangle* pLone = s.add(s.cell(20, 20, 8), s.cell(21, 20, 8), s.cell(20, 21, 8));
    std::vector<CEdge*> vBorders;
    s.top.getBordersKillDeg1nn(vBorders);
    EXPECT_EQ(vBorders.size(), 16u + 2u + 3u);
    for (CEdge* pCE : vBorders)
        s.top.integrateCCD(pCE);
    EXPECT_FALSE(pFin->isAlive());
    EXPECT_FALSE(pLone->isAlive());
    EXPECT_FALSE(s.mesh.hasEdge(a, b));
    EXPECT_TRUE(s.mesh.hasEdge(a, free) && s.mesh.hasEdge(b, free));
    EXPECT_TRUE(s.isManifold());
    EXPECT_EQ(s.getBorders().size(), 16u);
    expectConsistent(s.mesh);
}

TEST(TopBorders, aTriangleBetweenTwoFinsGoes)
{
    SheetAndTop s;
    const u64 a = s.cell(8, 8, 8), b = s.cell(9, 8, 8), c = s.cell(8, 9, 8);
    CTriangle* pBetween = s.add(a, b, c);
    for (const u64 d : {s.cell(9, 9, 8), s.cell(9, 9, 9)})
    {
        s.add(a, b, d);
        s.add(b, c, d);
    }
    std::vector<CEdge*> vBorders;
    s.top.getBordersKillDeg1nn(vBorders);
    EXPECT_FALSE(pBetween->isAlive());
    EXPECT_EQ(std::count(vBorders.begin(), vBorders.end(), s.mesh.getCE(a, c)), 0);
    expectConsistent(s.mesh);
}

TEST(TopBorders, triangularHolesCloseAndNothingElse)
{
    SheetAndTop s;
    s.addCube(4, [](int side, int u, int v) { return side == 0 && u == 1 && v == 1; }); // four edges
    s.add(s.cell(40, 40, 8), s.cell(41, 40, 8), s.cell(40, 41, 8));
    const std::size_t numBorder = s.getBorders().size();
    ASSERT_EQ(numBorder, 4u + 3u);
    s.mesh.getAllT()[40]->kill(&s.mesh);
    s.mesh.getAllT()[90]->kill(&s.mesh);
    ASSERT_EQ(s.getBorders().size(), numBorder + 6);
    s.top.closeTriangularHoles();
    EXPECT_EQ(s.getBorders().size(), numBorder);
    EXPECT_TRUE(s.isManifold());
    expectConsistent(s.mesh);
}

// Cubes of 4 by 4 squares a side, 192 triangles, and strips; some with holes.
TEST(TopBorders, tinyMeansFewTrianglesAndMuchBorder)
{
    struct Row
    {
        const char* name;
        int width, height; // squares of a sheet
        int maxNumT;
        bool bStays;
    };
    const Row rows[] = {
        {"50 triangles, 20 border edges, limit 40", 5, 5, 40, true},
        {"50 triangles, ratio 0.4", 5, 5, 50, false},
        {"162 triangles, ratio 0.222", 9, 9, 200, false},
        {"200 triangles, ratio exactly 0.2", 10, 10, 200, true},
        {"one square at limit 1", 1, 1, 1, true},
        {"one square at limit 2", 1, 1, 2, false},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        SheetAndTop s;
        for (int x = 0; x < row.width; ++x)
            for (int y = 0; y < row.height; ++y)
                s.addSquare(s.cell(x, y, 8), s.cell(x + 1, y, 8), s.cell(x + 1, y + 1, 8),
                            s.cell(x, y + 1, 8));
        s.top.killTinyBorderPatches(row.maxNumT);
        EXPECT_EQ(s.mesh.getNumAliveT() > 0, row.bStays);
    }
}

// --- Patches -----------------------------------------------------------------------------------------------

// A square hole in a sheet with two lids, flat and domed: three patches with one boundary.
TEST(TopPatches, ofPairsWithOneBoundaryTheSmallerGoes)
{
    struct Row
    {
        const char* name;
        int size;          // of the sheet; the hole is 2 by 2
        std::size_t numT0; // left after one pass
    };
    const Row rows[] = {
        {"small lids on a large sheet", 8, 128},
        {"small lids on a small sheet", 4, 32},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        SheetAndTop s;
        const auto isHole = [](int x, int y) { return x >= 1 && x < 3 && y >= 1 && y < 3; };
        s.addSheet(row.size, isHole);
        for (const int z : {8, 9})
        {
            const auto at = [&](int x, int y) { return s.cell(x, y, x == 2 && y == 2 ? z : 8); };
            for (int x = 1; x < 3; ++x)
                for (int y = 1; y < 3; ++y)
                {
                    const u64 c[4] = {at(x, y), at(x + 1, y), at(x + 1, y + 1), at(x, y + 1)};
                    if (x == y)
                        s.addSquare(c[0], c[1], c[2], c[3]);
                    else
                        s.addSquare(c[1], c[2], c[3], c[0]);
                }
        }
        EXPECT_TRUE(s.top.solvePatches(true));
        EXPECT_EQ(s.mesh.getNumAliveT(), row.numT0);
        EXPECT_TRUE(s.isManifold());
        EXPECT_FALSE(s.top.solvePatches(true));
        expectConsistent(s.mesh);
    }
}

TEST(TopPatches, sizeAndAreaDecideAPair)
{
    struct Row
    {
        const char* name;
        int num0, num1;
        double sumArea;
        int dead; // 0, 1, or -1
    };
    const Row rows[] = {
        {"20 each, whatever the area", 20, 20, 1.0, 1}, {"the smaller is the first", 19, 20, 1.0, 0},
        {"21, a large share", 21, 20, 50.0, -1},        {"21, a share of a tenth", 21, 20, 205.0, 1},
        {"nothing to compare with", 21, 20, 0.0, -1},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        SheetAndTop s;
        CPatch patches[2] = {{&s.mesh, &s.calc}, {&s.mesh, &s.calc}};
        for (int i = 0; i < 2; ++i)
            for (int k = 0; k < (i == 0 ? row.num0 : row.num1); ++k)
                patches[i].addT(s.add(s.cell(k, 5 * i, 8), s.cell(k + 1, 5 * i, 8), s.cell(k, 5 * i + 1, 8)));
        struct Opened : PlainTop
        {
            using Top::solvePair;
        };
        EXPECT_EQ(Opened::solvePair(&patches[0], &patches[1], row.sumArea), row.dead >= 0);
        EXPECT_EQ(patches[0].isAlive(), row.dead != 0);
        EXPECT_EQ(patches[1].isAlive(), row.dead != 1);
    }
}

// Two blisters side by side share a wall: no two patches have the same boundary, but the sets on either side
// of each blister do.
TEST(TopPatches, blistersThatShareAWallGo)
{
    const StreamCapture quiet(std::cout);
    SheetAndTop s;
    s.addCube(8, [](int, int, int) { return false; });
    const auto cell = [&s](int x, int y, int z) { return s.cell(x, y, z); };
    for (const int x : {10, 12, 14})
        for (const int y : {10, 11})
            s.addSquare(cell(x, y, 16), cell(x, y + 1, 16), cell(x, y + 1, 17), cell(x, y, 17));
    for (const int x : {10, 11, 12, 13})
    {
        for (const int y : {10, 12})
            s.addSquare(cell(x, y, 16), cell(x + 1, y, 16), cell(x + 1, y, 17), cell(x, y, 17));
        for (const int y : {10, 11})
            s.addSquare(cell(x, y, 17), cell(x + 1, y, 17), cell(x + 1, y + 1, 17), cell(x, y + 1, 17));
    }
    EXPECT_FALSE(s.top.solvePatches(false));
    ASSERT_FALSE(s.isManifold());
    s.top.cleanSeams(true);
    EXPECT_TRUE(s.isManifold());
    EXPECT_TRUE(s.getBorders().empty());
    EXPECT_TRUE(s.orient());
    expectConsistent(s.mesh);
}

// Two boxes that share an upright edge: one surface of the same corners afterwards.
TEST(TopPatches, boxesThatTouchInAnEdgeArePartedThere)
{
    const StreamCapture quiet(std::cout);
    SheetAndTop s;
    for (const int at : {10, 11})
    {
        const auto corner = [&s, at](int i) { return s.cell(at + i % 2, at + i / 2 % 2, 10 + i / 4); };
        for (const auto& q : {std::array<int, 4>{0, 2, 3, 1},
                              {4, 5, 7, 6},
                              {0, 1, 5, 4},
                              {2, 6, 7, 3},
                              {0, 4, 6, 2},
                              {1, 3, 7, 5}})
            s.addSquare(corner(q[0]), corner(q[1]), corner(q[2]), corner(q[3]));
    }
    ASSERT_EQ(s.mesh.getCE(s.cell(11, 11, 10), s.cell(11, 11, 11))->getDegree(), 4);
    const std::size_t numT = s.mesh.getNumAliveT();
    s.top.partTouchingSheets();
    EXPECT_TRUE(s.isManifold());
    EXPECT_TRUE(s.getBorders().empty());
    EXPECT_TRUE(s.isOriented());
    EXPECT_EQ(s.mesh.getNumAliveT(), numT);
    expectConsistent(s.mesh);
}

TEST(TopPatches, aFreeBubbleGoesButIsNoChange)
{
    SheetAndTop s;
    const u64 a = s.cell(20, 8, 8), b = s.cell(21, 8, 8), c = s.cell(20, 9, 8), d = s.cell(20, 8, 9);
    s.add(a, b, c);
    s.add(a, b, d);
    s.add(b, c, d);
    s.add(c, a, d);
    s.addCube(2, CLOSED);
    EXPECT_FALSE(s.top.solvePatches(false));
    EXPECT_EQ(s.mesh.getNumAliveT(), 48u);
    EXPECT_FALSE(s.mesh.hasEdge(a, d));
}

TEST(TopOrient, reachesEveryPieceAndEndsATwistOnce)
{
    SheetAndTop s;
    s.addRing(7, true);
    std::vector<CPatch*> vPatches;
    s.top.createPatchesOrient(s.mesh.getAllT(), vPatches);
    const std::vector<std::unique_ptr<CPatch>> vOwned(vPatches.begin(), vPatches.end());
    ASSERT_EQ(vPatches.size(), 1u);
    EXPECT_EQ(vPatches[0]->getSize(), 14u);
    std::vector<CEdge*> vCE;
    s.mesh.getDegN(2, vCE);
    EXPECT_EQ(std::count_if(vCE.begin(), vCE.end(),
                            [](const CEdge* pCE) { return pCE->vCT[0]->needFlip(pCE->vCT[1]); }),
              1);
    const StreamCapture capture(std::cout);
    EXPECT_THROW(s.top.createPatchesOrient(s.mesh.getAllT(), vPatches), ZefBugException);

    // The flood meets all triangles of a rough mesh, and only those of one piece in one patch.
    CellsAndTop rough(8, 5, randomCells(45));
    std::vector<CPatch*> vRough;
    std::vector<std::unique_ptr<CPatch>> vRoughOwned;
    rough.top.createPatchesOrient(rough.cells.mesh().getAllT(), vRough);
    std::size_t numMembers = 0;
    for (CPatch* pPatch : vRough)
    {
        vRoughOwned.emplace_back(pPatch);
        pPatch->orientPatch();
        numMembers += pPatch->getSize();
    }
    EXPECT_EQ(numMembers, rough.cells.mesh().getNumAliveT());
    expectOriented(rough.cells.mesh(), rough.cells.calc);
}

TEST(TopPrune, onlyTheNamedConfigurationsWithABorder)
{
    SheetAndTop s;
    const auto at = [&](int x, int y) { return s.cell(x, y, 8); };
    CTriangle* pNamed = s.mesh.createT(at(0, 0), at(1, 0), at(0, 1), 0, 27);
    CTriangle* pOther = s.mesh.createT(at(5, 0), at(6, 0), at(5, 1), 0, 26);
    CTriangle* pBelow = s.mesh.createT(at(10, 0), at(11, 0), at(10, 1), 0, -3);
    s.top.pruneCases();
    EXPECT_FALSE(pNamed->isAlive());
    EXPECT_TRUE(pOther->isAlive());
    EXPECT_TRUE(pBelow->isAlive());
    (void)s.mesh.createT(at(20, 0), at(21, 0), at(20, 1), 0, 256);
    const StreamCapture capture(std::cout);
    EXPECT_THROW(s.top.pruneCases(), ZefBugException);
}

// --- Positions ---------------------------------------------------------------------------------------------

TEST(TopSeparate, noTwoCornersInOnePlaceAndTheFirstStays)
{
    SheetAndTop s;
    std::mt19937 rng(2);
    for (int i = 0; i < 60; ++i)
    {
        const int k = static_cast<int>(rng() % 8);
        s.cellAt(i, k, 8, Point3(k, 2 * k, k == 5 ? NAN : 0.0));
    }
    // So far out that the offsets are lost in rounding.
    s.cellAt(1, 60, 9, Point3(1e17, 0, 0));
    s.cellAt(2, 60, 9, Point3(1e17, 0, 0));
    std::map<Point3, u64> mFirst;
    s.map.forEach(
        [&](u64 ccd, Bundle* pBundle)
        {
            if (!std::isnan(pBundle->pPoint->z()))
                mFirst.emplace(*pBundle->pPoint, ccd);
        });
    s.top.separateDuplicatePoints();
    std::set<Point3> sPoints;
    s.map.forEach(
        [&](u64, Bundle* pBundle)
        { EXPECT_TRUE(std::isnan(pBundle->pPoint->z()) || sPoints.insert(*pBundle->pPoint).second); });
    for (const auto& [p, ccd] : mFirst)
        EXPECT_EQ(s.mesh.getAvgPoint(ccd), p);
}

// --- The orders of passes ----------------------------------------------------------------------------------

TEST(TopRun, makesACleanOrientedSurfaceOfABall)
{
    struct Row
    {
        const char* name;
        unsigned int numGap;
        bool bMelt;
    };
    const Row rows[] = {
        {"whole", 0, false},
        {"with gaps", 30, false},
        {"frayed", 6, false},
        {"melt", 30, true},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        const StreamCapture capture(std::cout);
        std::vector<std::array<u64, 3>> vFirst;
        for (int i = 0; i < 2; ++i)
        {
            CellsAndTop ball(30, 7, ballCells(12.0, row.numGap));
            CMesh& mesh = ball.cells.mesh();
            row.bMelt ? ball.top.runMelt(ball.cells.pVoro.get()) : ball.top.run(ball.cells.pVoro.get());
            expectConsistent(mesh);
            expectOriented(mesh, ball.cells.calc);
            EXPECT_GT(mesh.getNumAliveT(), 1500u);
            const auto vTriples = ball.cells.getTriples();
            EXPECT_EQ(mesh.killDuplicates(), 0) << "an ear over a triangle";
            std::vector<CEdge*> vHighDeg;
            mesh.getDegN(-1, vHighDeg);
            for (const CEdge* pCE : vHighDeg)
                EXPECT_FALSE(!row.bMelt &&
                             std::any_of(pCE->vCT.begin(), pCE->vCT.end(),
                                         [](const CTriangle* pCT) { return pCT->hasBorderEdge(); }))
                    << "an ear";
            // No tiny piece at a border is left, not even where the filling of holes cut off a fin.
            PlainTop(&mesh, &ball.cells.calc).killTinyPlainly(row.bMelt ? 8 : 100);
            EXPECT_EQ(mesh.getNumAliveT(), vTriples.size());
            EXPECT_TRUE(i == 0 || vTriples == vFirst) << "not reproducible";
            vFirst = vTriples;
        }
    }
}

TEST(TopRun, anEmptyMeshPassesThrough)
{
    for (const bool bMelt : {false, true})
    {
        CellsAndTop nothing(6, 1, randomCells(0));
        bMelt ? nothing.top.runMelt(nothing.cells.pVoro.get()) : nothing.top.run(nothing.cells.pVoro.get());
        EXPECT_EQ(nothing.cells.mesh().getNumAliveT(), 0u);
    }
}

} // namespace TARN_ZEF

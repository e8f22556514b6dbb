#include "repair/Top.h"

#include "ZefBugException.h"
#include "cmesh/CPatch.h"
#include "cmesh/TriangleUnion.h"
#include "core/Progress.h"
#include "geometry/tools.h"
#include "helpers/CellMesh.h"
#include "helpers/SheetMesh.h"
#include "helpers/StreamCapture.h"
#include "helpers/checkMesh.h"
#include "repair/BorderRepair.h"
#include "repair/Orientation.h"
#include "repair/SeamPass.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <set>

namespace TARN_ZEF
{
namespace
{
// A pass as it reads, patch by patch on fresh patches: the judge of the quick one.
bool solvePatchesPlainly(CMesh& mesh, bool bStrict)
{
    std::vector<CPatch*> vPatches, vClosed, vOpen;
    std::map<u64, CPatch*> mBorderCCD2Patch;
    std::vector<CEdge*> vBorderME;
    std::vector<PatchPass::PatchPair> vPairs;
    mesh.createPatches(nullptr, vPatches, mBorderCCD2Patch, vBorderME);
    PatchPass::classifyPatches(vPatches, vPairs, vClosed, vOpen);
    const double sumArea = mesh.getArea();
    bool bChanged = false;
    for (const auto& [p0, p1] : vPairs)
        bChanged = Top::solvePair(p0, p1, sumArea) || bChanged;
    return Top::solveClosedPatches(vClosed, bStrict) || bChanged;
}

struct CellsAndTop
{
    template <typename IsIn>
    CellsAndTop(int size, unsigned int seed, const IsIn& isIn)
        : cells(size, seed, isIn)
        , top(&cells.mesh(), &cells.calc)
    {
    }
    CellMesh cells;
    Top top;
};

struct SheetAndTop : SheetMesh
{
    SheetAndTop()
        : top(&mesh, &calc)
    {
        prepareProgress("Reconstruct");
    }
    Top top;
};

// Each piece over edges of degree 2 agrees in itself, unless it is twisted, and the normals of its triangles
// at one of its topmost corners do not point down. Returns the number of pieces where they do at another one.
int expectOriented(CMesh& mesh, const Calc& calc)
{
    TriangleUnion pieces(mesh.getAllT().size());
    std::set<unsigned int> sTwisted;
    std::vector<CEdge*> vCE;
    mesh.getDegN(DEG_INNER, vCE);
    for (int i = 0; i < 2; ++i) // roots are final in the second turn
        for (const CEdge* pCE : vCE)
            if (!pieces.unite(
                    {pCE->vCT[0]->getNumber(), pCE->vCT[1]->getNumber(), pCE->vCT[0]->needFlip(pCE->vCT[1])}))
                sTwisted.insert(pieces.findRoot(pCE->vCT[0]->getNumber()));
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
    int numUnclear = 0;
    for (const auto& [root, mByHeight] : mUp)
    {
        const auto& mTop = mByHeight.rbegin()->second;
        EXPECT_TRUE(
            std::any_of(mTop.begin(), mTop.end(), [](const auto& entry) { return entry.second > -1e-9; }));
        numUnclear +=
            std::any_of(mTop.begin(), mTop.end(), [](const auto& entry) { return entry.second < -1e-9; });
    }
    return numUnclear;
}
} // namespace

// --- Flat faces and flat triangles -------------------------------------------------------------------------

TEST(TopDiagonals, aFaceWithBothDiagonalsKeepsOne)
{
    struct Row
    {
        const char* name;
        bool bFourth;   // of the two triangles on the second diagonal
        bool bParallel; // the second diagonal is one cell above
        std::size_t expected;
    };
    for (const Row& row : {Row{"both sides", true, false, 2}, Row{"one side exists", false, false, 2},
                           Row{"parallel planes", true, true, 4}})
    {
        SCOPED_TRACE(row.name);
        SheetAndTop s;
        const u64 a = s.cell(8, 8, 8), b = s.cell(9, 8, 8), c = s.cell(9, 9, 8), d = s.cell(8, 9, 8);
        const int z = row.bParallel ? 9 : 8;
        const u64 b2 = s.cell(9, 8, z), d2 = s.cell(8, 9, z);
        s.addSquare(a, b, c, d);
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
    const StreamCapture capture;
    EXPECT_TRUE(s.mesh.checkNoDegenerate("after"));
    expectConsistent(s.mesh);
}

TEST(TopQuickPasses, agreeWithThePlainOnesOnRoughMeshes)
{
    int numSolved = 0;
    for (unsigned int seed = 0; seed < 40; ++seed)
    {
        SCOPED_TRACE(seed);
        const auto cells = randomCells(20 + 5 * (seed % 8));
        const int size = 5 + static_cast<int>(seed % 7);
        CellsAndTop quick(size, seed, cells);
        CellsAndTop plain(size, seed, cells);
        quick.top.unifyDiagonals();
        plain.top.unifyDiagonals();
        for (const bool bStrict : {true, false})
        {
            for (bool bChanged = true; bChanged;)
            {
                bChanged = solvePatchesPlainly(plain.cells.mesh(), bStrict);
                ASSERT_EQ(quick.top.solvePatches(bStrict), bChanged);
                ASSERT_EQ(quick.cells.getTriples(), plain.cells.getTriples());
                numSolved += bChanged ? 1 : 0;
            }
            quick.top.killTinyBorderPatches(bStrict ? 40 : 8);
            plain.top.killTinyBorderPatches(bStrict ? 40 : 8);
        }
        expectConsistent(quick.cells.mesh());
    }
    EXPECT_GT(numSolved, 20);
}

TEST(TopKillDegenerate, leavesNoFlatTriangleAfterAFewRuns)
{
    const StreamCapture capture;
    for (unsigned int seed = 0; seed < 10; ++seed)
    {
        SCOPED_TRACE(seed);
        CellsAndTop ball(26, seed, ballCells(9.0, 40));
        CMesh& mesh = ball.cells.mesh();
        std::mt19937 rng(seed);
        for (int i = 0; i < 10; ++i)
        {
            const CTriangle& ct = *mesh.getAllT()[rng() % mesh.getAllT().size()];
            mesh.getVtx(ct.getC0())->set(*mesh.getVtx(ct.getC1())); // flat whatever the rounding
        }
        EXPECT_FALSE(mesh.checkNoDegenerate("before"));
        for (int i = 0; i < 3; ++i)
            ball.top.killDegenerate();
        EXPECT_TRUE(mesh.checkNoDegenerate("after"));
        expectConsistent(mesh);
    }
}

TEST(TopKillDegenerate, givesUpWhereAllCornersAreInOnePlace)
{
    SheetAndTop lost; // closed: nothing helps
    lost.addCube(2);
    lost.map.forEach([](u64, Bundle* pBundle) { pBundle->pPoint->set(1, 1, 1); });
    const StreamCapture capture;
    EXPECT_THROW(lost.top.killDegenerate(), ZefBugException);
    EXPECT_TRUE(capture.contains("No success of trySplitNeigsKillT() and laplacianForOne()"));
}

// --- Borders -----------------------------------------------------------------------------------------------

TEST(TopBorders, integrateTakesTheFreeCornerIntoTheFin)
{
    SheetAndTop s;
    s.addSheet(4);
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
    BorderRepair(&s.mesh).closeTriangularHoles();
    EXPECT_EQ(s.getBorders().size(), numBorder);
    EXPECT_TRUE(s.isManifold());
    expectConsistent(s.mesh);
}

TEST(TopBorders, tinyMeansFewTrianglesAndMuchBorder)
{
    struct Row
    {
        const char* name;
        int size; // of a square sheet
        int maxNumT;
        bool bStays;
    };
    const Row rows[] = {
        {"50 triangles, 20 border edges, limit 40", 5, 40, true},
        {"50 triangles, ratio 0.4", 5, 50, false},
        {"162 triangles, ratio 0.222", 9, 200, false},
        {"200 triangles, ratio exactly 0.2", 10, 200, true},
        {"one square at limit 1", 1, 1, true},
        {"one square at limit 2", 1, 2, false},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        SheetAndTop s;
        s.addSheet(row.size);
        s.top.killTinyBorderPatches(row.maxNumT);
        EXPECT_EQ(s.mesh.getNumAliveT() > 0, row.bStays);
    }
}

TEST(TopBorders, tinyIsAnyPieceBelow25TrianglesWithTwoBorderEdges)
{
    for (const int size : {1, 2}) // 19 triangles, or 47 of which a smaller share is border
    {
        SheetAndTop s;
        s.addBox({8, 8, 8}, {size, size, 2}, [](int, int, int) { return false; });
        s.mesh.getAllT()[0]->kill(&s.mesh);
        s.top.killTinyBorderPatches(100);
        EXPECT_EQ(s.mesh.getNumAliveT(), size == 1 ? 0u : 47u);
    }
}

// --- Patches -----------------------------------------------------------------------------------------------

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
        EXPECT_EQ(Top::solvePair(&patches[0], &patches[1], row.sumArea), row.dead >= 0);
        EXPECT_EQ(patches[0].isAlive(), row.dead != 0);
        EXPECT_EQ(patches[1].isAlive(), row.dead != 1);
    }
}

// Two blisters side by side share a wall: no two patches have the same boundary, but the sets on either side
// of each blister do. On an open surface only small patches may go.
TEST(TopPatches, blistersThatShareAWallGo)
{
    struct Row
    {
        const char* name;
        int size, height; // of a blister, in cells
        bool bOpen;       // the cube has a hole elsewhere
        bool bRemain;
    };
    for (const Row& row :
         {Row{"closed", 2, 1, false, false}, Row{"open", 2, 1, true, false},
          Row{"large on a closed one", 4, 3, false, false}, Row{"large on an open one", 4, 3, true, true}})
    {
        SCOPED_TRACE(row.name);
        const StreamCapture quiet(std::cout);
        SheetAndTop s;
        s.addCube(16, [](int, int, int) { return false; });
        const auto cell = [&s](int x, int y, int z) { return s.cell(x, y, z); };
        const int mid = 10 + row.size, end = mid + row.size, top = 24 + row.height;
        for (int z = 24; z < top; ++z)
        {
            for (const int x : {10, mid, end})
                for (int y = 10; y < mid; ++y)
                    s.addSquare(cell(x, y, z), cell(x, y + 1, z), cell(x, y + 1, z + 1), cell(x, y, z + 1));
            for (const int y : {10, mid})
                for (int x = 10; x < end; ++x)
                    s.addSquare(cell(x, y, z), cell(x + 1, y, z), cell(x + 1, y, z + 1), cell(x, y, z + 1));
        }
        for (int x = 10; x < end; ++x)
            for (int y = 10; y < mid; ++y)
                s.addSquare(cell(x, y, top), cell(x + 1, y, top), cell(x + 1, y + 1, top),
                            cell(x, y + 1, top));
        if (row.bOpen)
            s.mesh.getAllT()[0]->kill(&s.mesh);
        EXPECT_FALSE(s.top.solvePatches(false));
        ASSERT_FALSE(s.isManifold());
        RepairState state(&s.mesh, &s.calc);
        SeamPass(state).run();
        s.top.killBorderEars();
        s.top.killTinyBorderPatches(100);
        EXPECT_EQ(s.isManifold(), !row.bRemain);
        EXPECT_EQ(s.getBorders().size(), row.bOpen ? 3u : 0u);
        expectConsistent(s.mesh);
    }
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
    EXPECT_EQ(countDisagreeing(s.mesh), 1u);
    const StreamCapture capture;
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

// Piece by piece the same as the flood, which takes the first topmost corner that it meets.
TEST(TopOrient, isThatOfTheFlood)
{
    int numUnclear = 0;
    for (unsigned int seed = 0; seed < 40; ++seed)
    {
        SCOPED_TRACE(seed);
        const auto cells = randomCells(15 + 6 * (seed % 8));
        CellsAndTop quick(4 + static_cast<int>(seed % 9), seed, cells);
        CellsAndTop plain(4 + static_cast<int>(seed % 9), seed, cells);
        quick.top.solvePatches(seed % 2 == 0);
        plain.top.solvePatches(seed % 2 == 0);
        RepairState state(&quick.cells.mesh(), &quick.cells.calc);
        Orientation(state).run();
        std::vector<CPatch*> vPatches;
        plain.top.createPatchesOrient(plain.cells.mesh().getAllT(), vPatches);
        for (CPatch* pPatch : vPatches)
            std::unique_ptr<CPatch>(pPatch)->orientPatch();
        for (const CTriangle* pCT : plain.cells.mesh().getAllT())
        {
            const CTriangle* pQuickT = quick.cells.mesh().getAllT()[pCT->getNumber()];
            for (int i = 0; pCT->isAlive() && i < 3; ++i)
                ASSERT_EQ(pQuickT->getCorner(i), pCT->getCorner(i));
        }
        numUnclear += expectOriented(plain.cells.mesh(), plain.cells.calc);
    }
    EXPECT_GT(numUnclear, 20);
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

// A sheet that runs from its top corner back and then, folded under, on to the corner that is farthest along
// x: there it must face down. With a plate, which has many topmost corners, as a second large piece.
TEST(TopOrders, aPieceFacesUpAtItsTopCornerWhateverTheOthersDo)
{
    for (const bool bPlate : {false, true})
    {
        SCOPED_TRACE(bPlate);
        const StreamCapture capture;
        CellsAndTop sheets(30, 5,
                           [bPlate](int x, int y, int z, std::mt19937_64&)
                           {
                               const bool bUpper = x >= 8 && x <= 20 && z == 15 + x - 8 &&
                                                   std::abs(2 * y - 35) <= std::max(3, 15 - 2 * (x - 8));
                               const bool bLower = x >= 8 && x <= 30 && z == 10 + (30 - x) / 5;
                               return (y >= 10 && y <= 25 && (bUpper || bLower)) ||
                                      (bPlate && x < 20 && z == 33);
                           });
        sheets.top.run(sheets.cells.pVoro.get());
        expectOriented(sheets.cells.mesh(), sheets.cells.calc);
        std::size_t numDown = 0;
        for (const CTriangle* pCT : sheets.cells.mesh().getAllT())
            numDown += pCT->isAlive() && getLatticeNormal(sheets.cells.calc, *pCT).z() < 0.0 ? 1 : 0;
        EXPECT_GT(numDown, 400u) << "the lower part";
    }
}

TEST(TopRun, makesACleanOrientedSurfaceOfABall)
{
    struct Row
    {
        const char* name;
        unsigned int numGap;
        bool bMelt;
    };
    for (const Row& row : {Row{"whole", 0, false}, Row{"with gaps", 30, false}, Row{"frayed", 6, false},
                           Row{"melt", 30, true}})
    {
        SCOPED_TRACE(row.name);
        const StreamCapture capture;
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
            mesh.getDegN(DEG_NON_MANIFOLD, vHighDeg);
            for (const CEdge* pCE : vHighDeg)
                EXPECT_FALSE(!row.bMelt &&
                             std::any_of(pCE->vCT.begin(), pCE->vCT.end(),
                                         [](const CTriangle* pCT) { return pCT->hasBorderEdge(); }))
                    << "an ear";
            // No tiny piece at a border is left, not even where the filling of holes cut off a fin.
            ball.top.killTinyBorderPatches(row.bMelt ? 8 : 100);
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

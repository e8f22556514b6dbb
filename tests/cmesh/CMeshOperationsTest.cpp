// The edits of the combinatorial mesh and the moves of its corners.
#include "cmesh/CMesh.h"

#include "ZefBugException.h"
#include "cmesh/CPatch.h"
#include "geometry/tools.h"
#include "helpers/QuadMesh.h"
#include "helpers/StreamCapture.h"
#include "helpers/checkMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>

namespace TARN_ZEF
{
namespace
{
} // namespace

// --- Edges -------------------------------------------------------------------------------------------------

TEST(CEdgeDihedral, measuresTheAngleOrTellsWhyNot)
{
    struct Row
    {
        const char* name;
        std::vector<double> vDegrees;
        double expected;
    };
    const Row rows[] = {
        {"flat", {0, 180}, 180.0}, {"right angle", {0, 90}, 90.0}, {"nearly a fold", {0, 1}, 1.0},
        {"border", {0}, 363.0},    {"fin", {0, 90, 180}, 362.0},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        Fan fan(row.vDegrees);
        EXPECT_NEAR(fan.pCE->getDihedralAngle(&fan.mesh), row.expected, 1e-6);
        EXPECT_NEAR(fan.pCE->getDihedralAngle(fan.positions()), row.expected, 1e-6);
    }
    Fan flat({0, 180});
    flat.mesh.getVtx(flat.vT[1]->getThirdCCD(flat.a, flat.b))->set(0, 0, 1);
    EXPECT_EQ(flat.pCE->getDihedralAngle(&flat.mesh), 364.0);
    const StreamCapture capture;
    EXPECT_THROW((void)flat.pCE->getDihedralAngle(std::map<u64, Point3>()), ZefBugException);
}

TEST(CEdgeFlip, keepsBorderAndOrientation)
{
    SheetMesh sheet;
    sheet.addSheet(6);
    CMesh& mesh = sheet.mesh;
    std::mt19937 rng(11);
    int numFlips = 0;
    for (int i = 0; i < 400; ++i)
    {
        std::vector<CEdge*> vCE;
        mesh.getDegN(DEG_INNER, vCE);
        CEdge* pCE = vCE[rng() % vCE.size()];
        const u64 ccd0 = pCE->vCT[0]->getThirdCCD(pCE->v0, pCE->v1);
        const u64 ccd1 = pCE->vCT[1]->getThirdCCD(pCE->v0, pCE->v1);
        if (mesh.hasEdge(ccd0, ccd1))
            continue;
        CEdge* pNewCE = pCE->flipEdge(&mesh, nullptr, nullptr);
        ASSERT_NE(pNewCE, nullptr);
        EXPECT_TRUE(pNewCE->hasVCD(ccd0) && pNewCE->hasVCD(ccd1));
        ++numFlips;
    }
    EXPECT_GT(numFlips, 100);
    expectConsistent(mesh);
    EXPECT_TRUE(sheet.isOriented());
    EXPECT_EQ(mesh.getNumAliveT(), 72u);
    EXPECT_EQ(sheet.getBorders().size(), 24u);
}

TEST(CEdgeFlip, refusesInWordsWhatItIsNotSure)
{
    Fan fan({0, 120, 240});
    const StreamCapture capture;
    EXPECT_EQ(fan.pCE->flipEdge(&fan.mesh, nullptr, nullptr), nullptr);
    EXPECT_TRUE(capture.contains("Edge not flipped, !getTwoTriangles()"));
    ASSERT_NE(fan.pCE->flipEdge(&fan.mesh, fan.vT[0], fan.vT[1]), nullptr);
    EXPECT_TRUE(fan.vT[2]->isAlive());
    EXPECT_EQ(fan.pCE->getDegree(), 1);
    EXPECT_EQ(fan.pCE->flipEdge(&fan.mesh, fan.vT[0], fan.vT[2]), nullptr);
    EXPECT_TRUE(capture.contains("pCT0 or pCT1 not alive"));
    expectConsistent(fan.mesh);
}

// --- Splits ------------------------------------------------------------------------------------------------

TEST(CEdgeSplit, splitsAllNeighboursOrNothing)
{
    struct Row
    {
        const char* name;
        std::vector<double> vDegrees; // of the neighbours
        double thirdX;                // of the triangle to kill; its corner may stand off the edge
        bool bSplit;
    };
    const Row rows[] = {
        {"border", {}, 0.01, true},
        {"one neighbour", {180}, 0.01, true},
        {"fin", {180, 90, 270}, 0.01, true},
        {"one neighbour would fold", {180, 0}, 1.5, false}, // the corner lies beyond its third corner
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        Fan fan(row.vDegrees);
        const u64 third = fan.cellAt(7, 7, 7, Point3(row.thirdX, 0, 1));
        CTriangle* pKillCT = fan.add(fan.a, fan.b, third);
        CEdge* pCE = fan.mesh.getCE(fan.a, fan.b);
        CPatch patch(&fan.mesh, &fan.calc);
        for (CTriangle* pCT : fan.vT)
            patch.addT(pCT);
        std::vector<CTriangle*> vKids;
        const std::size_t numMade = fan.mesh.getAllT().size();
        EXPECT_EQ(pCE->trySplitNeigsKillT(&fan.mesh, pKillCT, 2, vKids), row.bSplit);
        expectConsistent(fan.mesh);
        EXPECT_EQ(pKillCT->isAlive(), !row.bSplit);
        const std::size_t numKids = row.bSplit ? 2 * row.vDegrees.size() : 0;
        EXPECT_EQ(vKids.size(), numKids);
        EXPECT_EQ(fan.mesh.getAllT().size(), numMade + numKids);
        EXPECT_EQ(pCE->getDegree(), row.bSplit ? 0 : static_cast<int>(row.vDegrees.size()) + 1);
        for (std::size_t i = 0; i < vKids.size(); ++i)
        {
            EXPECT_TRUE(vKids[i]->hasCorner(third));
            EXPECT_TRUE(patch.isMember(vKids[i]));
            Vector3 own, before;
            bool bOK = false;
            fan.vT[i / 2]->getNNV(before, &fan.mesh, bOK);
            vKids[i]->getNNV(own, &fan.mesh, bOK);
            EXPECT_GT(own * before, 0.9) << "kid " << i << " is turned over";
        }
    }
}

// Sheets with corners moved onto lines between others.
TEST(CMeshSplitDegenerate, leavesNoFlatTriangleAndNoGap)
{
    for (unsigned int seed = 0; seed < 20; ++seed)
    {
        SCOPED_TRACE(seed);
        SheetMesh sheet;
        sheet.addSheet(8);
        std::mt19937 rng(seed);
        // Of the triangle (x,y), (x+1,y), (x+1,y+1): its last corner goes between the other two.
        for (int i = 0; i < 3; ++i)
        {
            const int x = 1 + static_cast<int>(rng() % 2) + 2 * i;
            const int y = 1 + static_cast<int>(rng() % 5);
            const Point3 p = sheet.mesh.getAvgPoint(sheet.cell(x, y, 8));
            sheet.mesh.getVtx(sheet.cell(x + 1, y + 1, 8))->set(p.x() + 0.5, p.y(), p.z());
        }
        const StreamCapture capture;
        ASSERT_FALSE(sheet.mesh.checkNoDegenerate("before"));
        sheet.mesh.splitDegenerate();
        expectConsistent(sheet.mesh);
        EXPECT_TRUE(sheet.mesh.checkNoDegenerate("after"));
        EXPECT_EQ(sheet.getBorders().size(), 32u);
    }
}

TEST(CMeshKillDuplicates, theFirstOfEachSetStays)
{
    for (unsigned int seed = 0; seed < 20; ++seed)
    {
        LatticeMesh lattice;
        std::mt19937 rng(seed);
        std::vector<u64> vCells;
        for (int i = 0; i < 7; ++i)
            vCells.push_back(lattice.cell(8 + i % 2, 8 + i / 2 % 2, 8 + i / 4));
        std::map<std::array<u64, 3>, CTriangle*> mFirst;
        for (int i = 0; i < 90; ++i)
        {
            std::shuffle(vCells.begin(), vCells.end(), rng);
            CTriangle* pCT = lattice.mesh.createT(vCells[0], vCells[1], vCells[2], 0, 0);
            // Dead ones count for nothing.
            if (rng() % 4 == 0)
            {
                pCT->kill(&lattice.mesh);
                continue;
            }
            std::array<u64, 3> key = {vCells[0], vCells[1], vCells[2]};
            std::sort(key.begin(), key.end());
            mFirst.emplace(key, pCT);
        }
        const std::size_t numBefore = lattice.mesh.getNumAliveT();
        const int numKilled = lattice.mesh.killDuplicates();
        expectConsistent(lattice.mesh);
        EXPECT_EQ(lattice.mesh.getNumAliveT(), mFirst.size());
        EXPECT_EQ(static_cast<std::size_t>(numKilled), numBefore - mFirst.size());
        for (const auto& [key, pCT] : mFirst)
            EXPECT_TRUE(pCT->isAlive());
        EXPECT_EQ(lattice.mesh.killDuplicates(), 0);
    }
}

// --- Collapse ----------------------------------------------------------------------------------------------

TEST(CMeshCollapse, midpointMergesTheLowerEndIntoTheUpper)
{
    SheetMesh sheet;
    sheet.addSheet(6);
    CMesh& mesh = sheet.mesh;
    CEdge* pCE = mesh.getCE(sheet.cell(2, 3, 8), sheet.cell(3, 3, 8));
    const Point3 old0 = mesh.getAvgPoint(pCE->v0);
    const Point3 old1 = mesh.getAvgPoint(pCE->v1);
    EXPECT_EQ(mesh.collapseEdgeToMidpoint(pCE), pCE->v1);
    expectConsistent(mesh);
    EXPECT_EQ(mesh.getNumAliveT(), 70u);
    EXPECT_TRUE(sheet.isManifold());
    EXPECT_TRUE(sheet.isOriented());
    EXPECT_EQ(sheet.getBorders().size(), 24u);
    EXPECT_EQ(mesh.getAvgPoint(pCE->v0), old0);
    EXPECT_EQ(mesh.getAvgPoint(pCE->v1), Point3((old0.x() + old1.x()) / 2, old0.y(), old0.z()));
    // The edge is an orphan now.
    EXPECT_EQ(mesh.collapseEdgeToMidpoint(pCE), ~u64{0});
    EXPECT_EQ(mesh.getNumAliveT(), 70u);
}

TEST(CMeshCollapse, theLinkTest)
{
    SheetMesh sheet;
    sheet.addSheet(6);
    const auto at = [&](int x, int y) { return sheet.cell(x, y, 8); };
    struct Row
    {
        const char* name;
        u64 src, trg;
        bool bExpected;
    };
    const Row rows[] = {
        {"ends of an edge", at(2, 2), at(3, 2), false}, // their triangle stands at both
        {"far apart", at(1, 1), at(5, 5), true},
        {"opposite corners over an edge", at(2, 3), at(3, 2), false}, // both see the same diagonal
        {"neighbours without a common triangle", at(2, 2), at(4, 2), true},
        {"no triangle at the source", sheet.cell(20, 20, 8), at(2, 2), false},
        {"no triangle at the target", at(2, 2), sheet.cell(20, 20, 8), false},
        {"unknown to the mesh", at(2, 2), sheet.calc.getCCD(Point3(40, 40, 40)), false},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(sheet.mesh.canCollapse(row.src, row.trg), row.bExpected);
    }
    CEdge* pCE = sheet.mesh.getCE(at(2, 2), at(3, 2));
    EXPECT_FALSE(sheet.mesh.collapseEdgeToEndpoint(pCE, at(2, 2), at(3, 2)));
    const StreamCapture capture;
    EXPECT_THROW(sheet.mesh.collapseEdgeToEndpoint(pCE, at(2, 2), at(4, 4)), ZefBugException);
    EXPECT_EQ(sheet.mesh.getNumAliveT(), 72u);
}

// --- Moves -------------------------------------------------------------------------------------------------

// A corner amid a fan of numReal real and numExtra extra ring points.
TEST(CMeshAverageBundle, goesJustPastTheMeanOfItsRing)
{
    struct Row
    {
        const char* name;
        int numReal, numExtra;
        bool bExtraCount; // whether the extra points are in the mean
    };
    const Row rows[] = {
        {"real ring", 4, 0, false},
        {"enough real points", 3, 3, false},
        {"too few real points", 2, 3, true},
        {"only extra points", 0, 4, true},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        SheetMesh sheet;
        CMesh& mesh = sheet.mesh;
        const int num = row.numReal + row.numExtra;
        const u64 centre = sheet.calc.getCCD(Point3(11.5, 11.5, 21.5));
        mesh.addBundle(centre);
        double x = 0.0, y = 0.0, z = 0.0;
        u64 last = 0;
        for (int i = 0; i < num; ++i)
        {
            const u64 ccd = sheet.calc.getCCD(Point3(10.5 + i % 3, 10.5 + i / 3, 20.5));
            if (i < row.numReal)
                sheet.cellAt(10 + i % 3, 10 + i / 3, 20, Point3(i * i, 3.0 * i, 5.0 - i));
            else
                mesh.addBundle(ccd);
            if (i < row.numReal || row.bExtraCount)
                mesh.getVtx(ccd)->addOwnCoords(x, y, z);
            if (i > 0)
                sheet.add(centre, last, ccd);
            last = ccd;
        }
        const int numMean = row.bExtraCount ? num : row.numReal;
        // The last edge created at the centre leads to the last ring point.
        const Point3 from = mesh.getAvgPoint(last);
        const Point3 expected = from + (Point3(x / numMean, y / numMean, z / numMean) - from) * 1.003;
        for (int i = 0; i < 50; ++i)
        {
            mesh.averageBundle(mesh.findBundle(centre));
            const Point3 pos = mesh.getAvgPoint(centre);
            EXPECT_GE(pos.x() - expected.x(), -1e-12);
            EXPECT_LE(pos.x() - expected.x(), 1.0001e-05);
            EXPECT_NEAR(pos.y(), expected.y(), 1e-12);
            EXPECT_NEAR(pos.z(), expected.z(), 1e-12);
        }
    }
}

TEST(CMeshLaplacian, movesAShortWayAndFoldsNothing)
{
    SheetMesh sheet;
    sheet.addSheet(4);
    CMesh& mesh = sheet.mesh;
    const u64 centre = sheet.cell(2, 2, 8);
    const StreamCapture capture;
    EXPECT_FALSE(mesh.laplacianForOne(sheet.cell(30, 30, 30))) << "nothing around it";

    mesh.getVtx(centre)->set(2.5, 2.5, 10.5); // two above its ring
    EXPECT_TRUE(mesh.laplacianForOne(centre));
    EXPECT_NEAR(mesh.getAvgPoint(centre).z(), 10.4, 1e-9) << "a tenth of the spacing";
    mesh.getVtx(centre)->set(2.52, 2.47, 8.5);
    EXPECT_TRUE(mesh.laplacianForOne(centre));
    EXPECT_NEAR(sqDistance(mesh.getAvgPoint(centre), Point3(2.5, 2.5, 8.5)), 0.0, 1e-18);
    EXPECT_TRUE(capture.contains("devAngle would be "));

    // Just off an edge of its ring, the step leads across it.
    mesh.getVtx(sheet.cell(3, 3, 8))->set(2.4, 2.55, 8.5);
    mesh.getVtx(sheet.cell(3, 2, 8))->set(2.4, 2.45, 8.5);
    mesh.getVtx(centre)->set(2.38, 2.5, 8.5);
    const Point3 before = mesh.getAvgPoint(centre);
    mesh.getVtx(sheet.cell(2, 3, 8))->set(9, 2.5, 8.5);
    EXPECT_FALSE(mesh.laplacianForOne(centre));
    EXPECT_EQ(mesh.getAvgPoint(centre), before);
}

} // namespace TARN_ZEF

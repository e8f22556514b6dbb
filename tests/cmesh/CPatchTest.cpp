#include "cmesh/CPatch.h"

#include "ZefBugException.h"
#include "cmesh/Dijkstra.h"
#include "geometry/tools.h"
#include "helpers/CellMesh.h"
#include "helpers/SheetMesh.h"
#include "helpers/StreamCapture.h"
#include "helpers/checkMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <set>

namespace TARN_ZEF
{
namespace
{
const auto CLOSED = [](int, int, int) { return false; };

using EdgeSet = std::set<CEdge*, ByCreationCE>;

std::vector<CPatch*> cut(CMesh& mesh, const EdgeSet* pCuts = nullptr)
{
    std::vector<CPatch*> vPatches;
    std::map<u64, CPatch*> mBorderCCD2Patch;
    std::vector<CEdge*> vBorderME;
    mesh.createPatches(pCuts, vPatches, mBorderCCD2Patch, vBorderME);
    EXPECT_EQ(vPatches, mesh.getPatches());
    return vPatches;
}

// Edges of the alive members with the number of members that stand on them.
std::map<CEdge*, int, ByCreationCE> countMembers(const CPatch& patch)
{
    std::map<CEdge*, int, ByCreationCE> mCount;
    for (const CTriangle* pCT : patch.getMembers())
        for (int i = 0; pCT->isAlive() && i < 3; ++i)
            ++mCount[pCT->getCEdge(i)];
    return mCount;
}

void expectBoundaryQueriesRight(CPatch& patch)
{
    std::vector<CEdge*> vOuter;
    bool bClosed = patch.getSize() >= 4;
    for (const auto& [pCE, num] : countMembers(patch))
    {
        if (num == 1)
            vOuter.push_back(pCE);
        bClosed = bClosed && num >= 2;
    }
    patch.setOuterBoundary();
    EXPECT_EQ(patch.getPatchBoundary(), vOuter);
    EXPECT_EQ(patch.isClosed(), bClosed);
}

// A pillow of 4 by 4 squares whose two sheets hang on their rim, with a fin on one side's rim or on both.
// The sheets are height apart inside.
struct Pillow : SheetMesh
{
    Pillow(double height, bool bFinAbove, bool bFinBelow)
    {
        const auto corner = [&](int x, int y, bool bUpper)
        {
            const bool bRim = x == 0 || y == 0 || x == 4 || y == 4;
            const int z = bUpper && !bRim ? 9 : 8;
            const double offset = bRim ? 0.0 : bUpper ? height / 2 : -height / 2;
            return cellAt(20 + x, 20 + y, z, Point3(20.5 + x, 20.5 + y, 8.5 + offset));
        };
        for (const bool bUpper : {true, false})
            for (int x = 0; x < 4; ++x)
                for (int y = 0; y < 4; ++y)
                {
                    const u64 c[4] = {corner(x, y, bUpper), corner(x + 1, y, bUpper),
                                      corner(x + 1, y + 1, bUpper), corner(x, y + 1, bUpper)};
                    // Diagonals towards the centre, so that no triangle has all corners on the rim.
                    if ((x < 2) == (y < 2))
                        addSquare(c[0], c[1], c[2], c[3]);
                    else
                        addSquare(c[1], c[2], c[3], c[0]);
                }
        mesh.getAliveT(vPillowT);
        // The rim has a fin all around, so that the sheets are two patches; or only one edge has it.
        const u64 rim0 = corner(1, 0, true), rim1 = corner(2, 0, true);
        if (bFinAbove)
            add(rim0, rim1, cell(21, 19, 9));
        if (bFinBelow)
            add(corner(0, 1, true), corner(0, 2, true), cell(19, 21, 7));
    }
    std::vector<CTriangle*> vPillowT;
};
} // namespace

// --- Cutting into patches ----------------------------------------------------------------------------------

TEST(CPatchCut, closedMeansFourTrianglesWithoutABorder)
{
    SheetMesh sheet;
    const u64 a = sheet.cell(8, 8, 8), b = sheet.cell(9, 8, 8), c = sheet.cell(8, 9, 8),
              d = sheet.cell(8, 8, 9);
    sheet.addTetrahedron(a, b, c, d);
    CPatch* pPatch = cut(sheet.mesh).at(0);
    EXPECT_EQ(pPatch->getSize(), 4u);
    expectBoundaryQueriesRight(*pPatch);
    EXPECT_TRUE(pPatch->isClosed());
    EXPECT_NEAR(pPatch->getVolume(), 1.0 / 6, 1e-12);
    pPatch->flipAll();
    EXPECT_NEAR(pPatch->getVolume(), -1.0 / 6, 1e-12);
    sheet.mesh.getAllT()[0]->kill(&sheet.mesh);
    pPatch = cut(sheet.mesh).at(0);
    EXPECT_EQ(pPatch->getSize(), 3u);
    expectBoundaryQueriesRight(*pPatch);
}

TEST(CPatchCut, stopsAtNonManifoldEdgesAndCuts)
{
    SheetMesh sheet;
    sheet.addBox({8, 8, 8}, {2, 2, 2}, CLOSED);
    sheet.addBox({10, 10, 8}, {2, 2, 2}, CLOSED); // they share a column of two edges
    std::vector<CPatch*> vPatches;
    std::map<u64, CPatch*> mBorderCCD2Patch;
    std::vector<CEdge*> vBorderME;
    sheet.mesh.createPatches(nullptr, vPatches, mBorderCCD2Patch, vBorderME);
    ASSERT_EQ(vPatches.size(), 2u);
    std::vector<CEdge*> vDeg4;
    sheet.mesh.getDegN(4, vDeg4);
    std::sort(vDeg4.begin(), vDeg4.end(), ByCreationCE());
    EXPECT_EQ(vDeg4.size(), 2u);
    EXPECT_EQ(vBorderME, vDeg4);
    for (CPatch* pPatch : vPatches)
    {
        EXPECT_EQ(pPatch->getSize(), 48u);
        EXPECT_EQ(pPatch->vBorderME, vDeg4);
        expectBoundaryQueriesRight(*pPatch);
        EXPECT_TRUE(pPatch->isClosed());
    }
    for (const CEdge* pCE : vDeg4)
        for (const CTriangle* pCT : pCE->vCT)
            EXPECT_EQ(mBorderCCD2Patch.at(pCT->getThirdCCD(pCE->v0, pCE->v1)), pCT->getPatch());

    // A ring of degree 2 edges around the first box, halfway up.
    EdgeSet sCuts;
    for (const int i : {8, 9})
        for (const int side : {8, 10})
        {
            sCuts.insert(sheet.mesh.getCE(sheet.cell(i, side, 9), sheet.cell(i + 1, side, 9)));
            sCuts.insert(sheet.mesh.getCE(sheet.cell(side, i, 9), sheet.cell(side, i + 1, 9)));
        }
    const std::vector<CPatch*> vCut = cut(sheet.mesh, &sCuts);
    ASSERT_EQ(vCut.size(), 3u);
    for (CPatch* pPatch : vCut)
    {
        pPatch->setOuterBoundary();
        std::vector<CEdge*> vExpected; // of the box without a cut
        if (pPatch->getSize() != 48u)
            vExpected.assign(sCuts.begin(), sCuts.end());
        EXPECT_EQ(pPatch->getPatchBoundary(), vExpected);
    }
    sheet.mesh.createCCPatches();
    ASSERT_EQ(sheet.mesh.getPatches().size(), 1u);
    expectBoundaryQueriesRight(*sheet.mesh.getPatches()[0]);
}

// On rough meshes: the pieces are those of a plain search, and the boundary queries agree with a count, both
// from what the flood left behind and after triangles died.
TEST(CPatchCut, agreesWithAPlainSearchOnRoughMeshes)
{
    for (unsigned int seed = 0; seed < 12; ++seed)
    {
        SCOPED_TRACE(seed);
        CellMesh cells(7, seed, randomCells(25 + 5 * (seed % 6)));
        CMesh& mesh = cells.mesh();
        const std::vector<CPatch*> vPatches = cut(mesh);
        std::size_t numMembers = 0;
        for (CPatch* pPatch : vPatches)
        {
            numMembers += pPatch->getSize();
            for (const CTriangle* pCT : pPatch->getMembers())
            {
                EXPECT_TRUE(pPatch->isMember(pCT));
                for (int i = 0; i < 3; ++i)
                {
                    const CTriangle* pNeigT = pCT->getCEdge(i)->getNeigT(pCT);
                    EXPECT_TRUE(pNeigT == nullptr || pPatch->isMember(pNeigT));
                }
            }
            expectBoundaryQueriesRight(*pPatch);
        }
        EXPECT_EQ(numMembers, mesh.getNumAliveT());
        std::mt19937 rng(seed);
        for (CTriangle* pCT : mesh.getAllT())
            if (pCT->isAlive() && rng() % 10 == 0)
                pCT->kill(&mesh);
        for (CPatch* pPatch : vPatches)
        {
            std::vector<CEdge*> vOuter;
            for (const auto& [pCE, num] : countMembers(*pPatch))
                if (num == 1)
                    vOuter.push_back(pCE);
            pPatch->setOuterBoundary();
            EXPECT_EQ(pPatch->getPatchBoundary(), vOuter);
        }
        expectConsistent(mesh);
    }
}

TEST(CPatchLife, assimilateJoinsMembersAndBoundaries)
{
    SheetMesh sheet;
    sheet.addSheet(4);
    EdgeSet sCuts;
    for (int y = 0; y < 4; ++y)
        sCuts.insert(sheet.mesh.getCE(sheet.cell(2, y, 8), sheet.cell(2, y + 1, 8)));
    const std::vector<CPatch*> vPatches = cut(sheet.mesh, &sCuts);
    ASSERT_EQ(vPatches.size(), 2u);
    for (CPatch* pPatch : vPatches)
        pPatch->setOuterBoundary();
    vPatches[0]->assimilate(vPatches[1], true);
    EXPECT_FALSE(vPatches[1]->isAlive());
    EXPECT_EQ(vPatches[0]->getSize(), 32u);
    const std::vector<CEdge*> vMerged = vPatches[0]->getPatchBoundary();
    EXPECT_EQ(vMerged.size(), 16u);
    expectBoundaryQueriesRight(*vPatches[0]);
    EXPECT_EQ(vPatches[0]->getPatchBoundary(), vMerged);
    vPatches[0]->setNumInnerVtx();
    EXPECT_EQ(vPatches[0]->getNumInnerVtx(), 9);
    const StreamCapture capture;
    EXPECT_THROW(vPatches[1]->setOuterBoundary(), ZefBugException);
    EXPECT_THROW(vPatches[0]->assimilate(vPatches[1], false), ZefBugException);
    vPatches[0]->kill();
    EXPECT_EQ(sheet.mesh.getNumAliveT(), 0u);
    expectConsistent(sheet.mesh);
}

TEST(CPatchEdges, byDegreeInTheMeshAndInThePatch)
{
    SheetMesh sheet;
    sheet.addSheet(3);
    sheet.add(sheet.cell(1, 1, 8), sheet.cell(2, 1, 8), sheet.cell(1, 1, 9)); // a fin
    CPatch* pPatch = cut(sheet.mesh).at(0);
    const CEdge* pFinCE = sheet.mesh.getCE(sheet.cell(1, 1, 8), sheet.cell(2, 1, 8));
    ASSERT_EQ(pPatch->getSize(), 18u);
    std::vector<CEdge*> vHigh, vOwnTwo, vTwo, vOne;
    pPatch->getHighDegCE(vHigh);
    EXPECT_EQ(vHigh, std::vector<CEdge*>{const_cast<CEdge*>(pFinCE)});
    pPatch->getDegWithRespectToOwn(2, vOwnTwo);
    pPatch->getCEByDegree(2, vTwo);
    EXPECT_EQ(vOwnTwo.size(), vTwo.size() + 1);
    pPatch->getCEByDegree(1, vOne);
    EXPECT_EQ(vOne.size(), 12u);
    // An edge with two members is inner, whatever stands on it besides.
    expectBoundaryQueriesRight(*pPatch);
    EXPECT_EQ(pPatch->getPatchBoundarySize(), 12u);

    for (const auto& [num, numExpected] :
         {std::pair<int, std::size_t>{1, 12}, {2, 21}, {-1, 12}, {-2, 21}, {-3, 0}, {-4, 0}})
    {
        std::vector<CEdge*> vCE;
        getDegNEdges(num, pPatch->getMembers(), vCE);
        EXPECT_EQ(vCE.size(), numExpected) << num;
    }
    const StreamCapture capture;
    EXPECT_THROW(pPatch->getCEByDegree(0, vOne), ZefBugException);
}

// --- Orientation -------------------------------------------------------------------------------------------

TEST(CPatchOrient, aClosedPatchFacesOutwards)
{
    for (unsigned int seed = 0; seed < 8; ++seed)
    {
        SCOPED_TRACE(seed);
        SheetMesh sheet;
        sheet.addBox({8, 8, 8}, {3, 2, 4}, CLOSED);
        std::mt19937 rng(seed);
        for (CTriangle* pCT : sheet.mesh.getAllT())
            if (rng() % 2 == 0)
                pCT->flipOrientation();
        CPatch* pPatch = cut(sheet.mesh).at(0);
        pPatch->orient();
        EXPECT_TRUE(sheet.isOriented());
        EXPECT_NEAR(pPatch->getVolume(), 24.0, 1e-9);
        expectConsistent(sheet.mesh);
    }
}

TEST(CPatchOrient, levelStaysAsItIs)
{
    SheetMesh sheet; // upright: no normal has a z
    const CTriangle* pCT = sheet.add(sheet.cell(8, 8, 8), sheet.cell(9, 8, 8), sheet.cell(8, 8, 9));
    CPatch* pPatch = cut(sheet.mesh).at(0);
    for (int i = 0; i < 2; ++i)
    {
        const u64 c1 = pCT->getC1();
        pPatch->orientPatch();
        EXPECT_EQ(pCT->getC1(), c1);
        pPatch->flipAll();
    }
    const StreamCapture capture;
    EXPECT_THROW(CPatch(&sheet.mesh, &sheet.calc).orientPatch(), ZefBugException);
    EXPECT_TRUE(capture.contains("reorientation failed"));
}

// --- Split -------------------------------------------------------------------------------------------------

TEST(CPatchSplit, takesTheFreeSideOfAThinVolume)
{
    struct Row
    {
        const char* name;
        double height;
        bool bFinAbove, bFinBelow, bStrict, bSplit;
    };
    const Row rows[] = {
        {"thin, anchored once", 0.2, true, false, true, true},
        {"thin, nothing to begin at", 0.2, false, false, false, false},
        {"small and not thick", 0.9, true, false, true, true},
        {"small but thick", 4.0, true, false, false, false},
    };
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        Pillow pillow(row.height, row.bFinAbove, row.bFinBelow);
        CPatch* pPatch = nullptr;
        for (CPatch* p : cut(pillow.mesh))
            if (p->isMember(pillow.vPillowT[0]))
                pPatch = p;
        ASSERT_EQ(pPatch->getSize(), 64u);
        ASSERT_TRUE(pPatch->isClosed());
        EXPECT_EQ(pPatch->canBeSplit(), row.bFinAbove || row.bFinBelow);
        EXPECT_EQ(pPatch->splitClosedPatchKill(row.bStrict), row.bSplit);
        expectConsistent(pillow.mesh);
        // The rim is manifold but for the edge with the fin: only there do the sides change, so all but that
        // seam is one side unless the flood meets it.
        const auto numDead = std::count_if(pillow.vPillowT.begin(), pillow.vPillowT.end(),
                                           [](const CTriangle* pCT) { return !pCT->isAlive(); });
        EXPECT_EQ(numDead > 0, row.bSplit);
        EXPECT_LE(numDead, 32) << "never the larger side";
    }
}

// --- Partners and paths ------------------------------------------------------------------------------------

TEST(CPatchPartners, shareOfEdgesWithAFaceNeighbour)
{
    SheetMesh sheet;
    // Four half-planes on a line of ten edges: +x and -x, +y and -y.
    const auto axis = [&](int i) { return sheet.cell(20, 20, 8 + i); };
    for (int i = 0; i < 10; ++i)
        for (const auto& [dx, dy] : {std::pair{1, 0}, {-1, 0}, {0, 1}, {0, -1}})
            sheet.addSquare(axis(i), axis(i + 1), sheet.cell(20 + dx, 20 + dy, 9 + i),
                            sheet.cell(20 + dx, 20 + dy, 8 + i));
    std::vector<CPatch*> vPatches;
    std::map<u64, CPatch*> mCCDPatch;
    std::vector<CEdge*> vBorderME;
    sheet.mesh.createPatches(nullptr, vPatches, mCCDPatch, vBorderME);
    ASSERT_EQ(vPatches.size(), 4u);
    EXPECT_EQ(vBorderME.size(), 10u);
    // The opposite half-plane differs in one axis, the two others in two.
    for (CPatch* pPatch : vPatches)
    {
        pPatch->setPartnerCertainty(mCCDPatch);
        EXPECT_EQ(pPatch->getPartnerCertainty(), 1.0);
        EXPECT_EQ(pPatch->getPartners().size(), 3u);
    }
    const StreamCapture capture;
    EXPECT_THROW(vPatches[0]->setPartnerCertainty(std::map<u64, CPatch*>()), ZefBugException);
}

// Cheapest paths on a bumpy sheet: each path costs what its end says, and no edge would shorten one.
TEST(CPatchPaths, theCheapestOnesOnABumpySheet)
{
    for (unsigned int seed = 0; seed < 10; ++seed)
    {
        SCOPED_TRACE(seed);
        SheetMesh sheet;
        sheet.addSheet(6);
        std::mt19937 rng(seed);
        std::uniform_real_distribution<double> height(0.0, 8.0);
        std::map<u64, Point3> mPos = sheet.positions();
        Dijkstra::EdgeMap mInner;
        for (auto& [ccd, p] : mPos)
        {
            p.set(p.x(), p.y(), height(rng));
            mInner[ccd];
        }
        std::vector<CEdge*> vInnerCE;
        sheet.mesh.getDegN(DEG_INNER, vInnerCE);
        for (CEdge* pCE : vInnerCE)
            for (const u64 ccd : {pCE->v0, pCE->v1})
                mInner[ccd].push_back(pCE);
        const auto cost = [&](const CEdge* pCE)
        {
            const double angle = pCE->getDihedralAngle(mPos);
            const double factor = angle < 50.0 ? 0.3 : angle > 95.0 ? 1.5 : 1.0;
            return factor * std::sqrt(sqDistance(mPos[pCE->v0], mPos[pCE->v1]));
        };
        const u64 source = sheet.cell(2, 3, 8);
        Dijkstra::NodeMap mNodes;
        auto& pSource = mNodes[source];
        pSource = std::make_unique<Dijkstra>(source, &mNodes, &mInner);
        pSource->update(nullptr, 0.0, mPos);
        EXPECT_EQ(mNodes.size(), 47u) << "but for two corners of the sheet without an inner edge";
        for (const CEdge* pCE : vInnerCE)
            EXPECT_LE(std::fabs(mNodes[pCE->v0]->dist - mNodes[pCE->v1]->dist), cost(pCE) + 1e-9);
        for (const auto& [ccd, pNode] : mNodes)
        {
            std::vector<CEdge*> vPath;
            pNode->getBackPath(vPath);
            u64 at = ccd;
            double sum = 0.0;
            for (const CEdge* pCE : vPath)
            {
                sum += cost(pCE);
                at = pCE->getOtherVCD(at);
            }
            EXPECT_EQ(at, source);
            EXPECT_NEAR(sum, pNode->dist, 1e-9);
        }
    }
}

TEST(CPatchPaths, joinTheLooseEndsOfTheBorder)
{
    // Two sheets side by side; on their common line, the seam, only the middle edges have a fin. From its two
    // ends a path runs over the inside.
    SheetMesh sheet;
    sheet.addSheet(6);
    for (int y = 2; y < 4; ++y)
        sheet.add(sheet.cell(3, y, 8), sheet.cell(3, y + 1, 8), sheet.cell(3, y, 9));
    CPatch* pPatch = cut(sheet.mesh).at(0);
    ASSERT_EQ(pPatch->getSize(), 72u);
    const std::map<u64, Point3> mPos = sheet.positions();
    std::vector<CEdge*> vPath;
    pPatch->findPartitioningPath(vPath, mPos);
    std::map<u64, int> mTouch;
    for (const CEdge* pCE : vPath)
    {
        EXPECT_EQ(pCE->getDegree(), 2);
        ++mTouch[pCE->v0];
        ++mTouch[pCE->v1];
    }
    for (const auto& [ccd, num] : mTouch)
        EXPECT_EQ(num, ccd == sheet.cell(3, 2, 8) || ccd == sheet.cell(3, 4, 8) ? 1 : 2);
    EXPECT_EQ(mTouch.count(sheet.cell(3, 2, 8)) + mTouch.count(sheet.cell(3, 4, 8)), 2u);
}

} // namespace TARN_ZEF

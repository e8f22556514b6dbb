#include "repair/TopMelt.h"

#include "geometry/tools.h"
#include "helpers/PipelineMesh.h"
#include "helpers/SheetMesh.h"
#include "helpers/StreamCapture.h"
#include "helpers/checkMesh.h"
#include "helpers/meshShapes.h"

#include <gtest/gtest.h>

namespace TARN_ZEF
{
namespace
{
struct Melt : Extraction<TopMelt>
{
    explicit Melt(const std::vector<Point3>& vSoup)
        : Extraction(vSoup, 0.07, true)
    {
        cloudMgr.getFeatures(vFeatures);
    }
    std::vector<std::pair<u64, u64>> vFeatures;
};

double getVolume(const CMesh& mesh)
{
    std::vector<Point3> vCorners;
    for (const CTriangle* pCT : mesh.getAllT())
        for (int i = 0; pCT->isAlive() && i < 3; ++i)
            vCorners.push_back(*pCT->getVtx(&mesh, i));
    return computeVolume(vCorners);
}
} // namespace

// A box in a box: the flow turns and keeps both, growing keeps the outer one.
TEST(TopMelt, finalizedBoxesAreClosedAndKeepTheirEdges)
{
    const StreamCapture quiet;
    std::vector<Point3> vSoup = boxSoup({-1.0, -0.8, -0.6}, {2.0, 1.6, 1.2});
    const std::vector<Point3> vInner = boxSoup({-0.5, -0.4, -0.3}, {1.0, 0.8, 0.6});
    vSoup.insert(vSoup.end(), vInner.begin(), vInner.end());
    Melt melt(vSoup);
    CMesh& mesh = melt.mesh();
    EXPECT_GT(countDisagreeing(mesh), 0u);
    melt.pTop->finalize2(melt.vFeatures);
    expectConsistent(mesh);
    EXPECT_EQ(countDisagreeing(mesh), 0u);
    EXPECT_EQ(countEdges(mesh, -5), 0u);
    ASSERT_FALSE(melt.vFeatures.empty());
    for (const auto& [ccd0, ccd1] : melt.vFeatures)
        EXPECT_TRUE(mesh.hasEdge(ccd0, ccd1) && melt.pTop->getFeatureCCDs().count(ccd0) == 1);
    melt.pTop->flipCreases(); // nothing bends by more than a right angle
    melt.pTop->removeCreaseCCDs();
    EXPECT_NEAR(mesh.getArea(), 1.25 * 8.0 * (0.8 + 0.6 + 0.48), 0.3);

    const std::vector<CTriangle*> vAllT = mesh.getAllT();
    melt.pTop->meshGrowing(vAllT, false);
    expectConsistent(mesh);
    for (const CTriangle* pCT : vAllT)
        EXPECT_TRUE(!pCT->isAlive() || pCT->bVisited);
    EXPECT_EQ(countDisagreeing(mesh), 0u);
    EXPECT_NEAR(getVolume(mesh), 8.0 * 0.48, 0.2); // facing outwards
}

TEST(TopMelt, growingStopsAtAKnownBorder)
{
    const StreamCapture quiet;
    SheetMesh sheet;
    sheet.addCube(8);
    TopMelt top(&sheet.mesh, &sheet.calc);
    const std::vector<CTriangle*> vAllT = sheet.mesh.getAllT();
    EXPECT_THROW((void)top.getFlippedMaxT_for_open_melt(vAllT), ZefBugException); // no border is known
    // A ring around the cube.
    for (int i = 8; i <= 16; ++i)
        for (const int side : {8, 16})
        {
            top.addBorderCCD(sheet.cell(12, i, side));
            top.addBorderCCD(sheet.cell(12, side, i));
        }
    top.meshGrowing(vAllT, true);
    expectConsistent(sheet.mesh);
    EXPECT_EQ(sheet.getBorders().size(), 32u);
    for (const CTriangle* pCT : vAllT) // one side of the ring
        for (int i = 0; pCT->isAlive() && i < 3; ++i)
            EXPECT_GE(pCT->getVtx(&sheet.mesh, i)->x(), 12.0);
    EXPECT_TRUE(sheet.isOriented());
}

// A needle over a thin, flat body: its tip bends by far more than 140 degrees, and so would the lid.
TEST(TopMelt, needleLosesItsTip)
{
    for (const double depth : {0.01, 9.0}) // of the body below; a deep one would leave no crease
    {
        SheetMesh sheet;
        const u64 r[3] = {sheet.cellAt(1, 1, 1, Point3(0, 0, 0)), sheet.cellAt(2, 1, 1, Point3(4, 0, 0)),
                          sheet.cellAt(1, 2, 1, Point3(2, 0.35, 0))};
        const u64 tip = sheet.cellAt(1, 1, 2, Point3(2, 0.15, 10));
        const u64 bottom = sheet.cellAt(2, 2, 2, Point3(2, 0.12, -depth));
        for (int i = 0; i < 3; ++i)
        {
            sheet.add(r[i], r[(i + 1) % 3], tip);
            sheet.add(r[(i + 1) % 3], r[i], bottom);
        }
        TopMelt top(&sheet.mesh, &sheet.calc);
        std::vector<CEdge*> vIncCE;
        sheet.mesh.getIncCE(tip, vIncCE);
        EXPECT_FALSE(top.tryRemoveCCD(tip, vIncCE, 179.5)); // no edge bends so much
        EXPECT_EQ(top.tryRemoveCCD(tip, vIncCE, 140.0), depth < 1.0);
        EXPECT_EQ(sheet.mesh.getNumAliveT(), depth < 1.0 ? 4u : 6u);
        EXPECT_TRUE(sheet.getBorders().empty());
        EXPECT_TRUE(sheet.isOriented());
        expectConsistent(sheet.mesh);
    }
}

} // namespace TARN_ZEF

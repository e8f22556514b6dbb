#include "repair/Top.h"

#include "helpers/PipelineMesh.h"
#include "helpers/QuadMesh.h"
#include "helpers/StreamCapture.h"
#include "helpers/checkMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace TARN_ZEF
{
namespace
{

// A sheet of n by m unit squares.
struct Sheet : SheetMesh
{
    Sheet(int n, int m)
    {
        addSheet(std::max(n, m), [=](int x, int y) { return x >= n || y >= m; });
    }
    Top top{&mesh, &calc};
};

// Over all edges of degree 2: what the flips minimise.
double getEnergy(const CMesh& mesh)
{
    double sum = 0.0;
    std::vector<CEdge*> vDeg2;
    mesh.getDegN(DEG_INNER, vDeg2);
    for (const CEdge* pCE : vDeg2)
        sum += getBendEnergy(mesh, pCE);
    return sum;
}

std::vector<std::pair<u64, Point3>> getBorderCorners(const CMesh& mesh)
{
    std::vector<CEdge*> vBorders;
    mesh.getDegN(DEG_BORDER, vBorders);
    std::vector<std::pair<u64, Point3>> vCorners;
    for (const CEdge* pCE : vBorders)
        for (const u64 ccd : {pCE->v0, pCE->v1})
            vCorners.emplace_back(ccd, *mesh.getVtx(ccd));
    return vCorners;
}

} // namespace

TEST(TopSimplify, passesOnPipelineMeshes)
{
    const StreamCapture quiet;
    for (const NamedCloud& cloud : getClouds())
    {
        SCOPED_TRACE(cloud.name);
        PipelineMesh repaired(cloud.vPoints, true);
        CMesh& mesh = repaired.mesh();
        Top& top = repaired.top();
        for (const double maxAngle : {1.0, 0.1, 0.1})
        {
            const double before = getEnergy(mesh);
            top.edgeFlips(maxAngle);
            EXPECT_LE(getEnergy(mesh), before);
            expectConsistent(mesh);
        }
        const bool bClosed = countEdges(mesh, -5) == 0;
        const double area = mesh.getArea();
        const std::size_t numT = mesh.getNumAliveT();
        const auto vCorners = getBorderCorners(mesh);
        for (int passNo = 0; top.simplify(passNo, 2.0 * mesh.getAvgSpacing(), SM_MID_THEN_ENDS); ++passNo)
            expectConsistent(mesh);
        EXPECT_LT(mesh.getNumAliveT(), numT);
        EXPECT_NEAR(mesh.getArea(), area, 0.02 * area);
        // A collapse looks at planes only: on a rough surface it can pinch.
        if (cloud.bClosed)
        {
            EXPECT_EQ(countEdges(mesh, -5) == 0, bClosed);
        }
        for (const auto& [ccd, pos] : vCorners)
        {
            std::vector<CTriangle*> vIncT;
            mesh.getIncT(ccd, vIncT);
            EXPECT_TRUE(!vIncT.empty() && *mesh.getVtx(ccd) == pos) << ccd;
        }
        const std::function<void()> aRest[] = {[&] { top.flipCreases(); }, [&] { top.flipExtremeCaps(true); },
                                               [&] { top.killBorderEars(); }, [&] { top.optimize(); }};
        for (const auto& pass : aRest)
        {
            pass();
            expectConsistent(mesh);
            EXPECT_TRUE(mesh.checkNoDups(cloud.name));
        }
    }
}

TEST(TopSimplify, collapsesOfAPlaneKeepIt)
{
    const StreamCapture quiet;
    const struct
    {
        const char* name;
        int n, m;
        double maxLen;
        SimplifyMode mode;
        int passNo;
        std::size_t numT; // afterwards
        bool bAgain;
    } aCases[] = {
        {"no inner edge", 2, 2, DBL_MAX, SM_MID, 0, 8, false},
        {"one inner edge, first pass", 3, 2, DBL_MAX, SM_MID, 0, 10, true},
        {"one inner edge, second pass", 3, 2, DBL_MAX, SM_MID_THEN_ENDS, 1, 10, false},
        {"too long", 3, 2, 1.0, SM_MID, 0, 12, false},
        {"the ends refuse", 3, 2, DBL_MAX, SM_ENDS, 0, 12, false},
        {"11 collapses, second pass", 13, 2, DBL_MAX, SM_MID, 1, 30, true},
    };
    for (const auto& c : aCases)
    {
        SCOPED_TRACE(c.name);
        Sheet sheet(c.n, c.m);
        const auto vCorners = getBorderCorners(sheet.mesh);
        EXPECT_EQ(sheet.top.simplify(c.passNo, c.maxLen, c.mode), c.bAgain);
        EXPECT_EQ(sheet.mesh.getNumAliveT(), c.numT);
        EXPECT_NEAR(sheet.mesh.getArea(), c.n * c.m, 1e-9);
        EXPECT_EQ(getBorderCorners(sheet.mesh), vCorners);
        EXPECT_TRUE(sheet.isOriented());
        expectConsistent(sheet.mesh);
    }
}

// The flips can be chosen by features: the diagonal of each square goes where the feature runs.
TEST(TopFlips, featuresDrawTheirEdges)
{
    const StreamCapture quiet;
    Sheet sheet(4, 4);
    for (int i = 0; i <= 4; ++i)
        sheet.top.addFeatureCCD(sheet.cell(i, 4 - i, 8)); // across all diagonals of the sheet
    EXPECT_FALSE(sheet.mesh.hasEdge(sheet.cell(1, 3, 8), sheet.cell(2, 2, 8)));
    sheet.top.flipFeatures();
    for (int i = 0; i < 4; ++i)
        EXPECT_TRUE(sheet.mesh.hasEdge(sheet.cell(i, 4 - i, 8), sheet.cell(i + 1, 3 - i, 8))) << i;
    EXPECT_EQ(sheet.top.countCollinearConnectors(sheet.cell(1, 3, 8), sheet.cell(2, 2, 8)), 2);
    EXPECT_EQ(sheet.top.countCollinearConnectors(sheet.cell(0, 4, 8), sheet.cell(1, 3, 8)), 1);
    EXPECT_TRUE(sheet.isOriented());
    expectConsistent(sheet.mesh);
}

TEST(TopFlips, canFlip)
{
    QuadMesh sheet(Point3(2, 0, 0), Point3(1, 1, 0), Point3(1, -1, 0));
    const auto& [v0, v1, a, b, pCE] = std::tie(sheet.v0, sheet.v1, sheet.a, sheet.b, sheet.pCE);
    const u64 c = sheet.cellAt(9, 1, 2, Point3(3, 0.5, 0)), border = sheet.cellAt(9, 9, 9, Point3(1, -2, 0));
    Top top(&sheet.mesh, &sheet.calc);
    top.addBorderCCD(border);
    EXPECT_TRUE(top.canFlip(v0, v1, a, b));
    EXPECT_FALSE(top.canFlip(v0, v1, a, a));
    EXPECT_FALSE(top.canFlip(v0, v1, a, v1));
    EXPECT_FALSE(top.canFlip(v0, v1, a, border));
    EXPECT_FALSE(top.canFlip(v0, v1, a, c)); // a fold
    EXPECT_THROW((void)top.canFlip(v1, v0, a, b), ZefBugException);
    sheet.add(a, b, c);
    EXPECT_FALSE(top.canFlip(v0, v1, a, b));
}

TEST(TopFlips, capsAndCreases)
{
    const StreamCapture quiet;
    const struct
    {
        const char* name;
        Point3 p1, pa, pb;
        int numCaps;
        bool bCrease;
    } aCases[] = {
        {"a corner of 179 degrees", Point3(2, 0, 0), Point3(1, 0.01, 0), Point3(1, -1, 0), 1, false},
        {"a corner of 147 degrees", Point3(2, 0, 0), Point3(1, 0.3, 0), Point3(1, -1, 0), 0, false},
        {"a fold whose other diagonal is bent less", Point3(0, 10, 0), Point3(1, 5, 0.2), Point3(1, 5.1, 0),
         0, true},
        {"a fold both ways", Point3(0, 10, 0), Point3(1, 5, 0), Point3(1, 9, 0), 0, false},
    };
    for (const auto& c : aCases)
    {
        SCOPED_TRACE(c.name);
        QuadMesh quad(c.p1, c.pa, c.pb);
        Top top(&quad.mesh, &quad.calc);
        EXPECT_EQ(top.flipExtremeCaps(true), c.numCaps);
        EXPECT_EQ(quad.mesh.hasEdge(quad.a, quad.b), c.numCaps == 1);
        top.flipCreases();
        EXPECT_EQ(quad.mesh.hasEdge(quad.a, quad.b), c.bCrease || c.numCaps == 1);
        EXPECT_TRUE(quad.isOriented());
        expectConsistent(quad.mesh);
    }
}

TEST(TopSimplify, earsGoSmallestFirst)
{
    SheetMesh sheet;
    const u64 v0 = sheet.cellAt(1, 1, 1, Point3(0, 0, 0)), v1 = sheet.cellAt(2, 1, 1, Point3(1, 0, 0));
    for (int i = 1; i <= 4; ++i)
        sheet.add(v0, v1, sheet.cellAt(1, 1 + i, 3, Point3(0, i, 1)));
    Top(&sheet.mesh, &sheet.calc).killBorderEars();
    ASSERT_EQ(sheet.mesh.getCE(v0, v1)->getDegree(), 2);
    for (const CTriangle* pCT : sheet.mesh.getCE(v0, v1)->vCT)
        EXPECT_GE(sheet.mesh.getVtx(pCT->getThirdCCD(v0, v1))->y(), 3.0);
}

} // namespace TARN_ZEF

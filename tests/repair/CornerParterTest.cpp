#include "repair/CornerParter.h"
#include "helpers/SheetMesh.h"
#include "helpers/StreamCapture.h"
#include "helpers/checkMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <set>

namespace TARN_ZEF
{
namespace
{
// Whether the triangles at each corner follow each other around it across edges of two triangles.
bool hasOneFanAtEachCorner(const CMesh& mesh)
{
    std::vector<u64> vCCD;
    mesh.getUsedCCDs(vCCD);
    return std::all_of(vCCD.begin(), vCCD.end(),
                       [&](u64 ccd)
                       {
                           std::vector<CTriangle*> vIncT;
                           mesh.getIncT(ccd, vIncT);
                           std::set<const CTriangle*> sReached{vIncT[0]};
                           for (std::size_t i = 0; i < vIncT.size(); ++i)
                               for (const CTriangle* pCT : vIncT) // enough rounds for the longest way
                                   for (int k = 0; sReached.count(pCT) != 0 && k < 3; ++k)
                                       if (pCT->getCEdge(k)->hasVCD(ccd))
                                           sReached.insert(pCT->getCEdge(k)->vCT.begin(),
                                                           pCT->getCEdge(k)->vCT.end());
                           return sReached.size() == vIncT.size();
                       });
}

const auto NO_HOLE = [](int, int, int) { return false; };

// Notes a corner that has only edges of two triangles, as a fin that dies later does.
void noteCorner(CornerParter& parter, SheetMesh& s, u64 ccd)
{
    CTriangle* pFin = s.add(ccd, s.cell(30, 30, 30), s.cell(31, 30, 30));
    parter.addCandidates();
    pFin->kill(&s.mesh);
}
} // namespace

TEST(CornerParter, givesBoxesThatTouchTheirOwnCorners)
{
    struct Row
    {
        const char* name;
        std::vector<std::array<int, 3>> vLow; // of boxes of size 2
        std::size_t minNew;                   // more where the sheets are paired across instead of along
    };
    for (const Row& row : {Row{"alone", {{8, 8, 8}}, 0}, Row{"in a corner", {{8, 8, 8}, {10, 10, 10}}, 1},
                           Row{"in two corners", {{8, 8, 8}, {10, 10, 10}, {12, 12, 12}}, 2},
                           Row{"in three edges", {{8, 8, 8}, {10, 10, 8}, {8, 10, 10}}, 1},
                           Row{"along an edge", {{8, 8, 8}, {10, 10, 8}}, 1}})
    {
        SCOPED_TRACE(row.name);
        const StreamCapture quiet(std::cout);
        SheetMesh s;
        for (const std::array<int, 3>& low : row.vLow)
            s.addBox(low, {2, 2, 2}, NO_HOLE);
        const std::size_t numT = s.mesh.getNumAliveT();
        CornerParter parter(&s.mesh, &s.calc);
        noteCorner(parter, s, s.cell(10, 10, 10));
        noteCorner(parter, s, s.cell(12, 12, 12));
        std::vector<u64> vBefore, vAfter;
        s.mesh.getUsedCCDs(vBefore);
        const std::size_t numNew = parter.run();
        s.mesh.getUsedCCDs(vAfter);
        EXPECT_GE(numNew, row.minNew);
        EXPECT_TRUE(row.vLow.size() > 1 || numNew == 0);
        EXPECT_EQ(vAfter.size(), vBefore.size() + numNew);
        expectConsistent(s.mesh);
        EXPECT_EQ(s.mesh.getNumAliveT(), numT);
        EXPECT_EQ(countEdges(s.mesh, -5), 0u);
        EXPECT_EQ(countDisagreeing(s.mesh), 0u);
        EXPECT_TRUE(hasOneFanAtEachCorner(s.mesh));
        EXPECT_FALSE(s.mesh.hasNaN());
    }
}

// A spindle with a ring of eight corners stands on the corner of a box.
TEST(CornerParter, theLargestFanKeepsTheCorner)
{
    const StreamCapture quiet(std::cout);
    SheetMesh s;
    s.addBox({8, 8, 8}, {2, 2, 2}, NO_HOLE);
    const u64 apex = s.cell(10, 10, 10);
    constexpr int RING[8][2] = {{8, 8}, {10, 8}, {12, 8}, {12, 10}, {12, 12}, {10, 12}, {8, 12}, {8, 10}};
    for (int i = 0; i < 8; ++i)
    {
        const u64 from = s.cell(RING[i][0], RING[i][1], 12);
        const u64 to = s.cell(RING[(i + 1) % 8][0], RING[(i + 1) % 8][1], 12);
        s.add(apex, to, from);
        s.add(s.cell(10, 10, 14), from, to);
    }
    CornerParter parter(&s.mesh, &s.calc);
    noteCorner(parter, s, apex);
    EXPECT_EQ(parter.run(), 1u);
    std::vector<CTriangle*> vIncT;
    s.mesh.getIncT(apex, vIncT);
    EXPECT_EQ(vIncT.size(), 8u);
    expectConsistent(s.mesh);
}

TEST(CornerParter, leavesBordersWhereTheyAre)
{
    const StreamCapture quiet(std::cout);
    SheetMesh s;
    s.addSquare(s.cell(8, 8, 8), s.cell(9, 8, 8), s.cell(9, 9, 8), s.cell(8, 9, 8));
    s.addSquare(s.cell(9, 9, 8), s.cell(10, 9, 8), s.cell(10, 10, 8), s.cell(9, 10, 8));
    CornerParter parter(&s.mesh, &s.calc);
    parter.addCandidates();
    EXPECT_EQ(parter.run(), 0u);
    EXPECT_EQ(s.mesh.getAllT().size(), 4u);
}

} // namespace TARN_ZEF

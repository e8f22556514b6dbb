#include "Rotx.h"

#include "ZefBugException.h"
#include "helpers/LatticeMesh.h"
#include "helpers/StreamCapture.h"
#include "helpers/checkMesh.h"
#include "tools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>

namespace TARN_ZEF
{
namespace
{
struct Cell
{
    int x, y, z;
};
Cell operator-(const Cell& a, const Cell& b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
Vector3 toVector(const Cell& c)
{
    return Vector3(c.x, c.y, c.z);
}

// Degrees around the edge from a to b, counter-clockwise seen from b, from third corner r on to t.
double angleAround(const Cell& a, const Cell& b, const Cell& r, const Cell& t)
{
    const Vector3 axis = normalize(toVector(b - a));
    const auto flatten = [&](const Cell& c)
    {
        const Vector3 v = toVector(c - a);
        return v + axis * -(axis * v);
    };
    const Vector3 u = normalize(flatten(r));
    const Vector3 w = crossProduct(axis, u);
    const Vector3 v = flatten(t);
    const double angle = std::atan2(v * w, v * u) * 57.29577951308232;
    return angle < -0.5 ? angle + 360.0 : angle;
}

bool isInOneCube(const Cell& a, const Cell& b, const Cell& c)
{
    const auto fits = [](int p, int q, int r) { return std::max({p, q, r}) - std::min({p, q, r}) <= 1; };
    return fits(a.x, b.x, c.x) && fits(a.y, b.y, c.y) && fits(a.z, b.z, c.z);
}

// f(a, b) for all ordered pairs of cells of one cube, with a at the given cell.
template <typename F>
void forEachEdge(const Cell& base, F f)
{
    for (int i = 0; i < 8; ++i)
        for (int k = 0; k < 8; ++k)
            if (i != k)
                f(Cell{base.x + (i & 1), base.y + (i >> 1 & 1), base.z + (i >> 2)},
                  Cell{base.x + (k & 1), base.y + (k >> 1 & 1), base.z + (k >> 2)});
}

std::vector<Cell> getThirds(const Cell& a, const Cell& b)
{
    std::vector<Cell> vThirds;
    for (int x = a.x - 2; x <= a.x + 2; ++x)
        for (int y = a.y - 2; y <= a.y + 2; ++y)
            for (int z = a.z - 2; z <= a.z + 2; ++z)
            {
                const Cell c{x, y, z};
                const Cell da = c - a, db = c - b;
                const bool bEnd =
                    (da.x == 0 && da.y == 0 && da.z == 0) || (db.x == 0 && db.y == 0 && db.z == 0);
                if (!bEnd && isInOneCube(a, b, c))
                    vThirds.push_back(c);
            }
    return vThirds;
}
} // namespace

// Every edge of a cube with a random star around it, judged by plain geometry.
TEST(Rotx, starsStandInTheOrderOfTheirAngles)
{
    std::mt19937 rng(3);
    const Cell base{17, 30, 9};
    forEachEdge(base,
                [&](const Cell& a, const Cell& b)
                {
                    LatticeMesh lattice;
                    const Rotx rotx(&lattice.mesh, true);
                    const u64 ccdA = lattice.cell(a.x, a.y, a.z);
                    const u64 ccdB = lattice.cell(b.x, b.y, b.z);
                    std::vector<Cell> vThirds = getThirds(a, b);
                    std::shuffle(vThirds.begin(), vThirds.end(), rng);
                    std::vector<std::pair<double, CTriangle*>> vExpected;
                    for (const Cell& t : vThirds)
                    {
                        const double angle = angleAround(a, b, vThirds[0], t);
                        const bool bTaken = std::any_of(vExpected.begin(), vExpected.end(),
                                                        [&](const auto& entry)
                                                        { return std::fabs(entry.first - angle) < 1.0; });
                        if (bTaken)
                            continue;
                        u64 ends[2] = {ccdA, ccdB};
                        // The reference runs from a to b; the others as they like.
                        if (!vExpected.empty() && rng() % 2 == 0)
                            std::swap(ends[0], ends[1]);
                        vExpected.emplace_back(
                            angle, lattice.mesh.createT(ends[0], ends[1], lattice.cell(t.x, t.y, t.z), 0, 0));
                    }
                    CTriangle* pRefCT = vExpected[0].second;
                    std::sort(vExpected.begin(), vExpected.end());
                    CEdge* pCE = lattice.mesh.getCE(ccdA, ccdB);
                    ASSERT_TRUE(rotx.sortStar(pRefCT, pCE));
                    ASSERT_EQ(pCE->vCT.size(), vExpected.size());
                    for (std::uint32_t i = 0; i < pCE->vCT.size(); ++i)
                        EXPECT_EQ(pCE->vCT[i], vExpected[i].second) << "rank " << i;
                    expectConsistent(lattice.mesh);
                });
}

TEST(Rotx, theOtherDirectionTurnsTheOrderAround)
{
    LatticeMesh lattice;
    CMesh& mesh = lattice.mesh;
    const u64 a = lattice.cell(8, 8, 8);
    const u64 b = lattice.cell(8, 8, 9);
    CTriangle* pRefCT = mesh.createT(a, b, lattice.cell(9, 8, 8), 0, 0);
    CTriangle* pT1 = mesh.createT(a, b, lattice.cell(8, 9, 8), 0, 0);
    CTriangle* pT2 = mesh.createT(a, b, lattice.cell(7, 8, 8), 0, 0);
    CTriangle* pT3 = mesh.createT(a, b, lattice.cell(8, 7, 8), 0, 0);
    CEdge* pCE = mesh.getCE(a, b);
    const Rotx rotx(&mesh, true);
    EXPECT_TRUE(rotx.sortStar(pRefCT, pCE));
    EXPECT_TRUE(std::equal(pCE->vCT.begin(), pCE->vCT.end(), std::vector{pRefCT, pT1, pT2, pT3}.begin()));
    pRefCT->flipOrientation();
    EXPECT_TRUE(rotx.sortStar(pRefCT, pCE));
    EXPECT_TRUE(std::equal(pCE->vCT.begin(), pCE->vCT.end(), std::vector{pRefCT, pT3, pT2, pT1}.begin()));
    pT2->kill(&mesh);
    EXPECT_TRUE(rotx.sortStar(pT3, pCE));
    EXPECT_TRUE(std::equal(pCE->vCT.begin(), pCE->vCT.end(), std::vector{pT3, pRefCT, pT1}.begin()));
    expectConsistent(mesh);
}

// Thirds in one half-plane: at the same height of the edge and one above.
TEST(Rotx, aDoubleRankIsReportedAndTheListStaysWhole)
{
    LatticeMesh lattice;
    CMesh& mesh = lattice.mesh;
    const u64 a = lattice.cell(8, 8, 8);
    const u64 b = lattice.cell(8, 8, 9);
    CTriangle* pT0 = mesh.createT(a, b, lattice.cell(9, 8, 8), 0, 0);
    CTriangle* pT1 = mesh.createT(a, b, lattice.cell(8, 9, 8), 0, 0);
    CTriangle* pT2 = mesh.createT(a, b, lattice.cell(9, 8, 9), 0, 0);
    CEdge* pCE = mesh.getCE(a, b);
    {
        const StreamCapture capture;
        EXPECT_FALSE(Rotx(&mesh, true).sortStar(pT1, pCE));
        EXPECT_TRUE(capture.contains("ROTX-BUG: "));
    }
    EXPECT_EQ(pCE->vCT[0], pT1);
    EXPECT_TRUE(std::is_permutation(pCE->vCT.begin(), pCE->vCT.end(), std::vector{pT0, pT1, pT2}.begin()));
    expectConsistent(mesh);
}

TEST(Rotx, whatIsNotInTheModelIsFatal)
{
    LatticeMesh lattice;
    CMesh& mesh = lattice.mesh;
    struct Row
    {
        const char* name;
        Cell a, b, c;
    };
    const Row rows[] = {
        {"edge too long", {8, 8, 8}, {8, 8, 10}, {9, 8, 9}},
        {"third corner below the model", {8, 8, 8}, {8, 8, 9}, {6, 8, 8}},
        {"third corner above the model", {8, 8, 8}, {8, 8, 9}, {11, 8, 8}},
        {"in no cube with both ends", {8, 8, 8}, {8, 8, 9}, {8, 9, 10}},
        {"would wrap into a neighbour's key", {8, 8, 8}, {9, 8, 8}, {8, 4, 9}},
    };
    const StreamCapture capture;
    const Rotx rotx(&mesh, true);
    for (const Row& row : rows)
    {
        SCOPED_TRACE(row.name);
        const u64 a = lattice.cell(row.a.x, row.a.y, row.a.z);
        const u64 b = lattice.cell(row.b.x, row.b.y, row.b.z);
        CTriangle* pCT = mesh.createT(a, b, lattice.cell(row.c.x, row.c.y, row.c.z), 0, 0);
        EXPECT_THROW(rotx.sortStar(pCT, mesh.getCE(a, b)), ZefBugException);
        EXPECT_EQ(mesh.getCE(a, b)->getDegree(), 1);
        pCT->kill(&mesh);
    }
    EXPECT_THROW((void)Rotx(&mesh, false).getIdx(makeRCD(1, 1, 1), makeRCD(1, 1, 2), makeRCD(1, 2, 1)),
                 ZefBugException);
    // The model's first third corner opens the count.
    EXPECT_EQ(rotx.getIdx(makeRCD(1, 1, 1), makeRCD(1, 1, 2), makeRCD(0, 0, 1)), 0);
}

} // namespace TARN_ZEF

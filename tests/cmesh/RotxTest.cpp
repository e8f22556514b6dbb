#include "cmesh/Rotx.h"

#include "ZefBugException.h"
#include "geometry/tools.h"
#include "helpers/LatticeMesh.h"
#include "helpers/StreamCapture.h"
#include "helpers/checkMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

namespace TARN_ZEF
{
namespace
{
// The lattice cell at small whole coordinates.
u64 cellOf(LatticeMesh& lattice, const Point3& p)
{
    return lattice.cell(static_cast<int>(p.x()), static_cast<int>(p.y()), static_cast<int>(p.z()));
}

// Degrees around the edge from a to b, counter-clockwise seen from b, from third corner r on to t.
double angleAround(const Point3& a, const Point3& b, const Point3& r, const Point3& t)
{
    const Vector3 axis = normalize(b - a);
    const auto flatten = [&](const Point3& c) { return (c - a) + axis * -(axis * (c - a)); };
    const Vector3 u = normalize(flatten(r));
    const Vector3 v = flatten(t);
    const double angle = std::atan2(v * crossProduct(axis, u), v * u) * DEGREES_PER_RAD;
    return angle < -0.5 ? angle + 360.0 : angle;
}

bool isInOneCube(const Point3& a, const Point3& b, const Point3& c)
{
    const auto fits = [](double p, double q, double r) {
        return std::max({p, q, r}) - std::min({p, q, r}) < 1.5;
    };
    return fits(a.x(), b.x(), c.x()) && fits(a.y(), b.y(), c.y()) && fits(a.z(), b.z(), c.z());
}

// The eight cells of a cube.
Point3 cubeCell(int i)
{
    return Point3(17 + (i & 1), 30 + (i >> 1 & 1), 9 + (i >> 2));
}

std::vector<Point3> getThirds(const Point3& a, const Point3& b)
{
    std::vector<Point3> vThirds;
    for (int i = 0; i < 125; ++i)
    {
        const Point3 c(a.x() + i % 5 - 2, a.y() + i / 5 % 5 - 2, a.z() + i / 25 - 2);
        if (!(c == a) && !(c == b) && isInOneCube(a, b, c))
            vThirds.push_back(c);
    }
    return vThirds;
}
} // namespace

// Every edge of a cube with a random star around it, judged by plain geometry.
TEST(Rotx, starsStandInTheOrderOfTheirAngles)
{
    std::mt19937 rng(3);
    for (int edge = 0; edge < 64; ++edge)
    {
        const Point3 a = cubeCell(edge % 8), b = cubeCell(edge / 8);
        if (a == b)
            continue;
        LatticeMesh lattice;
        const Rotx rotx(&lattice.mesh, true);
        std::vector<Point3> vThirds = getThirds(a, b);
        std::shuffle(vThirds.begin(), vThirds.end(), rng);
        std::vector<std::pair<double, CTriangle*>> vExpected;
        for (const Point3& t : vThirds)
        {
            const double angle = angleAround(a, b, vThirds[0], t);
            if (std::any_of(vExpected.begin(), vExpected.end(),
                            [&](const auto& entry) { return std::fabs(entry.first - angle) < 1.0; }))
                continue;
            u64 ends[2] = {cellOf(lattice, a), cellOf(lattice, b)};
            // The reference runs from a to b; the others as they like.
            if (!vExpected.empty() && rng() % 2 == 0)
                std::swap(ends[0], ends[1]);
            vExpected.emplace_back(angle, lattice.mesh.createT(ends[0], ends[1], cellOf(lattice, t), 0, 0));
        }
        CTriangle* pRefCT = vExpected[0].second;
        std::sort(vExpected.begin(), vExpected.end());
        CEdge* pCE = lattice.mesh.getCE(cellOf(lattice, a), cellOf(lattice, b));
        ASSERT_TRUE(rotx.sortStar(pRefCT, pCE));
        ASSERT_EQ(pCE->vCT.size(), vExpected.size());
        for (std::uint32_t i = 0; i < pCE->vCT.size(); ++i)
            EXPECT_EQ(pCE->vCT[i], vExpected[i].second) << "rank " << i;
        expectConsistent(lattice.mesh);
    }
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
        Point3 a, b, c;
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
        const u64 a = cellOf(lattice, row.a);
        const u64 b = cellOf(lattice, row.b);
        CTriangle* pCT = mesh.createT(a, b, cellOf(lattice, row.c), 0, 0);
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

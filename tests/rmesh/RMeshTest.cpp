#include "rmesh/RMesh.h"

#include "geometry/tools.h"
#include "helpers/finishedMeshes.h"
#include "helpers/meshShapes.h"
#include "rmesh/RPatch.h"
#include "rmesh/RTop.h"
#include "zef_api_functions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace TARN_ZEF
{
TEST(RMesh, randomCollapsesKeepAllLinks)
{
    const PreparedTree tree;
    std::mt19937 rng(17);
    for (int run = 0; run < 10; ++run)
    {
        SCOPED_TRACE(run);
        RMesh mesh(run % 2 == 0 ? torusSource(20, 10) : planeSource(12));
        // No test before a collapse: edges merge, fins and twins arise, and all links must hold.
        for (int step = 0; step < 60; ++step)
        {
            std::vector<REdge*> vRE;
            mesh.getDegN(DEG_IN_USE, vRE);
            if (vRE.empty())
                break;
            const REdge* pRE = vRE[rng() % vRE.size()];
            mesh.exchangeCorner(pRE->getVtx0(), pRE->getVtx1());
        }
        expectConsistent(mesh);
        mesh.killDuplicateT();
        expectConsistent(mesh);
        EXPECT_EQ(mesh.killDuplicateT(), 0);
        RTop(&mesh).run();
        expectConsistent(mesh);
        std::vector<RTriangle*> vT;
        mesh.getAliveT(vT);
        for (const RTriangle* pRT : vT)
            EXPECT_FALSE(isFlat(pRT->getCorner(0), pRT->getCorner(1), pRT->getCorner(2)));
    }
}

TEST(RMesh, flippingTwiceRevivesTheSameEdge)
{
    RMesh mesh(planeSource(4));
    std::vector<REdge*> vRE;
    mesh.getDegN(DEG_INNER, vRE);
    std::size_t numFlipped = 0;
    for (REdge* pRE : vRE)
    {
        Point3* const ends[2] = {pRE->getVtx0(), pRE->getVtx1()};
        REdge* pNew = pRE->tryFlipEdge(&mesh, nullptr, nullptr);
        if (pNew == nullptr)
            continue; // a side of two squares: the flip would be flat
        ++numFlipped;
        EXPECT_EQ(pRE->getDegree(), 0);
        expectConsistent(mesh);
        EXPECT_EQ(pNew->tryFlipEdge(&mesh, nullptr, nullptr), pRE);
        EXPECT_TRUE(pRE->has(ends[0]) && pRE->has(ends[1]));
        EXPECT_EQ(mesh.getRE(pNew->getVtx0(), pNew->getVtx1()), pNew);
    }
    EXPECT_GE(numFlipped, 16u) << "at least the diagonals of the squares";
    EXPECT_EQ(countDisagreeing(mesh), 0u);
    EXPECT_DOUBLE_EQ(mesh.getArea(), 16.0);
}

TEST(RMesh, scrambledOrientationComesBackConsistent)
{
    const PreparedTree tree;
    std::mt19937 rng(23);
    for (int numParts = 1; numParts <= 3; ++numParts)
    {
        RMeshSource source;
        for (int part = 0; part < numParts; ++part)
            source = merged(source, cubeSource(4, true), Vector3(20.0 * part, 0.0, 0.0));
        for (std::size_t i = 0; i < source.vCorners.size(); i += 3)
            if (rng() % 2 == 0)
                std::swap(source.vCorners[i], source.vCorners[i + 1]);
        RMesh mesh(source);
        EXPECT_GT(countDisagreeing(mesh), 0u);
        EXPECT_EQ(mesh.createPatchesOrient(), numParts);
        EXPECT_EQ(countDisagreeing(mesh), 0u);
        expectConsistent(mesh);
        std::size_t numMembers = 0;
        for (const RPatch* pPatch : mesh.getPatches())
            numMembers += pPatch->getNumT();
        EXPECT_EQ(numMembers, mesh.getNumT());
    }
}

// A twisted strip joins two places of the border: the flood must not go through it first and turn half of
// the plane.
TEST(RMesh, turnedTrianglesTurnTheirNormals)
{
    const RMesh mesh(cubeSource(2, true));
    for (RTriangle* pRT : mesh.getAllT())
    {
        bool bOK = false;
        const Vector3 before = pRT->getNNV(bOK);
        ASSERT_TRUE(bOK);
        pRT->flipOrientation();
        const Vector3 after = getNormalVector(pRT->getCorner(0), pRT->getCorner(1), pRT->getCorner(2), bOK);
        EXPECT_LT((pRT->getNNV(bOK) + after * -1.0).length(), 1e-12);
        EXPECT_LT((before + after).length(), 1e-12);
    }
}

TEST(RMesh, twistedScrapAtTheRimTurnsNothingBehindIt)
{
    const PreparedTree tree;
    RMeshSource source = planeSource(10);
    const std::size_t numPlane = source.vCorners.size() / 3;
    source.vCorners.insert(source.vCorners.end(), {0, 6, 1, 0, 5, 6});
    RMesh mesh(source);
    mesh.createPatchesOrient();
    for (std::size_t i = 0; i < numPlane; ++i)
    {
        bool bOK = false;
        EXPECT_EQ(mesh.getAllT()[i]->getNNV(bOK).z(), 1.0) << "triangle " << i;
    }
    EXPECT_EQ(countDisagreeing(mesh), 1u);
}

TEST(RMesh, nonManifoldEdgeSeparatesPatches)
{
    const PreparedTree tree;
    RMeshSource source = planeSource(2);
    source.vPoints.emplace_back(1.0, 0.5, 1.0); // a fin on the edge between points 1 and 4
    source.vCorners.insert(source.vCorners.end(), {1, 4, 9});
    RMesh mesh(source);
    std::vector<REdge*> vRE;
    mesh.getDegN(DEG_NON_MANIFOLD, vRE);
    ASSERT_EQ(vRE.size(), 1u);
    EXPECT_EQ(vRE.front()->tryFlipEdge(&mesh, nullptr, nullptr), nullptr) << "three triangles";
    EXPECT_EQ(mesh.createPatchesOrient(), 2) << "the plane around the edge's end, and the fin";
    expectConsistent(mesh);
}

TEST(RMesh, splitKeepsAreaAndOrientation)
{
    RMesh mesh(planeSource(3));
    std::vector<REdge*> vRE;
    mesh.getDegN(DEG_INNER, vRE);
    for (REdge* pRE : vRE)
    {
        if (!pRE->isAlive())
            continue;
        const Point3& a = *pRE->getVtx0();
        const Point3& b = *pRE->getVtx1();
        Point3* pMid = mesh.getVertexAt((a.x() + b.x()) / 2, (a.y() + b.y()) / 2, 0.0, true);
        ASSERT_NE(pMid, nullptr);
        pRE->split(pMid, &mesh);
    }
    expectConsistent(mesh);
    EXPECT_NEAR(mesh.getArea(), 9.0, 1e-12);
    EXPECT_EQ(countDisagreeing(mesh), 0u);
    EXPECT_EQ(getEulerNumber(mesh), 1);
}

TEST(RMesh, flatCapVanishesWithoutAHole)
{
    const PreparedTree tree;
    RMeshSource source = cubeSource(4, false);
    RMesh mesh(source);
    // A vertex in the middle of a face slides onto its neighbour's edge: flat triangles on both sides.
    Point3* pVtx = mesh.getVertexAt(0.0, 0.0, 2.0, false);
    mesh.updateVertex(pVtx, Point3(0.99999999, 0.0, 2.0));
    mesh.killDegenerate();
    expectConsistent(mesh);
    EXPECT_EQ(countEdges(mesh, 1), 0u);
    EXPECT_EQ(getEulerNumber(mesh), 2);
    EXPECT_NEAR(mesh.getArea(), 96.0, 1e-6);
}

// Around a tube of three edges, a collapse across closes the tube.
TEST(RMesh, flatTrianglesOfATubeDoNotPinchItIfTopologyMustStay)
{
    const PreparedTree tree;
    std::mt19937 rng(77);
    int numPinchedWithout = 0;
    for (int round = 0; round < 40; ++round)
    {
        RMeshSource source = torusSource(9, 3);
        for (int i = 0; i < 4; ++i)
        {
            const std::size_t t = rng() % (source.vCorners.size() / 3);
            const Point3& a = source.vPoints[source.vCorners[3 * t + 1]];
            const Point3& b = source.vPoints[source.vCorners[3 * t + 2]];
            source.vPoints[source.vCorners[3 * t]] = a + (b - a) * 0.25;
        }
        const auto isTorus = [](const RMesh& mesh)
        { return getEulerNumber(mesh) == 0 && countEdges(mesh, 1) == 0 && countEdges(mesh, -1) == 0; };
        RMesh kept(source);
        kept.killDegenerate(true);
        expectConsistent(kept);
        EXPECT_TRUE(isTorus(kept)) << round;
        EXPECT_LT(kept.getNumT(), source.vCorners.size() / 3) << round;
        // The same as the last step of a reduction that itself takes nothing out.
        const std::shared_ptr<Mesh> pMesh = std::make_shared<Mesh>(new RMesh(source));
        reduce(pMesh, 0.0, 0.0, true);
        EXPECT_TRUE(isTorus(*pMesh->getRMesh())) << round;
        RMesh pinched(source);
        pinched.killDegenerate();
        numPinchedWithout += isTorus(pinched) ? 0 : 1;
    }
    EXPECT_GT(numPinchedWithout, 0);
}

TEST(RMesh, umbrellasAreTheFansOfAPinchedVertex)
{
    RMeshSource source = cubeSource(2, true);
    const auto numPoints = static_cast<std::uint32_t>(source.vPoints.size());
    source = merged(source, source, Vector3(50.0, 0.0, 0.0));
    // The second ball hangs on point 0 of the first.
    std::replace(source.vCorners.begin(), source.vCorners.end(), numPoints, std::uint32_t{0});
    const RMesh mesh(source);
    std::vector<Point3*> vP;
    mesh.getPoints(vP);
    std::vector<std::vector<RTriangle*>> vUmbrellas;
    mesh.getUmbrellas(vP.front(), vUmbrellas);
    std::vector<RTriangle*> vIncT;
    mesh.getIncidentT(vP.front(), vIncT);
    ASSERT_EQ(vUmbrellas.size(), 2u);
    EXPECT_EQ(vUmbrellas[0].size(), vUmbrellas[1].size());
    EXPECT_EQ(vUmbrellas[0].size() + vUmbrellas[1].size(), vIncT.size());
}

} // namespace TARN_ZEF

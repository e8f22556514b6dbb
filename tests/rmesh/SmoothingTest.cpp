#include "rmesh/LaplacianSmoother.h"

#include "helpers/checkMesh.h"
#include "helpers/finishedMeshes.h"
#include "helpers/meshShapes.h"
#include "zef_api_functions.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace TARN_ZEF
{
namespace
{
// Means of all neighbours, by vertex, from the definition.
std::map<const Point3*, Point3> expectedPlaces(const RMesh& mesh)
{
    std::set<const Point3*> sBorder;
    std::map<const Point3*, std::vector<const Point3*>> mNeighbours;
    for (const REdge* pRE : mesh.getAllRE())
    {
        mNeighbours[pRE->getVtx0()].push_back(pRE->getVtx1());
        mNeighbours[pRE->getVtx1()].push_back(pRE->getVtx0());
        if (pRE->isBorder())
            sBorder.insert({pRE->getVtx0(), pRE->getVtx1()});
    }
    std::map<const Point3*, Point3> mPlaces;
    for (const auto& [pVtx, vNeighbours] : mNeighbours)
    {
        double x = 0.0, y = 0.0, z = 0.0;
        for (const Point3* pNeighbour : vNeighbours)
            pNeighbour->addOwnCoords(x, y, z);
        const auto num = static_cast<double>(vNeighbours.size());
        mPlaces[pVtx] = sBorder.count(pVtx) > 0 ? *pVtx : Point3(x / num, y / num, z / num);
    }
    return mPlaces;
}
} // namespace

TEST(Smoothing, movesInnerVerticesToTheMeanOfAllEverNeighbours)
{
    for (const FinishedMesh& shape : finishedMeshes())
    {
        SCOPED_TRACE(shape.name);
        const std::shared_ptr<Mesh> pMesh = makeFinished(shape.source);
        RMesh& mesh = *pMesh->getRMesh();
        edgeFlips(pMesh); // leaves edges of degree 0, which go on pulling
        for (int iteration = 0; iteration < 3; ++iteration)
        {
            const std::map<const Point3*, Point3> mPlaces = expectedPlaces(mesh);
            LaplacianSmoother(&mesh, false).run(1);
            std::vector<Point3*> vP;
            mesh.getPoints(vP);
            for (const Point3* p : vP)
                EXPECT_LT((*p - mPlaces.at(p)).length(), 1e-12) << RVertex::of(p)->number;
        }
    }
}

TEST(Smoothing, everyMeshStaysSound)
{
    for (const FinishedMesh& shape : finishedMeshes())
    {
        SCOPED_TRACE(shape.name);
        const std::shared_ptr<Mesh> pMesh = makeFinished(shape.source);
        const RMesh& mesh = *pMesh->getRMesh();
        const Topology before(mesh);
        const std::size_t numT = mesh.getNumT();
        laplacianSmoothing(pMesh, 0);
        EXPECT_EQ(mesh.getNumT(), numT);
        laplacianSmoothing(pMesh, 4);
        expectSound(mesh, before);
        edgeFlips(pMesh);
        reduce(pMesh, 2.0, 20.0, true);
        laplacianSmoothing(pMesh, 1);
        expectSound(mesh, before);
    }
}

TEST(Smoothing, aFlatGridStaysToTheBit)
{
    const std::shared_ptr<Mesh> pMesh = makeFinished(planeSource(8));
    const std::vector<Point3> vBefore = getCorners(*pMesh->getRMesh());
    laplacianSmoothing(pMesh, 5);
    EXPECT_EQ(getCorners(*pMesh->getRMesh()), vBefore);
}

// Few places for many vertices: moves stand in each other's way in every manner.
TEST(Smoothing, movesCollideAsIfMadeOneByOne)
{
    std::mt19937 rng(41);
    for (const unsigned int range : {6u, 9u, 200u})
    {
        SCOPED_TRACE(range);
        const auto draw = [&]
        { return Point3(rng() % range, rng() % range, rng() % range == 0 ? -0.0 : 0.0); };
        RMeshSource source;
        std::set<Point3> sTaken;
        while (source.vPoints.size() < 30)
        {
            const Point3 p = draw();
            if (sTaken.insert(p).second)
                source.vPoints.push_back(p);
        }
        for (std::uint32_t i = 0; i < 30; ++i)
            source.vCorners.push_back(i);
        RMesh mesh(source);
        std::vector<Point3*> vP;
        mesh.getPoints(vP);
        for (int round = 0; round < 60; ++round)
        {
            std::vector<std::pair<Point3*, Point3>> vMoves;
            std::vector<Point3> vExpected;
            for (Point3* p : vP)
                vMoves.emplace_back(p, rng() % 3 == 0 ? *p : draw());
            for (const Point3* p : vP)
                vExpected.push_back(*p);
            for (std::size_t i = 0; i < vP.size(); ++i)
                if (sTaken.count(vMoves[i].second) == 0)
                {
                    sTaken.erase(vExpected[i]);
                    sTaken.insert(vMoves[i].second);
                    vExpected[i] = vMoves[i].second;
                }
            mesh.moveVertices(vMoves);
            for (std::size_t i = 0; i < vP.size(); ++i)
                ASSERT_EQ(*vP[i], vExpected[i]) << "round " << round << ", vertex " << i;
            if (round % 7 == 0)
                expectConsistent(mesh);
        }
    }
}

} // namespace TARN_ZEF

#include "geometry/tools.h"
#include "helpers/checkMesh.h"
#include "helpers/finishedMeshes.h"
#include "helpers/meshShapes.h"
#include "parallel/WorkerPool.h"
#include "rmesh/CollapseFans.h"
#include "rmesh/CollapseLimits.h"
#include "rmesh/edgeFlips.h"
#include "zef_api_functions.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cfloat>
#include <cmath>
#include <map>
#include <set>

namespace TARN_ZEF
{
namespace
{
const double RAD_PER_DEGREE = 0.01745329251;

// The loop of the reduction as it reads, without any memory of penalties: the judge of the fast one.
class SlowReducer
{
public:
    SlowReducer(RMesh& mesh_, double maxLength, double maxDevAngle, bool bKeepTopology)
        : mesh(mesh_)
        , limits{maxLength * maxLength, maxDevAngle * RAD_PER_DEGREE, bKeepTopology}
    {
    }

    int run()
    {
        std::vector<REdge*> vBoundaryRE;
        mesh.getDegN(DEG_BORDER, vBoundaryRE);
        for (const REdge* pRE : vBoundaryRE)
            sBorder.insert({pRE->getVtx0(), pRE->getVtx1()});
        add(mesh.getAllRE());
        int numKilled = 0;
        while (!mmPenaltyRE.empty())
        {
            const auto [saved, candidate] = *mmPenaltyRE.begin();
            const auto [pRE, iSrc] = candidate;
            mmPenaltyRE.erase(mmPenaltyRE.begin());
            const double fresh = mesh.getCollapsePenalty(pRE, iSrc, limits, fans);
            Point3* pSrc = pRE->getVertex(iSrc);
            if (fresh != DBL_MAX && fresh > 2.0 && fresh > saved + 3.0)
                mmPenaltyRE.emplace(fresh, candidate);
            else if (fresh != DBL_MAX && (sBorder.count(pSrc) == 0 || isStraight(pRE, pSrc)))
            {
                numKilled += pRE->getDegree();
                vRefillVtx.push_back(pRE->getOtherPoint(pSrc));
                mesh.exchangeCorner(pSrc, vRefillVtx.back());
                refillIfDue();
            }
        }
        return numKilled;
    }

private:
    void add(const std::vector<REdge*>& vRE)
    {
        std::vector<std::tuple<double, unsigned int, int>> vSorted;
        for (const REdge* pRE : vRE)
            for (const int iSrc : {0, 1})
            {
                const double penalty = mesh.getCollapsePenalty(pRE, iSrc, limits, fans);
                if (penalty != DBL_MAX)
                    vSorted.emplace_back(penalty, pRE->getNumber(), iSrc);
            }
        for (const auto& [penalty, number, iSrc] : vSorted)
            mmPenaltyRE.emplace(penalty, std::pair(mesh.getAllRE()[number], iSrc));
    }

    bool isStraight(const REdge* pRE, const Point3* pSrc) const
    {
        std::vector<REdge*> vRE;
        mesh.getIncidentRE(pSrc, vRE);
        std::vector<Vector3> vVecs;
        for (const REdge* pAt : vRE)
            if (pAt->isBorder())
                vVecs.push_back(normalize(*pAt->getOtherPoint(pSrc) - *pSrc));
        return pRE->isBorder() && vVecs.size() == 2 && getAngleDegree(vVecs[0], vVecs[1]) >= 170.0;
    }

    void refillIfDue()
    {
        const std::size_t num = vRefillVtx.size();
        if (!mmPenaltyRE.empty() && num < 5001 && !(mmPenaltyRE.begin()->first > 6.0 && num >= 51))
            return;
        std::set<REdge*, ByCreationRE> sRE;
        if (num > 2 && num < 1000 && ++numRecomputes < 5)
            sRE.insert(mesh.getAllRE().begin(), mesh.getAllRE().end());
        for (const Point3* pVtx : vRefillVtx)
        {
            std::vector<REdge*> vRE;
            mesh.getIncidentRE(pVtx, vRE);
            sRE.insert(vRE.begin(), vRE.end());
        }
        add({sRE.begin(), sRE.end()});
        vRefillVtx.clear();
    }

    struct NaNLast
    {
        bool operator()(double a, double b) const { return isNaN(b) ? !isNaN(a) : a < b; }
    };

    RMesh& mesh;
    CollapseLimits limits;
    CollapseFans fans;
    std::set<const Point3*> sBorder;
    std::multimap<double, std::pair<REdge*, int>, NaNLast> mmPenaltyRE;
    std::vector<Point3*> vRefillVtx;
    int numRecomputes = 0;
};

} // namespace

TEST(Reduce, agreesWithTheLoopAsItReads)
{
    std::vector<FinishedMesh> vShapes = finishedMeshes();
    vShapes.push_back({"larger ball", jittered(cubeSource(30, true), 0.3, 31)});
    for (const FinishedMesh& shape : vShapes)
        for (const bool bKeepTopology : {false, true})
        {
            SCOPED_TRACE(shape.name + (bKeepTopology ? ", topology kept" : ""));
            const PreparedTree tree;
            RMesh mesh(shape.source);
            RMesh judge(shape.source);
            flipGreedily(&mesh); // leaves edges of degree 0 behind, which a collapse can bring back to life
            flipGreedily(&judge);
            const int numKilled = mesh.reduce(9.0, 30.0, bKeepTopology);
            EXPECT_EQ(numKilled, SlowReducer(judge, 3.0, 30.0, bKeepTopology).run());
            EXPECT_EQ(getCorners(mesh), getCorners(judge));
        }
}

TEST(Reduce, everyMeshStaysSound)
{
    for (const FinishedMesh& shape : finishedMeshes())
        for (const double maxLength : {1.2, 3.0, 50.0})
        {
            SCOPED_TRACE(shape.name + testing::PrintToString(maxLength));
            const std::shared_ptr<Mesh> pMesh = makeFinished(shape.source);
            const RMesh& mesh = *pMesh->getRMesh();
            const Topology before(mesh);
            const std::size_t numT = mesh.getNumT();
            const long euler = getEulerNumber(mesh);
            const std::size_t numNonManifold = countEdges(mesh, -1);
            const int numKilled = reduce(pMesh, maxLength, 35.0, true);
            expectSound(mesh, before);
            EXPECT_LE(mesh.getNumT() + static_cast<std::size_t>(numKilled), numT);
            EXPECT_EQ(getEulerNumber(mesh), euler);
            EXPECT_LE(countEdges(mesh, -1), numNonManifold);
            edgeFlips(pMesh);
            expectSound(mesh, before);
        }
}

TEST(Reduce, nothingToCollapse)
{
    struct Row
    {
        const char* name;
        RMeshSource source;
        double maxLength;
        double maxDevAngle;
    };
    RMeshSource tetrahedron;
    tetrahedron.vPoints = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
    tetrahedron.vCorners = {0, 2, 1, 0, 1, 3, 1, 2, 3, 2, 0, 3};
    for (const Row& row :
         {Row{"length 0", planeSource(5), 0.0, 180.0}, Row{"tetrahedron", tetrahedron, 10.0, 360.0},
          Row{"no angle on a ball", cubeSource(5, true), 10.0, 0.0}})
    {
        SCOPED_TRACE(row.name);
        const std::shared_ptr<Mesh> pMesh = makeFinished(row.source);
        const std::vector<Point3> vBefore = getCorners(*pMesh->getRMesh());
        EXPECT_EQ(reduce(pMesh, row.maxLength, row.maxDevAngle), 0);
        EXPECT_EQ(getCorners(*pMesh->getRMesh()), vBefore);
    }
}

TEST(Reduce, flatFacesAndStraightBordersLoseTheirVerticesOnly)
{
    const std::shared_ptr<Mesh> pCube = makeFinished(cubeSource(8, false));
    reduce(pCube, 100.0, 0.0, true);
    EXPECT_LT(pCube->getRMesh()->getNumT(), 6u * 128u / 10u);
    EXPECT_NEAR(computeVolume(getCorners(*pCube->getRMesh())), 512.0, 1e-9);

    const std::shared_ptr<Mesh> pPlane = makeFinished(planeSource(16));
    reduce(pPlane, 100.0, 5.0, true);
    const RMesh& plane = *pPlane->getRMesh();
    EXPECT_LT(plane.getNumT(), 60u);
    EXPECT_NEAR(plane.getArea(), 256.0, 1e-9);
    std::vector<Point3*> vP;
    plane.getPoints(vP);
    for (const Point3& corner : {Point3(0, 0, 0), Point3(16, 0, 0), Point3(0, 16, 0), Point3(16, 16, 0)})
        EXPECT_TRUE(std::any_of(vP.begin(), vP.end(), [&](const Point3* p) { return *p == corner; }));
}

TEST(Reduce, aTunnelOfThreeEdgesStaysOpenIfTopologyIsKept)
{
    const std::shared_ptr<Mesh> pMesh = makeFinished(torusSource(24, 4));
    EXPECT_GT(reduce(pMesh, 50.0, 120.0, true), 0);
    EXPECT_EQ(getEulerNumber(*pMesh->getRMesh()), 0);
    EXPECT_EQ(countEdges(*pMesh->getRMesh(), -1), 0u);
}

TEST(Reduce, aSmoothShapeKeepsItsPlaceAtATenth)
{
    const std::shared_ptr<Mesh> pMesh = makeFinished(cubeSource(40, true));
    const RMesh& mesh = *pMesh->getRMesh();
    const std::size_t numT = mesh.getNumT();
    reduce(pMesh, 2.8, 30.0, true);
    EXPECT_LT(mesh.getNumT(), numT / 10);
    const std::vector<Point3> v = getCorners(mesh);
    double sum = 0.0; // of the distances of the triangles' centres from the ball
    for (std::size_t i = 0; i < v.size(); i += 3)
        sum += std::fabs((v[i] - Point3() + (v[i + 1] - Point3()) + (v[i + 2] - Point3())).length() / 3.0 -
                         40.0);
    EXPECT_LT(sum / static_cast<double>(mesh.getNumT()), 0.25);
}

TEST(Reduce, sameForEveryNumberOfThreads)
{
    const int numBefore = getNumThreads();
    std::vector<Point3> vFirst;
    for (const int numThreads : {1, 2, 7})
    {
        setNumThreads(numThreads);
        const std::shared_ptr<Mesh> pMesh = makeFinished(jittered(torusSource(60, 20), 0.2, 33));
        reduce(pMesh, 4.0, 40.0);
        const std::vector<Point3> vCorners = getCorners(*pMesh->getRMesh());
        if (vFirst.empty())
            vFirst = vCorners;
        EXPECT_EQ(vCorners, vFirst) << numThreads;
    }
    setNumThreads(numBefore);
}

} // namespace TARN_ZEF

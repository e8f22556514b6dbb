#include "rmesh/REdgeEnergy.h"

#include "geometry/tools.h"
#include "helpers/finishedMeshes.h"
#include "helpers/meshShapes.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
double largestAngle(const std::vector<const Point3*>& v)
{
    double smallest = 0.0;
    double largest = 0.0;
    double a = 0.0;
    getCornerAngles(*v[0], *v[1], *v[2], smallest, largest);
    getCornerAngles(*v[3], *v[4], *v[5], smallest, a);
    return std::max(largest, a);
}

// Corners of two triangles at an edge, before and after the flip.
double anglePenalty(const REdge* pRE, const RTriangle* pRT0, const RTriangle* pRT1)
{
    const Point3* a = pRE->getVtx0();
    const Point3* b = pRE->getVtx1();
    const Point3* c = pRT0->getThirdPoint(a, b);
    const Point3* d = pRT1->getThirdPoint(a, b);
    const double cur = largestAngle({a, b, c, a, b, d});
    const double alt = largestAngle({c, d, a, c, d, b});
    return alt > 130.0 && alt > cur ? (alt > 160.0 ? 1.0 : 0.1) : 0.0;
}

// A strip that is folded along its middle edge 0-1; facing pages if up is small.
RMeshSource book(double up)
{
    RMeshSource source;
    source.vPoints = {{0, 0, 0}, {1, 0, 0}, {0.5, 1, 0}, {0.5, 1, up}};
    source.vCorners = {2, 0, 1, 3, 1, 0};
    return source;
}

REdge* onlyRegularEdge(const RMesh& mesh)
{
    std::vector<REdge*> vRE;
    mesh.getDegN(DEG_INNER, vRE);
    return vRE.at(0);
}
} // namespace

// The judge is the whole mesh: its energy before and after the flip.
TEST(REdgeEnergy, improvementIsTheEnergyThatAFlipSaves)
{
    for (const RMeshSource& source :
         {jittered(cubeSource(7, true), 0.3, 7), jittered(torusSource(30, 10), 0.3, 8),
          jittered(planeSource(10), 0.3, 9)})
    {
        const std::shared_ptr<Mesh> pMesh = makeFinished(source);
        RMesh& mesh = *pMesh->getRMesh();
        REdgeEnergy energy(&mesh, nullptr);
        std::size_t numChecked = 0;
        std::size_t numPenalties = 0;
        const std::vector<REdge*> vRE = mesh.getAllRE();
        for (REdge* pRE : vRE)
        {
            RTriangle* pRT0 = nullptr;
            RTriangle* pRT1 = nullptr;
            if (!pRE->getTwoT(pRT0, pRT1, true))
                continue;
            const double penalty = anglePenalty(pRE, pRT0, pRT1);
            const double before = getEnergySum(mesh);
            const double improvement = energy.getImprovement(pRE);
            if (improvement == LOWEST_DBL)
                continue;
            REdge* pNew = pRE->tryFlipEdge(&mesh, nullptr, nullptr);
            if (pNew == nullptr)
                continue;
            double expected = before - getEnergySum(mesh) - penalty;
            if (expected < 0.1)
                expected -= 10.0 * penalty;
            EXPECT_NEAR(improvement, expected, 1e-8) << "edge " << pRE->getNumber();
            pNew->tryFlipEdge(&mesh, nullptr, nullptr);
            ++numChecked;
            numPenalties += penalty > 0.0 ? 1 : 0;
        }
        EXPECT_GT(numChecked, vRE.size() / 3);
        EXPECT_GT(numPenalties, 5u);
    }
}

TEST(REdgeEnergy, refusesToMakeAFoldButUnfolds)
{
    RMesh mesh(book(0.05));
    REdge* pFold = onlyRegularEdge(mesh);
    EXPECT_GT(REdgeEnergy(&mesh, pFold).getLastImprovement(), LOWEST_DBL);
    REdge* pOpen = pFold->tryFlipEdge(&mesh, nullptr, nullptr);
    ASSERT_NE(pOpen, nullptr);
    EXPECT_EQ(REdgeEnergy(&mesh, pOpen).getLastImprovement(), LOWEST_DBL);
}

TEST(REdgeEnergy, onlyTheFullEvaluationEdits)
{
    struct Row
    {
        const char* name;
        RMeshSource source;
    };
    RMeshSource coincident = book(0.0);
    RMeshSource disagreeing = book(0.8);
    std::swap(disagreeing.vCorners[4], disagreeing.vCorners[5]);
    for (const Row& row :
         {Row{"opposite corners coincide", coincident}, Row{"orientations disagree", disagreeing}})
    {
        SCOPED_TRACE(row.name);
        RMesh mesh(row.source);
        const std::vector<Point3> vBefore = getCorners(mesh);
        REdge* pRE = onlyRegularEdge(mesh);
        REdgeEnergy energy(&mesh, nullptr);
        double improvement = 0.0;
        EXPECT_FALSE(energy.tryGetImprovement(pRE, improvement));
        EXPECT_EQ(getCorners(mesh), vBefore);
        energy.getImprovement(pRE);
        EXPECT_NE(getCorners(mesh), vBefore);
        EXPECT_TRUE(energy.tryGetImprovement(pRE, improvement));
    }
}

} // namespace TARN_ZEF

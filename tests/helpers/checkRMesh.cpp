#include "helpers/checkMesh.h"

#include "rmesh/RMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
std::vector<RTriangle*> trianglesAt(const RMesh& mesh, const Point3* pVtx)
{
    std::vector<RTriangle*> v;
    mesh.getIncidentT(pVtx, v);
    return v;
}

void checkTriangle(const RMesh& mesh, const RTriangle* pRT)
{
    SCOPED_TRACE(testing::Message() << "triangle " << pRT->getNumber());
    EXPECT_FALSE(pRT->isCombDegenerate());
    for (int i = 0; i < 3; ++i)
    {
        const Point3* pCorner = pRT->getCorner(i);
        const Point3* pA = pRT->getCorner(RTriangle::getNext(i));
        const Point3* pB = pRT->getCorner(RTriangle::getPrev(i));
        const REdge* pRE = pRT->getRE(i);
        EXPECT_TRUE(pRE->has(pA) && pRE->has(pB) && !pRE->has(pCorner))
            << "edge " << i << " is not opposite its corner";
        EXPECT_EQ(mesh.getRE(pA, pB), pRE) << "look-up finds another edge";
        EXPECT_EQ(mesh.getRE(pB, pA), pRE);
        EXPECT_EQ(std::count(pRE->getTriangles().begin(), pRE->getTriangles().end(), pRT), 1);
        const std::vector<RTriangle*> vAt = trianglesAt(mesh, pCorner);
        EXPECT_EQ(std::count(vAt.begin(), vAt.end(), pRT), 1) << "corner list lacks the triangle";
        EXPECT_EQ(RVertex::of(pCorner)->pLastT, vAt.back()) << "tail of the corner's list";
        EXPECT_TRUE(std::isfinite(pCorner->x()) && std::isfinite(pCorner->y()) &&
                    std::isfinite(pCorner->z()));
    }
}

// Lists hold nothing dead and nothing strange, and their lengths add up.
void checkLists(const RMesh& mesh)
{
    std::size_t numAtEdges = 0;
    for (std::size_t i = 0; i < mesh.getNumRE(); ++i)
    {
        const REdge* pRE = mesh.getAllRE()[i];
        EXPECT_EQ(pRE->getNumber(), i);
        EXPECT_TRUE(ByCreationVtx()(pRE->getVtx0(), pRE->getVtx1()));
        numAtEdges += static_cast<std::size_t>(pRE->getDegree());
        for (const RTriangle* pRT : pRE->getTriangles())
            EXPECT_TRUE(pRT->isAlive() && pRT->hasEdge(pRE->getVtx0(), pRE->getVtx1())) << "edge " << i;
    }
    EXPECT_EQ(numAtEdges, 3 * mesh.getNumT());

    std::vector<Point3*> vP;
    mesh.getPoints(vP);
    EXPECT_TRUE(std::is_sorted(vP.begin(), vP.end(), ByCreationVtx()));
    std::size_t numAtVertices = 0;
    for (const Point3* pVtx : vP)
    {
        const std::vector<RTriangle*> vAt = trianglesAt(mesh, pVtx);
        numAtVertices += vAt.size();
        for (const RTriangle* pRT : vAt)
            EXPECT_TRUE(pRT->isAlive() && pRT->has(pVtx)) << "vertex " << RVertex::of(pVtx)->number;
        EXPECT_TRUE(mesh.hasVertexAt(*pVtx)) << "vertex " << RVertex::of(pVtx)->number;
    }
    EXPECT_EQ(numAtVertices, 3 * mesh.getNumT());
}
} // namespace

void expectConsistent(const RMesh& mesh)
{
    std::size_t numAlive = 0;
    for (std::size_t i = 0; i < mesh.getAllT().size(); ++i)
    {
        const RTriangle* pRT = mesh.getAllT()[i];
        EXPECT_EQ(pRT->getNumber(), i);
        if (!pRT->isAlive())
            continue;
        ++numAlive;
        checkTriangle(mesh, pRT);
    }
    EXPECT_EQ(numAlive, mesh.getNumT());
    checkLists(mesh);
}

std::size_t countDisagreeing(const RMesh& mesh)
{
    std::size_t num = 0;
    for (const REdge* pRE : mesh.getAllRE())
    {
        RTriangle* pRT0 = nullptr;
        RTriangle* pRT1 = nullptr;
        num += pRE->getTwoT(pRT0, pRT1, true) && pRT0->needFlip(pRT1) ? 1 : 0;
    }
    return num;
}

std::size_t countEdges(const RMesh& mesh, int deg)
{
    std::vector<REdge*> vRE;
    mesh.getDegN(deg, vRE);
    return vRE.size();
}

} // namespace TARN_ZEF

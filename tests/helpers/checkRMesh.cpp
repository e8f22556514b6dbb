#include "checkMesh.h"

#include "RMesh.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace TARN_ZEF
{
namespace
{
void checkTriangle(const RMesh& mesh, const RTriangle* pRT)
{
    EXPECT_FALSE(pRT->isCombDegenerate()) << "triangle " << pRT->getNumber();
    for (int i = 0; i < 3; ++i)
    {
        const Point3* pCorner = pRT->getCorner(i);
        const Point3* pA = pRT->getCorner(RTriangle::getNext(i));
        const Point3* pB = pRT->getCorner(RTriangle::getPrev(i));
        const REdge* pRE = pRT->getRE(i);
        EXPECT_TRUE(pRE->has(pA) && pRE->has(pB) && !pRE->has(pCorner))
            << "edge " << i << " of triangle " << pRT->getNumber() << " is not opposite its corner";
        EXPECT_EQ(mesh.getRE(pA, pB), pRE) << "look-up finds another edge";
        EXPECT_EQ(std::count(pRE->getTriangles().begin(), pRE->getTriangles().end(), pRT), 1);
        std::vector<RTriangle*> vIncT;
        mesh.getIncidentT(pCorner, vIncT);
        EXPECT_EQ(std::count(vIncT.begin(), vIncT.end(), pRT), 1) << "vertex list lacks the triangle";
        EXPECT_TRUE(mesh.hasVertexAt(*pCorner)) << "vertex not found by its coordinates";
    }
}

// Every edge lists alive triangles of its own only, and edges out of use have none.
void checkEdges(const RMesh& mesh)
{
    std::size_t numEntries = 0;
    unsigned int number = 0;
    for (const REdge* pRE : mesh.getAllRE())
    {
        EXPECT_EQ(pRE->getNumber(), number++);
        EXPECT_TRUE(ByCreationVtx()(pRE->getVtx0(), pRE->getVtx1())) << "ends out of order";
        numEntries += pRE->getTriangles().size();
        for (const RTriangle* pRT : pRE->getTriangles())
            EXPECT_TRUE(pRT->isAlive() && pRT->has(pRE->getVtx0()) && pRT->has(pRE->getVtx1()));
    }
    EXPECT_EQ(numEntries, 3 * mesh.getNumT());
}

void checkVertices(const RMesh& mesh)
{
    std::vector<Point3*> vP;
    mesh.getPoints(vP);
    EXPECT_TRUE(std::is_sorted(vP.begin(), vP.end(), ByCreationVtx()));
    std::size_t numEntries = 0;
    for (const Point3* pVtx : vP)
    {
        std::vector<RTriangle*> vIncT;
        mesh.getIncidentT(pVtx, vIncT);
        numEntries += vIncT.size();
        for (const RTriangle* pRT : vIncT)
            EXPECT_TRUE(pRT->isAlive() && pRT->has(pVtx));
    }
    EXPECT_EQ(numEntries, 3 * mesh.getNumT());
}
} // namespace

void expectConsistent(const RMesh& mesh)
{
    std::size_t numAlive = 0;
    unsigned int number = 0;
    for (const RTriangle* pRT : mesh.getAllT())
    {
        EXPECT_EQ(pRT->getNumber(), number++);
        numAlive += pRT->isAlive() ? 1 : 0;
        if (pRT->isAlive())
            checkTriangle(mesh, pRT);
    }
    EXPECT_EQ(numAlive, mesh.getNumT());
    checkEdges(mesh);
    checkVertices(mesh);
}

} // namespace TARN_ZEF

#include "helpers/checkMesh.h"

#include "cmesh/CMesh.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace TARN_ZEF
{
namespace
{
void checkCornersAndEdges(const CMesh& mesh, const CTriangle* pCT)
{
    const u64 c[3] = {pCT->getC0(), pCT->getC1(), pCT->getC2()};
    EXPECT_TRUE(c[0] != c[1] && c[1] != c[2] && c[2] != c[0]) << "triangle " << pCT->getNumber();
    for (int i = 0; i < 3; ++i)
    {
        u64 a = 0, b = 0;
        pCT->getEdgeCCDs(i, a, b);
        const CEdge* pCE = pCT->getCEdge(i);
        EXPECT_TRUE(pCE->hasVCD(a) && pCE->hasVCD(b) && !pCE->hasVCD(c[i]))
            << "edge " << i << " of triangle " << pCT->getNumber() << " is not opposite its corner";
        EXPECT_EQ(mesh.getCE(a, b), pCE) << "look-up finds another edge";
        EXPECT_EQ(std::count(pCE->vCT.begin(), pCE->vCT.end(), pCT), 1);
        std::vector<CTriangle*> vAt;
        mesh.getIncT(c[i], vAt);
        EXPECT_EQ(std::count(vAt.begin(), vAt.end(), pCT), 1) << "corner list lacks the triangle";
    }
}

void checkCornerLists(const CMesh& mesh)
{
    std::size_t numEntries = 0;
    mesh.forEachVertex(
        [&](const CVertex& vertex)
        {
            std::vector<CTriangle*> vAt;
            mesh.getIncT(vertex.ccd, vAt);
            numEntries += vAt.size();
            EXPECT_EQ(vAt.empty() ? nullptr : vAt.back(), vertex.pLastT)
                << "tail of corner list " << vertex.ccd;
            for (const CTriangle* pCT : vAt)
                EXPECT_TRUE(pCT->isAlive() && pCT->hasCorner(vertex.ccd));
            if (vertex.pBundle != nullptr)
            {
                EXPECT_EQ(vertex.pBundle, mesh.getBundleMap()->find(vertex.ccd)) << "stale bundle";
            }
        });
    EXPECT_EQ(numEntries, 3 * mesh.getNumAliveT());
}

void checkEdgeLists(const CMesh& mesh)
{
    std::size_t numEntries = 0;
    mesh.forEachEdge(
        [&](const CEdge* pCE)
        {
            EXPECT_LT(pCE->v0, pCE->v1);
            EXPECT_EQ(mesh.getCE(pCE->v0, pCE->v1), pCE);
            numEntries += pCE->vCT.size();
            for (const CTriangle* pCT : pCE->vCT)
                EXPECT_TRUE(pCT->isAlive() && pCT->hasCorner(pCE->v0) && pCT->hasCorner(pCE->v1));
        });
    EXPECT_EQ(numEntries, 3 * mesh.getNumAliveT());
}

void checkDegrees(const CMesh& mesh)
{
    for (const int deg : {1, 2, 3, 4, 5, 6, -1, -5, -99})
    {
        SCOPED_TRACE(deg);
        std::vector<CEdge*> vFitting;
        mesh.getAllCE(vFitting);
        std::erase_if(vFitting, [deg](const CEdge* pCE) { return !fitsDegree(pCE->getDegree(), deg); });
        EXPECT_EQ(mesh.hasDegree(deg), !vFitting.empty());
        std::vector<CEdge*> vCE;
        mesh.getDegN(deg, vCE);
        EXPECT_EQ(vCE, vFitting);
    }
}

void checkEdgeOrder(const CMesh& mesh)
{
    std::vector<CEdge*> vCE;
    mesh.getAllCE(vCE);
    for (std::size_t i = 1; i < vCE.size(); ++i)
        EXPECT_TRUE(std::make_pair(vCE[i - 1]->v0, vCE[i - 1]->v1) < std::make_pair(vCE[i]->v0, vCE[i]->v1));
    std::size_t numEdges = 0;
    mesh.forEachEdge([&](const CEdge*) { ++numEdges; });
    EXPECT_EQ(vCE.size(), numEdges);
}
} // namespace

void expectConsistent(const CMesh& mesh)
{
    std::size_t numAlive = 0;
    unsigned int number = 0;
    for (const CTriangle* pCT : mesh.getAllT())
    {
        EXPECT_EQ(pCT->getNumber(), number++);
        numAlive += pCT->isAlive() ? 1 : 0;
        if (pCT->isAlive())
            checkCornersAndEdges(mesh, pCT);
    }
    EXPECT_EQ(numAlive, mesh.getNumAliveT());
    checkCornerLists(mesh);
    checkEdgeLists(mesh);
    checkDegrees(mesh);
    checkEdgeOrder(mesh);
}

std::size_t countDisagreeing(const CMesh& mesh)
{
    std::size_t num = 0;
    mesh.forEachEdge([&](const CEdge* pCE)
                     { num += pCE->isInner() && pCE->vCT[0]->needFlip(pCE->vCT[1]) ? 1 : 0; });
    return num;
}

std::size_t countEdges(const CMesh& mesh, int deg)
{
    std::vector<CEdge*> vCE;
    mesh.getDegN(deg, vCE);
    return vCE.size();
}

} // namespace TARN_ZEF

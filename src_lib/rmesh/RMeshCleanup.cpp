// Members of RMesh that clean a mesh: orientation, duplicate and flat triangles, coinciding vertices.
#include "rmesh/RMesh.h"

#include "cmesh/PointSum.h"
#include "cmesh/uniteAcrossEdges.h"
#include "core/Progress.h"
#include "core/appendNew.h"
#include "core/cancel.h"
#include "core/zefRand.h"
#include "geometry/tools.h"
#include "parallel/collectInOrder.h"
#include "parallel/parallelFor.h"
#include "rmesh/RPatch.h"

#include <algorithm>
#include <iterator>

namespace TARN_ZEF
{
namespace
{
const double MAX_MOVE_IN_CELLS = 0.1;        // of relocateVertex
const double MAX_RELOCATE_DEV_ANGLE = 170.0; // degrees

const std::size_t MIN_TRIANGLES_PER_JOB = 20000; // of a walk over all of them

bool isFlat(const RTriangle& rt)
{
    return isFlat(rt.getCorner(0), rt.getCorner(1), rt.getCorner(2));
}

// Joins triangles across edges of degree 2. vTwisted: the roots of sets that no orientation fits, ascending.
void uniteNeighbours(const RMesh& mesh, TriangleUnion& turns, std::vector<unsigned int>& vTwisted)
{
    const auto getJoint = [](const REdge& edge) -> Joint
    {
        const RTriangle& rt0 = *edge.getTriangles()[0];
        const RTriangle& rt1 = *edge.getTriangles()[1];
        return {rt0.getNumber(), rt1.getNumber(), rt0.needFlip(&rt1)};
    };
    const std::vector<REdge*>& vAllRE = mesh.getAllRE();
    vTwisted = uniteAcrossEdges(turns, mesh.getAllT().size(), vAllRE.size(), getNumUnionParts(vAllRE.size()),
                                [&](std::size_t, std::size_t from, std::size_t to, auto join)
                                {
                                    for (std::size_t i = from; i < to; ++i)
                                        if (vAllRE[i]->isInner())
                                            join(getJoint(*vAllRE[i]));
                                });
    for (unsigned int& number : vTwisted)
        number = turns.findRoot(number);
    std::sort(vTwisted.begin(), vTwisted.end());
    vTwisted.erase(std::unique(vTwisted.begin(), vTwisted.end()), vTwisted.end());
}

// Breadth first across edges of degree 2. Triangles at borders and non-manifold edges wait until the clean
// surface is done, so that a twisted scrap at a rim does not turn what lies behind it. The start is not
// marked: its first neighbour reaches it again, and if the surface can't be oriented, that is the place
// where it may be turned.
void growPatch(RTriangle* pStart, RPatch* pPatch, Progress* pProgress)
{
    const auto isRegular = [](const RTriangle* pRT)
    { return pRT->getRE(0)->isInner() && pRT->getRE(1)->isInner() && pRT->getRE(2)->isInner(); };
    std::vector<RTriangle*> vWorkspace{pStart};
    std::vector<RTriangle*> vReserve;
    for (std::size_t head = 0; head < vWorkspace.size(); ++head)
    {
        RTriangle* pRT = vWorkspace[head];
        pProgress->increment();
        pPatch->addT(pRT);
        for (const REdge* pRE : {pRT->getRE(0), pRT->getRE(1), pRT->getRE(2)})
        {
            RTriangle* pNeigT = pRE->isInner() ? pRE->getNeigT(pRT) : nullptr;
            if (pNeigT == nullptr || pNeigT->bVisited)
                continue;
            (isRegular(pNeigT) ? vWorkspace : vReserve).push_back(pNeigT);
            if (pRT->needFlip(pNeigT))
                pNeigT->flipOrientation();
            pNeigT->bVisited = true;
        }
        if (head + 1 == vWorkspace.size())
        {
            vWorkspace.insert(vWorkspace.end(), vReserve.begin(), vReserve.end());
            vReserve.clear();
        }
    }
}

// Appends the triangles of an edge whose opposite corner an earlier one has.
void collectTwins(const REdge* pRE, std::vector<RTriangle*>& vKillT)
{
    if (pRE->getDegree() < 2)
        return;
    if (pRE->isInner())
    {
        RTriangle* pA = pRE->getTriangles()[0];
        RTriangle* pB = pRE->getTriangles()[1];
        if (pA->getThirdPoint(pRE->getVtx0(), pRE->getVtx1()) ==
            pB->getThirdPoint(pRE->getVtx0(), pRE->getVtx1()))
            vKillT.push_back(std::max(pA, pB, ByCreationRT()));
        return;
    }
    std::vector<RTriangle*> vAtEdge(pRE->getTriangles().begin(), pRE->getTriangles().end());
    std::sort(vAtEdge.begin(), vAtEdge.end(), ByCreationRT());
    std::vector<const Point3*> vOppVtx;
    for (RTriangle* pRT : vAtEdge)
    {
        const Point3* pOpp = pRT->getThirdPoint(pRE->getVtx0(), pRE->getVtx1());
        if (std::find(vOppVtx.begin(), vOppVtx.end(), pOpp) != vOppVtx.end())
            vKillT.push_back(pRT);
        else
            vOppVtx.push_back(pOpp);
    }
}

std::vector<char> findFlatT(const std::vector<RTriangle*>& vAllRT)
{
    std::vector<char> vFlat(vAllRT.size(), false);
    parallelFor(vAllRT.size(), MIN_TRIANGLES_PER_JOB,
                [&](std::size_t from, std::size_t to)
                {
                    for (std::size_t i = from; i < to; ++i)
                        vFlat[i] = vAllRT[i]->isAlive() && isFlat(*vAllRT[i]);
                });
    return vFlat;
}

double worstTurn(const std::vector<RTriangle*>& vIncT, const Point3* pSrc, const Point3* pTrg)
{
    double worst = 0.0;
    for (const RTriangle* pRT : vIncT)
        worst = std::max(worst, pRT->getDevAngle(pRT->getICI(pSrc), pTrg, true));
    return worst;
}

bool isBorderVertex(const RMesh& mesh, const Point3* pVtx)
{
    bool bBorder = false;
    mesh.forEachIncidentT(pVtx,
                          [&bBorder](const RTriangle* pRT, int i)
                          {
                              bBorder = bBorder || pRT->getRE(RTriangle::getNext(i))->isBorder() ||
                                        pRT->getRE(RTriangle::getPrev(i))->isBorder();
                          });
    return bBorder;
}

// Whether the surface near the edge stays what it is when one end moves into the other: their common neighbours
// are the corners of the triangles that vanish, and no border is drawn together with another.
bool keepsTopology(const RMesh& mesh, const REdge* pRE)
{
    std::vector<Point3*> vRing0;
    std::vector<Point3*> vRing1;
    mesh.getRingVtx(pRE->getVtx0(), vRing0);
    mesh.getRingVtx(pRE->getVtx1(), vRing1);
    std::vector<Point3*> vCommon;
    std::set_intersection(vRing0.begin(), vRing0.end(), vRing1.begin(), vRing1.end(),
                          std::back_inserter(vCommon), ByCreationVtx());
    if (static_cast<int>(vCommon.size()) != pRE->getDegree())
        return false;
    return pRE->isBorder() || !isBorderVertex(mesh, pRE->getVtx0()) || !isBorderVertex(mesh, pRE->getVtx1());
}

// Appends to vWork what has got a new shape. False, and nothing done, if no collapse keeps the topology.
bool collapseBest(RMesh& mesh, RTriangle* pRT, bool bKeepTopology, std::vector<RTriangle*>& vWork)
{
    double bestDev = 361.0;
    REdge* pBestRE = nullptr;
    Point3* pBestSrc = nullptr;
    std::vector<RTriangle*> vIncT;
    std::vector<REdge*> vIncRE;
    for (Point3* pSrc : {pRT->getCorner(0), pRT->getCorner(1), pRT->getCorner(2)})
    {
        vIncT.clear();
        vIncRE.clear();
        mesh.getIncidentT(pSrc, vIncT);
        mesh.getIncidentRE(pSrc, vIncRE);
        ASSEX(!vIncT.empty());
        ASSEX(!vIncRE.empty());
        for (REdge* pRE : vIncRE)
        {
            if (bKeepTopology && !keepsTopology(mesh, pRE))
                continue;
            const double worst = worstTurn(vIncT, pSrc, pRE->getOtherPoint(pSrc));
            if (bestDev > worst)
            {
                bestDev = worst;
                pBestRE = pRE;
                pBestSrc = pSrc;
            }
        }
    }
    if (bKeepTopology && pBestRE == nullptr)
        return false;
    ASSEX(pBestRE != 0);
    ASSEX(pBestSrc != 0);
    Point3* pTrg = pBestRE->getOtherPoint(pBestSrc);
    mesh.exchangeCorner(pBestSrc, pTrg);
    mesh.getIncidentT(pTrg, vWork);
    return true;
}
} // namespace

void RMesh::deletePatches()
{
    for (RPatch* pPatch : vRP)
        delete pPatch;
    vRP.clear();
}

// The turn of a triangle against the first one of its patch is unique, so a walk over the edges in memory order
// finds it, and the patches too. Only a twisted patch needs the flood, whose order decides where the twist ends.
int RMesh::createPatchesOrient()
{
    Progress* pProgress = getRootProgress()->getChildProgressSetTodo("RM_cpo", getAllT().size());
    deletePatches();
    for (RTriangle* pRT : getAllT())
    {
        if (!pRT->isAlive())
            continue;
        pRT->bVisited = false;
        pRT->setPatch(nullptr);
    }
    TriangleUnion turns(getAllT().size());
    std::vector<unsigned int> vTwisted;
    uniteNeighbours(*this, turns, vTwisted);
    for (RTriangle* pRT : getAllT())
    {
        if (!pRT->isAlive() || pRT->getPatch() != nullptr)
            continue;
        const TriangleUnion::Found found = turns.find(pRT->getNumber());
        if (found.root == pRT->getNumber())
        {
            appendNew(vRP, this);
            if (std::binary_search(vTwisted.begin(), vTwisted.end(), found.root))
            {
                growPatch(pRT, vRP.back(), pProgress);
                continue;
            }
        }
        RPatch* pPatch = found.root == pRT->getNumber() ? vRP.back() : getAllT()[found.root]->getPatch();
        pPatch->addT(pRT);
        if (found.bTurned)
            pRT->flipOrientation();
        pRT->bVisited = turns.getSize(found.root) > 1;
        pProgress->increment();
    }
    pProgress->setFinished(true);
    return static_cast<int>(vRP.size());
}

void RMesh::createPatches(int maxT)
{
    deletePatches();
    for (RTriangle* pStart : getAllT())
    {
        if (!pStart->isAlive() || pStart->bVisited)
            continue;
        appendNew(vRP, this);
        int num = 1;
        std::vector<RTriangle*> vWorkspace{pStart};
        for (std::size_t head = 0; head < vWorkspace.size(); ++head)
        {
            RTriangle* pRT = vWorkspace[head];
            vRP.back()->addT(pRT);
            for (const REdge* pRE : {pRT->getRE(0), pRT->getRE(1), pRT->getRE(2)})
            {
                RTriangle* pNeigT = pRE->getNeigT(pRT);
                if (pNeigT == nullptr || pNeigT->bVisited || ++num >= maxT)
                    continue;
                vWorkspace.push_back(pNeigT);
                pNeigT->bVisited = true;
            }
        }
    }
}

int RMesh::killDuplicateT()
{
    const std::vector<RTriangle*> vKillT =
        collectInOrder<RTriangle*>(getAllRE().size(),
                                   [this](std::size_t from, std::size_t to, std::vector<RTriangle*>& vTwinT)
                                   {
                                       for (std::size_t k = from; k < to; ++k)
                                           collectTwins(getAllRE()[k], vTwinT);
                                   });
    for (RTriangle* pRT : vKillT)
        if (pRT->isAlive())
            pRT->kill(this);
    return static_cast<int>(vKillT.size());
}

bool RMesh::isClosedManifold() const
{
    const auto isOdd = [](const REdge* pRE) { return pRE->isAlive() && !pRE->isInner(); };
    return collectInOrder<REdge*>(getAllRE().size(),
                                  [&](std::size_t from, std::size_t to, std::vector<REdge*>& vFound)
                                  {
                                      std::copy_if(getAllRE().begin() + static_cast<std::ptrdiff_t>(from),
                                                   getAllRE().begin() + static_cast<std::ptrdiff_t>(to),
                                                   std::back_inserter(vFound), isOdd);
                                  })
        .empty();
}

// Last triangle first; the triangles around a collapse have new shapes and come before all others.
std::size_t RMesh::killDegenerate(bool bKeepTopology)
{
    std::size_t numLeft = 0;
    Progress* pProgress = getRootProgress()->getChildProgressSetTodo("RM_kdeg", 3 * getAllT().size());
    // Whether a triangle may be flat: only a collapse beside it makes one so that was not.
    std::vector<char> vSuspect = findFlatT(getAllT());
    std::vector<RTriangle*> vWork;
    for (std::size_t i = getAllT().size(); i-- > 0;)
    {
        checkCancelledAt(i);
        vWork.push_back(getAllT()[i]);
        while (!vWork.empty())
        {
            RTriangle* pRT = vWork.back();
            vWork.pop_back();
            pProgress->increment();
            if (!vSuspect[pRT->getNumber()] || !pRT->isAlive() || !isFlat(*pRT))
                continue;
            if (!collapseBest(*this, pRT, bKeepTopology, vWork))
                ++numLeft;
            for (const RTriangle* pMovedT : vWork)
                vSuspect[pMovedT->getNumber()] = true;
        }
    }
    killDuplicateT();
    pProgress->setFinished(true);
    return numLeft;
}

bool RMesh::relocateVertex(Point3* pVtx)
{
    std::vector<REdge*> vIncRE;
    getIncidentRE(pVtx, vIncRE);
    if (vIncRE.empty())
        return false;
    PointSum ring;
    for (const REdge* pRE : vIncRE)
        ring.add(*pRE->getOtherPoint(pVtx));
    const double maxMove = MAX_MOVE_IN_CELLS * getCellSize();
    Point3 goal = limitMove(*pVtx, ring.getMean(), maxMove);
    while (hasVertexAt(goal))
    {
        const double dx = zefRand() * maxMove / ZEF_RAND_MAX;
        const double dy = zefRand() * maxMove / ZEF_RAND_MAX;
        const double dz = zefRand() * maxMove / ZEF_RAND_MAX;
        goal.set(goal.x() + dx, goal.y() + dy, goal.z() + dz);
    }

    std::vector<RTriangle*> vIncT;
    getIncidentT(pVtx, vIncT);
    for (const RTriangle* pRT : vIncT)
    {
        const double devAngle = pRT->getDevAngle(pRT->getICI(pVtx), &goal, false);
        printText("devAngle would be " + toText(devAngle) + "\n");
        if (devAngle > MAX_RELOCATE_DEV_ANGLE)
            return false;
    }
    if (goal != *pVtx)
    {
        printText("updateVertex\n");
        updateVertex(pVtx, goal);
    }
    return true;
}

} // namespace TARN_ZEF

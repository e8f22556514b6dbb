#include "holes/Loop.h"

#include "cmesh/CEdge.h"
#include "cmesh/CMesh.h"
#include "cmesh/CTriangle.h"
#include "holes/VcdEdgeMap.h"

#include <algorithm>
#include <atomic>

namespace TARN_ZEF
{
namespace
{
const double MAX_TURN_SUM = 250.0;      // above: a rim, no hole
const double TRUSTED_TURN_SUM = -200.0; // not above: a hole without doubt
const double MAX_NEIGHBOUR_DIHEDRAL = 45.0;
const double DIHEDRAL_PENALTY = 100.0;

std::atomic<u64> nextId{0}; // never comes round again, however long the process lives

// A heap with this order has the smallest angle on top, and the earliest among equals. Angles of convex
// corners are never NaN.
const auto LATER = [](const auto& a, const auto& b)
{ return a.angle != b.angle ? a.angle > b.angle : a.order > b.order; };
} // namespace

Loop::Loop(VcdEdgeMap& mmVCD2CE, CMesh* pCMesh_)
    : pCMesh(pCMesh_)
    , id(nextId++)
{
    ASSEX(!mmVCD2CE.empty());
    std::vector<CTriangle*> vAdjT;
    bClosed = orientChainAndAjacentT(mmVCD2CE, vAdjT);
    if (bClosed)
        orientConnected(vAdjT);
}

bool Loop::orientChainAndAjacentT(VcdEdgeMap& mmVCD2CE, std::vector<CTriangle*>& vAdjT)
{
    const u64 startVCD = mmVCD2CE.getFirstVCD();
    u64 vcd = startVCD;
    while (CEdge* pCE = mmVCD2CE.findFirst(vcd))
    {
        const int degree = pCE->getDegree();
        ASSEX(degree > 0);
        pCE->setDirection(ED_NONE); // an earlier loop or chain may have left one
        pCE->setDirection(pCE->v0 == vcd ? ED_V0_TO_V1 : ED_V1_TO_V0);
        if (pCE->v0 != vcd)
            ASSEX(pCE->v1 == vcd);
        vCE.push_back(pCE);
        const u64 nextVCD = pCE->getOtherVCD(vcd);
        mmVCD2CE.eraseEdge(pCE);
        if (degree == 1)
        {
            CTriangle* pCT = pCE->getTriangle(true, true);
            if (pCT->getHEDirection2(vcd, nextVCD) != HE_OPPOSITE)
                pCT->flipOrientation();
            vAdjT.push_back(pCT);
        }
        vcd = nextVCD;
    }
    std::sort(vAdjT.begin(), vAdjT.end(), ByCreationCT());
    vAdjT.erase(std::unique(vAdjT.begin(), vAdjT.end()), vAdjT.end());
    return vcd == startVCD;
}

// Spreads the orientation from the triangles at the ring.
void Loop::orientConnected(const std::vector<CTriangle*>& vAdjT)
{
    pCMesh->clearVisited();
    std::vector<CTriangle*> vWorkspace = vAdjT;
    for (CTriangle* pCT : vAdjT)
        pCT->bVisited = true;
    while (!vWorkspace.empty())
    {
        const CTriangle* pCT = vWorkspace.back();
        vWorkspace.pop_back();
        for (int ici = 0; ici < 3; ++ici)
        {
            const CEdge* pCE = pCT->getCEdge(ici);
            const HalfEdgeDirection ownHED = pCT->getHEDirection2(pCE->v0, pCE->v1);
            for (CTriangle* pNeigT : pCE->vCT)
            {
                if (pNeigT->bVisited)
                    continue;
                pNeigT->bVisited = true;
                vWorkspace.push_back(pNeigT);
                if (pNeigT->getHEDirection2(pCE->v0, pCE->v1) == ownHED)
                    pNeigT->flipOrientation();
            }
        }
    }
}

void Loop::getEdges(std::vector<CEdge*>& vOut) const
{
    vOut.insert(vOut.end(), vCE.begin(), vCE.end());
}

void Loop::getBorderCE(std::vector<CEdge*>& vOut) const
{
    for (CEdge* pCE : vCE)
        if (pCE->isBorder())
            vOut.push_back(pCE);
}

bool Loop::hasVCD(u64 vcd) const
{
    return std::any_of(vCE.begin(), vCE.end(), [vcd](const CEdge* pCE) { return pCE->hasVCD(vcd); });
}

void Loop::getNewT(std::vector<CTriangle*>& vOut) const
{
    vOut.insert(vOut.end(), vNewT.begin(), vNewT.end());
}

bool Loop::solve()
{
    ASSEX(bClosed);
    const double turnSum = initPrioq();
    if (turnSum > MAX_TURN_SUM)
        return false;
    while (triangulate())
    {
    }
    if (!(turnSum > TRUSTED_TURN_SUM) || !(signedArea < 0.0))
        return true;
    for (CTriangle* pCT : vNewT)
        pCT->kill(pCMesh);
    return false;
}

// Links the ring and queues its convex corners. Returns the turn sum: over all corners with an angle, that
// angle less 180.0. The convex ones alone could never sum up to more than 0.
double Loop::initPrioq()
{
    ASSEX(!vCE.empty());
    vAllAE.reserve(vCE.size());
    const CEdge* pPrevCE = vCE.back();
    for (const CEdge* pCE : vCE)
    {
        const bool bBorderPair = pPrevCE->isBorder() && pCE->isBorder();
        vAllAE.emplace_back(pCMesh, pCE->getSource(), bBorderPair);
        pPrevCE = pCE;
    }
    numAE = static_cast<int>(vAllAE.size());

    AngleEntry* pPrevAE = &vAllAE.back();
    for (AngleEntry& entry : vAllAE)
    {
        AngleEntry* pAE = &entry;
        ASSEX(pPrevAE != pAE);
        pAE->setPrevAE(pPrevAE);
        pPrevAE->setNextAE(pAE);
        pPrevAE = pAE;
    }

    double turnSum = 0.0;
    for (AngleEntry& entry : vAllAE)
    {
        int aes = 0;
        const double angle = entry.getAngle(true, aes);
        if (!(angle > 360.0))
            turnSum += angle - 180.0;
        if (aes == AngleEntry::CONVEX)
            enqueue(angle, &entry);
    }
    return turnSum;
}

void Loop::enqueue(double angle, AngleEntry* pAE)
{
    vPrioq.push_back({angle, numEnqueued++, pAE});
    std::push_heap(vPrioq.begin(), vPrioq.end(), LATER);
}

AngleEntry* Loop::getBestAE()
{
    while (!vPrioq.empty())
    {
        std::pop_heap(vPrioq.begin(), vPrioq.end(), LATER);
        const Candidate best = vPrioq.back();
        vPrioq.pop_back();
        if (!best.pAE->isAlive())
            continue;
        int aes = 0;
        double freshAngle = best.pAE->getAngle(true, aes);
        if (aes != AngleEntry::CONVEX)
            continue;
        // A corner whose neighbours lie in different planes waits.
        if (best.pAE->getPrevNextDihedral() > MAX_NEIGHBOUR_DIHEDRAL)
            freshAngle += DIHEDRAL_PENALTY;
        if (!(freshAngle > best.angle))
            return best.pAE;
        enqueue(freshAngle, best.pAE);
    }
    return nullptr;
}

bool Loop::triangulate()
{
    if (numAE < 3)
        return false;
    AngleEntry* pAE = getBestAE();
    if (pAE == nullptr)
        return false;
    int aes = 0;
    const double angle = pAE->getAngle(false, aes);
    if (aes != AngleEntry::CONVEX)
        return false;

    AngleEntry* pPrevAE = pAE->getPrevAE();
    AngleEntry* pNextAE = pAE->getNextAE();
    ASSEX(pAE != pPrevAE && pAE != pNextAE && pPrevAE != pNextAE);
    ASSEX(pNextAE->getPrevAE() == pAE);
    ASSEX(pPrevAE->getNextAE() == pAE);
    pAE->kill();
    --numAE;
    CTriangle* pNewCT = pCMesh->createT(pPrevAE->getVCD(), pAE->getVCD(), pNextAE->getVCD(), 0, 0);
    vNewT.push_back(pNewCT);
    addSignedArea(pNewCT, angle);

    pPrevAE->setNextAE(pNextAE);
    pNextAE->setPrevAE(pPrevAE);
    for (AngleEntry* pNeigAE : {pPrevAE, pNextAE})
    {
        const double freshAngle = pNeigAE->getAngle(true, aes);
        if (aes == AngleEntry::CONVEX)
            enqueue(freshAngle, pNeigAE);
    }
    return true;
}

// Nearly flat corners say nothing about the side from which the ring is cut.
void Loop::addSignedArea(const CTriangle* pNewCT, double angle)
{
    const double area = pNewCT->getArea(pCMesh);
    if (175.0 > angle)
        signedArea += area;
    if (angle > 185.0)
        signedArea -= area;
}

} // namespace TARN_ZEF

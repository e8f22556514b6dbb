#include "holes/Chain.h"

#include "cmesh/CEdge.h"
#include "cmesh/CMesh.h"
#include "cmesh/CTriangle.h"
#include "geometry/tools.h"
#include "holes/VcdEdgeMap.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <limits>
#include <sstream>

namespace TARN_ZEF
{
namespace
{
std::atomic<u64> nextId{0}; // never comes round again, however long the process lives

// The one edge that the map holds at a corner, taken out of it; null if there is none.
CEdge* takeEdge(VcdEdgeMap& mmVCD2CE, u64 vcd)
{
    const std::size_t numAtCorner = mmVCD2CE.count(vcd);
    if (numAtCorner == 0)
        return nullptr;
    ASSEX_TEXT(numAtCorner == 1, "distance(result.first,result.second)==1");
    CEdge* pCE = mmVCD2CE.findFirst(vcd);
    mmVCD2CE.eraseEdge(pCE);
    return pCE;
}

// An edge that two triangles run along in the same direction.
struct Conflict
{
    unsigned int numberCT; // of the earlier triangle
    int ici;
    CEdge* pCE;
};

// Sets bVisited of the given triangles, and clears it in all others that share an edge with them.
void markMembers(const std::vector<CTriangle*>& vT)
{
    for (const CTriangle* pCT : vT)
        for (int ici = 0; ici < 3; ++ici)
            for (CTriangle* pNeigCT : pCT->getCEdge(ici)->vCT)
                pNeigCT->bVisited = false;
    for (CTriangle* pCT : vT)
        pCT->bVisited = true;
}

// The length of a polygon, point by point.
class PolygonLength
{
public:
    void add(const Point3& p)
    {
        if (bEmpty)
            first = p;
        else
            sum += std::sqrt(sqDistance(last, p));
        last = p;
        bEmpty = false;
    }
    [[nodiscard]] double getClosedLength() const { return sum + std::sqrt(sqDistance(last, first)); }

private:
    Point3 first;
    Point3 last;
    double sum = 0.0;
    bool bEmpty = true;
};
} // namespace

Chain::Chain(CMesh* pCMesh_, VcdEdgeMap& mmVCD2CE)
    : id(nextId++)
    , pCMesh(pCMesh_)
{
    ASSEX(!mmVCD2CE.empty());
    CEdge* pCE = mmVCD2CE.getFirstEdge();
    mmVCD2CE.eraseEdge(pCE);
    pCE->setDirection(ED_V0_TO_V1);
    vCE.push_back(pCE);
    leftVCD = pCE->getSource();
    rightVCD = pCE->getTarget();
    takeEdgesFromMap(mmVCD2CE);
}

void Chain::getEdges(std::vector<CEdge*>& vOut) const
{
    vOut.insert(vOut.end(), vCE.begin(), vCE.end());
}

void Chain::getEnds(u64& endVCD0, u64& endVCD1) const noexcept
{
    endVCD0 = leftVCD;
    endVCD1 = rightVCD;
}

void Chain::getVCDs(std::vector<u64>& vVCD) const
{
    for (const CEdge* pCE : vCE)
    {
        vVCD.push_back(pCE->v0);
        vVCD.push_back(pCE->v1);
    }
    std::sort(vVCD.begin(), vVCD.end());
    vVCD.erase(std::unique(vVCD.begin(), vVCD.end()), vVCD.end());
}

bool Chain::findConnectors(const CMesh& mesh, const std::function<bool(const CEdge*)>& isFree,
                           std::vector<CEdge*>& vConnectorCE) const
{
    ASSEX(leftVCD != rightVCD);
    CEdge* pDirectCE = mesh.getCE(leftVCD, rightVCD);
    if (pDirectCE != nullptr && isFree(pDirectCE))
    {
        vConnectorCE.push_back(pDirectCE);
        return true;
    }
    std::vector<u64> vVCD{leftVCD, rightVCD}; // an emptied chain has no others
    getVCDs(vVCD);
    std::vector<CEdge*> vCE0;
    mesh.getIncCE(leftVCD, vCE0);
    int minDegSum = std::numeric_limits<int>::max();
    std::array<CEdge*, 2> aBestCE = {nullptr, nullptr};
    for (CEdge* pCE0 : vCE0)
    {
        const u64 middleVCD = pCE0->getOtherVCD(leftVCD);
        if (!isFree(pCE0) || std::binary_search(vVCD.begin(), vVCD.end(), middleVCD))
            continue;
        CEdge* pCE1 = mesh.getCE(middleVCD, rightVCD);
        if (pCE1 == nullptr || !isFree(pCE1) || pCE0->getDegree() + pCE1->getDegree() >= minDegSum)
            continue;
        minDegSum = pCE0->getDegree() + pCE1->getDegree();
        aBestCE = {pCE0, pCE1};
    }
    if (aBestCE[0] == nullptr)
        return false;
    vConnectorCE.insert(vConnectorCE.end(), aBestCE.begin(), aBestCE.end());
    return true;
}

void Chain::addEdges(const std::vector<CEdge*>& vNewCE)
{
    VcdEdgeMap mmVCD2CE(vNewCE);
    takeEdgesFromMap(mmVCD2CE);
}

void Chain::takeEdgesFromMap(VcdEdgeMap& mmVCD2CE)
{
    std::vector<CEdge*> vLeft; // outwards
    while (CEdge* pCE = takeEdge(mmVCD2CE, leftVCD))
    {
        const u64 left = leftVCD;
        pCE->setDirection(pCE->v1 == left ? ED_V0_TO_V1 : ED_V1_TO_V0);
        ASSEX(pCE->getTarget() == left);
        leftVCD = pCE->getSource();
        vLeft.push_back(pCE);
    }
    vCE.insert(vCE.begin(), vLeft.rbegin(), vLeft.rend());

    while (CEdge* pCE = takeEdge(mmVCD2CE, rightVCD))
    {
        const u64 right = rightVCD;
        pCE->setDirection(pCE->v0 == right ? ED_V0_TO_V1 : ED_V1_TO_V0);
        ASSEX(pCE->getSource() == right);
        rightVCD = pCE->getTarget();
        vCE.push_back(pCE);
    }
}

bool Chain::isShorterThanRim(std::size_t maxEdges) const
{
    if (vCE.size() > maxEdges)
        return false;
    double chainLen = 0.0;
    PolygonLength rim;
    for (const CEdge* pCE : vCE)
    {
        chainLen += std::sqrt(sqDistance(pCMesh->getAvgPoint(pCE->v0), pCMesh->getAvgPoint(pCE->v1)));
        rim.add(pCE->getMidPoint(pCMesh));
        for (const CTriangle* pCT : pCE->vCT)
            rim.add(pCMesh->getAvgPoint(pCT->getThirdCCD(pCE->v0, pCE->v1)));
    }
    const double rimLen = rim.getClosedLength();
    return !(chainLen > rimLen);
}

// --- Orientation along the chain ---------------------------------------------------------------------------

void Chain::getOriented(std::vector<CTriangle*>& vT)
{
    checkLinks();
    vT.clear();
    // Two edges of the chain on one triangle follow each other: they ask for the same turn, and the triangle
    // comes twice in a row or as first and last.
    for (const CEdge* pCE : vCE)
    {
        if (pCE->getDegree() >= 2)
            continue;
        for (CTriangle* pCT : pCE->vCT)
        {
            if (!vT.empty() && vT.back() == pCT)
                continue;
            if (pCT->getHEDirection2(pCE->getSource(), pCE->getTarget()) != HE_OPPOSITE)
                pCT->flipOrientation();
            vT.push_back(pCT);
        }
    }
    if (vT.size() > 1 && vT.front() == vT.back())
        vT.pop_back();
    if (!isRunAgainst())
    {
        errorMessage(ZEF_HERE, "UUH, BUG");
        ASSEX_TEXT(false, "false");
    }
}

void Chain::checkLinks() const
{
    for (std::size_t i = 0; i < vCE.size(); ++i)
    {
        const CEdge* pCE0 = vCE[i];
        const CEdge* pCE1 = vCE[i + 1 < vCE.size() ? i + 1 : 0];
        if (pCE0->getTarget() == pCE1->getSource())
            continue;
        warningMessage(ZEF_HERE, "BUG");
        print();
        ASSEX(pCE0->getTarget() == pCE1->getSource());
    }
}

bool Chain::isRunAgainst() const
{
    for (const CEdge* pCE : vCE)
    {
        if (pCE->getDegree() >= 2)
            continue;
        for (const CTriangle* pCT : pCE->vCT)
            if (pCT->getHEDirection2(pCE->getSource(), pCE->getTarget()) != HE_OPPOSITE)
                return false;
    }
    return true;
}

bool Chain::hasMoebius()
{
    vMoebiusCE.clear();
    std::vector<CTriangle*> vAdjOrientedCT;
    getOriented(vAdjOrientedCT);
    markMembers(vAdjOrientedCT);

    std::vector<Conflict> vConflicts;
    for (const CTriangle* pCT : vAdjOrientedCT)
        for (int ici = 0; ici < 3; ++ici)
        {
            CEdge* pCE = pCT->getCEdge(ici);
            if (pCE->isNonManifold())
                continue;
            const CTriangle* pNeigCT = pCE->getNeigT(pCT);
            if (pNeigCT == nullptr || !pNeigCT->bVisited || pNeigCT->getNumber() <= pCT->getNumber())
                continue;
            const HalfEdgeDirection ownHED = pCT->getHEDirection2(pCE->v0, pCE->v1);
            const HalfEdgeDirection otherHED = pNeigCT->getHEDirection2(pCE->v0, pCE->v1);
            ASSEX(ownHED != HE_NONE);
            ASSEX(otherHED != HE_NONE);
            if (ownHED == otherHED)
                vConflicts.push_back({pCT->getNumber(), ici, pCE});
        }
    // The first one decides where the twist is undone: by creation of the triangles, not along the chain.
    std::sort(vConflicts.begin(), vConflicts.end(),
              [](const Conflict& a, const Conflict& b)
              { return a.numberCT != b.numberCT ? a.numberCT < b.numberCT : a.ici < b.ici; });
    for (const Conflict& conflict : vConflicts)
        vMoebiusCE.push_back(conflict.pCE);
    return !vMoebiusCE.empty();
}

void Chain::fixMoebius()
{
    ASSEX(!vMoebiusCE.empty());
    const CEdge* pStartCE = vMoebiusCE.front();
    const u64 u = pStartCE->v0;
    const u64 v = pStartCE->v1;

    // The fans are small: a list in order of discovery serves as set and as work list.
    std::vector<CTriangle*> vResultT{pStartCE->getTriangle(true, false)};
    std::vector<CTriangle*> vWorkspace = vResultT;
    while (!vWorkspace.empty())
    {
        const CTriangle* pCT = vWorkspace.back();
        vWorkspace.pop_back();
        for (int ici = 0; ici < 3; ++ici)
        {
            const CEdge* pCE = pCT->getCEdge(ici);
            if (pCE == pStartCE || !(pCE->hasVCD(u) || pCE->hasVCD(v)))
                continue;
            for (CTriangle* pNeigCT : pCE->vCT)
            {
                if (std::find(vResultT.begin(), vResultT.end(), pNeigCT) != vResultT.end())
                    continue;
                vResultT.push_back(pNeigCT);
                vWorkspace.push_back(pNeigCT);
            }
        }
    }

    std::sort(vResultT.begin(), vResultT.end(), ByCreationCT());
    const auto swapped = [u, v](u64 vcd) { return vcd == u ? v : vcd == v ? u : vcd; };
    for (CTriangle* pCT : vResultT)
    {
        pCT->kill(pCMesh);
        pCMesh->createT(swapped(pCT->getC0()), swapped(pCT->getC1()), swapped(pCT->getC2()),
                        pCT->getGeneratingVCD(), 0);
    }
}

void Chain::print() const
{
    std::ostringstream os;
    os << "Chain " << id << ", " << (isClosed() ? "closed" : "open") << ", from " << leftVCD << " to "
       << rightVCD << "\n";
    for (const CEdge* pCE : vCE)
        os << "  " << pCE->v0 << ", " << pCE->v1 << ", edgeDirection=" << int{pCE->getDirection()}
           << ", degree " << pCE->getDegree() << "\n";
    printText(os.str());
}

} // namespace TARN_ZEF

#include "repair/CornerParter.h"

#include "cmesh/CEdge.h"
#include "cmesh/CMesh.h"
#include "cmesh/CTriangle.h"
#include "core/CallRecorder.h"
#include "geometry/tools.h"
#include "lattice/Bundle.h"
#include "lattice/Calc.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace TARN_ZEF
{
namespace
{
const double MAX_MOVE = 0.1;  // of a corner into its fan, in spacings
const double MAX_TURN = 90.0; // degrees; of a triangle whose corner moves
const int NUM_MOVES = 4;      // tries, each half as far
const int MAX_CELL_DIST = 2;  // of a new corner's cell from the old one's
const std::size_t MIN_FAN = 3;
const std::size_t MAX_BUBBLE = 7; // a free bubble has fewer triangles

const double DEGREES = 180.0 / 3.14159265358979323846;

// A triangle at an edge, and where it stands around it.
struct Sheet
{
    CTriangle* pCT;
    double angle; // degrees from the first one, 0 to 360
    bool bUp;
};

// In rotation around the edge; empty if one of them is flat.
std::vector<Sheet> sortSheets(const CMesh& mesh, const CEdge& edge)
{
    const Point3& p0 = *mesh.getVtx(edge.v0);
    const Vector3 axis = *mesh.getVtx(edge.v1) - p0;
    if (axis.isDegenerate())
        return {};
    const Vector3 along = normalizeInline(axis);
    Vector3 right;
    std::vector<Sheet> vSheets;
    for (CTriangle* pCT : edge.vCT)
    {
        const Vector3 arm = *mesh.getVtx(pCT->getThirdCCD(edge.v0, edge.v1)) - p0;
        const Vector3 across = crossProduct(crossProduct(along, arm), along);
        if (across.isDegenerate())
            return {};
        if (vSheets.empty())
            right = normalizeInline(across);
        const double angle =
            vSheets.empty() ? 0.0 : std::atan2(across * crossProduct(along, right), across * right) * DEGREES;
        vSheets.push_back({pCT, angle < 0.0 ? angle + 360.0 : angle, runsUp(*pCT, edge)});
    }
    std::sort(vSheets.begin(), vSheets.end(),
              [](const Sheet& a, const Sheet& b)
              { return a.angle != b.angle ? a.angle < b.angle : ByCreationCT()(a.pCT, b.pCT); });
    return vSheets;
}

// Degrees by which the sheets bend if each second one, from the first one on, goes on into the next; below 0
// if two that would be paired run the same way.
double getBendOfPairs(const std::vector<Sheet>& vSheets, std::size_t first)
{
    double sum = 0.0;
    for (std::size_t i = first; i < vSheets.size(); i += 2)
    {
        const Sheet& a = vSheets[i];
        const Sheet& b = vSheets[(i + 1) % vSheets.size()];
        if (a.bUp == b.bUp)
            return -1.0;
        sum += std::abs(180.0 - (b.angle - a.angle + (b.angle < a.angle ? 360.0 : 0.0)));
    }
    return sum;
}
} // namespace

CornerParter::CornerParter(CMesh* pCMesh_, const Calc* pCalc_)
    : pCMesh(pCMesh_)
    , pCalc(pCalc_)
{
}

void CornerParter::addCandidates()
{
    std::vector<CEdge*> vCE;
    pCMesh->getDegN(DEG_IRREGULAR, vCE);
    for (const CEdge* pCE : vCE)
        vCandidates.insert(vCandidates.end(), {pCE->v0, pCE->v1});
}

std::size_t CornerParter::run()
{
    std::sort(vCandidates.begin(), vCandidates.end());
    vCandidates.erase(std::unique(vCandidates.begin(), vCandidates.end()), vCandidates.end());
    std::size_t numNew = 0;
    for (const bool bFlattest : {true, false})
        for (const u64 ccd : vCandidates)
            numNew += partAt(ccd, bFlattest);
    return numNew;
}

std::size_t CornerParter::partAt(u64 ccd, bool bFlattest)
{
    std::vector<CTriangle*> vIncT;
    pCMesh->getIncT(ccd, vIncT);
    if (isOneFan(vIncT, ccd))
        return 0;
    std::vector<Fan> vFans = findFans(vIncT, ccd, bFlattest);
    if (vFans.size() < 2)
        return 0;
    // Those that can't go first, then the largest: the first one stays.
    std::stable_sort(vFans.begin(), vFans.end(),
                     [](const Fan& a, const Fan& b)
                     { return a.bClosed != b.bClosed ? b.bClosed : a.bClosed && a.vT.size() > b.vT.size(); });
    std::size_t numNew = 0;
    for (std::size_t i = 1; i < vFans.size(); ++i)
        if (vFans[i].bClosed && giveOwnCorner(vFans[i], ccd))
            ++numNew;
    if (numNew > 0 && vFans[0].bClosed)
    {
        moveIntoFan(ccd);
        killBubbleAt(ccd);
    }
    return numNew;
}

bool CornerParter::isOneFan(const std::vector<CTriangle*>& vIncT, u64 ccd)
{
    if (vIncT.empty())
        return true;
    const CEdge* pFromCE = nullptr;
    const CTriangle* pCT = vIncT[0];
    for (std::size_t i = 1; i <= vIncT.size(); ++i)
    {
        const int ici = pCT->getICI(ccd);
        const CEdge* pNextCE = pCT->getCEdge(CTriangle::getNext(ici));
        if (pNextCE == pFromCE)
            pNextCE = pCT->getCEdge(CTriangle::getPrev(ici));
        pCT = pNextCE->getNeigT(pCT);
        pFromCE = pNextCE;
        if (pCT == nullptr || (pCT == vIncT[0]) != (i == vIncT.size()))
            return false;
    }
    return true;
}

std::vector<CornerParter::Fan> CornerParter::findFans(const std::vector<CTriangle*>& vIncT, u64 ccd,
                                                      bool bFlattest) const
{
    std::vector<std::size_t> vFanOf(vIncT.size());
    for (std::size_t i = 0; i < vIncT.size(); ++i)
        vFanOf[i] = i;
    const auto getFan = [&](const CTriangle* pCT)
    { return vFanOf[static_cast<std::size_t>(std::find(vIncT.begin(), vIncT.end(), pCT) - vIncT.begin())]; };
    const auto join = [&](const CTriangle* pA, const CTriangle* pB)
    {
        std::replace(vFanOf.begin(), vFanOf.end(), std::max(getFan(pA), getFan(pB)),
                     std::min(getFan(pA), getFan(pB)));
    };

    std::vector<CEdge*> vIncCE;
    pCMesh->getIncCE(ccd, vIncCE);
    std::vector<const CTriangle*> vOpenT;
    for (const CEdge* pCE : vIncCE)
    {
        const std::vector<TrianglePair> vPairs = pairSheets(*pCE, bFlattest);
        for (const auto& [pA, pB] : vPairs)
            join(pA, pB);
        for (std::size_t i = 0; vPairs.empty() && i < pCE->vCT.size(); ++i)
        {
            join(pCE->vCT[0], pCE->vCT[static_cast<std::uint32_t>(i)]);
            vOpenT.push_back(pCE->vCT[0]);
        }
    }
    std::vector<Fan> vFans;
    for (std::size_t first = 0; first < vIncT.size(); ++first)
    {
        if (vFanOf[first] != first)
            continue;
        Fan& fan = vFans.emplace_back();
        for (std::size_t i = first; i < vIncT.size(); ++i)
            if (vFanOf[i] == first)
                fan.vT.push_back(vIncT[i]);
        fan.bClosed = fan.vT.size() >= MIN_FAN &&
                      std::none_of(vOpenT.begin(), vOpenT.end(),
                                   [&](const CTriangle* pCT) { return getFan(pCT) == first; });
    }
    return vFans;
}

std::vector<CornerParter::TrianglePair> CornerParter::pairSheets(const CEdge& edge, bool bFlattest) const
{
    if (edge.isInner())
        return {{edge.vCT[0], edge.vCT[1]}};
    if (edge.getDegree() % 2 != 0)
        return {};
    const std::vector<Sheet> vSheets = sortSheets(*pCMesh, edge);
    if (vSheets.empty())
        return {};
    const std::array<double, 2> aBend = {getBendOfPairs(vSheets, 0), getBendOfPairs(vSheets, 1)};
    std::size_t first = aBend[0] < 0.0 || (aBend[1] >= 0.0 && aBend[1] < aBend[0]) ? 1 : 0;
    if (!bFlattest && aBend[1 - first] >= 0.0)
        first = 1 - first;
    if (aBend[first] < 0.0)
        return {};
    std::vector<TrianglePair> vPairs;
    for (std::size_t i = first; i < vSheets.size(); i += 2)
        vPairs.emplace_back(vSheets[i].pCT, vSheets[(i + 1) % vSheets.size()].pCT);
    return vPairs;
}

bool CornerParter::giveOwnCorner(const Fan& fan, u64 ccd)
{
    u64 ownCCD = 0;
    if (!findFreeCell(ccd, ownCCD))
        return false;
    const Point3 pos = *pCMesh->getVtx(ccd);
    pCMesh->addBundle(ownCCD);
    pCMesh->getVtx(ownCCD)->set(pos);
    for (CTriangle* pCT : fan.vT)
    {
        const int ici = pCT->getICI(ccd);
        const u64 next = pCT->getCorner(CTriangle::getNext(ici));
        const u64 prev = pCT->getCorner(CTriangle::getPrev(ici));
        pCT->kill(pCMesh);
        pCMesh->createT(ownCCD, next, prev, pCT->getGeneratingVCD(), 0);
    }
    moveIntoFan(ownCCD);
    killBubbleAt(ownCCD);
    return true;
}

void CornerParter::killBubbleAt(u64 ccd)
{
    std::vector<CTriangle*> vBubbleT;
    pCMesh->getIncT(ccd, vBubbleT);
    for (std::size_t i = 0; i < vBubbleT.size(); ++i)
        for (int k = 0; k < 3; ++k)
        {
            CTriangle* pNeigT = vBubbleT[i]->getCEdge(k)->getNeigT(vBubbleT[i]);
            if (pNeigT == nullptr)
                return;
            if (std::find(vBubbleT.begin(), vBubbleT.end(), pNeigT) == vBubbleT.end())
                vBubbleT.push_back(pNeigT);
            if (vBubbleT.size() >= MAX_BUBBLE)
                return;
        }
    addToReport(&CallReport::numPiecesDropped);
    for (CTriangle* pCT : vBubbleT)
        pCT->kill(pCMesh);
}

// Not above if possible: the facing of a piece is judged by the cells at its top.
bool CornerParter::findFreeCell(u64 ccd, u64& freeCCD) const
{
    for (int dist = 1; dist <= MAX_CELL_DIST; ++dist)
        for (int dz = -dist; dz <= dist; ++dz)
            for (int dy = -dist; dy <= dist; ++dy)
                for (int dx = -dist; dx <= dist; ++dx)
                {
                    if (std::max({std::abs(dx), std::abs(dy), std::abs(dz)}) != dist)
                        continue;
                    freeCCD = pCalc->getOffVal(ccd, dx, AXTRIBIT_X);
                    freeCCD = pCalc->getOffVal(freeCCD, dy, AXTRIBIT_Y);
                    freeCCD = pCalc->getOffVal(freeCCD, dz, AXTRIBIT_Z);
                    if (pCMesh->findBundle(freeCCD) == nullptr)
                        return true;
                }
    return false;
}

void CornerParter::moveIntoFan(u64 ccd)
{
    std::vector<CEdge*> vIncCE;
    pCMesh->getIncCE(ccd, vIncCE);
    const Point3 pos = *pCMesh->getVtx(ccd);
    Vector3 move(0.0, 0.0, 0.0);
    for (const CEdge* pCE : vIncCE)
        move = move +
               (*pCMesh->getVtx(pCE->getOtherVCD(ccd)) - pos) * (1.0 / static_cast<double>(vIncCE.size()));
    const double maxMove = MAX_MOVE * pCMesh->getAvgSpacing();
    const double len = move.length();
    if (len > maxMove)
        move = move * (maxMove / len);
    for (int i = 0; i < NUM_MOVES; ++i, move = move * 0.5)
        if (canMove(ccd, pos + move))
        {
            pCMesh->getVtx(ccd)->set(pos + move);
            return;
        }
}

bool CornerParter::canMove(u64 ccd, const Point3& pos) const
{
    std::vector<CTriangle*> vIncT;
    pCMesh->getIncT(ccd, vIncT);
    return std::none_of(vIncT.begin(), vIncT.end(),
                        [&](const CTriangle* pCT)
                        { return pCT->getDevAngle(pCMesh, pCT->getICI(ccd), pos) > MAX_TURN; });
}

} // namespace TARN_ZEF

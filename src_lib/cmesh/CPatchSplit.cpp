// The split of a closed patch into the two sides of a thin volume.
#include "cmesh/CPatch.h"

#include "cmesh/CMesh.h"
#include "cmesh/ConEdge.h"

#include <algorithm>
#include <set>
#include <unordered_set>

namespace TARN_ZEF
{
namespace
{
// Up to which size, and at what thickness in spacings, a closed patch counts as a thin volume.
const std::size_t MAX_TINY_SIZE = 20; // whatever its thickness
const std::size_t MAX_SMALL_SIZE = 100;
const double MAX_SMALL_THICKNESS = 1.0;
const double MAX_THICKNESS = 0.4;

// Assigns the members of a closed patch to two sides, from one non-manifold edge on: across a manifold edge
// the side stays the same, across a non-manifold one it changes. The flattest connections go first.
class TwoSides
{
public:
    TwoSides(CMesh* pCMesh_, const CPatch& patch_)
        : pCMesh(pCMesh_)
        , patch(patch_)
    {
    }

    // The triangles run the same way along pStartME afterwards, as two sheets back to back do.
    void start(CEdge* pStartME, CTriangle* pCT0, CTriangle* pCT1)
    {
        if (!pCT0->needFlip(pCT1))
            pCT1->flipOrientation();
        enter(pCT0, vPosT, pStartME);
        enter(pCT1, vNegT, pStartME);
    }

    void flood()
    {
        while (!sConEdges.empty())
        {
            const ConEdge ce = *sConEdges.begin();
            sConEdges.erase(sConEdges.begin());
            if (ce.numMemT != 2 || (ce.vMemT[0]->bVisited && ce.vMemT[1]->bVisited))
                continue;
            CTriangle* pSrcT = ce.vMemT[0];
            CTriangle* pTrgT = ce.vMemT[1];
            if (pTrgT->bVisited)
                std::swap(pSrcT, pTrgT);
            ASSEX(pSrcT->bVisited);
            if (pSrcT->needFlip(pTrgT) == ce.bManifold)
                pTrgT->flipOrientation();
            enter(pTrgT, isPositive(pSrcT) == ce.bManifold ? vPosT : vNegT, ce.pCE);
        }
        std::sort(vPosT.begin(), vPosT.end(), ByCreationCT());
        std::sort(vNegT.begin(), vNegT.end(), ByCreationCT());
    }

    std::vector<CTriangle*> vPosT;
    std::vector<CTriangle*> vNegT;

private:
    void enter(CTriangle* pCT, std::vector<CTriangle*>& vSide, const CEdge* pFromCE)
    {
        pCT->bVisited = true;
        vSide.push_back(pCT);
        if (&vSide == &vPosT)
            sPositive.insert(pCT);
        for (int i = 0; i < 3; ++i)
            if (pCT->getCEdge(i) != pFromCE)
                sConEdges.emplace(pCMesh, pCT->getCEdge(i),
                                  [this](const CTriangle* pMember) { return patch.isMember(pMember); });
    }
    [[nodiscard]] bool isPositive(const CTriangle* pCT) const { return sPositive.count(pCT) != 0; }

    CMesh* pCMesh;
    const CPatch& patch;
    std::set<ConEdge> sConEdges; // equal values are dropped
    std::unordered_set<const CTriangle*> sPositive;
};

// Alive triangles beside the edges that more than two of vSideT share, but not among them. Sorted input.
std::size_t countForeign(const std::vector<CTriangle*>& vSideT)
{
    std::vector<CEdge*> vME;
    getDegNEdges(-3, vSideT, vME);
    std::size_t num = 0;
    for (const CEdge* pCE : vME)
        num += static_cast<std::size_t>(std::count_if(
            pCE->vCT.begin(), pCE->vCT.end(),
            [&](CTriangle* pCT)
            { return !std::binary_search(vSideT.begin(), vSideT.end(), pCT, ByCreationCT()); }));
    return num;
}

const std::vector<CTriangle*>& chooseVictim(const TwoSides& sides, std::size_t numPosForeign,
                                            std::size_t numNegForeign)
{
    if (numNegForeign == 0 && numPosForeign >= 1)
        return sides.vNegT;
    if (numPosForeign == 0 && numNegForeign >= 1)
        return sides.vPosT;
    return sides.vNegT.size() >= sides.vPosT.size() ? sides.vPosT : sides.vNegT;
}
} // namespace

bool CPatch::canBeSplit() const
{
    if (!areWallsKnown())
        return true;
    // Kills make no edge non-manifold.
    return std::any_of(vWalls.begin(), vWalls.end(),
                       [this](const CEdge* pCE) { return pCE->isNonManifold() && getDegreeOn(pCE) == 2; });
}

bool CPatch::isCandidateForSplit() const
{
    const std::size_t numT = getSize();
    if (numT < MAX_TINY_SIZE)
        return true;
    const double thickness = getVolume() / (getArea() / 2.0) / pCMesh->getAvgSpacing();
    return (numT < MAX_SMALL_SIZE && thickness < MAX_SMALL_THICKNESS) || thickness < MAX_THICKNESS;
}

CEdge* CPatch::findStartME(CTriangle*& pCT0, CTriangle*& pCT1) const
{
    for (const CTriangle* pCT : vMemberCT)
    {
        for (int i = 0; pCT->isAlive() && i < 3; ++i)
        {
            CEdge* pCE = pCT->getCEdge(i);
            if (pCE->getDegree() <= 2 || getDegreeOn(pCE) != 2)
                continue;
            const auto isOwn = [this](const CTriangle* pMember) { return isMember(pMember); };
            pCT0 = *std::find_if(pCE->vCT.begin(), pCE->vCT.end(), isOwn);
            pCT1 =
                *std::find_if(pCE->vCT.begin(), pCE->vCT.end(),
                              [&](const CTriangle* pMember) { return pMember != pCT0 && isMember(pMember); });
            return pCE;
        }
    }
    return nullptr;
}

bool CPatch::splitClosedPatchKill(bool bStrict)
{
    orient();
    if (!isCandidateForSplit())
        return false;
    for (CTriangle* pCT : vMemberCT)
        pCT->bVisited = false;
    CTriangle* pCT0 = nullptr;
    CTriangle* pCT1 = nullptr;
    CEdge* pStartME = findStartME(pCT0, pCT1);
    if (pStartME == nullptr)
        return false;

    TwoSides sides(pCMesh, *this);
    sides.start(pStartME, pCT0, pCT1);
    sides.flood();
    const std::size_t numPosForeign = countForeign(sides.vPosT);
    const std::size_t numNegForeign = countForeign(sides.vNegT);
    if (bStrict && numPosForeign >= 1 && numNegForeign >= 1)
        return false;
    for (CTriangle* pCT : chooseVictim(sides, numPosForeign, numNegForeign))
        pCT->kill(pCMesh);
    return true;
}

} // namespace TARN_ZEF

#include "repair/Inspector.h"

#include "cmesh/CEdge.h"
#include "cmesh/CMesh.h"
#include "cmesh/CPatch.h"
#include "cmesh/CTriangle.h"

#include <algorithm>
#include <string>
#include <unordered_set>
#include <utility>

namespace TARN_ZEF
{
namespace
{
// A triangle with so many edges on the known border, or more, stands in a corner of it.
const int MAX_BORDER_COUNT = 2;

int countOnBorder(const CTriangle& ct, const std::set<u64>& sBorder)
{
    const int numCorners =
        static_cast<int>(sBorder.count(ct.getC0()) + sBorder.count(ct.getC1()) + sBorder.count(ct.getC2()));
    return numCorners < 2 ? 0 : numCorners == 2 ? 1 : 3;
}

bool isOnBorder(const CEdge& edge, const std::multimap<u64, u64>& mm)
{
    const auto holds = [&mm](u64 from, u64 to)
    {
        const auto [itBegin, itEnd] = mm.equal_range(from);
        return std::any_of(itBegin, itEnd, [to](const auto& entry) { return entry.second == to; });
    };
    return holds(edge.v0, edge.v1) || holds(edge.v1, edge.v0);
}

bool hasNormal(const CTriangle& ct, const CMesh* pCMesh)
{
    Vector3 nnv;
    bool bOK = false;
    ct.getNNV(nnv, pCMesh, bOK);
    return bOK;
}

// One of two floods that grow in turn over one patch. bVisited says that one of them has the triangle.
class GroupFlood
{
public:
    GroupFlood(const CPatch& patch_, std::vector<CTriangle*>& vGroup_, CTriangle* pSeedT)
        : patch(patch_)
        , vGroup(vGroup_)
    {
        ASSEX(pSeedT->isAlive() && patch.isMember(pSeedT) && !pSeedT->bVisited);
        pSeedT->bVisited = true;
        vGroup.assign(1, pSeedT);
    }

    // Goes on from the next triangle of the group; false if there is none. mayLeave(ct) tells whether, and
    // mayCross(edge) over which edges.
    template <typename MayLeave, typename MayCross>
    bool step(MayLeave mayLeave, MayCross mayCross)
    {
        if (next == vGroup.size())
            return false;
        const CTriangle* pCT = vGroup[next++];
        if (!mayLeave(*pCT))
            return true;
        for (int ici = 0; ici < 3; ++ici)
        {
            const CEdge& edge = *pCT->getCEdge(ici);
            if (!mayCross(edge))
                continue;
            for (CTriangle* pNeigT : edge.vCT)
                if (!pNeigT->bVisited && patch.isMember(pNeigT))
                    take(pCT, pNeigT);
        }
        return true;
    }

private:
    void take(const CTriangle* pCT, CTriangle* pNeigT)
    {
        pNeigT->bVisited = true;
        if (pCT->needFlip(pNeigT))
            pNeigT->flipOrientation();
        vGroup.push_back(pNeigT);
    }

    const CPatch& patch;
    std::vector<CTriangle*>& vGroup; // a queue; its first next entries have been gone on from
    std::size_t next = 0;
};

void clearVisited(const CPatch& patch)
{
    for (CTriangle* pCT : patch.getMembers())
        pCT->bVisited = false;
}
} // namespace

Inspector::Inspector(CMesh* pCMesh_, const std::vector<CPatch*>& vPatches_)
    : pCMesh(pCMesh_)
    , vPatches(vPatches_)
{
}

Inspector::~Inspector()
{
    for (CTriangle* pCT : vRemovedT)
        if (pCT->isAlive() && pCT->getPatch() == nullptr)
            pCT->kill(pCMesh);
}

void Inspector::keepGoodPartForKnownBorder(CPatch* pTestPatch, CTriangle* pStartT,
                                           const std::set<u64>& sBorder)
{
    clearVisited(*pTestPatch);
    std::vector<CTriangle*> vResult;
    GroupFlood flood(*pTestPatch, vResult, pStartT);
    const auto mayLeave = [&](const CTriangle& ct)
    {
        const int borderCount = countOnBorder(ct, sBorder);
        if (borderCount < MAX_BORDER_COUNT)
            return true;
        printText("BorderCount=" + std::to_string(borderCount) + ", continue\n");
        return false;
    };
    while (flood.step(mayLeave, [](const CEdge& edge) { return edge.isInner(); }))
    {
    }

    vGroupA = vResult;
    vGroupB = getUnreached(*pTestPatch);
    clearVisited(*pTestPatch);
    ASSEX_TEXT(vResult.size() + vGroupB.size() == pTestPatch->getSize(),
               "vResult.size()+vGroupB.size()==pTestPatch->vMemberCT.size()");
    cut(pTestPatch, vResult, vGroupB);
}

void Inspector::splitFromT(const std::multimap<u64, u64>& mm, CPatch* pTestPatch, CTriangle* pSeedA,
                           CTriangle* pSeedB)
{
    clearVisited(*pTestPatch);
    GroupFlood floodA(*pTestPatch, vGroupA, pSeedA);
    GroupFlood floodB(*pTestPatch, vGroupB, pSeedB);
    const auto mayCrossA = [&](const CEdge& edge)
    { return edge.getDegreeInPatch(pTestPatch) == 2 && !isOnBorder(edge, mm); };
    const auto mayCrossB = [&](const CEdge& edge) { return edge.isInner() && !isOnBorder(edge, mm); };
    const auto mayLeave = [](const CTriangle&) { return true; };
    for (bool bGrown = true; bGrown;)
    {
        const bool bGrownA = floodA.step(mayLeave, mayCrossA);
        const bool bGrownB = floodB.step(mayLeave, mayCrossB);
        bGrown = bGrownA || bGrownB;
    }

    const std::size_t numA = countDisagreeing(vGroupA);
    const std::size_t numB = countDisagreeing(vGroupB);
    const bool bRemoveA = numA != numB ? numA > numB : vGroupA.size() < vGroupB.size();
    std::vector<CTriangle*>& vRemoveT = bRemoveA ? vGroupA : vGroupB;
    const std::vector<CTriangle*> vUnreached = getUnreached(*pTestPatch);
    vRemoveT.insert(vRemoveT.end(), vUnreached.begin(), vUnreached.end());
    clearVisited(*pTestPatch);
    ASSEX_TEXT(vGroupA.size() + vGroupB.size() == pTestPatch->getSize(),
               "vGroupA.size()+vGroupB.size()==pTestPatch->vMemberCT.size()");
    cut(pTestPatch, bRemoveA ? vGroupB : vGroupA, vRemoveT);
}

std::vector<CTriangle*> Inspector::getUnreached(const CPatch& patch) const
{
    std::vector<CTriangle*> vT;
    for (CTriangle* pCT : patch.getMembers())
        if (!pCT->bVisited)
            vT.push_back(pCT);
    return vT;
}

// Outer edges of the group where its triangle and one outside it run the same way. A triangle without a
// normal has no side.
std::size_t Inspector::countDisagreeing(const std::vector<CTriangle*>& vGroup) const
{
    const std::unordered_set<const CTriangle*> sGroup(vGroup.begin(), vGroup.end());
    std::vector<CEdge*> vOuterCE;
    getDegNEdges(1, vGroup, vOuterCE);
    const auto isDisagreeing = [&](const CEdge* pCE)
    {
        const auto itOwn = std::find_if(pCE->vCT.begin(), pCE->vCT.end(),
                                        [&](const CTriangle* pCT) { return sGroup.count(pCT) != 0; });
        return hasNormal(**itOwn, pCMesh) && std::any_of(pCE->vCT.begin(), pCE->vCT.end(),
                                                         [&](const CTriangle* pOther) {
                                                             return pOther != *itOwn &&
                                                                    (*itOwn)->needFlip(pOther) &&
                                                                    hasNormal(*pOther, pCMesh);
                                                         });
    };
    return static_cast<std::size_t>(std::count_if(vOuterCE.begin(), vOuterCE.end(), isDisagreeing));
}

void Inspector::cut(CPatch* pTestPatch, const std::vector<CTriangle*>& vKeepT,
                    const std::vector<CTriangle*>& vRemoveT)
{
    printText("split: REMOVING " + std::to_string(vRemoveT.size()) + " triangles from pTestPatch\n");
    pTestPatch->keepMembers(vKeepT);
    vRemovedT.insert(vRemovedT.end(), vRemoveT.begin(), vRemoveT.end());
}

void Inspector::discardOthers(const CPatch* pGrownPatch)
{
    for (CPatch* pPatch : vPatches)
    {
        if (pPatch == pGrownPatch || !pPatch->isAlive())
            continue;
        const std::vector<CTriangle*>& vMembers = pPatch->getMembers();
        vRemovedT.insert(vRemovedT.end(), vMembers.begin(), vMembers.end());
        pPatch->keepMembers({});
        pPatch->kill();
    }
}

} // namespace TARN_ZEF

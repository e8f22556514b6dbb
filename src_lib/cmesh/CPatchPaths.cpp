// Looks beyond a patch and across it: likely partners over its non-manifold edges, and paths that join the
// loose ends of its border.
#include "cmesh/CPatch.h"

#include "cmesh/CMesh.h"
#include "cmesh/Dijkstra.h"
#include "core/zefRand.h"

#include <algorithm>

namespace TARN_ZEF
{
namespace
{
// Huge patches cost no more than this many edges.
const std::size_t MAX_SAMPLES = 500;
// A certainty up to this is so bad that another sample would not change it.
const double MIN_CERTAINTY_TO_SHUFFLE = 0.1;

CPatch* findPatch(const std::map<u64, CPatch*>& mCCDPatch, u64 ccd)
{
    const auto q_it0 = mCCDPatch.find(ccd);
    ASSEX_TEXT(q_it0 != mCCDPatch.end(), "q_it0!=mCCDPatch.end()");
    return q_it0->second;
}

// Of the ends still open, the nearest one that the search has reached.
const Dijkstra* findNearestEnd(const std::set<u64>& sEndVtx, const Dijkstra::NodeMap& mVCD2Dijkstra)
{
    const Dijkstra* pMinTarget = nullptr;
    int minDist = 0x7fffffff; // whole units: ends nearly as near as the first do not displace it
    for (const u64 ccd : sEndVtx)
    {
        const auto it = mVCD2Dijkstra.find(ccd);
        if (it == mVCD2Dijkstra.end() || !(it->second->dist < minDist))
            continue;
        pMinTarget = it->second.get();
        minDist = static_cast<int>(pMinTarget->dist);
    }
    return pMinTarget;
}
} // namespace

void CPatch::setPartnerCertainty(const std::map<u64, CPatch*>& mCCDPatch)
{
    const bool bMany = vBorderME.size() > MAX_SAMPLES;
    if (bMany && (partnerCertainty == 0.0 || partnerCertainty > MIN_CERTAINTY_TO_SHUFFLE))
        zefShuffle(vBorderME.begin(), vBorderME.end());
    std::size_t numChecked = 0;
    std::size_t numGood = 0;
    for (std::size_t i = 0; i < std::min(vBorderME.size(), MAX_SAMPLES); ++i)
    {
        const CEdge* pCE = vBorderME[i];
        if (pCE->getDegree() < 3)
            continue;
        ++numChecked;
        bool bHasOwn = false;
        u64 ownCCD = 0;
        for (const CTriangle* pCT : pCE->vCT)
        {
            const u64 ccd = pCT->getThirdCCD(pCE->v0, pCE->v1);
            CPatch* pP0 = findPatch(mCCDPatch, ccd);
            if (pP0 != this)
            {
                sPartners.insert(pP0);
                continue;
            }
            bHasOwn = true;
            ownCCD = ccd;
        }
        if (!bHasOwn)
            continue;
        for (const CTriangle* pCT : pCE->vCT)
        {
            const u64 ccd1 = pCT->getThirdCCD(pCE->v0, pCE->v1);
            if (findPatch(mCCDPatch, ccd1) == this)
                continue;
            ASSEX(ownCCD != ccd1);
            if (pCalc->getNeigType(ownCCD, ccd1) == NT_FACE)
                ++numGood;
        }
    }
    partnerCertainty = numChecked == 0 ? 0.0 : static_cast<double>(numGood) / static_cast<double>(numChecked);
}

void CPatch::findPartitioningPath(std::vector<CEdge*>& vPath, const std::map<u64, Point3>& mPos) const
{
    std::vector<CEdge*> vAllCE;
    getAllCE(vAllCE);
    std::map<u64, int> mNumBorderCE;
    Dijkstra::EdgeMap mVCD2InnerCEVec;
    for (CEdge* pCE : vAllCE)
    {
        for (const u64 ccd : {pCE->v0, pCE->v1})
        {
            if (getDegreeOn(pCE) < pCE->getDegree())
                ++mNumBorderCE[ccd];
            if (pCE->vCT.size() == 2)
                mVCD2InnerCEVec[ccd].push_back(pCE);
        }
    }
    std::set<u64> sEndVtx;
    for (const auto& [ccd, num] : mNumBorderCE)
        if (num == 1)
            sEndVtx.insert(ccd);

    while (sEndVtx.size() >= 2)
    {
        const u64 source = *sEndVtx.begin();
        sEndVtx.erase(sEndVtx.begin());
        Dijkstra::NodeMap mVCD2Dijkstra;
        auto& pSource = mVCD2Dijkstra[source];
        pSource = std::make_unique<Dijkstra>(source, &mVCD2Dijkstra, &mVCD2InnerCEVec);
        pSource->update(nullptr, 0.0, mPos);
        const Dijkstra* pMinTarget = findNearestEnd(sEndVtx, mVCD2Dijkstra);
        ASSEX_TEXT(pMinTarget != nullptr, "pMinTarget!=0");
        sEndVtx.erase(pMinTarget->vtx);
        pMinTarget->getBackPath(vPath);
    }
    if (!sEndVtx.empty())
        warningMessage("findPartitioningPath", "sEndVtx.empty()");
}

bool CPatch::canKillLeaveDeg2() const
{
    warningMessage(ZEF_HERE, "return false");
    return false;
}

} // namespace TARN_ZEF

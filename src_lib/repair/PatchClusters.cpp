#include "repair/PatchClusters.h"

#include "cmesh/CMesh.h"
#include "cmesh/CPatch.h"
#include "core/StableQueue.h"
#include "repair/PatchPass.h"

#include <algorithm>
#include <bit>
#include <string>
#include <unordered_set>
#include <utility>

namespace TARN_ZEF
{
namespace
{
const std::size_t MAX_CLUSTER_SIZE = 12;

// A patch that waits for its turn as start patch.
struct SizedPatch
{
    CPatch* pPatch;
    std::size_t size;
};
struct LargestFirst
{
    double operator()(const SizedPatch& entry) const noexcept { return -static_cast<double>(entry.size); }
};

// Only a closed patch has none, or one whose boundary was dropped when it took over another.
const std::vector<CEdge*>& getBoundary(CPatch* pPatch)
{
    if (pPatch->getPatchBoundary().empty())
        pPatch->setOuterBoundary();
    return pPatch->getPatchBoundary();
}

// For each edge of the boundaries the patches that it bounds, as a mask; each mask once.
std::vector<u64> getEdgeMasks(const std::vector<CPatch*>& vCluster)
{
    std::vector<std::pair<unsigned int, u64>> vMaskOfCE;
    for (std::size_t i = 0; i < vCluster.size(); ++i)
        for (const CEdge* pCE : getBoundary(vCluster[i]))
            vMaskOfCE.emplace_back(pCE->getNumber(), u64{1} << i);
    std::sort(vMaskOfCE.begin(), vMaskOfCE.end());
    std::vector<u64> vMasks;
    for (std::size_t i = 0; i < vMaskOfCE.size();)
    {
        u64 mask = 0;
        const unsigned int number = vMaskOfCE[i].first;
        for (; i < vMaskOfCE.size() && vMaskOfCE[i].first == number; ++i)
            mask |= vMaskOfCE[i].second;
        vMasks.push_back(mask);
    }
    std::sort(vMasks.begin(), vMasks.end());
    vMasks.erase(std::unique(vMasks.begin(), vMasks.end()), vMasks.end());
    return vMasks;
}

// Whether no edge bounds an odd number of the patches of the set.
bool isClosedSet(u64 set, const std::vector<u64>& vMasks)
{
    return std::all_of(vMasks.begin(), vMasks.end(),
                       [set](u64 mask) { return std::popcount(mask & set) % 2 == 0; });
}

// The first pair of disjoint sets with the same boundary, in increasing order; false without one. Two
// disjoint sets have the same boundary exactly if their union has none.
bool findEqualSets(const std::vector<CPatch*>& vCluster, u64& set0, u64& set1)
{
    const std::vector<u64> vMasks = getEdgeMasks(vCluster);
    const u64 numSets = u64{1} << vCluster.size();
    std::vector<bool> vClosed(numSets);
    bool bAnyPair = false;
    for (u64 set = 1; set < numSets; ++set)
    {
        vClosed[set] = isClosedSet(set, vMasks);
        bAnyPair = bAnyPair || (vClosed[set] && !std::has_single_bit(set));
    }
    for (set0 = 1; bAnyPair && set0 < numSets; ++set0)
        for (set1 = set0 + 1; set1 < numSets; ++set1)
            if ((set0 & set1) == 0 && vClosed[set0 | set1])
                return true;
    return false;
}

std::vector<CPatch*> selectPatches(const std::vector<CPatch*>& vCluster, u64 set)
{
    std::vector<CPatch*> vSelected;
    for (std::size_t i = 0; i < vCluster.size(); ++i)
        if ((set >> i & 1) != 0)
            vSelected.push_back(vCluster[i]);
    return vSelected;
}

// Only the first patch stays, with all triangles and its boundary.
void assimilateIntoFirst(std::vector<CPatch*>& vPatches)
{
    for (std::size_t i = 1; i < vPatches.size(); ++i)
        vPatches[0]->assimilate(vPatches[i], false);
    std::erase_if(vPatches, [](const CPatch* pPatch) { return !pPatch->isAlive(); });
    vPatches[0]->setOuterBoundary();
}
} // namespace

PatchClusters::PatchClusters(const CMesh* pCMesh_)
    : pCMesh(pCMesh_)
{
}

void PatchClusters::run(const std::vector<CPatch*>& vPatches)
{
    const double meshArea = pCMesh->getArea();
    StableQueue<SizedPatch, LargestFirst> mmSize;
    for (CPatch* pPatch : vPatches)
        if (pPatch->isAlive() && pPatch->getSize() > 0)
            mmSize.add({pPatch, pPatch->getSize()});
    std::vector<CPatch*> vCluster;
    while (!mmSize.empty())
    {
        CPatch* pStartPatch = mmSize.front().pPatch;
        mmSize.pop();
        if (!pStartPatch->isAlive())
            continue;
        createCluster(pStartPatch, vCluster);
        if (!solveCluster(vCluster, meshArea))
            continue;
        for (CPatch* pPatch : vCluster)
            if (pPatch->isAlive() && absorbNeighbours(pPatch))
                mmSize.add({pPatch, pPatch->getSize()});
    }
}

// Takes over the patches beyond boundary edges that have become manifold; says whether there were any.
bool PatchClusters::absorbNeighbours(CPatch* pPatch)
{
    const std::vector<CEdge*> vBoundaryCE = getBoundary(pPatch);
    bool bGrown = false;
    for (const CEdge* pCE : vBoundaryCE)
    {
        if (!pCE->isInner())
            continue;
        for (const CTriangle* pCT : pCE->vCT)
        {
            CPatch* pNeigPatch = pCT->getPatch();
            ASSEX(pNeigPatch != 0);
            if (pNeigPatch == pPatch)
                continue;
            pPatch->assimilate(pNeigPatch, false);
            ASSEX(!pNeigPatch->isAlive());
            bGrown = true;
            printText("+++++ Have assimilated a patch +++++, new size=" + std::to_string(pPatch->getSize()) +
                      "\n");
        }
    }
    return bGrown;
}

bool PatchClusters::createCluster(CPatch* pStartPatch, std::vector<CPatch*>& vCluster)
{
    vCluster.assign(1, pStartPatch);
    std::unordered_set<const CPatch*> sUsedPatches{pStartPatch};
    std::vector<CEdge*> vBoundary = getBoundary(pStartPatch);
    std::vector<CPatch*> vNeigs;
    while (!vBoundary.empty())
    {
        vNeigs.clear();
        vBoundary.back()->getPatches(vNeigs);
        vBoundary.pop_back();
        std::erase_if(vNeigs, [=](const CPatch* pPatch)
                      { return pPatch == nullptr || pPatch == pStartPatch || !pPatch->isAlive(); });
        const auto itLargest = std::max_element(vNeigs.begin(), vNeigs.end(),
                                                [](const CPatch* pA, const CPatch* pB)
                                                { return pA->getSize() < pB->getSize(); });
        for (auto it = vNeigs.begin(); it != vNeigs.end(); ++it)
        {
            if (it == itLargest || !sUsedPatches.insert(*it).second)
                continue;
            vCluster.push_back(*it);
            const std::vector<CEdge*>& vOwn = getBoundary(*it);
            vBoundary.insert(vBoundary.end(), vOwn.begin(), vOwn.end());
        }
    }
    return true;
}

bool PatchClusters::solveCluster(const std::vector<CPatch*>& vCluster, double meshArea)
{
    u64 set0 = 0;
    u64 set1 = 0;
    if (vCluster.size() > MAX_CLUSTER_SIZE || !findEqualSets(vCluster, set0, set1))
    {
        printText("--- FAILED ----, by end-of-loops\n");
        return false;
    }
    std::vector<CPatch*> vPatches0 = selectPatches(vCluster, set0);
    std::vector<CPatch*> vPatches1 = selectPatches(vCluster, set1);
    printText("FOUND A REAL MATCH, vPatches0.size()=" + std::to_string(vPatches0.size()) +
              ", vPatches1.size()=" + std::to_string(vPatches1.size()) + "\n");
    assimilateIntoFirst(vPatches0);
    assimilateIntoFirst(vPatches1);
    ASSEX(vPatches0.size() == 1 && vPatches1.size() == 1);
    const std::size_t size0 = vPatches0[0]->getPatchBoundarySize();
    const std::size_t size1 = vPatches1[0]->getPatchBoundarySize();
    if (size0 != size1)
    {
        printText("FAILED due to different boundary size: " + std::to_string(size0) + ", " +
                  std::to_string(size1) + "\n");
        return false;
    }
    const bool bSolved = PatchPass::solvePair(vPatches0[0], vPatches1[0], meshArea);
    printText(bSolved ? "*** SUCCESS ***\n" : "--- FAILED ----, by solvePatchPairs\n");
    return bSolved;
}

} // namespace TARN_ZEF

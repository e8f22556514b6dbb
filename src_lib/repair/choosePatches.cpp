#include "repair/choosePatches.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace TARN_ZEF
{
namespace
{
const std::size_t MAX_STEPS = 200000; // of the search in one place
const std::size_t MAX_PATCHES = 100;  // in one place, for a search
const std::size_t NO_RANK = static_cast<std::size_t>(-1);

// Disjoint sets of patches.
class Groups
{
public:
    explicit Groups(std::size_t num)
        : vLink(num)
    {
        std::iota(vLink.begin(), vLink.end(), std::size_t{0});
    }
    [[nodiscard]] std::size_t find(std::size_t i)
    {
        while (vLink[i] != i)
            i = vLink[i] = vLink[vLink[i]];
        return i;
    }
    void unite(std::size_t a, std::size_t b) { vLink[find(a)] = find(b); }

private:
    std::vector<std::size_t> vLink;
};

// Patches that hang together by seams, without those that stay in any case, and these seams.
struct Place
{
    std::vector<std::size_t> vPatches; // the larger ones first
    std::vector<const Seam*> vSeams;
};

// The search in one place: patch by patch, each kept and then taken away, as long as that can still beat the
// best choice.
class Search
{
public:
    // vRank  of each patch in its place; NO_RANK of those that stay in any case
    Search(const Place& place, const std::vector<SeamPatch>& vAll_, const std::vector<std::size_t>& vRank,
           double maxArea_)
        : vPatches(place.vPatches)
        , vAll(vAll_)
        , maxArea(maxArea_)
        , vUses(place.vPatches.size())
        , vNow(place.vPatches.size(), true)
        , vBest(place.vPatches.size(), true)
    {
        for (const Seam* pSeam : place.vSeams)
            addSeam(*pSeam, vRank);
        for (const Local& seam : vSeams)
        {
            weight += seam.numKept > 2 ? seam.pSeam->weight : 0.0;
            bestWeight += seam.numKept + seam.numOpen > 2 ? seam.pSeam->weight : 0.0;
        }
    }

    // For each patch of the place whether it stays.
    [[nodiscard]] const std::vector<bool>& run()
    {
        descend(0);
        return vBest;
    }

private:
    struct Local
    {
        const Seam* pSeam;
        std::size_t numKept; // triangles that stay for sure
        std::size_t numOpen; // whose patches are not decided
    };
    struct Use
    {
        std::size_t seam; // of vSeams
        std::size_t num;  // triangles of the patch at it
    };

    void addSeam(const Seam& seam, const std::vector<std::size_t>& vRank)
    {
        Local local{&seam, 0, 0};
        for (const std::size_t patch : seam.vPatches)
        {
            const std::size_t rank = vRank[patch];
            if (rank == NO_RANK)
            {
                ++local.numKept;
                continue;
            }
            ++local.numOpen;
            if (vUses[rank].empty() || vUses[rank].back().seam != vSeams.size())
                vUses[rank].push_back({vSeams.size(), 0});
            ++vUses[rank].back().num;
        }
        vSeams.push_back(local);
    }

    void descend(std::size_t k)
    {
        if (weight > bestWeight || (weight == bestWeight && area >= bestArea) || ++numSteps > MAX_STEPS)
            return;
        if (k == vPatches.size())
        {
            bestWeight = weight;
            bestArea = area;
            vBest = vNow;
            return;
        }
        const double weightBefore = weight;
        const double areaBefore = area;
        for (const bool bKeep : {true, false})
        {
            vNow[k] = bKeep;
            area += bKeep ? 0.0 : vAll[vPatches[k]].area;
            if (decide(k, bKeep) && area <= maxArea)
                descend(k + 1);
            undo(k, bKeep);
            weight = weightBefore;
            area = areaBefore;
        }
    }

    // False if that opens a hole.
    bool decide(std::size_t k, bool bKeep)
    {
        bool bOpensHole = false;
        for (const Use& use : vUses[k])
        {
            Local& seam = vSeams[use.seam];
            const bool bWasCounted = seam.numKept > 2;
            seam.numOpen -= use.num;
            seam.numKept += bKeep ? use.num : 0;
            if (!bWasCounted && seam.numKept > 2)
                weight += seam.pSeam->weight;
            bOpensHole = bOpensHole || (seam.numOpen == 0 && seam.numKept == 1);
        }
        return !bOpensHole;
    }

    void undo(std::size_t k, bool bKeep)
    {
        for (const Use& use : vUses[k])
        {
            vSeams[use.seam].numOpen += use.num;
            vSeams[use.seam].numKept -= bKeep ? use.num : 0;
        }
    }

    const std::vector<std::size_t>& vPatches;
    const std::vector<SeamPatch>& vAll;
    double maxArea;
    std::vector<Local> vSeams;
    std::vector<std::vector<Use>> vUses; // of each patch
    double weight = 0.0;                 // of seams that surely keep more than two triangles
    double area = 0.0;                   // taken away
    std::vector<bool> vNow;
    std::vector<bool> vBest; // keeps all, at first
    double bestWeight = 0.0;
    double bestArea = 0.0;
    std::size_t numSteps = 0;
};

// Those that stay in any case, the largest of each group among them.
std::vector<bool> findStaying(const std::vector<SeamPatch>& vAll, const std::vector<Seam>& vSeams)
{
    Groups groups(vAll.size());
    for (const Seam& seam : vSeams)
        for (const std::size_t patch : seam.vPatches)
            groups.unite(patch, seam.vPatches.front());
    std::vector<std::size_t> vLargest(vAll.size());
    std::iota(vLargest.begin(), vLargest.end(), std::size_t{0});
    for (std::size_t i = 0; i < vAll.size(); ++i)
    {
        std::size_t& largest = vLargest[groups.find(i)];
        if (vAll[i].area > vAll[largest].area)
            largest = i;
    }
    std::vector<bool> vStays(vAll.size());
    for (std::size_t i = 0; i < vAll.size(); ++i)
        vStays[i] = vAll[i].bStays || vLargest[groups.find(i)] == i;
    return vStays;
}

std::vector<Place> findPlaces(const std::vector<SeamPatch>& vAll, const std::vector<Seam>& vSeams,
                              const std::vector<bool>& vStays)
{
    Groups groups(vAll.size());
    std::vector<std::size_t> vOneOf; // by seam: a patch of it that may go; its first one if there is none
    for (const Seam& seam : vSeams)
    {
        std::size_t one = seam.vPatches.front();
        for (const std::size_t patch : seam.vPatches)
        {
            if (vStays[patch])
                continue;
            if (!vStays[one])
                groups.unite(patch, one);
            one = patch;
        }
        vOneOf.push_back(one);
    }
    std::vector<Place> vPlaces(vAll.size());
    for (std::size_t i = 0; i < vAll.size(); ++i)
        if (!vStays[i])
            vPlaces[groups.find(i)].vPatches.push_back(i);
    for (std::size_t k = 0; k < vSeams.size(); ++k)
        if (!vStays[vOneOf[k]])
            vPlaces[groups.find(vOneOf[k])].vSeams.push_back(&vSeams[k]);
    std::erase_if(vPlaces, [](const Place& place) { return place.vSeams.empty(); });
    for (Place& place : vPlaces)
        std::stable_sort(place.vPatches.begin(), place.vPatches.end(),
                         [&vAll](std::size_t a, std::size_t b) { return vAll[a].area > vAll[b].area; });
    return vPlaces;
}
} // namespace

std::vector<bool> choosePatches(const std::vector<SeamPatch>& vPatches, const std::vector<Seam>& vSeams,
                                double maxArea)
{
    const std::vector<Place> vPlaces = findPlaces(vPatches, vSeams, findStaying(vPatches, vSeams));
    std::vector<std::size_t> vRank(vPatches.size(), NO_RANK);
    for (const Place& place : vPlaces)
        for (std::size_t k = 0; k < place.vPatches.size(); ++k)
            vRank[place.vPatches[k]] = k;
    std::vector<bool> vStays(vPatches.size(), true);
    for (const Place& place : vPlaces)
    {
        if (place.vPatches.size() > MAX_PATCHES)
            continue;
        Search search(place, vPatches, vRank, maxArea);
        const std::vector<bool>& vKept = search.run();
        for (std::size_t k = 0; k < vKept.size(); ++k)
            vStays[place.vPatches[k]] = vKept[k];
    }
    return vStays;
}

} // namespace TARN_ZEF

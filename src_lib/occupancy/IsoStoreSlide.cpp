// The pass of IsoStore over cubes that hold too many cells.
#include "occupancy/IsoStore.h"

#include "files/Visualizer3.h"
#include "geometry/tools.h"
#include "lattice/Bundle.h"
#include "lattice/Calc.h"
#include "parallel/sortMT2.h"

#include <algorithm>
#include <cmath>
#include <string>

namespace TARN_ZEF
{
namespace
{
const std::size_t MIN_CROWD = 5; // cells of a cube that is too full
const double MAX_WEIGHT = 32.0;

// The members of the group [begin, end) that still have their cells.
template <typename Iterator>
void collectAlive(Iterator begin, Iterator end, std::vector<Bundle*>& vUpTo8)
{
    vUpTo8.clear();
    for (; begin != end; ++begin)
        if (begin->second->forbiddenDirection >= 0)
            vUpTo8.push_back(begin->second);
}

// f(vUpTo8) for each cube that is still too full when its turn comes.
template <typename F>
void forEachCrowd(const std::vector<std::pair<CCD, Bundle*>>& v8VCD2Bundle, F&& f)
{
    std::vector<Bundle*> vUpTo8;
    for (auto begin = v8VCD2Bundle.begin(); begin != v8VCD2Bundle.end();)
    {
        auto end = begin;
        while (end != v8VCD2Bundle.end() && end->first == begin->first)
            ++end;
        collectAlive(begin, end, vUpTo8);
        if (vUpTo8.size() >= MIN_CROWD)
            f(vUpTo8);
        begin = end;
    }
}
} // namespace

void IsoStore::slide()
{
    printSize(" Hi, this is slide");
    writeScene("beforeSlide.list");
    setWeights();
    std::vector<CubeBundle> v8VCD2Bundle;
    getCubes(v8VCD2Bundle);
    u64 numSucc2 = 0;
    forEachCrowd(v8VCD2Bundle, [&](std::vector<Bundle*>& vUpTo8) { numSucc2 += slideWeakest(vUpTo8); });
    forEachCrowd(v8VCD2Bundle, [&](std::vector<Bundle*>& vUpTo8) { numSucc2 += slideMany(vUpTo8); });
    printText("tryKillWeakBundle, numSucc2=" + std::to_string(numSucc2) + "\n");
    writeScene("afterSlide2.list");
}

// The distance of a bundle's point from its cell's centre, in thirty-seconds of half the diagonal.
void IsoStore::setWeights() const
{
    const double halfDiagonal = 0.5 * pCalc->getCellSizeX() * std::sqrt(3.0);
    for (Bundle* pB : *pBundles)
    {
        const double distance = std::sqrt(sqDistance(*pB->pPoint, pCalc->getMid(pB->ccd)));
        const double weight = (MAX_WEIGHT / halfDiagonal) * distance;
        // A point outside its cell weighs no more than one in the cell's corner.
        pB->bFlag = static_cast<unsigned char>(weight < MAX_WEIGHT ? weight : MAX_WEIGHT);
    }
}

// Sorted by cube; the bundles of a cube in their own order.
void IsoStore::getCubes(std::vector<CubeBundle>& v8VCD2Bundle) const
{
    std::vector<std::pair<CCD, std::size_t>> vCubes;
    vCubes.reserve(8 * pBundles->size());
    for (std::size_t i = 0; i < pBundles->size(); ++i)
    {
        CCD array[8] = {(*pBundles)[i]->ccd};
        pCalc->completeArray8Up(array);
        for (const CCD cube : array)
            vCubes.emplace_back(cube, i);
    }
    sortMT(vCubes.begin(), vCubes.end());
    v8VCD2Bundle.reserve(vCubes.size());
    for (const auto& [cube, i] : vCubes)
        v8VCD2Bundle.emplace_back(cube, (*pBundles)[i]);
}

// One attempt on the member with the lowest weight.
u64 IsoStore::slideWeakest(std::vector<Bundle*>& vUpTo8)
{
    Bundle*& pLast = vUpTo8.back();
    for (std::size_t i = 0; i + 1 < vUpTo8.size(); ++i)
        if (vUpTo8[i]->bFlag < pLast->bFlag)
            std::swap(vUpTo8[i], pLast);
    for (const Bundle* pB : vUpTo8)
        ASSEX_TEXT(pB->forbiddenDirection >= 0, "pB->forbiddenDirection>=0");
    const bool bKilled = std::any_of(vUpTo8.begin(), vUpTo8.end() - 1,
                                     [&](const Bundle* pOther) { return tryKillWeakBundle(pLast, pOther); });
    return bKilled ? 1 : 0;
}

// All pairs, the weakest first, until the cube is no longer too full. Returns how many cells went.
u64 IsoStore::slideMany(std::vector<Bundle*>& vUpTo8)
{
    std::stable_sort(vUpTo8.begin(), vUpTo8.end(),
                     [](const Bundle* pA, const Bundle* pB) { return pA->bFlag < pB->bFlag; });
    u64 numKilled = 0;
    for (std::size_t i = 0; i < vUpTo8.size() && vUpTo8.size() >= MIN_CROWD;)
    {
        Bundle* pWeak = vUpTo8[i];
        const bool bKilled = std::any_of(vUpTo8.begin(), vUpTo8.end(),
                                         [&](const Bundle* pOther)
                                         { return pOther != pWeak && tryKillWeakBundle(pWeak, pOther); });
        if (!bKilled)
        {
            ++i;
            continue;
        }
        vUpTo8.erase(vUpTo8.begin() + static_cast<std::ptrdiff_t>(i));
        ++numKilled;
    }
    return numKilled;
}

void IsoStore::writeScene(const char* name) const
{
    if constexpr (DEBUG_SCENES)
    {
        std::vector<CCD> vCCD;
        getAllCCD(vCCD);
        Visualizer3 vis(name, pCalc, true);
        vis.writeCbs(vCCD, CLIGHTBLUE);
    }
}

} // namespace TARN_ZEF

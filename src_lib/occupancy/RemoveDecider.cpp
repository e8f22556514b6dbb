#include "occupancy/RemoveDecider.h"

#include <algorithm>
#include <bit>

#include "files/Visualizer3.h"
#include "lattice/CellIndex.h"

namespace TARN_ZEF
{
namespace
{
// Indices in the block are (dz+1)*9 + (dy+1)*3 + (dx+1): the cell is 13, its faces are 4 (z-1), 22 (z+1),
// 10 (y-1), 16 (y+1), 12 (x-1), 14 (x+1).
constexpr int SELF = 13;

// The neighbours that take away a free face. 5 is the edge cell (x+1, y, z-1) and stands in the place of the
// face 4: the thinning is tuned to this list.
constexpr u64 FACE_MASK =
    u64{1} << 22 | u64{1} << 5 | u64{1} << 14 | u64{1} << 16 | u64{1} << 12 | u64{1} << 10;

// An edge neighbour, and the two face neighbours between it and the cell.
constexpr int HANGING_EDGES[12][3] = {
    {5, 4, 14},   {7, 4, 16},   {3, 4, 12},   {1, 4, 10},   {23, 22, 14}, {25, 22, 16},
    {21, 22, 12}, {19, 22, 10}, {17, 14, 16}, {15, 16, 12}, {9, 12, 10},  {11, 10, 14},
};
} // namespace

RemoveDecider::RemoveDecider(const std::vector<CCD>* pExisting_, const Calc* pCalc_)
    : pExisting(pExisting_)
    , pIndex(nullptr)
    , pCalc(pCalc_)
{
    ASSEX(pExisting != nullptr && pCalc != nullptr);
}

RemoveDecider::RemoveDecider(const CellIndex* pIndex_, const Calc* pCalc_)
    : pExisting(nullptr)
    , pIndex(pIndex_)
    , pCalc(pCalc_)
{
    ASSEX(pIndex != nullptr && pCalc != nullptr);
}

bool RemoveDecider::canRemove(CCD ccd)
{
    if (load(ccd) == 27)
        return false;
    if (countFreeFaces() < 3 || hasHangingEdge() || plugsSheet())
        return false;
    ++numRemovable;
    return true;
}

bool RemoveDecider::badDirect(int a, int b, int c, int d, int e, int f) const noexcept
{
    return !isSet(a) && !isSet(b) && isSet(c) && isSet(d) && isSet(e) && isSet(f);
}

void RemoveDecider::show() const
{
    std::vector<CCD> vExisting;
    std::vector<CCD> vDoomed;
    for (int i = 0; i < 27; ++i)
    {
        if (isSet(i))
            vExisting.push_back(array[i]);
        else if (isDoomed(array[i]))
            vDoomed.push_back(array[i]);
    }
    printText("++++++++++ show after removement for " + std::to_string(currentCCD) + "\nvExisting=" +
              std::to_string(vExisting.size()) + "\nvDoomed=" + std::to_string(vDoomed.size()) + "\n");
    Visualizer3 vis("removeDecider_" + std::to_string(currentCCD) + ".list", pCalc, DEBUG_SCENES);
    if (!vExisting.empty())
        vis.writeCbs(vExisting, CGREEN);
    if (!vDoomed.empty())
        vis.writeCbs(vDoomed, CRED);
}

bool RemoveDecider::exists(CCD ccd) const
{
    if (pIndex != nullptr)
        return pIndex->contains(ccd);
    return std::binary_search(pExisting->begin(), pExisting->end(), ccd);
}

int RemoveDecider::load(CCD ccd)
{
    currentCCD = ccd;
    pCalc->completeArray27(ccd, array);
    neighbourMask = 0;
    const bool bAnyDoomed = !sDoomed.empty();
    for (int i = 0; i < 27; ++i)
    {
        const bool bThere = i == SELF || exists(array[i]);
        if (bThere && !(bAnyDoomed && sDoomed.contains(array[i])))
            neighbourMask |= u64{1} << i;
    }
    return std::popcount(neighbourMask);
}

int RemoveDecider::countFreeFaces() const noexcept
{
    return 6 - std::popcount(neighbourMask & FACE_MASK);
}

// Whether an edge neighbour holds on through the cell alone.
bool RemoveDecider::hasHangingEdge() const noexcept
{
    return std::any_of(std::begin(HANGING_EDGES), std::end(HANGING_EDGES),
                       [this](const int(&t)[3]) { return isSet(t[0]) && !isSet(t[1]) && !isSet(t[2]); });
}

// Whether the cell is the middle of a sheet at right angles to an axis.
bool RemoveDecider::plugsSheet() const noexcept
{
    return badDirect(4, 22, 14, 16, 12, 10) || badDirect(12, 14, 16, 10, 22, 4) ||
           badDirect(10, 16, 14, 12, 22, 4);
}

} // namespace TARN_ZEF

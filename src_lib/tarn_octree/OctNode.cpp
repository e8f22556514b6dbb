#include "tarn_octree/OctNode.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <utility>

#include "core/definitions.h"
#include "core/zefRand.h"

namespace TARN_OCTREE
{
namespace
{
constexpr std::size_t MIN_ITEMS_TO_CUT = 5;
constexpr std::size_t MIN_SAMPLE_SIZE = 100;

[[nodiscard]] std::size_t drawIndex(std::size_t num)
{
    // One draw has 15 bits only.
    const std::uint32_t high = static_cast<std::uint32_t>(TARN_ZEF::zefRand()) << 15;
    return (high | static_cast<std::uint32_t>(TARN_ZEF::zefRand())) % num;
}

[[nodiscard]] double takeMedian(std::vector<double>& v)
{
    const auto mid = v.begin() + static_cast<std::ptrdiff_t>(v.size() / 2);
    std::nth_element(v.begin(), mid, v.end());
    return *mid;
}

} // namespace

OctNode::OctNode(const Box& box_, std::span<OctItem*> items_)
    : items(items_)
    , box(box_)
{
}

std::vector<OctNode::Octant> OctNode::cut(std::vector<OctItem*>& vScratch)
{
    if (items.size() < MIN_ITEMS_TO_CUT)
        return {};
    const Split split = findSplit();
    const std::array<std::size_t, 9> starts = sortByOctant(split, vScratch);
    std::vector<Octant> vOctants;
    vOctants.reserve(8);
    for (unsigned octant = 0; octant < 8; ++octant)
    {
        const std::size_t num = starts[octant + 1] - starts[octant];
        if (num > 0)
            vOctants.push_back({makeChildBox(split, octant), items.subspan(starts[octant], num)});
    }
    const std::size_t numVectors = vOctants.size();
    if (numVectors == 1)
        return {};
    ASSEX(numVectors > 1);
    return vOctants;
}

void OctNode::setChildren(std::vector<OctNode*> vChildNodes_)
{
    vChildNodes = std::move(vChildNodes_);
}

void OctNode::query(std::vector<void*>& vResult, std::vector<const OctNode*>& vOpen,
                    const Box& queryBox) const
{
    if (isLeaf())
    {
        for (const OctItem* pItem : items)
        {
            if (queryBox.contains(pItem->x, pItem->y, pItem->z))
                vResult.push_back(pItem->pObject);
        }
        return;
    }
    for (auto it = vChildNodes.rbegin(); it != vChildNodes.rend(); ++it)
    {
        if ((*it)->box.overlaps(queryBox))
            vOpen.push_back(*it);
    }
}

OctNode::Split OctNode::findSplit() const
{
    const std::size_t root = static_cast<std::size_t>(std::sqrt(static_cast<double>(items.size())));
    const std::size_t sampleSize = std::max(root, MIN_SAMPLE_SIZE);
    const bool bDraw = items.size() >= sampleSize;
    const std::size_t num = bDraw ? sampleSize : items.size();
    std::vector<double> vX(num);
    std::vector<double> vY(num);
    std::vector<double> vZ(num);
    for (std::size_t i = 0; i < num; ++i)
    {
        const OctItem* const pItem = items[bDraw ? drawIndex(items.size()) : i];
        vX[i] = pItem->x;
        vY[i] = pItem->y;
        vZ[i] = pItem->z;
    }
    return {takeMedian(vX), takeMedian(vY), takeMedian(vZ)};
}

// Where each octant starts, and the end.
std::array<std::size_t, 9> OctNode::sortByOctant(const Split& split, std::vector<OctItem*>& vScratch)
{
    const auto octantOf = [&split](const OctItem* p)
    { return (p->x > split.x ? 4u : 0u) + (p->y > split.y ? 2u : 0u) + (p->z > split.z ? 1u : 0u); };

    std::array<std::size_t, 9> starts = {};
    for (const OctItem* pItem : items)
        ++starts[octantOf(pItem) + 1];
    for (std::size_t i = 1; i < starts.size(); ++i)
        starts[i] += starts[i - 1];
    std::array<std::size_t, 9> places = starts;
    vScratch.assign(items.begin(), items.end());
    for (OctItem* pItem : vScratch)
        items[places[octantOf(pItem)]++] = pItem;
    return starts;
}

Box OctNode::makeChildBox(const Split& split, unsigned octant) const
{
    Box childBox = box;
    ((octant & 4) != 0 ? childBox.xmin : childBox.xmax) = split.x;
    ((octant & 2) != 0 ? childBox.ymin : childBox.ymax) = split.y;
    ((octant & 1) != 0 ? childBox.zmin : childBox.zmax) = split.z;
    return childBox;
}

} // namespace TARN_OCTREE

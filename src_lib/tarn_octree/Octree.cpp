#include "tarn_octree/Octree.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <new>
#include <utility>

#include "tarn_tools/HilbertSort3.h"

namespace TARN_OCTREE
{
namespace
{
// Nine for each axis.
constexpr int NUM_HILBERT_BITS = 27;

} // namespace

Octree::~Octree()
{
    nodePool.forEach([](OctNode* pNode) { pNode->~OctNode(); });
}

void Octree::add(void* pObject, double x, double y, double z)
{
    ASSEX(pRootNode == NULL);
    ASSEX(!std::isnan(x) && !std::isnan(y) && !std::isnan(z));
    vAdded.push_back({pObject, x, y, z});
}

void Octree::build()
{
    ASSEX(pRootNode == NULL);
    if (vAdded.empty())
        return;
    Box box;
    for (const OctItem& item : vAdded)
        box.include({item.x, item.y, item.z, item.x, item.y, item.z});
    createItems(box);
    createNodes(box);
}

void Octree::query(std::vector<void*>& vResult, const Box& queryBox) const
{
    std::vector<const OctNode*> vOpen;
    if (pRootNode != nullptr && pRootNode->getBox().overlaps(queryBox))
        vOpen.push_back(pRootNode);
    while (!vOpen.empty())
    {
        const OctNode* const pNode = vOpen.back();
        vOpen.pop_back();
        pNode->query(vResult, vOpen, queryBox);
    }
}

void Octree::createItems(const Box& box)
{
    const TARN_ZEF::HilbertSort3 hilbert(box.xmin, box.ymin, box.zmin, box.xmax, box.ymax, box.zmax,
                                         NUM_HILBERT_BITS);
    std::vector<std::pair<unsigned int, std::size_t>> vHIdxIdx;
    vHIdxIdx.reserve(vAdded.size());
    for (std::size_t i = 0; i < vAdded.size(); ++i)
        vHIdxIdx.emplace_back(hilbert.getIndex(vAdded[i].x, vAdded[i].y, vAdded[i].z), i);
    std::sort(vHIdxIdx.begin(), vHIdxIdx.end());

    const int num = static_cast<int>(vAdded.size());
    itemPool.init(num, itemPool.increaseOf(num));
    vItems.reserve(vAdded.size());
    for (const auto& [hilbertIdx, idx] : vHIdxIdx)
        vItems.push_back(new (itemPool.getNext()) OctItem(vAdded[idx]));
    std::vector<OctItem>().swap(vAdded);
}

// Depth first, first child first, so that neighbours lie together in the pool too.
void Octree::createNodes(const Box& box)
{
    const int num = static_cast<int>(vItems.size());
    nodePool.init(num / 2 + 1, nodePool.increaseOf(num));
    std::vector<OctItem*> vScratch;
    pRootNode = new (nodePool.getNext()) OctNode(box, vItems);
    std::vector<OctNode*> vOpen = {pRootNode};
    while (!vOpen.empty())
    {
        OctNode* const pNode = vOpen.back();
        vOpen.pop_back();
        const std::vector<OctNode::Octant> vOctants = pNode->cut(vScratch);
        std::vector<OctNode*> vChildNodes;
        vChildNodes.reserve(vOctants.size());
        for (const OctNode::Octant& octant : vOctants)
            vChildNodes.push_back(new (nodePool.getNext()) OctNode(octant.childBox, octant.items));
        vOpen.insert(vOpen.end(), vChildNodes.rbegin(), vChildNodes.rend());
        pNode->setChildren(std::move(vChildNodes));
    }
}

} // namespace TARN_OCTREE

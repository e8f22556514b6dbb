#include "tarn_locate3/RTree.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <utility>

#include "core/definitions.h"
#include "core/hardStop.h"
#include "tarn_tools/HilbertSort3.h"

namespace TARN_LOCATE3
{
namespace
{
constexpr int DEFAULT_NUM_BITS = 30;
constexpr std::size_t MAX_ITEMS_OF_LEAF = 2;

} // namespace

RTree::RTree()
    : RTree(DEFAULT_NUM_BITS)
{
}

RTree::RTree(int numBits_)
    : numBits(numBits_)
{
    if (numBits < 3 || numBits >= 33 || numBits % 3 != 0)
        TARN_ZEF::hardStop("RTree::RTree(..): invalid bitlength\n");
}

RTree::~RTree()
{
    nodePool.forEach([](Node* pNode) { pNode->~Node(); });
}

void RTree::addObject(void* pObject, double xmin, double ymin, double zmin, double xmax, double ymax,
                      double zmax)
{
    ASSEX(pRootNode == NULL);
    ASSEX(xmin <= xmax);
    ASSEX(ymin <= ymax);
    ASSEX(zmin <= zmax);
    const Box objectBox = {xmin, ymin, zmin, xmax, ymax, zmax};
    box.include(objectBox);
    vTempContents.push_back({{pObject, objectBox}, 0});
}

void RTree::build()
{
    ASSEX(pRootNode == NULL);
    if (vTempContents.empty())
        return;
    createItems();
    std::vector<Node*> vCurrentNodeSet = createLeaves();
    while (vCurrentNodeSet.size() > 1)
        vCurrentNodeSet = createLevelAbove(vCurrentNodeSet);
    pRootNode = vCurrentNodeSet.front();
}

void RTree::query(std::vector<void*>& vResult, const Box& queryBox) const
{
    if (pRootNode != nullptr && pRootNode->getBox().overlaps(queryBox))
        pRootNode->query(vResult, queryBox);
}

void RTree::createItems()
{
    const TARN_ZEF::HilbertSort3 hilbert(box.xmin, box.ymin, box.zmin, box.xmax, box.ymax, box.zmax, numBits);
    for (TempContent& content : vTempContents)
    {
        const Box& b = content.item.box;
        content.hilbertIdx = hilbert.getIndex(0.5 * b.xmin + 0.5 * b.xmax, 0.5 * b.ymin + 0.5 * b.ymax,
                                              0.5 * b.zmin + 0.5 * b.zmax);
    }
    std::stable_sort(vTempContents.begin(), vTempContents.end(),
                     [](const TempContent& a, const TempContent& b) { return a.hilbertIdx < b.hilbertIdx; });
    const int num = static_cast<int>(vTempContents.size());
    itemPool.init(num, itemPool.increaseOf(num));
    vItems.reserve(vTempContents.size());
    for (const TempContent& content : vTempContents)
        vItems.emplace_back(content.hilbertIdx, new (itemPool.getNext()) Item(content.item));
    std::vector<TempContent>().swap(vTempContents);
}

std::vector<Node*> RTree::createLeaves()
{
    const std::size_t numLeaves = (vItems.size() + MAX_ITEMS_OF_LEAF - 1) / MAX_ITEMS_OF_LEAF;
    // A seventh more is all the levels above the leaves together, apart from a last group on each.
    const int num = static_cast<int>(numLeaves + numLeaves / 7 + 8);
    nodePool.init(num, nodePool.increaseOf(num));
    std::vector<Node*> vLeaves;
    vLeaves.reserve(numLeaves);
    for (std::size_t from = 0; from < vItems.size(); from += MAX_ITEMS_OF_LEAF)
    {
        const std::size_t to = std::min(from + MAX_ITEMS_OF_LEAF, vItems.size());
        vLeaves.push_back(new (nodePool.getNext()) Node(this, from, to));
    }
    return vLeaves;
}

std::vector<Node*> RTree::createLevelAbove(const std::vector<Node*>& vCurrentNodeSet)
{
    std::vector<Node*> vNodes;
    vNodes.reserve(vCurrentNodeSet.size() / Node::maxChildren + 1);
    for (std::size_t from = 0; from < vCurrentNodeSet.size(); from += Node::maxChildren)
    {
        const std::size_t num = std::min(Node::maxChildren, vCurrentNodeSet.size() - from);
        const auto first = vCurrentNodeSet.begin() + static_cast<std::ptrdiff_t>(from);
        // Before the slot: one that is handed out must hold a node.
        std::vector<Node*> vChildren(first, first + static_cast<std::ptrdiff_t>(num));
        vNodes.push_back(new (nodePool.getNext()) Node(this, std::move(vChildren)));
    }
    return vNodes;
}

} // namespace TARN_LOCATE3

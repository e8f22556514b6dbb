#include "tarn_locate3/Node.h"

#include "tarn_locate3/RTree.h"

#include <utility>

namespace TARN_LOCATE3
{
Node::Node(const RTree* pTree_, std::size_t fromIdx_, std::size_t toIdx_)
    : pTree(pTree_)
    , fromIdx(fromIdx_)
    , toIdx(toIdx_)
{
    for (std::size_t i = fromIdx; i < toIdx; ++i)
        box.include(pTree->getItem(i).box);
}

Node::Node(const RTree* pTree_, std::vector<Node*> vChildNodes_) noexcept
    : vChildNodes(std::move(vChildNodes_))
    , pTree(pTree_)
{
    for (Node* pChild : vChildNodes)
    {
        pChild->pParent = this;
        box.include(pChild->box);
    }
}

// Recursion is eight nodes wide, so no deeper than a third of the bits of the number of items.
void Node::query(std::vector<void*>& vResult, const Box& queryBox) const
{
    for (std::size_t i = fromIdx; i < toIdx; ++i)
    {
        const Item& item = pTree->getItem(i);
        if (item.box.overlaps(queryBox))
            vResult.push_back(item.pObject);
    }
    for (const Node* pChild : vChildNodes)
    {
        if (pChild->box.overlaps(queryBox))
            pChild->query(vResult, queryBox);
    }
}

} // namespace TARN_LOCATE3

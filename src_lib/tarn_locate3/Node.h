#ifndef ZEF_LOCATE3_NODE_H
#define ZEF_LOCATE3_NODE_H

#include "tarn_locate3/Item.h"

#include <cstddef>
#include <vector>

namespace TARN_LOCATE3
{
class RTree;

// A node of an RTree: a leaf over a range of the tree's items, or an inner node over child nodes.
//
// Ownership:  owns nothing; items and nodes belong to the tree.
// Invariant:  the box is that of all items below.
// Threads:    queries read only.
class Node
{
public:
    static constexpr std::size_t maxChildren = 8;

    // A leaf over the items [fromIdx_, toIdx_) of the tree.
    Node(const RTree* pTree_, std::size_t fromIdx_, std::size_t toIdx_);
    // An inner node over up to maxChildren nodes of pTree_, at least one.
    Node(const RTree* pTree_, std::vector<Node*> vChildNodes_) noexcept;
    Node(const Node&) = delete;
    Node& operator=(const Node&) = delete;

    // Appends the objects below whose boxes overlap queryBox.
    void query(std::vector<void*>& vResult, const Box& queryBox) const;

    [[nodiscard]] bool isLeaf() const { return vChildNodes.empty(); }
    [[nodiscard]] const Box& getBox() const { return box; }
    [[nodiscard]] const std::vector<Node*>& getChildren() const { return vChildNodes; }
    // Null in the root.
    [[nodiscard]] const Node* getParent() const { return pParent; }

private:
    std::vector<Node*> vChildNodes;
    const RTree* pTree;
    std::size_t fromIdx = 0;
    std::size_t toIdx = 0;
    Box box;
    Node* pParent = nullptr;
};

} // namespace TARN_LOCATE3

#endif

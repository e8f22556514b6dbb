#ifndef ZEF_LOCATE3_RTREE_H
#define ZEF_LOCATE3_RTREE_H

#include "tarn_locate3/Item.h"
#include "tarn_locate3/Node.h"
#include "tarn_tools/SimplePool.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace TARN_LOCATE3
{
// Which stored boxes overlap a box? Loaded once, in Hilbert order of the box centres, then fixed.
//
// Use:        addObject() for all, build(), then any number of queries.
// Ownership:  owns items and nodes; the objects stay the caller's and are never looked at.
// Invariant:  leaves hold at most 2 items and inner nodes at most 8 nodes, all but the last of a level in
//             full.
// Threads:    built by one, queried by any number at the same time.
// Cost:       n log n to build; a query is proportional to the nodes that overlap it.
class RTree
{
public:
    RTree();
    // numBits is the length of the Hilbert index: a multiple of 3, from 3 to 30. Anything else prints and
    // ends the process with status 1.
    explicit RTree(int numBits_);
    ~RTree();
    RTree(const RTree&) = delete;
    RTree& operator=(const RTree&) = delete;

    // Before build() only. Asserts that no minimum is above its maximum, so NaN is refused too.
    void addObject(void* pObject, double xmin, double ymin, double zmin, double xmax, double ymax,
                   double zmax);

    void build();

    // Appends the objects whose boxes have a point in common with queryBox, in the order of the tree.
    void query(std::vector<void*>& vResult, const Box& queryBox) const;

    // By place in Hilbert order; equal places keep the order of addObject().
    [[nodiscard]] const Item& getItem(std::size_t idx) const { return *vItems[idx].second; }
    // Null before build() and in a tree without objects.
    [[nodiscard]] const Node* getRoot() const { return pRootNode; }

private:
    struct TempContent
    {
        Item item;
        unsigned int hilbertIdx;
    };

    void createItems();
    [[nodiscard]] std::vector<Node*> createLeaves();
    [[nodiscard]] std::vector<Node*> createLevelAbove(const std::vector<Node*>& vCurrentNodeSet);

    std::vector<std::pair<unsigned int, Item*>> vItems;
    TARN_ZEF::SimplePool<Item> itemPool;
    TARN_ZEF::SimplePool<Node> nodePool;
    Node* pRootNode = nullptr;
    Box box;
    int numBits;
    std::vector<TempContent> vTempContents;
};

} // namespace TARN_LOCATE3

#endif

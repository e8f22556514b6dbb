#ifndef ZEF_OCTREE_OCTREE_H
#define ZEF_OCTREE_OCTREE_H

#include "tarn_octree/OctItem.h"
#include "tarn_octree/OctNode.h"
#include "tarn_tools/SimplePool.h"

#include <vector>

namespace TARN_OCTREE
{
// Which stored points lie in a box? Loaded once, cut in eight about sampled medians, then fixed.
//
// Use:        add() for all, build(), then any number of queries.
// Ownership:  owns items and nodes; the objects stay the caller's and are never looked at.
// Invariant:  every item is in exactly one leaf; a leaf holds at most 4 items, unless the sampled medians
//             could not tell its items apart.
// Threads:    built by one, queried by any number at the same time. The medians draw on the building
//             thread's random numbers; what a query finds does not depend on them, its order does.
// Cost:       about n log n to build; a query is proportional to the nodes that overlap it.
class Octree
{
public:
    Octree() = default;
    ~Octree();
    Octree(const Octree&) = delete;
    Octree& operator=(const Octree&) = delete;

    // Before build() only. Asserts that no coordinate is NaN.
    void add(void* pObject, double x, double y, double z);

    void build();

    // Appends the objects that lie in queryBox, its faces included.
    void query(std::vector<void*>& vResult, const Box& queryBox) const;

    // Null before build() and in a tree without items.
    [[nodiscard]] const OctNode* getRoot() const { return pRootNode; }

private:
    void createItems(const Box& box);
    void createNodes(const Box& box);

    std::vector<OctItem> vAdded;
    std::vector<OctItem*> vItems;
    TARN_ZEF::SimplePool<OctItem> itemPool;
    TARN_ZEF::SimplePool<OctNode> nodePool;
    OctNode* pRootNode = nullptr;
};

} // namespace TARN_OCTREE

#endif

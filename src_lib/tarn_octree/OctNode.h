#ifndef ZEF_OCTREE_OCTNODE_H
#define ZEF_OCTREE_OCTNODE_H

#include "tarn_octree/OctItem.h"
#include "tarn_tools/Box.h"

#include <array>
#include <cstddef>
#include <span>
#include <vector>

namespace TARN_OCTREE
{
using TARN_ZEF::Box;

// A node of an Octree: a leaf with items, or an inner node whose box is cut in eight at one point.
//
// Ownership:  owns nothing; items and nodes belong to the tree. The items of a node are a stretch of the
//             tree's list, which the cut brings in order of the octants.
// Invariant:  the items of a node lie in its box; an inner node has at least two children, none empty.
// Threads:    queries read only.
class OctNode
{
public:
    // A leaf.
    OctNode(const Box& box_, std::span<OctItem*> items_);
    OctNode(const OctNode&) = delete;
    OctNode& operator=(const OctNode&) = delete;

    // One octant of a cut.
    struct Octant
    {
        Box childBox;
        std::span<OctItem*> items;
    };

    // Cuts the node about its median; the octants that hold items come back in the order of their numbers,
    // bit 2 for x above the cut, bit 1 for y, bit 0 for z. Items keep their order in each octant. None come
    // back if there are few items, or if all lie on the same side of every cut: the node then is to stay a
    // leaf. Draws random numbers for the median. vScratch keeps its room from call to call.
    [[nodiscard]] std::vector<Octant> cut(std::vector<OctItem*>& vScratch);

    // Makes an inner node of it.
    void setChildren(std::vector<OctNode*> vChildNodes_);

    // Appends the objects of a leaf that lie in queryBox, or the children of an inner node that overlap it,
    // the first child last.
    void query(std::vector<void*>& vResult, std::vector<const OctNode*>& vOpen, const Box& queryBox) const;

    [[nodiscard]] bool isLeaf() const { return vChildNodes.empty(); }
    [[nodiscard]] const Box& getBox() const { return box; }
    [[nodiscard]] const std::vector<OctNode*>& getChildren() const { return vChildNodes; }
    [[nodiscard]] std::span<OctItem* const> getItems() const { return items; }

private:
    struct Split
    {
        double x;
        double y;
        double z;
    };

    [[nodiscard]] Split findSplit() const;
    [[nodiscard]] std::array<std::size_t, 9> sortByOctant(const Split& split,
                                                          std::vector<OctItem*>& vScratch);
    [[nodiscard]] Box makeChildBox(const Split& split, unsigned octant) const;

    std::vector<OctNode*> vChildNodes;
    std::span<OctItem*> items;
    Box box;
};

} // namespace TARN_OCTREE

#endif

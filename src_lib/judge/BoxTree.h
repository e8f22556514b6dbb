#ifndef ZEF_BOXTREE_H
#define ZEF_BOXTREE_H

#include <array>
#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
// Axis-parallel box in single precision. Mapping doubles to floats keeps order, so boxes that overlap before
// the mapping overlap after it.
struct FloatBox
{
    std::array<float, 3> low;
    std::array<float, 3> high;

    [[nodiscard]] bool overlaps(const FloatBox& other) const
    {
        // Without branches, as the outcome is hard to foretell.
        return (static_cast<int>(low[0] <= other.high[0]) & static_cast<int>(other.low[0] <= high[0]) &
                static_cast<int>(low[1] <= other.high[1]) & static_cast<int>(other.low[1] <= high[1]) &
                static_cast<int>(low[2] <= other.high[2]) & static_cast<int>(other.low[2] <= high[2])) != 0;
    }
    void include(const FloatBox& other);
};

// Finds overlapping pairs among boxes that come in an order in which neighbours lie close together.
//
// Eight boxes in a row make a block, eight blocks in a row a block of the next level, and so on: the tree is
// its boxes, without a pointer.
// Threads:    queries from any thread.
// Cost        some 27 bytes a box, the boxes included.
class BoxTree
{
public:
    explicit BoxTree(std::vector<FloatBox> vBoxes);

    [[nodiscard]] std::size_t getNumBlocks() const { return vLevels.size() < 2 ? 0 : vLevels[1].size(); }

    // Calls f(i, k) with i < k for each pair of overlapping boxes, i in the given block, until f returns false.
    // False if f did.
    template <typename F>
    [[nodiscard]] bool visitPairs(std::size_t block, F f) const;

private:
    static constexpr std::size_t WIDTH = 8;
    // A block of the lowest level to visit, with the level and index of the subtree it stands for.
    struct Subtree
    {
        std::size_t level;
        std::size_t index;
    };

    template <typename F>
    [[nodiscard]] bool visitBlocks(std::size_t block, std::size_t other, F f) const;
    [[nodiscard]] static std::size_t getEnd(std::size_t index, const std::vector<FloatBox>& vBelow);

    std::vector<std::vector<FloatBox>> vLevels; // the boxes, then their blocks, up to one
};

template <typename F>
bool BoxTree::visitPairs(std::size_t block, F f) const
{
    const FloatBox& box = vLevels[1][block];
    // At most WIDTH subtrees of each of at most 21 levels wait.
    std::array<Subtree, 21 * WIDTH> waiting;
    std::size_t numWaiting = 0;
    waiting[numWaiting++] = {vLevels.size() - 1, 0};
    while (numWaiting > 0)
    {
        const Subtree subtree = waiting[--numWaiting];
        if (subtree.level == 1)
        {
            if (!visitBlocks(block, subtree.index, f))
                return false;
            continue;
        }
        const std::size_t level = subtree.level - 1;
        // Blocks before the own one have met it already.
        std::size_t first = block;
        for (std::size_t i = 1; i < level; ++i)
            first /= WIDTH;
        for (std::size_t i = getEnd(subtree.index, vLevels[level]); i > subtree.index * WIDTH && i > first;
             --i)
            if (vLevels[level][i - 1].overlaps(box))
                waiting[numWaiting++] = {level, i - 1};
    }
    return true;
}

template <typename F>
bool BoxTree::visitBlocks(std::size_t block, std::size_t other, F f) const
{
    const std::vector<FloatBox>& vBoxes = vLevels[0];
    const std::size_t endOther = getEnd(other, vBoxes);
    const std::size_t end = getEnd(block, vBoxes);
    const FloatBox& otherBox = vLevels[1][other];
    for (std::size_t i = block * WIDTH; i < end; ++i)
    {
        if (!vBoxes[i].overlaps(otherBox))
            continue;
        for (std::size_t k = block == other ? i + 1 : other * WIDTH; k < endOther; ++k)
            if (vBoxes[i].overlaps(vBoxes[k]) && !f(i, k))
                return false;
    }
    return true;
}

} // namespace TARN_ZEF

#endif

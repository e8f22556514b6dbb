#ifndef ZEF_FINISH_PARITYUNION_H
#define ZEF_FINISH_PARITYUNION_H

#include <cstdint>
#include <numeric>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// Groups of elements; each element is like the first of its group or unlike it.
class ParityUnion
{
public:
    using Index = std::uint32_t;

    explicit ParityUnion(std::size_t num)
        : vParent(num)
        , vUnlike(num, 0)
    {
        std::iota(vParent.begin(), vParent.end(), 0U);
    }

    // The first of the group; unlike: 1 if i is unlike it.
    Index find(Index i, std::uint8_t& unlike)
    {
        unlike = 0;
        Index root = i;
        for (; vParent[root] != root; root = vParent[root])
            unlike ^= vUnlike[root];
        for (std::uint8_t rest = unlike; vParent[i] != root && i != root;)
        {
            const Index next = vParent[i];
            const std::uint8_t own = vUnlike[i];
            vParent[i] = root;
            vUnlike[i] = rest;
            rest ^= own;
            i = next;
        }
        return root;
    }

    // Nothing happens if both are in one group.
    void unite(Index a, Index b, std::uint8_t unlike)
    {
        std::uint8_t unlikeA = 0;
        std::uint8_t unlikeB = 0;
        Index rootA = find(a, unlikeA);
        Index rootB = find(b, unlikeB);
        if (rootA == rootB)
            return;
        if (rootB < rootA)
            std::swap(rootA, rootB);
        vParent[rootB] = rootA;
        vUnlike[rootB] = unlikeA ^ unlikeB ^ unlike;
    }

private:
    std::vector<Index> vParent;
    std::vector<std::uint8_t> vUnlike; // than the parent
};

} // namespace TARN_ZEF

#endif

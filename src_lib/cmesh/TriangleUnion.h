#ifndef ZEF_TRIANGLEUNION_H
#define ZEF_TRIANGLEUNION_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// Two neighbouring triangles, by creation number, and whether one would have to be flipped to agree with the
// other.
struct Joint
{
    std::uint32_t first;
    std::uint32_t second;
    bool bTurned;
};

// Disjoint sets of the triangles of a mesh, by creation number, each triangle with its turn against the root:
// whether it would have to be flipped to agree with it.
//
// The pieces of a surface come out of one walk over the edges in memory order, where a flood from triangle to
// triangle would miss the cache at each step.
//
// Invariant:  the root of a set is its lowest number.
// Threads:    none, but for the const calls as long as nothing changes.
// Cost:       practically constant per call.
// Source:     R. E. Tarjan, Efficiency of a good but not linear set union algorithm, 1975; path halving.
class TriangleUnion
{
public:
    struct Found
    {
        std::uint32_t root;
        bool bTurned; // against the root
    };

    // Each of num triangles is a set of its own.
    explicit TriangleUnion(std::size_t num)
        : vLink(num)
        , vSize(num, 1)
    {
        for (std::size_t i = 0; i < num; ++i)
            vLink[i] = static_cast<std::uint32_t>(i) << 1;
    }

    [[nodiscard]] Found find(std::uint32_t i)
    {
        std::uint32_t turned = 0;
        while (vLink[i] >> 1 != i)
        {
            const std::uint32_t link = vLink[i];
            const std::uint32_t next = vLink[link >> 1];
            vLink[i] = next ^ (link & 1);
            turned ^= vLink[i] & 1;
            i = next >> 1;
        }
        return {i, turned != 0};
    }
    [[nodiscard]] std::uint32_t findRoot(std::uint32_t i) { return find(i).root; }
    // The same without a change, so that several threads may ask. Quick after flatten().
    [[nodiscard]] Found look(std::uint32_t i) const
    {
        std::uint32_t turned = 0;
        for (; vLink[i] >> 1 != i; i = vLink[i] >> 1)
            turned ^= vLink[i] & 1;
        return {i, turned != 0};
    }
    // Links each triangle to its root. Links lead to lower numbers: those of the lower ones are direct already.
    void flatten()
    {
        for (std::uint32_t& link : vLink)
            link = vLink[link >> 1] ^ (link & 1);
    }
    [[nodiscard]] bool isRoot(std::uint32_t i) const { return vLink[i] >> 1 == i; }
    // Members of the set with this root.
    [[nodiscard]] std::uint32_t getSize(std::uint32_t root) const { return vSize[root]; }

    // Joins the sets of both triangles. False if they are in one set already and stand otherwise there: the
    // surface is twisted.
    bool unite(const Joint& joint)
    {
        const Found a = find(joint.first);
        const Found b = find(joint.second);
        const bool bRootsTurned = (a.bTurned != b.bTurned) != joint.bTurned;
        if (a.root == b.root)
            return !bRootsTurned;
        const std::uint32_t low = a.root < b.root ? a.root : b.root;
        const std::uint32_t high = a.root < b.root ? b.root : a.root;
        vLink[high] = low << 1 | std::uint32_t{bRootsTurned};
        vSize[low] += vSize[high];
        return true;
    }

    // Makes i a set of its own again. To be done with all members of a set.
    void reset(std::uint32_t i)
    {
        vLink[i] = i << 1;
        vSize[i] = 1;
    }

private:
    std::vector<std::uint32_t> vLink; // the next one on the way to the root, and in bit 0 the turn against it
    std::vector<std::uint32_t> vSize; // good at roots
};

} // namespace TARN_ZEF

#endif

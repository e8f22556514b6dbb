#ifndef ZEF_FINISH_SEAMPAIRING_H
#define ZEF_FINISH_SEAMPAIRING_H

#include "finish/FlatMesh.h"

#include <utility>
#include <vector>

namespace TARN_ZEF
{
// The triangles around one edge, in their order of rotation, and the ways to pair them into sheets that do not
// cross each other.
//
// A pair's flatness is 1 for two triangles in one plane on both sides of the edge and 0 for one folded onto the
// other.
class SeamPairing
{
public:
    using Index = FlatMesh::Index;
    using Pair = std::pair<int, int>; // places in the rotation, lower one first

    // More triangles than this are not paired: the number of ways explodes, and no surface looks like that.
    static constexpr std::size_t maxTriangles = 8;

    // vHalfEdges: all at one edge, at most maxTriangles.
    SeamPairing(const FlatMesh& mesh, std::vector<Index> vHalfEdges);

    [[nodiscard]] std::size_t size() const noexcept { return vOrder.size(); }
    [[nodiscard]] Index getHalfEdge(int place) const noexcept
    {
        return vOrder[static_cast<std::size_t>(place)];
    }
    [[nodiscard]] double getFlatness(int a, int b) const noexcept;

    // The pairing without crossings that has the most pairs, and among those the highest sum of weight(a, b).
    // Pairs of a weight below 0.0 are not made.
    template <typename Weight>
    [[nodiscard]] std::vector<Pair> choose(Weight weight) const;

private:
    struct Direction
    {
        double x = 0.0;
        double y = 0.0;
    };
    struct Choice
    {
        std::vector<Pair> vPairs;
        double sum = 0.0;

        [[nodiscard]] bool isBelow(const Choice& other) const noexcept
        {
            return vPairs.size() != other.vPairs.size() ? vPairs.size() < other.vPairs.size()
                                                        : sum < other.sum;
        }
    };
    template <typename Weight>
    [[nodiscard]] Choice chooseBetween(int from, int to, const Weight& weight) const;

    std::vector<Index> vOrder;
    std::vector<Direction> vDirections; // of the triangles, away from the edge and at right angles on it
};

template <typename Weight>
std::vector<SeamPairing::Pair> SeamPairing::choose(Weight weight) const
{
    return chooseBetween(0, static_cast<int>(vOrder.size()), weight).vPairs;
}

// Either the first triangle stays alone, or it takes one of the others and parts the rest in two.
template <typename Weight>
SeamPairing::Choice SeamPairing::chooseBetween(int from, int to, const Weight& weight) const
{
    if (to - from < 2)
        return {};
    Choice best = chooseBetween(from + 1, to, weight);
    for (int partner = from + 1; partner < to; ++partner)
    {
        const double own = weight(from, partner);
        if (own < 0.0)
            continue;
        Choice choice = chooseBetween(from + 1, partner, weight);
        const Choice rest = chooseBetween(partner + 1, to, weight);
        choice.vPairs.insert(choice.vPairs.end(), rest.vPairs.begin(), rest.vPairs.end());
        choice.vPairs.emplace_back(from, partner);
        choice.sum += rest.sum + own;
        if (best.isBelow(choice))
            best = std::move(choice);
    }
    return best;
}

} // namespace TARN_ZEF

#endif

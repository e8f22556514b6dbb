#ifndef ZEF_EDGEMATES_H
#define ZEF_EDGEMATES_H

#include "core/definitions.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// Who lies beside whom in a mesh of corner indices, oriented or not. The page of the room "closing": points and
// corner indices come in, loops of border edges and triangles that close them come out; it knows no lattice and no
// mesh of records.
//
// Half-edge 3t + k is the edge of triangle t from its corner k to the next one. Triangles that name a point twice
// have no edges here.
class EdgeMates
{
public:
    static constexpr std::uint32_t BORDER = 0xFFFFFFFF;  // nobody beside it
    static constexpr std::uint32_t CROWDED = 0xFFFFFFFE; // more than one beside it
    static constexpr std::uint32_t NO_EDGE = 0xFFFFFFFD;

    explicit EdgeMates(const std::vector<int>& vCorners_);

    [[nodiscard]] std::uint32_t get(std::uint32_t h) const { return vMate[h]; }
    [[nodiscard]] static std::uint32_t next(std::uint32_t h) { return h % 3 == 2 ? h - 2 : h + 1; }
    [[nodiscard]] static std::uint32_t prev(std::uint32_t h) { return h % 3 == 0 ? h + 2 : h - 1; }
    [[nodiscard]] int from(std::uint32_t h) const { return vCorners[h]; }
    [[nodiscard]] int to(std::uint32_t h) const { return vCorners[next(h)]; }
    [[nodiscard]] std::uint32_t getNum() const { return static_cast<std::uint32_t>(vMate.size()); }

    // Whether any triangle has an edge between the two.
    [[nodiscard]] bool hasEdge(int a, int b) const;
    // The half-edge between the two if it is the only one there; NO_EDGE otherwise.
    [[nodiscard]] std::uint32_t findBorder(int a, int b) const;
    // Of an edge: the same for both directions.
    [[nodiscard]] static u64 keyOf(int a, int b);
    // Calls f(h, g) for half-edges of the same edge, so often that all of that edge hang together.
    template <typename F>
    void forEachPair(F f) const
    {
        for (std::size_t i = 1; i < vByKey.size(); ++i)
            if (vByKey[i - 1].first == vByKey[i].first)
                f(vByKey[i - 1].second, vByKey[i].second);
    }

private:
    [[nodiscard]] std::size_t findFirst(u64 key) const; // place in vByKey

    const std::vector<int>& vCorners;
    std::vector<std::pair<u64, std::uint32_t>> vByKey; // half-edges, sorted by their edges
    std::vector<std::uint32_t> vMate;
};

} // namespace TARN_ZEF

#endif

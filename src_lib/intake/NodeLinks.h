#ifndef ZEF_NODELINKS_H
#define ZEF_NODELINKS_H

#include "intake/SNode.h"

#include <array>
#include <cstdint>
#include <span>
#include <vector>

namespace TARN_ZEF
{
// The neighbours of all nodes: those whose cell differs by at most one on each axis, another node of the
// same cell included. Nodes are named by their place in the list.
//
// Invariant:  links are mutual; no node is linked with itself. Those of one node stand in the order of the
//             first cube (by RCD) that both nodes are in, and within a cube by creation number. Sums over
//             links depend on that order in their last bits.
// Threads:    the lists of different nodes are made side by side; reading is free.
// Cost:       linear, no search: while the nodes of a chunk pass by in order of their cells, nine cursors
//             follow in the nine columns of cells around them.
class NodeLinks
{
public:
    // Nodes sorted by (rcd, number). Earlier links go first, so that both need not be kept at a time.
    void build(const std::vector<SNode>& vNodes);
    void clear();

    // Valid until the next build() or clear().
    [[nodiscard]] std::span<const std::uint32_t> get(std::size_t node) const noexcept
    {
        const std::vector<std::uint32_t>& vChunk = vChunks[node / CHUNK];
        const bool bLast = node % CHUNK == CHUNK - 1 || node + 1 == vStarts.size();
        const std::size_t end = bLast ? vChunk.size() : vStarts[node + 1];
        return {vChunk.data() + vStarts[node], end - vStarts[node]};
    }

private:
    // A fixed number of nodes whose links share an array: no array has to be moved into a common one.
    static constexpr std::size_t CHUNK = 4096;
    // Cells of equal x and y around a node: 3 * (dx + 1) + (dy + 1).
    static constexpr int NUM_COLUMNS = 9;

    // What the search needs of the nodes, close together.
    struct Keys
    {
        std::vector<RCD> vRCD;
        std::vector<std::uint32_t> vNumber;
    };
    // The nodes of a column: [begin, upper) at z - 1 and z, [upper, end) at z + 1.
    struct Column
    {
        std::size_t begin;
        std::size_t upper;
        std::size_t end;
    };
    using Columns = std::array<Column, NUM_COLUMNS>;

    void buildChunk(const Keys& keys, std::size_t chunk, std::vector<std::uint32_t>& vScratch);
    static void advance(const Keys& keys, RCD rcd, Columns& columns) noexcept;
    static void appendLinks(const Keys& keys, const Columns& columns, std::size_t node,
                            std::vector<std::uint32_t>& vLinks);

    std::vector<std::vector<std::uint32_t>> vChunks;
    std::vector<std::uint32_t> vStarts; // by node, within its chunk
};

} // namespace TARN_ZEF

#endif

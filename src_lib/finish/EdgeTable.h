#ifndef ZEF_FINISH_EDGETABLE_H
#define ZEF_FINISH_EDGETABLE_H

#include "finish/FlatMesh.h"

#include <cstddef>
#include <span>
#include <vector>

namespace TARN_ZEF
{
// The edges of a mesh with all their half-edges, whatever their number and direction: by the lower end of the edge, by
// the other one, then by half-edge. A snapshot; it does not follow later edits.
//
// Threads:  the constructor works on the pool; queries may run at the same time.
// Cost:     three walks over the half-edges; 8 bytes each.
class EdgeTable
{
public:
    using Index = FlatMesh::Index;
    // A half-edge at the lower end of its edge.
    struct Entry
    {
        Index end; // the other one
        Index h;
    };

    explicit EdgeTable(const FlatMesh& mesh);

    [[nodiscard]] std::size_t getNumVertices() const noexcept { return vEnds.size() - 1; }
    // Calls f(halfEdges), a span of entries, for each edge whose lower end is in [from, to).
    template <typename F>
    void forEachEdge(std::size_t from, std::size_t to, F f) const
    {
        const std::span<const Entry> all(vEntries);
        for (std::size_t v = from; v < to; ++v)
            for (std::size_t start = vEnds[v], end = start; start < vEnds[v + 1]; start = end)
            {
                while (end < vEnds[v + 1] && all[end].end == all[start].end)
                    ++end;
                f(all.subspan(start, end - start));
            }
    }

private:
    std::vector<Entry> vEntries;
    std::vector<Index> vEnds; // of the heap of each vertex, after a 0
};

} // namespace TARN_ZEF

#endif

#ifndef ZEF_FINISH_EDGETABLE_H
#define ZEF_FINISH_EDGETABLE_H

#include "core/definitions.h"
#include "finish/FlatMesh.h"

#include <span>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// The edges of a mesh with all their half-edges, whatever their number and direction: by the ends of the edge, then
// by half-edge. A snapshot; it does not follow later edits.
//
// Cost:  a few walks over the half-edges.
class EdgeTable
{
public:
    using Index = FlatMesh::Index;
    using Entry = std::pair<u64, Index>; // ends of the edge, lower one first; half-edge

    explicit EdgeTable(const FlatMesh& mesh);

    [[nodiscard]] std::size_t size() const noexcept { return vStarts.size() - 1; }
    [[nodiscard]] std::span<const Entry> getHalfEdges(std::size_t edge) const noexcept
    {
        return {vEntries.data() + vStarts[edge], vStarts[edge + 1] - vStarts[edge]};
    }
    template <typename F>
    void forEach(F f) const
    {
        for (std::size_t e = 0; e < size(); ++e)
            f(getHalfEdges(e));
    }

private:
    std::vector<Entry> vEntries;
    std::vector<std::size_t> vStarts; // of each edge, and the end
};

} // namespace TARN_ZEF

#endif

#ifndef ZEF_SOUPEDGETABLE_H
#define ZEF_SOUPEDGETABLE_H

#include "core/cancel.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// The edges of indexed triangles, whatever their number of triangles and however these are turned.
//
// Invariant:  edges in the order of their ends; the corners of an edge in the order of their numbers.
// Cost:       12 bytes a corner; linear in time.
class SoupEdgeTable
{
public:
    SoupEdgeTable(std::size_t numVertices, const std::vector<int>& vCorners);

    // Calls f(pCorners, num) for each edge: the corners 3t + k that begin it, in either direction.
    template <typename F>
    void forEachEdge(F f) const
    {
        CancelStride cancel;
        for (std::size_t from = 0; from < vCornerOf.size();)
        {
            cancel.step();
            std::size_t to = from + 1;
            while (to < vCornerOf.size() && vKey[to] == vKey[from])
                ++to;
            f(&vCornerOf[from], static_cast<int>(to - from));
            from = to;
        }
    }

private:
    std::vector<std::pair<int, int>> vKey; // low end, high end
    std::vector<int> vCornerOf;            // beside it
};

} // namespace TARN_ZEF

#endif

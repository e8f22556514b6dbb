#ifndef ZEF_RINGTABLE_H
#define ZEF_RINGTABLE_H

#include <cstddef>
#include <span>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// The neighbours of some vertices of a mesh of corner indices.
class RingTable
{
public:
    // vIsWanted: by vertex, whether its neighbours are asked for.
    RingTable(const std::vector<int>& vCorners, const std::vector<char>& vIsWanted);

    // Each once, ascending; of a vertex that is wanted.
    [[nodiscard]] std::span<const int> get(int v) const;

private:
    std::vector<std::pair<int, int>> vPairs; // vertex, neighbour; sorted
    std::vector<int> vNeighbours;            // beside it
};

} // namespace TARN_ZEF

#endif

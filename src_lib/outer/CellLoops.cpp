#include "outer/CellLoops.h"

#include <algorithm>

namespace TARN_ZEF
{
namespace
{
bool isInside(unsigned corners, int corner)
{
    return ((corners >> corner) & 1U) != 0;
}

bool changes(unsigned corners, int edge)
{
    return isInside(corners, CellLoops::lowerCorner(edge)) != isInside(corners, CellLoops::upperCorner(edge));
}

int edgeBetween(int a, int b)
{
    for (int edge = 0; edge < CellLoops::NUM_EDGES; ++edge)
        if (CellLoops::lowerCorner(edge) == std::min(a, b) && CellLoops::upperCorner(edge) == std::max(a, b))
            return edge;
    return -1;
}

void join(std::array<int, CellLoops::NUM_EDGES>& group, int a, int b)
{
    const auto [keeps, goes] = std::minmax(group[a], group[b]);
    std::replace(group.begin(), group.end(), int{goes}, int{keeps});
}
} // namespace

int CellLoops::lowerCorner(int edge)
{
    const int axis = edge / 4;
    return ((edge & 1) << ((axis + 1) % 3)) | (((edge >> 1) & 1) << ((axis + 2) % 3));
}

CellLoops::CellLoops()
{
    for (unsigned corners = 0; corners < table.size(); ++corners)
    {
        Loops& loops = table[corners];
        std::array<int, NUM_EDGES> group;
        for (int edge = 0; edge < NUM_EDGES; ++edge)
            group[edge] = edge;
        for (int axis = 0; axis < 3; ++axis)
            for (const int side : {0, 1})
                joinOnSide(corners, axis, side, group, loops);
        loops.loopOf.fill(NO_LOOP);
        for (int edge = 0; edge < NUM_EDGES; ++edge)
            if (changes(corners, edge))
                loops.loopOf[edge] =
                    group[edge] == edge ? static_cast<std::uint8_t>(loops.num++) : loops.loopOf[group[edge]];
    }
}

void CellLoops::joinOnSide(unsigned corners, int axis, int side, std::array<int, NUM_EDGES>& group,
                           Loops& loops)
{
    const int right = 1 << ((axis + 1) % 3);
    const int up = 1 << ((axis + 2) % 3);
    const int base = side << axis;
    const std::array<int, 4> ring = {base, base | right, base | right | up, base | up};
    std::array<int, 4> edges;
    std::array<int, 4> changing;
    int num = 0;
    for (int i = 0; i < 4; ++i)
    {
        edges[i] = edgeBetween(ring[i], ring[(i + 1) % 4]);
        if (changes(corners, edges[i]))
            changing[num++] = edges[i];
    }
    if (num == 2)
        join(group, changing[0], changing[1]);
    if (num < 4)
        return;
    loops.bAmbiguous = true;
    for (int i = 0; i < 4; ++i)
        if (!isInside(corners, ring[i]))
            join(group, edges[(i + 3) % 4], edges[i]);
}

} // namespace TARN_ZEF

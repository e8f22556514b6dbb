#ifndef ZEF_BORDERLOOPS_H
#define ZEF_BORDERLOOPS_H

#include "judge/JudgedMesh.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// The border edges of a mesh, put together to loops: a loop goes on at a vertex to the other side of its fan of
// triangles. So two holes that touch in a vertex, which makes it two fans, have one loop.
struct BorderLoops
{
    // vBorder: half-edges, each once. vJoints: pairs of them that belong to one loop.
    BorderLoops(const JudgedMesh& mesh, std::vector<std::uint32_t> vBorder,
                const std::vector<std::pair<std::uint32_t, std::uint32_t>>& vJoints);

    std::size_t numLoops = 0;
    double length = 0.0;
    double longestLength = 0.0;
    std::size_t numLongestEdges = 0;
};

} // namespace TARN_ZEF

#endif

#ifndef ZEF_FINISH_SMALLHOLES_H
#define ZEF_FINISH_SMALLHOLES_H

#include "surface/HalfEdgeMesh.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// Closes small holes of a surface, such as points leave where they are sparse by chance. A hole is a border around
// which the surface goes on: the angles of the triangles at its vertices are larger than straight ones, by more than
// half a turn in all. Rims of sheets, and open ends of tubes, stay.
//
// Ownership:  works on the caller's mesh; holes are closed in the order of their lowest vertex.
class SmallHoles
{
public:
    explicit SmallHoles(HalfEdgeMesh& mesh_);

    // Those of at most maxEdges edges. Returns the number of holes that were closed.
    std::size_t close(std::size_t maxEdges);

private:
    [[nodiscard]] bool isHole(const std::vector<int>& vLoop) const;

    HalfEdgeMesh& mesh;
};

} // namespace TARN_ZEF

#endif

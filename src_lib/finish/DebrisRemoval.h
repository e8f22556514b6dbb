#ifndef ZEF_FINISH_DEBRISREMOVAL_H
#define ZEF_FINISH_DEBRISREMOVAL_H

#include "finish/FlatMesh.h"
#include "surface/HalfEdgeMesh.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// Takes away the crumbs of a surface: small pieces that were cut off a large one while it was made sound. Pieces that
// were small before stay, as they may be what the surface is.
//
// Triangles of large pieces carry the label LARGE, which every operation on the mesh hands on.
//
// Ownership:  works on the caller's mesh.
class DebrisRemoval
{
public:
    using Flags = std::vector<std::uint8_t>;

    static constexpr int LARGE = 1;

    // Of each point of a mesh, whether it is in a large piece: one of at least a hundred triangles that hang
    // together at their corners.
    [[nodiscard]] static Flags findLarge(const FlatMesh& mesh);

    explicit DebrisRemoval(HalfEdgeMesh& mesh_);

    // REQUIRES: vIsOfLarge[v] tells of each vertex whether it was in a large piece.
    void label(const Flags& vIsOfLarge);
    // Pieces of fewer than 32 triangles with a triangle labelled LARGE go. Returns the number of triangles.
    std::size_t run();

private:
    [[nodiscard]] std::vector<int> flood(int first, Flags& vReached) const;

    HalfEdgeMesh& mesh;
};

} // namespace TARN_ZEF

#endif

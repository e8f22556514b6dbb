#ifndef ZEF_FINISH_SEAMTABLE_H
#define ZEF_FINISH_SEAMTABLE_H

#include "finish/EdgeTable.h"
#include "finish/FlatMesh.h"
#include "finish/fans.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace TARN_ZEF
{
// How the triangles of a mesh hang together: the mates, and the seams. A seam is an edge of three or more triangles, or
// of two that face against each other. It follows as triangles leave or turn over.
//
// Ownership:  none of the mesh; the caller tells what he does to it.
// Invariant:  a half-edge has a mate, or is a side of one seam, or is a border. The sides of a seam are ascending.
// Cost:       one sort of half-edges when made; 12 bytes a half-edge.
class SeamTable
{
public:
    using Index = FlatMesh::Index;

    explicit SeamTable(const FlatMesh& mesh);

    [[nodiscard]] const Mates& getMates() const noexcept { return vMates; }
    // FlatMesh::NONE if the half-edge is at no seam.
    [[nodiscard]] Index getSeam(Index h) const noexcept { return vSeamOf[h]; }
    [[nodiscard]] bool isBorder(Index h) const noexcept
    {
        return vMates[h] == FlatMesh::NONE && vSeamOf[h] == FlatMesh::NONE;
    }
    // Including seams that are none any more; those have no sides.
    [[nodiscard]] Index getNumSeams() const noexcept { return static_cast<Index>(vSeams.size()); }
    [[nodiscard]] std::span<const Index> getSides(Index seam) const noexcept
    {
        return {vSides.data() + vSeams[seam].first, vSeams[seam].num};
    }

    // The sides of triangles t with vKeep[t] == 0 leave the seam, all at once. Two that are left and face alike become
    // mates, a single one becomes a border.
    void removeSides(const FlatMesh& mesh, Index number, const std::vector<std::uint8_t>& vKeep);
    // Follows mesh.keepTriangles(vKeep). REQUIRES: sides of the dropped triangles are removed.
    void keepTriangles(const std::vector<std::uint8_t>& vKeep);
    // Follows turnTriangles(mesh, vTurn). REQUIRES: mates are turned both or none.
    void turnTriangles(const std::vector<std::uint8_t>& vTurn);

private:
    struct Seam
    {
        std::size_t first;
        std::size_t num;
    };

    [[nodiscard]] bool mateTwo(const FlatMesh& mesh, std::span<const EdgeTable::Entry> halfEdges);

    Mates vMates;
    std::vector<Index> vSeamOf; // of each half-edge
    std::vector<Seam> vSeams;
    std::vector<Index> vSides;
};

} // namespace TARN_ZEF

#endif

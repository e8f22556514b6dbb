#ifndef ZEF_FINISH_WRAPREMOVAL_H
#define ZEF_FINISH_WRAPREMOVAL_H

#include "core/definitions.h"
#include "finish/FlatMesh.h"
#include "finish/PatchTable.h"
#include "finish/SeamTable.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// Turns thin wraps into one sheet. A wrap is a patch that closes by itself, if at a seam then with two of its own sides
// there, and is thinner than a third of a cell in the mean: its volume is small beside its area. One of its two sides
// goes.
//
// Which side a triangle is on is told by the opposed one behind it, which is on the other, and by its neighbours, which
// are on the same one unless the surface folds back between them. The side stays that faces as the sheets across the
// seams do; without any the one that faces up, as open sheets do. A small wrap that stands alone is debris and goes.
//
// Ownership:  works on the caller's mesh and table, which fit together before and after.
// Cost:       two walks over the mesh, and a grid of the triangles of each wrap.
class WrapRemoval
{
public:
    WrapRemoval(FlatMesh& mesh_, SeamTable& seams_, double cellSize_);

    // Returns the number of triangles that went.
    std::size_t run();

private:
    using Index = FlatMesh::Index;
    using Flags = std::vector<std::uint8_t>;

    struct Facet
    {
        Index t;
        Point3 centre;
        Vector3 normal; // of length 1, or 0
        double area;
    };
    struct Link
    {
        double weight;
        Index a; // facets
        Index b;
        std::uint8_t bUnlike;
    };

    [[nodiscard]] std::vector<std::vector<Index>> findWraps() const;
    [[nodiscard]] Flags findClosedPatches(const PatchTable& patches) const;
    void readFacets(const std::vector<Index>& vTriangles);
    void linkNeighbours(const std::vector<Index>& vTriangles);
    void linkOpposed();
    [[nodiscard]] Flags tellSides();
    [[nodiscard]] std::uint8_t chooseSide(const Flags& vSides) const;
    [[nodiscard]] bool isAtSeam() const;
    [[nodiscard]] double getAgreement(Index t) const;

    FlatMesh& mesh;
    SeamTable& seams;
    double cellSize;
    Flags vKeep;                // of each triangle
    std::vector<Facet> vFacets; // of the wrap at work
    std::vector<Link> vLinks;
};

} // namespace TARN_ZEF

#endif

#ifndef ZEF_FINISH_SHEETPARTER_H
#define ZEF_FINISH_SHEETPARTER_H

#include "finish/FlatMesh.h"
#include "finish/PartReport.h"
#include "finish/PatchFacing.h"
#include "finish/PatchTable.h"
#include "finish/SeamTable.h"
#include "finish/fans.h"

#include <cstdint>
#include <span>
#include <vector>

namespace TARN_ZEF
{
// Parts a mesh into sheets: afterwards each edge has one or two triangles, which face the same way, and each vertex
// one fan. Thin wraps become one sheet. Where more than two triangles meet, fins and doubled layers are
// dropped, the others are paired by facing and flatness, and what finds no partner becomes a border, drawn
// back a little from the sheet it hung on.
//
// Ownership:  works on the caller's mesh, which may hold anything. Indices must be in range.
// Cost:       a sort of the half-edges and one of the triangles; what follows goes by the number of sides at seams.
class SheetParter
{
public:
    // cellSize: edge of the cells that the mesh comes from; 0 if it is not known, then thin wraps stay.
    SheetParter(FlatMesh& mesh_, PartReport& report_, double cellSize_ = 0.0);

    void run();

    // After run(): for each point whether it stood on a seam, or is a copy of one that did.
    [[nodiscard]] const std::vector<std::uint8_t>& getParted() const noexcept { return vIsParted; }
    // The point before run() that a point is, or a copy of, or was made next to.
    [[nodiscard]] FlatMesh::Index getSource(std::size_t v) const noexcept
    {
        return v < firstAdded ? static_cast<FlatMesh::Index>(v) : vSources[v - firstAdded];
    }

private:
    using Index = FlatMesh::Index;

    void dropUnusable();
    void dropDuplicates();
    void pairTriangles(SeamTable& seams);
    void faceAlike(const PatchTable& patches, const PatchFacing& facing, SeamTable& seams);
    void pairAtSeam(std::span<const Index> sides, const PatchTable& patches, const PatchFacing& facing);
    void mate(Index g, Index h);
    void giveFansVertices();
    void drawBack(std::size_t firstCopy, const std::vector<Index>& vOriginals);
    void splitTwinEdges();
    bool splitTwins(std::span<const Index> twins, std::vector<std::uint8_t>& vTouched);
    bool splitAt(Index h, std::vector<std::uint8_t>& vTouched);
    void splitSide(Index side, Index vertex);
    void keep(const std::vector<std::uint8_t>& vKeep, std::size_t& counter);

    FlatMesh& mesh;
    PartReport& report;
    double cellSize;
    Mates vMates;
    std::vector<Index> vSeamSides; // half-edges at edges that were seams
    std::vector<std::uint8_t> vIsParted;
    std::size_t firstAdded = 0;  // points from here on are new
    std::vector<Index> vSources; // of these
};

// Turns the closed pieces of a mesh so that they face outward. The mates follow. Returns the number of
// triangles turned.
std::size_t faceOutward(FlatMesh& mesh, Mates& vMates);

} // namespace TARN_ZEF

#endif

#ifndef ZEF_FINISH_SHEETPARTER_H
#define ZEF_FINISH_SHEETPARTER_H

#include "finish/EdgeTable.h"
#include "finish/FlatMesh.h"
#include "finish/PartReport.h"
#include "finish/PatchFacing.h"
#include "finish/PatchTable.h"
#include "finish/fans.h"

#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// Parts a mesh into sheets: afterwards each edge has one or two triangles, which face the same way, and each vertex
// one fan. Where more than two triangles meet, fins and doubled layers are dropped, the others are paired by facing
// and flatness, and what finds no partner becomes a border, drawn back a little from the sheet it hung on.
//
// Ownership:  works on the caller's mesh, which may hold anything. Indices must be in range.
// Cost:       a sort of the half-edges for each round; one round for a mesh without seams.
class SheetParter
{
public:
    SheetParter(FlatMesh& mesh_, PartReport& report_);

    void run();

    // After run(): for each point whether it stood on a seam, or is a copy of one that did.
    [[nodiscard]] const std::vector<std::uint8_t>& getParted() const noexcept { return vIsParted; }

private:
    using Index = FlatMesh::Index;
    using HalfEdges = std::span<const EdgeTable::Entry>;

    void dropUnusable();
    void dropDuplicates();
    void dropFins();
    bool dropFinsUpTo(std::size_t maxT);
    static void addGain(HalfEdges halfEdges, const std::vector<Index>& vPatchOfT,
                        std::vector<std::ptrdiff_t>& vGain, std::vector<std::pair<Index, Index>>& vMeetings);
    void pairTriangles();
    void turnTriangles(const PatchTable& patches, const PatchFacing& facing);
    void pairAtEdge(HalfEdges halfEdges, const std::vector<Index>& vPatchOfT, const PatchFacing& facing);
    void pairAtSeam(std::vector<Index> vHalfEdges, const std::vector<Index>& vPatchOfT,
                    const PatchFacing& facing);
    void mate(Index g, Index h);
    void giveFansVertices();
    void drawBack(std::size_t firstCopy, const std::vector<Index>& vOriginals);
    void splitTwinEdges();
    bool splitAt(Index h, std::vector<std::uint8_t>& vTouched);
    void keep(const std::vector<std::uint8_t>& vKeep, std::size_t& counter);

    FlatMesh& mesh;
    PartReport& report;
    Mates vMates;
    std::vector<std::uint8_t> vIsParted;
};

// Turns the closed pieces of a manifold mesh so that they face outward. Returns the number of triangles turned.
std::size_t faceOutward(FlatMesh& mesh);

} // namespace TARN_ZEF

#endif

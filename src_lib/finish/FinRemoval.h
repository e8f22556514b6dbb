#ifndef ZEF_FINISH_FINREMOVAL_H
#define ZEF_FINISH_FINREMOVAL_H

#include "finish/FlatMesh.h"
#include "finish/SeamTable.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
// Drops fins and doubled layers: small patches at seams without which fewer borders are left than with them.
//
// A patch is triangles that hang together across mates. It goes if that saves borders: its own ones, and those at
// seams with an odd number of triangles, where one finds no partner. It must be small beside that gain, as a wall is
// something else than a fin. Patches that meet do not go in the same round.
//
// Ownership:  works on the caller's mesh and table, which fit together before and after.
// Cost:       by the number of sides at seams.
class FinRemoval
{
public:
    FinRemoval(FlatMesh& mesh_, SeamTable& seams_);

    // Returns the number of triangles that went.
    std::size_t run();

private:
    using Index = FlatMesh::Index;

    struct Patch
    {
        std::vector<Index> vTriangles; // the first is the lowest
        std::size_t numBorder = 0;     // edges with one triangle
        std::ptrdiff_t gain = 0;       // borders saved at seams if it goes
        bool bAtSeam = false;          // of three or more triangles
    };

    bool dropUpTo(std::size_t maxT);
    void findPatches();
    void flood(Index firstT);
    void weigh(Patch& patch, Index number) const;
    [[nodiscard]] std::ptrdiff_t getGain(Index seam, Index patch) const;
    [[nodiscard]] std::vector<Index> findCandidates(std::size_t maxT) const;
    void markNeighbours(const Patch& patch, std::vector<std::uint8_t>& vStays) const;
    void drop(const Patch& patch);

    FlatMesh& mesh;
    SeamTable& seams;
    std::vector<std::uint8_t> vKeep; // of each triangle
    std::vector<Index> vPatchOfT;    // UNKNOWN, LARGE, or an index of vPatches
    std::vector<Patch> vPatches;     // the small ones at seams
    std::vector<Index> vKnown;       // triangles whose patch is not UNKNOWN
};

} // namespace TARN_ZEF

#endif

#ifndef ZEF_FINISH_PATCHFACING_H
#define ZEF_FINISH_PATCHFACING_H

#include "core/definitions.h"
#include "finish/PatchTable.h"
#include "finish/SeamPairing.h"
#include "finish/SeamTable.h"

#include <cstdint>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// Decides which patches are turned over, so that sheets go on across the seams, and knows how flat two patches meet.
//
// Each flattest pairing at a seam is a vote of its two patches for facing the same or the other way. An answer costs
// the votes that it goes against, and a price for each triangle that it turns over. For each group of patches that
// meet the cheaper of two answers is taken: what is reached by turning single patches from the facing as given, and
// from the votes followed from the heaviest down as long as they do not contradict.
class PatchFacing
{
public:
    using Index = FlatMesh::Index;

    PatchFacing(const FlatMesh& mesh_, const SeamTable& seams, const PatchTable& patches_);

    // Whether the patch has to be turned over.
    [[nodiscard]] bool isTurned(Index patch) const noexcept { return vTurned[patch] != 0; }
    // Mean flatness of all pairs of triangles of two patches at their common seams; 0 without any.
    [[nodiscard]] double getMeanFlatness(Index patchA, Index patchB) const noexcept;

private:
    struct Meeting
    {
        u64 patches = 0; // lower one first
        double keep = 0.0;
        double turn = 0.0;
        double flatness = 0.0;
        std::size_t num = 0;

        [[nodiscard]] double getGain() const noexcept { return keep - turn; }
    };

    void readSeam(std::vector<Index> vHalfEdges);
    void addVote(const SeamPairing& pairing, int a, int b);
    void unite();
    [[nodiscard]] std::vector<std::uint8_t> followVotes() const;
    void descend(std::vector<std::uint8_t>& vTurn) const;
    void chooseFacing(std::vector<std::uint8_t> vVoted);
    [[nodiscard]] double getPrice(Index patch) const noexcept;
    [[nodiscard]] static u64 getKey(Index patchA, Index patchB) noexcept;
    [[nodiscard]] bool runsForward(Index h) const noexcept;

    const FlatMesh& mesh;
    const PatchTable& patches;
    std::vector<Meeting> vMeetings; // by patches, each pair once after unite()
    std::vector<std::uint8_t> vTurned;
};

} // namespace TARN_ZEF

#endif

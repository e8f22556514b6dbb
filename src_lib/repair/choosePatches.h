#ifndef ZEF_CHOOSEPATCHES_H
#define ZEF_CHOOSEPATCHES_H

#include <cstddef>
#include <vector>

namespace TARN_ZEF
{
struct SeamPatch
{
    double area;
    bool bStays; // in any case
};

// Edges at which the same patches meet.
struct Seam
{
    std::vector<std::size_t> vPatches; // one entry for each triangle at such an edge, ascending
    double weight = 0.0;               // what it costs if more than two triangles stay
};

// Which patches have to go so that the seams at which more than two triangles stay weigh least. Of equal choices
// the one that takes away the least area.
//
// The largest of the patches that hang together by seams stays, too. No choice leaves a single triangle at a seam,
// which would open a hole; so if no other will do, all stay.
//
// vSeams   whose patches are indices into vPatches; none of one triangle
// maxArea  that may be taken away in one place, where patches hang together without those that stay
// Returns for each patch whether it stays. A place of many patches gets the best choice that a bounded search
// finds, which tries to keep large patches first.
[[nodiscard]] std::vector<bool> choosePatches(const std::vector<SeamPatch>& vPatches,
                                              const std::vector<Seam>& vSeams, double maxArea);

} // namespace TARN_ZEF

#endif

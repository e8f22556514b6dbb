#ifndef ZEF_INSPECTOR_H
#define ZEF_INSPECTOR_H

#include "core/definitions.h"

#include <map>
#include <set>
#include <vector>

namespace TARN_ZEF
{
class CMesh;
class CPatch;
class CTriangle;

// Cuts patches down to the part that counts while a surface is being grown out of them.
//
// What it takes out of a patch loses its patch at once and dies with the Inspector, unless another patch has
// taken it up by then.
//
// Ownership:  none; mesh and patches belong to others and must outlive it.
// Invariant:  every triangle that it removed stands in vRemovedT.
// Threads:    none.
// Cost:       linear in the members of the patch in question.
class Inspector
{
public:
    Inspector(CMesh* pCMesh_, const std::vector<CPatch*>& vPatches_);
    ~Inspector();
    Inspector(const Inspector&) = delete;
    Inspector& operator=(const Inspector&) = delete;

    // Keeps of the patch what a flood from its member pStartT reaches over edges of degree 2, turned to agree
    // with it. A triangle with two edges or more on the border, that is with both ends in sBorder, is kept
    // but not left. The patch's outer boundary is stale afterwards.
    void keepGoodPartForKnownBorder(CPatch* pTestPatch, CTriangle* pStartT, const std::set<u64>& sBorder);

    // Splits the patch between two of its members: floods from both take a triangle in turn, turned to agree
    // with its seed, and none crosses the border, whose edges mm holds as pairs of corners in any order. The
    // first goes on over edges with two members of the patch, the second over edges of degree 2. The part with
    // more outer edges where it disagrees with what stands beside it is removed, on a tie the smaller one, or
    // the second. What neither reaches goes with it. The patch's outer boundary is stale afterwards.
    void splitFromT(const std::multimap<u64, u64>& mm, CPatch* pTestPatch, CTriangle* pSeedA,
                    CTriangle* pSeedB);

    // Takes all triangles out of the other patches and kills these.
    void discardOthers(const CPatch* pGrownPatch);

    // The two parts of the last cut; the second one of keepGoodPartForKnownBorder() was removed.
    [[nodiscard]] const std::vector<CTriangle*>& getGroupA() const noexcept { return vGroupA; }
    [[nodiscard]] const std::vector<CTriangle*>& getGroupB() const noexcept { return vGroupB; }

private:
    // Leaves vKeepT in the patch; vRemoveT are the others.
    void cut(CPatch* pTestPatch, const std::vector<CTriangle*>& vKeepT,
             const std::vector<CTriangle*>& vRemoveT);
    // Members that neither group holds, dead ones too.
    [[nodiscard]] std::vector<CTriangle*> getUnreached(const CPatch& patch) const;
    [[nodiscard]] std::size_t countDisagreeing(const std::vector<CTriangle*>& vGroup) const;

    CMesh* pCMesh;
    std::vector<CPatch*> vPatches;
    std::vector<CTriangle*> vGroupA;
    std::vector<CTriangle*> vGroupB;
    std::vector<CTriangle*> vRemovedT;
};

} // namespace TARN_ZEF

#endif

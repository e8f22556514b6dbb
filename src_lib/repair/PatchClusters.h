#ifndef ZEF_PATCHCLUSTERS_H
#define ZEF_PATCHCLUSTERS_H

#include <vector>

namespace TARN_ZEF
{
class CMesh;
class CPatch;

// The search for two sets of patches with one boundary. From the largest patch down: looks in the small
// patches around it for such sets, lets one of them die, and joins what is left to the patches that it hangs
// together with.
//
// Comes in:  patches of the present mesh.
// Cost:      exponential in the size of a cluster; more than 12 patches are turned away.
class PatchClusters
{
public:
    explicit PatchClusters(const CMesh* pCMesh_);

    void run(const std::vector<CPatch*>& vPatches);
    // Gathers the start patch and the patches around it, in place of the content of vCluster; at each edge
    // the largest neighbour stays outside. Always true.
    static bool createCluster(CPatch* pStartPatch, std::vector<CPatch*>& vCluster);
    // Looks for two disjoint sets of patches with the same boundary, makes each one patch, and decides that
    // pair. False if there is none or the pair is not decided. meshArea  of the whole mesh
    static bool solveCluster(const std::vector<CPatch*>& vCluster, double meshArea);

private:
    static bool absorbNeighbours(CPatch* pPatch);

    const CMesh* pCMesh;
};

} // namespace TARN_ZEF

#endif

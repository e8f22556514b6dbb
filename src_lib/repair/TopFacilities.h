#ifndef ZEF_TOPFACILITIES_H
#define ZEF_TOPFACILITIES_H

#include "Point3.h"
#include "core/definitions.h"
#include "repair/ChainCloser.h"
#include "repair/LatticeSimplifier.h"
#include "repair/RepairState.h"
#include "repair/SpanningTree.h"

#include <cstddef>
#include <set>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
class Calc;
class CMesh;
class CPatch;

// What the repair offers beside its orders of passes, on the mesh of its state: ways to grow a consistent
// surface out of a non-manifold mesh, and flips and collapses on the lattice. Each member hands over to the
// class that is named above it, where it is described.
class TopFacilities
{
public:
    using EdgeSet = SpanningTree::EdgeSet;
    using EdgeQueue = LatticeSimplifier::EdgeQueue;

    TopFacilities(CMesh* pCMesh_, Calc* pCalc_);

    // SpanningTree
    void strategyMST(EdgeSet& sProblemCE);
    void enqueue(CTriangle* pCT, int ici);
    [[nodiscard]] std::size_t getNumEnqueued() const noexcept { return tree.getNumEnqueued(); }

    // PatchGrowing
    CPatch* patchGrowing(const std::vector<CPatch*>& vPatches);
    [[nodiscard]] CTriangle* getMaxT(const std::vector<CPatch*>& vPatches, bool& bNeedFlip) const;
    static void killBoundaryPatches(const std::vector<CPatch*>& vPatches);

    // ChainCloser
    void closeChainsKillT();
    [[nodiscard]] bool tryClose(const Chain* pChain, std::vector<CEdge*>& vNewCE) const;
    bool tryKillT(const Chain* pChain, const std::vector<CEdge*>& vNewCE);
    [[nodiscard]] static bool bfs(CTriangle* pStartT, const EdgeSet& sChainCE, std::size_t maxNumT,
                                  std::vector<CTriangle*>& vUsedT);

    // PatchClusters
    void solvePatchPairsFrac(const std::vector<CPatch*>& vPatches);
    bool frac_createCluster(CPatch* pStartPatch, std::vector<CPatch*>& vCluster) const;
    bool frac_solvePatchCluster(const std::vector<CPatch*>& vCluster, double meshArea);

    // Corners on features and on known borders, for the flips and for a melt.
    void addFeatureCCD(u64 ccd) { state.sFeatureCCD.insert(ccd); }
    void addBorderCCD(u64 ccd) { state.sBorderCCD.insert(ccd); }
    [[nodiscard]] const std::set<u64>& getFeatureCCDs() const noexcept { return state.sFeatureCCD; }

    // LatticeSimplifier
    bool simplify(int passNo, double maxLen, SimplifyMode mode);
    [[nodiscard]] bool killMid(CEdge* pCE, const Point3& mid, double sqMaxLen, EdgeQueue& mm);
    [[nodiscard]] bool killSingle(CEdge* pCE, int end, double sqMaxLen, EdgeQueue& mm);

    // EnergyFlips
    void edgeFlips(double maxAngle);
    void getEdgesForOptimization(double maxAngle, std::vector<CEdge*>& vOptimizable) const;

    // LatticeFlips
    void flipFeatures();
    [[nodiscard]] int countCollinearConnectors(u64 a, u64 b) const;
    [[nodiscard]] bool canFlip(u64 v0, u64 v1, u64 ccd0, u64 ccd1) const;
    int flipExtremeCaps(bool bFinal);

    // CreaseFlips, for bends of 150 degrees and more.
    void flipCreases();
    void getAngles(double minAngle, std::vector<std::pair<double, CEdge*>>& vAngle) const;

protected:
    RepairState state;

private:
    SpanningTree tree{state}; // what is queued stays between two calls
};

} // namespace TARN_ZEF

#endif

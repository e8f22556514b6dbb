#include "repair/TopFacilities.h"

#include "repair/CreaseFlips.h"
#include "repair/EnergyFlips.h"
#include "repair/LatticeFlips.h"
#include "repair/PatchClusters.h"
#include "repair/PatchGrowing.h"

namespace TARN_ZEF
{
namespace
{
const double MIN_CREASE_ANGLE = 150.0;
}

TopFacilities::TopFacilities(CMesh* pCMesh_, Calc* pCalc_)
    : state(pCMesh_, pCalc_)
{
}

void TopFacilities::strategyMST(EdgeSet& sProblemCE)
{
    tree.orient(sProblemCE);
}

void TopFacilities::enqueue(CTriangle* pCT, int ici)
{
    tree.enqueue(pCT, ici);
}

CPatch* TopFacilities::patchGrowing(const std::vector<CPatch*>& vPatches)
{
    return PatchGrowing(state).grow(vPatches);
}

CTriangle* TopFacilities::getMaxT(const std::vector<CPatch*>& vPatches, bool& bNeedFlip) const
{
    return PatchGrowing(state).getMaxT(vPatches, bNeedFlip);
}

void TopFacilities::killBoundaryPatches(const std::vector<CPatch*>& vPatches)
{
    PatchGrowing::killBoundaryPatches(vPatches);
}

void TopFacilities::closeChainsKillT()
{
    ChainCloser(state.pCMesh).run();
}

bool TopFacilities::tryClose(const Chain* pChain, std::vector<CEdge*>& vNewCE) const
{
    return ChainCloser(state.pCMesh).tryClose(pChain, vNewCE);
}

bool TopFacilities::tryKillT(const Chain* pChain, const std::vector<CEdge*>& vNewCE)
{
    return ChainCloser(state.pCMesh).tryKillT(pChain, vNewCE);
}

bool TopFacilities::bfs(CTriangle* pStartT, const EdgeSet& sChainCE, std::size_t maxNumT,
                        std::vector<CTriangle*>& vUsedT)
{
    return ChainCloser::bfs(pStartT, sChainCE, maxNumT, vUsedT);
}

void TopFacilities::solvePatchPairsFrac(const std::vector<CPatch*>& vPatches)
{
    PatchClusters(state.pCMesh).run(vPatches);
}

bool TopFacilities::frac_createCluster(CPatch* pStartPatch, std::vector<CPatch*>& vCluster) const
{
    return PatchClusters::createCluster(pStartPatch, vCluster);
}

bool TopFacilities::frac_solvePatchCluster(const std::vector<CPatch*>& vCluster, double meshArea)
{
    return PatchClusters::solveCluster(vCluster, meshArea);
}

bool TopFacilities::simplify(int passNo, double maxLen, SimplifyMode mode)
{
    return LatticeSimplifier(state.pCMesh).run(passNo, maxLen, mode);
}

bool TopFacilities::killMid(CEdge* pCE, const Point3& mid, double sqMaxLen, EdgeQueue& mm)
{
    return LatticeSimplifier(state.pCMesh).killMid(pCE, mid, sqMaxLen, mm);
}

bool TopFacilities::killSingle(CEdge* pCE, int end, double sqMaxLen, EdgeQueue& mm)
{
    return LatticeSimplifier(state.pCMesh).killSingle(pCE, end, sqMaxLen, mm);
}

void TopFacilities::edgeFlips(double maxAngle)
{
    EnergyFlips(state.pCMesh).run(maxAngle);
}

void TopFacilities::getEdgesForOptimization(double maxAngle, std::vector<CEdge*>& vOptimizable) const
{
    EnergyFlips(state.pCMesh).getEdges(maxAngle, vOptimizable);
}

void TopFacilities::flipFeatures()
{
    LatticeFlips(state).flipFeatures();
}

int TopFacilities::countCollinearConnectors(u64 a, u64 b) const
{
    return LatticeFlips(state).countCollinearConnectors(a, b);
}

bool TopFacilities::canFlip(u64 v0, u64 v1, u64 ccd0, u64 ccd1) const
{
    return LatticeFlips(state).canFlip(v0, v1, ccd0, ccd1);
}

int TopFacilities::flipExtremeCaps(bool bFinal)
{
    return LatticeFlips(state).flipExtremeCaps(bFinal);
}

void TopFacilities::flipCreases()
{
    CreaseFlips(state.pCMesh).run(MIN_CREASE_ANGLE);
}

void TopFacilities::getAngles(double minAngle, std::vector<std::pair<double, CEdge*>>& vAngle) const
{
    CreaseFlips(state.pCMesh).getAngles(minAngle, vAngle);
}

} // namespace TARN_ZEF

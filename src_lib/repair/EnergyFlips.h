#ifndef ZEF_ENERGYFLIPS_H
#define ZEF_ENERGYFLIPS_H

#include <vector>

namespace TARN_ZEF
{
class CEdge;
class CMesh;

// Greedy flips, the largest gain in energy first.
class EnergyFlips
{
public:
    explicit EnergyFlips(CMesh* pCMesh_);

    // Of edges that bend by maxAngle degrees or more.
    void run(double maxAngle);
    // Appends the edges of degree 2 that bend by maxAngle degrees or more, in map order.
    void getEdges(double maxAngle, std::vector<CEdge*>& vOptimizable) const;

private:
    CMesh* pCMesh;
};

} // namespace TARN_ZEF

#endif

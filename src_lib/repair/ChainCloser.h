#ifndef ZEF_CHAINCLOSER_H
#define ZEF_CHAINCLOSER_H

#include "cmesh/CEdge.h"

#include <cstddef>
#include <set>
#include <vector>

namespace TARN_ZEF
{
class Chain;
class CMesh;
class CTriangle;

// Closes chains of edges of degree 3 and kills what they cut out.
class ChainCloser
{
public:
    using EdgeSet = std::set<CEdge*, ByCreationCE>;

    explicit ChainCloser(CMesh* pCMesh_);

    void run();
    // Finds the edge that joins the ends of an open chain, or two edges over a corner off the chain with the
    // least sum of degrees; appends them. A closed chain gives true and no edge. False if there are none, or
    // if an edge of the chain has degree 0 or 2.
    [[nodiscard]] bool tryClose(const Chain* pChain, std::vector<CEdge*>& vNewCE) const;
    // Kills the first part that the chain and the new edges cut off, if it is small against the chain; says
    // whether it did.
    bool tryKillT(const Chain* pChain, const std::vector<CEdge*>& vNewCE);
    // All triangles that pStartT reaches without crossing an edge of sChainCE, breadth first, in place of the
    // content of vUsedT. False, and only a part of them, if these are more than maxNumT.
    [[nodiscard]] static bool bfs(CTriangle* pStartT, const EdgeSet& sChainCE, std::size_t maxNumT,
                                  std::vector<CTriangle*>& vUsedT);

private:
    CMesh* pCMesh;
};

} // namespace TARN_ZEF

#endif

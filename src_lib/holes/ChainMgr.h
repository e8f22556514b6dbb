#ifndef ZEF_CHAINMGR_H
#define ZEF_CHAINMGR_H

#include "core/definitions.h"
#include "holes/VcdEdgeMap.h"

#include <memory>
#include <string>
#include <vector>

namespace TARN_ZEF
{
class CEdge;
class Chain;
class CMesh;

// Splits a set of mesh edges into chains.
//
// Corners where more than two of the edges meet are junctions: there the edges are held back, and chains
// stop. Chains that close in one pass are done with; the edges of the others come again in the next pass,
// where the junctions of the closed ones are gone. Two passes without a closed chain end it.
//
// Ownership:  owns the chains; the edges belong to the mesh. Lives for one pass of its user.
// Invariant:  an edge of the input stands in at most one chain that is not empty. An edge keeps the direction
//             that its chain gave it when the manager is gone; the next manager clears those of its input.
// Threads:    none.
// Cost:       O(n log n) for each pass; borders of clean holes take one.
class ChainMgr
{
public:
    // bTryClose  open chains are closed with one or two further edges of the mesh where possible
    ChainMgr(CMesh* pCMesh_, VcdEdgeMap mmVCD2CE_, bool bTryClose_);
    ~ChainMgr();
    ChainMgr(const ChainMgr&) = delete;
    ChainMgr& operator=(const ChainMgr&) = delete;

    // In order of making. A chain that could not be closed and gave its edges to a later pass stays, empty.
    [[nodiscard]] std::size_t getNumChains() const noexcept { return vChains.size(); }
    [[nodiscard]] Chain* getChain(std::size_t i) const;

    // Finds free edges of the mesh that close an open chain: the edge between its ends, or two edges over a
    // corner off the chain with the least sum of degrees. Appends them to vConnectorCE, and leaves the chain
    // as it is. A closed chain gives true and no edge.
    [[nodiscard]] bool tryCloseChain(const Chain* pChain, std::vector<CEdge*>& vConnectorCE) const;

    // Debug scene of all chains: closed and twisted ones red, other closed ones green, open ones orange. Turns
    // triangles, as Chain::hasMoebius(). Only in builds that allow debug scenes.
    void writeScene(const std::string& name);

private:
    void createChains();
    void takeJunctionsOut(std::vector<CEdge*>& vBackup);
    bool closeChain(Chain* pChain) const;
    std::size_t sortNewChains(std::size_t numOld, bool bLastPass, std::vector<CEdge*>& vBackup,
                              std::vector<CEdge*>& vUsedEdges);
    void refill(std::vector<CEdge*>& vBackup, std::vector<CEdge*>& vUsedEdges);

    CMesh* pCMesh;
    VcdEdgeMap mmVCD2CE; // edges not yet in a chain
    std::vector<std::unique_ptr<Chain>> vChains;
    bool bTryClose;
};

} // namespace TARN_ZEF

#endif

#ifndef ZEF_CHAIN_H
#define ZEF_CHAIN_H

#include "core/definitions.h"

#include <functional>
#include <iosfwd>
#include <vector>

namespace TARN_ZEF
{
class CEdge;
class CMesh;
class CTriangle;
class VcdEdgeMap;

// A run of mesh edges that join end to end: the border of a hole, or a piece of a non-manifold seam.
//
// Edges in a chain carry a direction, so that the target of each is the source of the next. The direction
// also marks them as taken: an edge without one is free.
//
// Ownership:  none; the edges belong to the mesh.
// Invariant:  leftVCD is the source of the first edge, rightVCD the target of the last; a chain whose edges
//             were cleared keeps its ends. No corner is visited twice, but for the ends of a closed chain.
// Threads:    none, but for the numbering of chains, which is atomic.
// Cost:       linear in the number of edges, unless said otherwise.
class Chain
{
public:
    // Takes from the map all edges that belong to one chain, starting with the map's first edge. An empty
    // map is fatal.
    Chain(CMesh* pCMesh_, VcdEdgeMap& mmVCD2CE);
    Chain(const Chain&) = delete;
    Chain& operator=(const Chain&) = delete;

    [[nodiscard]] u64 getId() const noexcept { return id; }
    [[nodiscard]] bool isClosed() const noexcept { return leftVCD == rightVCD; }
    [[nodiscard]] std::size_t size() const noexcept { return vCE.size(); }
    [[nodiscard]] const std::vector<CEdge*>& getEdges() const noexcept { return vCE; } // in order
    void getEdges(std::vector<CEdge*>& vOut) const;                                    // appends, in order
    // Appends the edge between the ends of an open chain if it is free, else the two free edges over another
    // corner with the least sum of degrees, the first such pair. False if there are none.
    bool findConnectors(const CMesh& mesh, const std::function<bool(const CEdge*)>& isFree,
                        std::vector<CEdge*>& vConnectorCE) const;
    void getEnds(u64& endVCD0, u64& endVCD1) const noexcept;
    void getVCDs(std::vector<u64>& vVCD) const; // adds the corners; the result is ascending, each once

    // Joins the edges on at the ends, as far as they fit.
    void addEdges(const std::vector<CEdge*>& vNewCE);
    // Grows to the left and then to the right while the map has an edge at the end; more than one there is
    // fatal. Edges taken leave the map.
    void takeEdgesFromMap(VcdEdgeMap& mmVCD2CE);
    void clear() noexcept { vCE.clear(); } // the ends stay

    // Whether the chain has at most maxEdges edges and is no longer than the closed polygon through the
    // midpoint of each edge and the corners opposite to it. Longer chains are turned away at once.
    [[nodiscard]] bool isShorterThanRim(std::size_t maxEdges) const;

    // Turns the triangles at border edges of this closed chain (degree below 2) against it. vT gets them, in
    // order along the chain, each once, in place of its content.
    void getOriented(std::vector<CTriangle*>& vT);
    // Whether two of these triangles run the same way along a common edge: the surface twists like a Moebius
    // band. Turns triangles, as getOriented(), and uses their bVisited marks.
    [[nodiscard]] bool hasMoebius();
    // Undoes a twist that hasMoebius() found: lets the two ends of the first bad edge change place in the fan
    // on one side of it. Kills and creates triangles.
    void fixMoebius();

    void print() const;

private:
    void checkLinks() const;
    [[nodiscard]] bool isRunAgainst() const;

    u64 id;
    CMesh* pCMesh;
    std::vector<CEdge*> vCE; // in order
    u64 leftVCD;
    u64 rightVCD;
    std::vector<CEdge*> vMoebiusCE; // edges that hasMoebius() found
};

} // namespace TARN_ZEF

#endif

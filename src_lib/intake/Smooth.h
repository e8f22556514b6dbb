#ifndef ZEF_SMOOTH_H
#define ZEF_SMOOTH_H

#include "geometry/AngleLimit.h"
#include "intake/NodeLinks.h"
#include "intake/SNode.h"
#include "lattice/Calc.h"

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
// Makes a clean sheet of cells from a noisy and uneven cloud: one node per occupied cell, nodes for the gaps
// in the sheet, on demand nodes that a smoothing step moved, and the plane of the surface at each node.
//
// Ownership:  owns the points until they are reduced to nodes, then the nodes and their links.
// Invariant:  nodes stand sorted by (rcd, creation number) and are never removed. Links name nodes by their
//             place and are made anew whenever nodes were added.
// Threads:    one caller. Whatever does not depend on the order of the nodes runs on the pool, with the same
//             result for every number of threads.
// Cost:       sorts by cell and passes over the links, about a dozen a node. A node takes 88 bytes, its
//             links about 50.
class Smooth
{
public:
    // The points must lie in the lattice, at least three cells off its rim. They go as soon as run() has
    // made nodes of them.
    Smooth(std::vector<Point3> vPoints_, const Calc* pCalc_);
    Smooth(const Smooth&) = delete;
    Smooth& operator=(const Smooth&) = delete;

    // Once. Needs a named progress tree.
    void run(bool bSmooth);

    [[nodiscard]] const std::vector<SNode>& getNodes() const noexcept { return vNodes; }
    // Neighbours of a node, by their places.
    [[nodiscard]] std::span<const std::uint32_t> getLinks(std::size_t node) const noexcept
    {
        return links.get(node);
    }
    // Where the surface around a node runs by the centre of its cell: the mean of mid projected onto the
    // planes of the neighbours that were made of points; the node's own point if there is none. A gap filler
    // starts at the centre of its cell, up to 0.87 cells off the surface, and has a plane through that point.
    [[nodiscard]] Point3 seatOnSheet(std::size_t node, const Point3& mid) const;
    // Drops all nodes and links.
    void clear();

    // The smallest fitted area that is no accident, unless the call has a state of its own. The first cell size of
    // the process decides for all.
    [[nodiscard]] static double getMinArea(double firstCellSize);

private:
    // --- Smooth.cpp: the nodes -----------------------------------------------------------------------------
    void createNodes();
    // One node of the points of a cell, given by their places in the cloud.
    template <typename GetPlace>
    [[nodiscard]] SNode makeNode(std::size_t num, GetPlace getPlace, u64 rcd, std::size_t number) const;
    void completeNodes();
    void relinkNodes() { links.build(vNodes); }
    // New nodes in order of their creation number.
    void addNodes(std::vector<SNode> vNew);
    [[nodiscard]] std::vector<CCD> getOccupiedCells() const;

    // --- Smooth.cpp: the smoothing step --------------------------------------------------------------------
    void moveNodes();
    void rememberStartPoints();
    // Brings the nodes to the mean of their neighbours; the result are their moves.
    [[nodiscard]] std::vector<Vector3> averagePositions();
    // Whether the node leaves its cell, and where to.
    [[nodiscard]] bool findTarget(std::size_t node, const std::vector<Vector3>& vMoves, Point3& target) const;

    // --- SmoothNormals.cpp ---------------------------------------------------------------------------------
    void estimateNNV();
    // Fits a plane through the neighbours, weighed from the node's own point.
    bool estimateNNVatCentroid(SNode& node, std::span<const std::uint32_t> neighbours) const;
    [[nodiscard]] bool isGoodPlane(std::size_t node, const AngleLimit& limit) const;
    // Takes the mean of the trusted normals around.
    bool averageNNV(std::size_t node, const AngleLimit& limit, std::vector<Vector3>& vVecs);
    // Fits again, to all nodes within two cells.
    bool searchNNV(std::size_t node, std::vector<std::uint32_t>& vGathered);
    void markCreases(double minAngle);
    // Marks the good planes as trusted; the result are the other nodes, by area, the smallest first.
    [[nodiscard]] std::vector<std::uint32_t> sortOutUnreliable();

    std::vector<Point3> vPoints;
    const Calc* pCalc;
    double cellSize;
    bool bOwnMinArea; // not that of the process
    std::vector<SNode> vNodes;
    NodeLinks links;
    // By creation number: where each node was made. Empty without smoothing.
    std::vector<Point3> vStartPoints;
};

} // namespace TARN_ZEF

#endif

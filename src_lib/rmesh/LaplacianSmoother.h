#ifndef ZEF_LAPLACIANSMOOTHER_H
#define ZEF_LAPLACIANSMOOTHER_H

#include "Point3.h"
#include "core/definitions.h"

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace TARN_ZEF
{
class Progress;
class RMesh;

// Moves every vertex off the border to the mean of its neighbours, all vertices at once, some times over.
//
// A neighbour is the other end of any edge ever made, those of degree 0 included: a former neighbour goes on
// pulling, and a vertex without triangles moves along unseen.
//
// Ownership:  none; the mesh must outlive it. Made for one run.
// Threads:    the caller's; means are taken on the pool.
// Cost:       linear in the number of edges, for the lists and for each iteration.
class LaplacianSmoother
{
public:
    // With bReport, steps the tree of progress, which must be prepared.
    LaplacianSmoother(RMesh* pRMesh_, bool bReport_);
    LaplacianSmoother(const LaplacianSmoother&) = delete;
    LaplacianSmoother& operator=(const LaplacianSmoother&) = delete;

    // Border vertices and connectivity stay. A vertex whose goal is taken at its turn stays for that
    // iteration. Flat triangles are left to RMesh::killDegenerate().
    void run(int numIterations);

private:
    void markBorder();
    void listNeighbours();
    void iterate(int iteration);
    void rereadPlaces();
    [[nodiscard]] Point3 getMean(std::size_t source) const noexcept;
    [[nodiscard]] Progress* startStep(const std::string& tag, u64 todo) const;

    RMesh* pRMesh;
    bool bReport;
    std::vector<char> vIsBorder; // by vertex number
    // Neighbours of all vertices that move, by vertex and creation of the edge. Those of vSources[i] stand
    // from vFirst[i] to before vFirst[i + 1].
    std::vector<std::uint32_t> vNeighbours; // vertex numbers
    std::vector<std::size_t> vFirst;
    std::vector<Point3*> vSources; // by vertex
    std::vector<Point3> vPlaces;   // of all vertices, by number: the reads of the means stand close together
    std::vector<std::pair<Point3*, Point3>> vOldVtx2NewPnt; // of the iteration, by source
};

} // namespace TARN_ZEF

#endif

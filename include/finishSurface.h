// The last stage of a reconstruction: a sound surface of even triangles on the points.
#ifndef ZEF_FINISHSURFACE_H
#define ZEF_FINISHSURFACE_H

#include "Point3.h"
#include "zef_export.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace TARN_ZEF
{
class Mesh;

// What finishSurface() may do. Whatever is left out, the result is sound.
struct FinishOptions
{
    // Evens out the triangles: edges are turned, vertices move along the surface, thin triangles collapse.
    bool bEvenTriangles = true;
    // With a cloud: moves the vertices onto a local fit of the points of their own sheet.
    bool bFitToPoints = true;
    // With that fit: finds creases and corners of the object, and gives them edges and vertices.
    bool bKeepCreases = true;
    // Farthest way of a vertex in one fit, in cells. Above 0.
    double maxMove = 0.75;
    // Holes with a border of at most so many edges are closed; 0: none. What is a hole and no rim is told by the angles
    // around it, so that sheets and tubes stay open.
    std::size_t longestHole = 16;
    // Edge of the lattice cells that the mesh comes from, in units of the points. 0: as the mesh says.
    double cellSize = 0.0;
    // Ends with coordinates that are floats, so that a file that holds no more, such as the PLY of writeMesh_auto(),
    // holds a sound mesh as well. Left out where floats are coarser than a thousandth of a cell; such a PLY holds
    // doubles.
    bool bRoundToFloat = false;
};

// What had to be done.
struct FinishReport
{
    // --- Parting into sheets ---
    std::size_t numUnusableT = 0;  // triangles that went: a corner not finite, or two corners equal
    std::size_t numFlatT = 0;      // triangles that went: no area
    std::size_t numDuplicateT = 0; // triangles that went: on the corners of another one
    std::size_t numWrapT = 0;      // triangles that went: one side of thin wraps around open sheets
    std::size_t numFinT = 0;       // triangles that went: fins and doubled layers
    std::size_t numTurnedT = 0;    // triangles that were turned over
    std::size_t numCutSides = 0;   // sides of edges of three or more triangles that found no partner
    std::size_t numDoubledVtx = 0; // vertices made so that each fan has its own
    std::size_t numSplitEdges = 0; // edges that got a vertex in the middle
    std::size_t numDebrisT = 0;    // triangles that went: small pieces that were cut off a large one here
    // --- Borders ---
    std::size_t numFilledHoles = 0; // small holes that were closed
    std::size_t numNotches = 0;     // triangles added where a border has a notch
    std::size_t numTeeth = 0;       // triangles that went: single ones that stick out of a border
    // --- Thin triangles ---
    std::size_t numThinT = 0; // with an angle below 7 degrees, that were mended or went
    // --- Folds ---
    std::size_t numFolds = 0;         // pairs of triangles that intersected, and triangles without area
    std::size_t numFoldCollapses = 0; // edges that collapsed to remove them
    std::size_t numFoldT = 0;         // triangles that were cut out to remove them
    std::size_t numFilledCuts = 0;    // cuts that were closed again
    // --- Fit; 0.0 without one ---
    double fitRadius = 0.0; // of the local fits, in cells
    double noise = 0.0;     // what the points leave the fits by, usually; in cells
    // --- Creases ---
    std::size_t numCreaseEdges = 0;   // edges along creases when they were made
    std::size_t numCreaseCorners = 0; // vertices where three of them meet
};

// Turns a finished mesh into a sound one: edge-manifold, vertex-manifold, consistently oriented, without triangles
// that are flat, doubled or intersect. checkMesh() proves it: isSound(). That holds for every mesh; what had to go
// for it is in the report. Closed pieces face outward.
//
// mesh     read, never changed
// vCloud   the points that the mesh was made from; without, the surface stays where it is
// pReport  filled in if given
// Returns  a new mesh of the caller's, in units of the points; it can be without triangles
// Throws   ZefBadArgument if an option is out of its range, or not a number
// Threads  runs on the pool; the result is the same for every number of threads. Reports progress as "Finish"
[[nodiscard]] ZEF_API std::shared_ptr<Mesh> finishSurface(const Mesh& mesh,
                                                          const FinishOptions& options = FinishOptions(),
                                                          FinishReport* pReport = nullptr);
[[nodiscard]] ZEF_API std::shared_ptr<Mesh> finishSurface(const Mesh& mesh, const std::vector<Point3>& vCloud,
                                                          const FinishOptions& options = FinishOptions(),
                                                          FinishReport* pReport = nullptr);
// The same for a mesh that is not needed any more: if nobody else holds it, its memory is free before the most is
// needed, which is a third less then. It is gone, too, if the call is cancelled or fails. Null is a ZefBadArgument.
[[nodiscard]] ZEF_API std::shared_ptr<Mesh> finishSurface(std::shared_ptr<Mesh> pMesh,
                                                          const std::vector<Point3>& vCloud,
                                                          const FinishOptions& options = FinishOptions(),
                                                          FinishReport* pReport = nullptr);

} // namespace TARN_ZEF

#endif

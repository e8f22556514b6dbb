#ifndef ZEF_FINISH_PARTREPORT_H
#define ZEF_FINISH_PARTREPORT_H

#include <cstddef>

namespace TARN_ZEF
{
// What parting a mesh into sheets had to do.
struct PartReport
{
    std::size_t numUnusableT = 0; // triangles with coordinates that are not finite, or with two equal corners
    std::size_t numFlatT = 0;     // triangles without area
    std::size_t numDuplicateT = 0; // triangles on the corners of another one
    std::size_t numFinT = 0;       // triangles of fins and doubled layers that were dropped
    std::size_t numWrapT = 0;      // triangles of thin wraps that were dropped
    std::size_t numCutEdges = 0;   // sides of edges that found no partner
    std::size_t numDoubledVtx = 0; // vertices made so that each fan has its own
    std::size_t numSplitEdges = 0; // edges that got a vertex in the middle, to tell them from their twin
    std::size_t numTurnedT = 0;    // triangles that were turned over
};

} // namespace TARN_ZEF

#endif

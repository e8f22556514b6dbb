#ifndef ZEF_COLLAPSEPENALTY_H
#define ZEF_COLLAPSEPENALTY_H

#include "core/definitions.h"
#include "rmesh/CollapseFans.h"
#include "rmesh/CollapseLimits.h"

namespace TARN_ZEF
{
class Point3;
class REdge;
class RMesh;

// What it costs to collapse an edge of a refined mesh into one of its ends.
//
// Ownership:  none; the mesh must outlive it.
// Threads:    any number, each with fans of its own, while the mesh does not change.
// Cost:       a walk around the ends, unless the fans have them.
class CollapsePenalty
{
public:
    CollapsePenalty(const RMesh& mesh_, const CollapseLimits& limits_) noexcept;

    // Square root of the edge's length in cells, plus 100 times the mean turn in radians of the triangles
    // that stay; NaN if none could be measured, DBL_MAX if the collapse is forbidden. iSrc is the end that
    // vanishes.
    [[nodiscard]] double get(const REdge* pRE, int iSrc, CollapseFans& fans) const;
    // Its two parts. The penalty but for what stands at the other end: it stays good as long as the triangles at
    // the vanishing one do.
    [[nodiscard]] double getTurnPenalty(const REdge* pRE, int iSrc, CollapseFans& fans) const;
    // Whether the rings of both ends share an edge: it would get two triangles on the same corners. If the topology
    // is to be kept, also whether they share a vertex that is no corner of a vanishing triangle. Such a collapse
    // is forbidden in both directions.
    [[nodiscard]] bool doRingsMeet(const REdge* pRE, CollapseFans& fans) const;

private:
    CollapseFan& getFan(const REdge* pRE, int i, CollapseFans& fans) const; // of end i of the edge
    void gatherFan(const Point3* pVtx, CollapseFan& fan) const;

    const RMesh& mesh;
    CollapseLimits limits;
};

} // namespace TARN_ZEF

#endif

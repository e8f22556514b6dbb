#ifndef ZEF_COLLAPSELIMITS_H
#define ZEF_COLLAPSELIMITS_H

#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
class Point3;
class REdge;

// What a reduction allows.
struct CollapseLimits
{
    double maxSqLen;       // of the collapsed edge, in squared units of the points
    double maxDevAngleRad; // by which a triangle may turn, in radians
    // Whether a collapse also needs that the common neighbours of both ends are exactly the corners of their
    // common triangles. Else a tunnel of three edges closes, and the surface touches itself there.
    bool bKeepTopology;
};

// What the evaluation of one collapse needs for its time; kept to spare allocations.
struct CollapseScratch
{
    std::vector<const REdge*> vSrcRing;     // opposite the vanishing vertex, of the triangles that stay
    std::vector<const Point3*> vSrcRingVtx; // their ends, with repetitions
    std::vector<const Point3*> vCommon;     // third corners of the triangles that vanish
    std::uint64_t ringMask = 0;             // a bit for each of vSrcRingVtx, shared by some
};

} // namespace TARN_ZEF

#endif

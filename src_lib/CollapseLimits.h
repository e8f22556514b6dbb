#ifndef ZEF_COLLAPSELIMITS_H
#define ZEF_COLLAPSELIMITS_H

namespace TARN_ZEF
{
// What a reduction allows.
struct CollapseLimits
{
    double maxSqLen;       // of the collapsed edge, in squared units of the points
    double maxDevAngleRad; // by which a triangle may turn, in radians
    // Whether a collapse also needs that the common neighbours of both ends are exactly the corners of their
    // common triangles. Else a tunnel of three edges closes, and the surface touches itself there.
    bool bKeepTopology;
};

} // namespace TARN_ZEF

#endif

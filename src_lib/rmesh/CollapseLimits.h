#ifndef ZEF_COLLAPSELIMITS_H
#define ZEF_COLLAPSELIMITS_H

#include <cmath>

namespace TARN_ZEF
{
// What a reduction allows.
struct CollapseLimits
{
    CollapseLimits(double maxSqLen_, double maxDevAngleRad_, bool bKeepTopology_)
        : maxSqLen(maxSqLen_)
        , maxDevAngleRad(maxDevAngleRad_)
        , bKeepTopology(bKeepTopology_)
        , tooFarCosine(maxDevAngleRad_ < 3.14 ? std::cos(maxDevAngleRad_) - 1e-9 : -2.0)
    {
    }

    double maxSqLen;       // of the collapsed edge, in squared units of the points
    double maxDevAngleRad; // by which a triangle may turn, in radians
    // Whether a collapse also needs that the common neighbours of both ends are exactly the corners of their
    // common triangles. Else a tunnel of three edges closes, and the surface touches itself there.
    bool bKeepTopology;
    double tooFarCosine; // a turn with a smaller one surely is above the largest: no need to take its angle
};

} // namespace TARN_ZEF

#endif

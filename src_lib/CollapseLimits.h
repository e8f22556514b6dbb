#ifndef ZEF_COLLAPSELIMITS_H
#define ZEF_COLLAPSELIMITS_H

#include <cmath>
#include <cstdint>
#include <vector>

namespace TARN_ZEF
{
class Point3;
class REdge;
class RTriangle;

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

// What the evaluation of a collapse needs for its time; kept to spare allocations.
struct CollapseScratch
{
    // The triangles at one end that stay.
    struct Fan
    {
        std::vector<const REdge*> vRing;     // opposite the end
        std::vector<const Point3*> vRingVtx; // two for each of vRing: its ends
        std::uint64_t ringMask = 0;          // a bit for each of vRingVtx, shared by some
        bool bComplete = false;              // else the lists hold a part or those of another edge
    };
    void forgetFans() noexcept { aFan[0].bComplete = aFan[1].bComplete = false; }

    Fan aFan[2];
    std::vector<const Point3*> vCommon;   // third corners of the triangles that vanish
    std::vector<const REdge*> vIncRE;     // of the vertex in hand
    std::vector<const Point3*> vFetchVtx; // whose fans are fetched ahead
    std::vector<const RTriangle*> vFetchT;
};

} // namespace TARN_ZEF

#endif

#ifndef ZEF_FACINGBODIES_H
#define ZEF_FACINGBODIES_H

#include "Point3.h"

#include <vector>

namespace TARN_ZEF
{
// The page of the room "sheets": points of closed bodies come in, their surface goes out, told by the way that it faces at
// each point (PointFacing). So walls and gaps may be as thin as two and a half spacings of random points, where cells of
// one size join both sides. FacingField says how far it is to the surface, BodySurface follows it.
//
// Ownership:  copies the points, which must be finite.
// Threads:    one caller; runs on the pool. The result is the same for every number of threads, and for all lengths doubled.
class FacingBodies
{
public:
    // spacing: the detected one
    FacingBodies(const std::vector<Point3>& vPoints_, double spacing_);

    // False if no closed surface passes near the points, as for an open scan; nothing is there then.
    [[nodiscard]] bool run();

    [[nodiscard]] const std::vector<Point3>& getVertices() const { return vVertices; }
    // Three consecutive entries are one triangle; manifold, closed and facing outward.
    [[nodiscard]] const std::vector<int>& getCorners() const { return vCorners; }

private:
    [[nodiscard]] double measureSpacing() const;

    std::vector<Point3> vPoints; // by place, so that the order of the cloud does not matter
    double detected;
    std::vector<Point3> vVertices;
    std::vector<int> vCorners;
};

} // namespace TARN_ZEF

#endif

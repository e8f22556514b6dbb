#ifndef ZEF_TOOLS_CAMERA_H
#define ZEF_TOOLS_CAMERA_H

#include "Vec3f.h"
#include "ViewOptions.h"

#include <vector>

namespace TARN_TOOL
{
// A parallel projection onto a picture.
//
// Invariant:  right, up and towardsViewer are unit vectors at right angles, right-handed in this order.
class Camera
{
public:
    // Chooses where to look from, unless the options tell.
    //
    // extent      of the box of what is drawn
    // meanNormal  sum of the area vectors divided by the area: near length 1 for an open sheet, 0 for a
    //             closed surface or a cloud
    Camera(const ViewOptions& options_, const Vec3f& extent, const Vec3f& meanNormal);

    // Scales so that all of vPoints shows in a picture of this size at zoom 1.
    void fit(const std::vector<Vec3f>& vPoints, int width, int height);

    // x to the right and y down, in pixels; z is the depth behind the middle, in pixels too.
    [[nodiscard]] Vec3f project(const Vec3f& p) const;
    // A direction with x to the right, y up, z towards the viewer.
    [[nodiscard]] Vec3f turn(const Vec3f& v) const;

private:
    ViewOptions options;
    Vec3f right;
    Vec3f up;
    Vec3f towardsViewer;
    float scale = 1.0f;   // pixels for each unit
    float offsetX = 0.0f; // of the picture's origin, in pixels
    float offsetY = 0.0f;
};

} // namespace TARN_TOOL

#endif

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
    // vPoints     what is drawn; the middle of its box is the origin
    // meanNormal  sum of the area vectors divided by the area: near length 1 for an open sheet, 0 for a
    //             closed surface or a cloud
    Camera(const ViewOptions& options_, const std::vector<Vec3f>& vPoints, const Vec3f& meanNormal);

    // Scales so that all of vPoints shows in a picture of this size at zoom 1, however it is turned if turns are
    // wanted.
    void fit(const std::vector<Vec3f>& vPoints, int width, int height);

    // The same camera after a walk around the origin, about the axis that points up.
    [[nodiscard]] Camera turned(float degrees) const;

    // x to the right and y down, in pixels; z is the depth behind the middle, in pixels too.
    [[nodiscard]] Vec3f project(const Vec3f& p) const;
    // A direction with x to the right, y up, z towards the viewer.
    [[nodiscard]] Vec3f turn(const Vec3f& v) const;

    [[nodiscard]] const Vec3f& getRight() const { return right; }
    [[nodiscard]] const Vec3f& getUp() const { return up; }
    [[nodiscard]] const Vec3f& getAxis() const { return axis; } // points up in the scene
    [[nodiscard]] float getScale() const { return scale; }

private:
    // What the picture shows of points, in its directions, before it is scaled.
    struct Window
    {
        float minX, minY, maxX, maxY;
    };
    [[nodiscard]] Window windowOf(const std::vector<Vec3f>& vPoints) const;
    [[nodiscard]] Window turningWindowOf(const std::vector<Vec3f>& vPoints) const;

    ViewOptions options;
    Vec3f axis; // points up in the scene
    Vec3f right;
    Vec3f up;
    Vec3f towardsViewer;
    float scale = 1.0f;   // pixels for each unit
    float offsetX = 0.0f; // of the picture's origin, in pixels
    float offsetY = 0.0f;
};

} // namespace TARN_TOOL

#endif

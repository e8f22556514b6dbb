#ifndef ZEF_TOOLS_PNGRENDERER_H
#define ZEF_TOOLS_PNGRENDERER_H

#include "Camera.h"
#include "Image.h"
#include "Point3.h"

#include <array>
#include <optional>
#include <vector>

namespace TARN_TOOL
{
// Draws meshes and clouds with a plain depth buffer, without a display. Front sides of triangles are blue,
// back sides orange. What stands behind its surroundings gets darker, by unsharp masking of the depth
// (Luft, Colditz, Deussen: Image enhancement by unsharp masking the depth buffer, 2006; only the darkening
// half of it, so that no halo surrounds the shape).
//
// Invariant:  the first picture fixes centre and camera; later pictures show the same part of space.
// Cost:       linear in triangles and pixels; memory for one float and three bytes a sample.
class PngRenderer
{
public:
    explicit PngRenderer(const ViewOptions& options_);

    // Three consecutive entries of vCorners are one triangle. There must be one.
    // With vColors, one for each vertex, both sides of the triangles take these colors.
    [[nodiscard]] Image drawMesh(const std::vector<TARN_ZEF::Point3*>& vVertices,
                                 const std::vector<int>& vCorners, const std::vector<Colour>& vColors = {});
    // Each point is a small ball. There must be a point, and only finite ones.
    [[nodiscard]] Image drawCloud(const std::vector<TARN_ZEF::Point3>& vPoints);

private:
    struct Corner // of a triangle, as the rasteriser takes it
    {
        Vec3f pixel;  // Camera::project
        Vec3f normal; // Camera::turn
        Colour color; // of the vertex, if there are colors
    };

    [[nodiscard]] Vec3f localise(const TARN_ZEF::Point3& p) const;
    // Fixes centre and scale, if they are still open, from all points that getPoint(0 .. num - 1) hands out,
    // and returns them in these terms.
    template <typename F>
    [[nodiscard]] std::vector<Vec3f> takeIn(std::size_t num, F getPoint);
    void aim(const std::vector<Vec3f>& v, const Vec3f& meanNormal);
    void startPicture();
    void rasterise(const Corner (&corners)[3]);
    [[nodiscard]] Colour colorAt(const Corner (&corners)[3], const std::array<float, 3>& weights,
                                 bool bFront) const;
    void shadeRow(const Corner (&corners)[3], const float (&heights)[3], double area, int y, int minX,
                  int maxX);
    void splat(const Vec3f& pixel, float radius, float fog);
    void darkenHollows();

    ViewOptions options;
    std::optional<TARN_ZEF::Point3> centre;
    double toUnit = 1.0; // scales the longest edge of the box to 1, so that floats serve any unit of length
    std::optional<Camera> camera;
    Image samples;             // four for each pixel of the picture
    bool bPainted = false;     // whether corners have colors of their own
    std::vector<float> vDepth; // of each sample; FAR_AWAY where nothing is drawn
};

} // namespace TARN_TOOL

#endif

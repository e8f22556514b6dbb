#ifndef ZEF_TOOLS_PNGRENDERER_H
#define ZEF_TOOLS_PNGRENDERER_H

#include "Camera.h"
#include "Image.h"
#include "LocalFrame.h"
#include "MeshDrawing.h"

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

    // Colors are those of both sides. Marks stand out where nothing lies before them.
    //
    // turn  number of the picture among those that lead once around, if these are wanted
    [[nodiscard]] Image drawMesh(const MeshDrawing& mesh, int turn = 0);
    // Each point is a small ball. There must be a point, and only finite ones.
    [[nodiscard]] Image drawCloud(const std::vector<TARN_ZEF::Point3>& vPoints);

    // The length of the bar in the pictures drawn so far, in units of the points; 0.0 without one.
    [[nodiscard]] double getBarLength() const { return barLength; }

private:
    struct Corner // of a triangle, as the rasteriser takes it
    {
        Vec3f pixel;  // Camera::project
        Vec3f normal; // Camera::turn
        Colour color; // of the vertex, if there are colors
    };

    // In the coordinates of the frame, which it fixes if it is still open.
    [[nodiscard]] std::vector<Vec3f> takeIn(const std::vector<TARN_ZEF::Point3>& vPoints);
    void aim(const std::vector<Vec3f>& v, const Vec3f& meanNormal);
    void startPicture();
    void drawTriangles(const MeshDrawing& mesh, const std::vector<Vec3f>& v, const Camera& view);
    void drawMarks(const MeshDrawing& mesh, const std::vector<Vec3f>& v, const Camera& view);
    void drawLine(const Vec3f& from, const Vec3f& to, const Colour& color);
    [[nodiscard]] bool isSeen(int x, int y, float depth) const;
    void rasterise(const Corner (&corners)[3]);
    [[nodiscard]] Colour colorAt(const Corner (&corners)[3], const std::array<float, 3>& weights,
                                 bool bFront) const;
    void shadeRow(const Corner (&corners)[3], const float (&heights)[3], double area, int y, int minX,
                  int maxX);
    void splat(const Vec3f& pixel, float radius, float fog);
    void darkenHollows();
    // The picture of the samples, with what is written onto it.
    [[nodiscard]] Image finish(const std::optional<ColorLegend>& legend);

    [[nodiscard]] std::size_t sampleIndex(int x, int y) const
    {
        return static_cast<std::size_t>(y) * static_cast<std::size_t>(width) + static_cast<std::size_t>(x);
    }

    ViewOptions options;
    int width; // in samples, two for each pixel
    int height;
    std::optional<LocalFrame> frame;
    std::optional<Camera> camera; // of the first turn
    double barLength = 0.0;
    Image samples;             // four for each pixel of the picture
    bool bPainted = false;     // whether corners have colors of their own
    std::vector<float> vDepth; // of each sample; FAR_AWAY where nothing is drawn
};

} // namespace TARN_TOOL

#endif

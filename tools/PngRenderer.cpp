#include "PngRenderer.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "SurfaceNormals.h"
#include "annotations.h"

namespace TARN_TOOL
{
using TARN_ZEF::Point3;

namespace
{
constexpr float FAR_AWAY = std::numeric_limits<float>::max();

constexpr Colour FRONT = {0.60f, 0.71f, 0.82f};
constexpr Colour BACK = {0.90f, 0.56f, 0.30f};
constexpr Colour DOT = {0.10f, 0.33f, 0.52f};
constexpr Colour BORDER = {0.86f, 0.10f, 0.16f};
constexpr Colour NON_MANIFOLD = {0.62f, 0.05f, 0.78f};
constexpr Colour SKY_TOP = {0.98f, 0.985f, 0.99f};
constexpr Colour SKY_BOTTOM = {0.85f, 0.88f, 0.91f};

constexpr float WIRE_WIDTH = 1.1f; // samples
constexpr int MARK_RADIUS = 2;     // samples on each side of a line
constexpr float MARK_LIFT = 3.0f;  // samples by which a line may lie behind the surface
constexpr int HOLLOW_SHARE = 85;   // of the width: the samples over which the depth is averaged
constexpr float HOLLOW_STRENGTH = 1.1f;

Colour mix(const Colour& a, const Colour& b, float t)
{
    return {a[0] + t * (b[0] - a[0]), a[1] + t * (b[1] - a[1]), a[2] + t * (b[2] - a[2])};
}

// n in camera directions, turned to the viewer. A key light from the upper left, a weak one from the right.
Colour shade(const Colour& base, const Vec3f& n)
{
    static const Vec3f KEY = unit({-0.45f, 0.65f, 0.70f});
    static const Vec3f FILL = unit({0.80f, 0.05f, 0.45f});
    static const Vec3f HALF = unit(KEY + Vec3f{0.0f, 0.0f, 1.0f});
    const float diffuse = 0.34f + 0.68f * std::max(0.0f, dot(n, KEY)) + 0.20f * std::max(0.0f, dot(n, FILL));
    float gloss = std::max(0.0f, dot(n, HALF));
    for (int i = 0; i < 5; ++i)
        gloss *= gloss;
    gloss *= 0.16f;
    return {diffuse * base[0] + gloss, diffuse * base[1] + gloss, diffuse * base[2] + gloss};
}

// Running mean over num entries that lie stride apart, 2 * radius + 1 wide, clipped at the ends.
void boxBlur(float* pFirst, int num, std::size_t stride, int radius, std::vector<float>& vCopy)
{
    for (int i = 0; i < num; ++i)
        vCopy[i] = pFirst[i * stride];
    double sum = 0.0;
    int count = 0;
    for (int i = -radius; i < num; ++i)
    {
        if (i + radius < num)
        {
            sum += vCopy[i + radius];
            ++count;
        }
        if (i - radius - 1 >= 0)
        {
            sum -= vCopy[i - radius - 1];
            --count;
        }
        if (i >= 0)
            pFirst[i * stride] = static_cast<float>(sum / count);
    }
}

// Half the mean distance of neighbouring dots, from the share of the picture that they cover.
float dotRadius(const std::vector<Vec3f>& vPixels, int width, int height)
{
    constexpr int BLOCK = 12;
    const std::size_t numAcross = static_cast<std::size_t>(width) / BLOCK + 1;
    std::vector<char> vSeen(numAcross * (static_cast<std::size_t>(height) / BLOCK + 1), 0);
    std::size_t numInside = 0;
    for (const Vec3f& p : vPixels)
        if (p.x >= 0.0f && p.y >= 0.0f && p.x < width && p.y < height)
        {
            ++numInside;
            vSeen[static_cast<std::size_t>(p.y) / BLOCK * numAcross + static_cast<std::size_t>(p.x) / BLOCK] =
                1;
        }
    const auto covered = static_cast<float>(BLOCK * BLOCK * std::count(vSeen.begin(), vSeen.end(), 1));
    return std::clamp(0.75f * std::sqrt(covered / static_cast<float>(std::max<std::size_t>(numInside, 1))),
                      1.3f, 8.0f);
}
} // namespace

PngRenderer::PngRenderer(const ViewOptions& options_)
    : options(options_)
    , width(2 * options_.width)
    , height(2 * options_.height)
    , samples(width, height)
{
}

Image PngRenderer::drawMesh(const MeshDrawing& mesh, int turn)
{
    bPainted = !mesh.getColors().empty();
    const std::vector<Vec3f> v = takeIn(mesh.getPoints());
    if (!camera)
        aim(v, SurfaceNormals(v, mesh.getCorners()).getMean());
    startPicture();
    const Camera view =
        turn == 0 ? *camera
                  : camera->turned(360.0f * static_cast<float>(turn) / static_cast<float>(options.numTurns));
    drawTriangles(mesh, v, view);
    darkenHollows();
    if (options.bMarks)
        drawMarks(mesh, v, view);
    return finish(mesh.getLegend());
}

void PngRenderer::drawTriangles(const MeshDrawing& mesh, const std::vector<Vec3f>& v, const Camera& view)
{
    const std::vector<int>& vCorners = mesh.getCorners();
    const SurfaceNormals normals(v, vCorners);
    for (std::size_t i = 0; i < vCorners.size(); i += 3)
    {
        Corner corners[3];
        for (std::size_t k = 0; k < 3; ++k)
        {
            const int vertex = vCorners[i + k];
            corners[k] = {view.project(v[vertex]), view.turn(normals.getCornerNormal(i + k)),
                          bPainted ? mesh.getColors()[vertex] : FRONT};
        }
        rasterise(corners);
    }
}

// Edges of more than two triangles last: they are fewer, and worse.
void PngRenderer::drawMarks(const MeshDrawing& mesh, const std::vector<Vec3f>& v, const Camera& view)
{
    for (const bool bNonManifold : {false, true})
        for (const MarkedEdge& edge : mesh.getMarks())
            if (edge.bNonManifold == bNonManifold)
                drawLine(view.project(v[edge.from]), view.project(v[edge.to]),
                         bNonManifold ? NON_MANIFOLD : BORDER);
}

void PngRenderer::drawLine(const Vec3f& from, const Vec3f& to, const Colour& color)
{
    const Vec3f along = to - from;
    if (!std::isfinite(from.x + from.y + along.x + along.y)) // magnified beyond all numbers
        return;
    // The part from t0 to t1 lies in the picture (Liang, Barsky 1984).
    float t0 = 0.0f;
    float t1 = 1.0f;
    const auto clip = [&](float start, float step, float end)
    {
        if (step == 0.0f)
            return start >= 0.0f && start < end;
        const float atLow = -start / step;
        const float atHigh = (end - start) / step;
        t0 = std::max(t0, std::min(atLow, atHigh));
        t1 = std::min(t1, std::max(atLow, atHigh));
        return t0 <= t1;
    };
    if (!clip(from.x, along.x, width - 1.0f) || !clip(from.y, along.y, height - 1.0f))
        return;
    const float numSteps =
        std::max(1.0f, std::ceil((t1 - t0) * std::max(std::fabs(along.x), std::fabs(along.y))));
    for (float i = 0.0f; i <= numSteps; i += 1.0f)
    {
        const Vec3f p = from + (t0 + (t1 - t0) * i / numSteps) * along;
        const int x = static_cast<int>(p.x);
        const int y = static_cast<int>(p.y);
        if (isSeen(x, y, p.z))
            fillBox(samples, {x - MARK_RADIUS, y - MARK_RADIUS, 2 * MARK_RADIUS + 1, 2 * MARK_RADIUS + 1},
                    color);
    }
}

// Where the surface is steep, it may lie before its own edge by the width of a sample.
bool PngRenderer::isSeen(int x, int y, float depth) const
{
    for (int v = std::max(0, y - 1); v <= std::min(height - 1, y + 1); ++v)
        for (int u = std::max(0, x - 1); u <= std::min(width - 1, x + 1); ++u)
            if (vDepth[sampleIndex(u, v)] >= depth - MARK_LIFT)
                return true;
    return false;
}

Image PngRenderer::finish(const std::optional<ColorLegend>& legend)
{
    Image picture = samples.halved();
    if (options.bScaleBar)
        barLength = drawScaleBar(picture, 0.5 * camera->getScale() / frame->getSize());
    if (legend)
        drawLegend(picture, *legend);
    return picture;
}

Image PngRenderer::drawCloud(const std::vector<Point3>& vPoints)
{
    std::vector<Vec3f> v = takeIn(vPoints);
    aim(v, Vec3f());
    startPicture();
    float nearest = FAR_AWAY;
    float farthest = -FAR_AWAY;
    for (Vec3f& p : v)
    {
        p = camera->project(p);
        nearest = std::min(nearest, p.z);
        farthest = std::max(farthest, p.z);
    }
    const float radius = dotRadius(v, width, height);
    const float range = std::max(farthest - nearest, std::numeric_limits<float>::min());
    for (const Vec3f& p : v)
        splat(p, radius, (p.z - nearest) / range);
    return finish(std::nullopt);
}

std::vector<Vec3f> PngRenderer::takeIn(const std::vector<Point3>& vPoints)
{
    if (!frame)
        frame.emplace(vPoints);
    return frame->localise(vPoints);
}

void PngRenderer::aim(const std::vector<Vec3f>& v, const Vec3f& meanNormal)
{
    if (camera)
        return;
    camera.emplace(options, v, meanNormal);
    camera->fit(v, width, height);
}

void PngRenderer::startPicture()
{
    vDepth.assign(sampleIndex(0, height), FAR_AWAY);
    for (int y = 0; y < height; ++y)
    {
        const Colour colour = mix(SKY_TOP, SKY_BOTTOM, static_cast<float>(y) / height);
        for (int x = 0; x < width; ++x)
            samples.setPixel(x, y, colour);
    }
}

void PngRenderer::rasterise(const Corner (&corners)[3])
{
    const Vec3f& a = corners[0].pixel;
    const Vec3f& b = corners[1].pixel;
    const Vec3f& c = corners[2].pixel;
    const int minX =
        static_cast<int>(std::clamp(std::ceil(std::min({a.x, b.x, c.x}) - 0.5f), 0.0f, float(width)));
    const int maxX =
        static_cast<int>(std::clamp(std::ceil(std::max({a.x, b.x, c.x}) - 0.5f), 0.0f, float(width)));
    const int minY =
        static_cast<int>(std::clamp(std::ceil(std::min({a.y, b.y, c.y}) - 0.5f), 0.0f, float(height)));
    const int maxY =
        static_cast<int>(std::clamp(std::ceil(std::max({a.y, b.y, c.y}) - 0.5f), 0.0f, float(height)));
    const double area = (double(b.x) - a.x) * (double(c.y) - a.y) - (double(b.y) - a.y) * (double(c.x) - a.x);
    if (area == 0.0)
        return;
    float heights[3]; // of each corner above the opposite edge, in samples
    for (int k = 0; k < 3; ++k)
    {
        const Vec3f& p = corners[(k + 1) % 3].pixel;
        const Vec3f& q = corners[(k + 2) % 3].pixel;
        heights[k] = static_cast<float>(std::fabs(area)) / std::hypot(q.x - p.x, q.y - p.y);
    }
    for (int y = minY; y < maxY; ++y)
        shadeRow(corners, heights, area, y, minX, maxX);
}

Colour PngRenderer::colorAt(const Corner (&corners)[3], const std::array<float, 3>& weights,
                            bool bFront) const
{
    if (!bPainted)
        return bFront ? FRONT : BACK;
    Colour color{};
    for (std::size_t k = 0; k < 3; ++k)
        for (std::size_t channel = 0; channel < 3; ++channel)
            color[channel] += weights[k] * corners[k].color[channel];
    return color;
}

void PngRenderer::shadeRow(const Corner (&corners)[3], const float (&heights)[3], double area, int y,
                           int minX, int maxX)
{
    const Vec3f& a = corners[0].pixel;
    const Vec3f& b = corners[1].pixel;
    const Vec3f& c = corners[2].pixel;
    // Counter-clockwise from the front is clockwise, a negative area, where y points down.
    const bool bFront = area < 0.0;
    const double py = y + 0.5;
    for (int x = minX; x < maxX; ++x)
    {
        const double px = x + 0.5;
        const auto wa = static_cast<float>(((b.x - px) * (c.y - py) - (b.y - py) * (c.x - px)) / area);
        const auto wb = static_cast<float>(((c.x - px) * (a.y - py) - (c.y - py) * (a.x - px)) / area);
        const float wc = 1.0f - wa - wb;
        if (wa < 0.0f || wb < 0.0f || wc < 0.0f)
            continue;
        const float depth = wa * a.z + wb * b.z + wc * c.z;
        float& stored = vDepth[sampleIndex(x, y)];
        if (depth >= stored)
            continue;
        stored = depth;
        const Vec3f n = unit(wa * corners[0].normal + wb * corners[1].normal + wc * corners[2].normal);
        samples.setPixel(x, y, shade(colorAt(corners, {wa, wb, wc}, bFront), (bFront ? 1.0f : -1.0f) * n));
        if (options.bWire && std::min({wa * heights[0], wb * heights[1], wc * heights[2]}) < WIRE_WIDTH)
            samples.darken(x, y, 0.5f);
    }
}

void PngRenderer::splat(const Vec3f& pixel, float radius, float fog)
{
    if (!(pixel.x > -radius && pixel.y > -radius && pixel.x < width + radius && pixel.y < height + radius))
        return;
    const Colour base = mix(DOT, SKY_BOTTOM, 0.6f * fog);
    const int minX = std::max(0, static_cast<int>(pixel.x - radius));
    const int maxX = std::min(width - 1, static_cast<int>(pixel.x + radius));
    const int minY = std::max(0, static_cast<int>(pixel.y - radius));
    const int maxY = std::min(height - 1, static_cast<int>(pixel.y + radius));
    for (int y = minY; y <= maxY; ++y)
        for (int x = minX; x <= maxX; ++x)
        {
            const float dx = (static_cast<float>(x) + 0.5f - pixel.x) / radius;
            const float dy = (static_cast<float>(y) + 0.5f - pixel.y) / radius;
            const float rest = 1.0f - dx * dx - dy * dy;
            if (rest < 0.0f)
                continue;
            const float nz = std::sqrt(rest);
            float& stored = vDepth[sampleIndex(x, y)];
            if (pixel.z - radius * nz >= stored)
                continue;
            stored = pixel.z - radius * nz;
            samples.setPixel(x, y, shade(base, {dx, -dy, nz}));
        }
}

void PngRenderer::darkenHollows()
{
    float farthest = -FAR_AWAY;
    for (const float depth : vDepth)
        if (depth != FAR_AWAY)
            farthest = std::max(farthest, depth);
    std::vector<float> vMean(vDepth);
    std::replace(vMean.begin(), vMean.end(), FAR_AWAY, farthest);
    std::vector<float> vCopy(static_cast<std::size_t>(std::max(width, height)));
    const int radius = std::max(1, width / HOLLOW_SHARE);
    for (int y = 0; y < height; ++y)
        boxBlur(&vMean[sampleIndex(0, y)], width, 1, radius, vCopy);
    for (int x = 0; x < width; ++x)
        boxBlur(&vMean[sampleIndex(x, 0)], height, static_cast<std::size_t>(width), radius, vCopy);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
        {
            const std::size_t i = sampleIndex(x, y);
            if (vDepth[i] == FAR_AWAY || vDepth[i] <= vMean[i])
                continue;
            const float hollow =
                HOLLOW_STRENGTH * (vDepth[i] - vMean[i]) / (4.0f * static_cast<float>(radius));
            samples.darken(x, y, 1.0f - std::min(0.45f, hollow));
        }
}

} // namespace TARN_TOOL

#include "PngRenderer.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>
#include <numeric>

namespace TARN_TOOL
{
using TARN_ZEF::Point3;

namespace
{
constexpr int WIDTH = 2 * 1200; // two samples a pixel in each direction
constexpr int HEIGHT = 2 * 900;
constexpr float FAR_AWAY = std::numeric_limits<float>::max();

constexpr Colour FRONT = {0.60f, 0.71f, 0.82f};
constexpr Colour BACK = {0.90f, 0.56f, 0.30f};
constexpr Colour DOT = {0.10f, 0.33f, 0.52f};
constexpr Colour SKY_TOP = {0.98f, 0.985f, 0.99f};
constexpr Colour SKY_BOTTOM = {0.85f, 0.88f, 0.91f};

// The normal at a corner averages the triangles around it that lean less than this against the corner's own,
// so that sharp edges look sharp.
const float COS_CREASE = std::cos(0.56f); // 32 degrees
constexpr float WIRE_WIDTH = 1.1f;        // samples
constexpr int HOLLOW_RADIUS = 28;         // samples over which the depth is averaged
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

std::size_t sampleIndex(int x, int y)
{
    return static_cast<std::size_t>(y) * WIDTH + static_cast<std::size_t>(x);
}

Vec3f areaVector(const std::vector<Vec3f>& v, const int* pCorners)
{
    return cross(v[pCorners[1]] - v[pCorners[0]], v[pCorners[2]] - v[pCorners[0]]);
}

// The triangles around each vertex: vTriangles[vBegin[i] .. vBegin[i + 1]) are those of vertex i.
struct Fans
{
    std::vector<std::size_t> vBegin;
    std::vector<int> vTriangles;

    Fans(std::size_t numVertices, const std::vector<int>& vCorners)
        : vBegin(numVertices + 1, 0)
        , vTriangles(vCorners.size())
    {
        for (const int corner : vCorners)
            ++vBegin[corner + 1];
        std::partial_sum(vBegin.begin(), vBegin.end(), vBegin.begin());
        std::vector<std::size_t> vNext(vBegin.begin(), vBegin.end() - 1);
        for (std::size_t i = 0; i < vCorners.size(); ++i)
            vTriangles[vNext[vCorners[i]]++] = static_cast<int>(i / 3);
    }
};

// Mean of the triangles around a vertex that lean less than the crease angle against triangle.
Vec3f cornerNormal(const Fans& fans, const std::vector<Vec3f>& vAreas, int vertex, std::size_t triangle)
{
    const Vec3f own = unit(vAreas[triangle]);
    Vec3f sum;
    for (std::size_t i = fans.vBegin[vertex]; i < fans.vBegin[vertex + 1]; ++i)
    {
        const Vec3f& other = vAreas[fans.vTriangles[i]];
        if (dot(own, other) >= COS_CREASE * length(other))
            sum += other;
    }
    return unit(sum);
}

// Running mean over num entries that lie stride apart, 2 * HOLLOW_RADIUS + 1 wide, clipped at the ends.
void boxBlur(float* pFirst, int num, std::size_t stride, std::vector<float>& vCopy)
{
    for (int i = 0; i < num; ++i)
        vCopy[i] = pFirst[i * stride];
    double sum = 0.0;
    int count = 0;
    for (int i = -HOLLOW_RADIUS; i < num; ++i)
    {
        if (i + HOLLOW_RADIUS < num)
        {
            sum += vCopy[i + HOLLOW_RADIUS];
            ++count;
        }
        if (i - HOLLOW_RADIUS - 1 >= 0)
        {
            sum -= vCopy[i - HOLLOW_RADIUS - 1];
            --count;
        }
        if (i >= 0)
            pFirst[i * stride] = static_cast<float>(sum / count);
    }
}

// Half the mean distance of neighbouring dots, from the share of the picture that they cover.
float dotRadius(const std::vector<Vec3f>& vPixels)
{
    constexpr int BLOCK = 12;
    constexpr int BLOCKS_X = WIDTH / BLOCK;
    std::vector<char> vSeen(static_cast<std::size_t>(BLOCKS_X) * (HEIGHT / BLOCK), 0);
    std::size_t numInside = 0;
    for (const Vec3f& p : vPixels)
        if (p.x >= 0.0f && p.y >= 0.0f && p.x < WIDTH && p.y < HEIGHT)
        {
            ++numInside;
            vSeen[static_cast<std::size_t>(p.y) / BLOCK * BLOCKS_X + static_cast<std::size_t>(p.x) / BLOCK] =
                1;
        }
    const auto covered = static_cast<float>(BLOCK * BLOCK * std::count(vSeen.begin(), vSeen.end(), 1));
    return std::clamp(0.75f * std::sqrt(covered / static_cast<float>(std::max<std::size_t>(numInside, 1))),
                      1.3f, 8.0f);
}
} // namespace

PngRenderer::PngRenderer(const ViewOptions& options_)
    : options(options_)
    , samples(WIDTH, HEIGHT)
{
}

Image PngRenderer::drawMesh(const std::vector<Point3*>& vVertices, const std::vector<int>& vCorners,
                            const std::vector<Colour>& vColors)
{
    bPainted = !vColors.empty();
    const std::vector<Vec3f> v = takeIn(vVertices.size(), [&](std::size_t i) { return *vVertices[i]; });
    std::vector<Vec3f> vAreas(vCorners.size() / 3);
    Vec3f sum;
    float area = 0.0f;
    for (std::size_t i = 0; i < vAreas.size(); ++i)
    {
        vAreas[i] = areaVector(v, &vCorners[3 * i]);
        sum += vAreas[i];
        area += length(vAreas[i]);
    }
    aim(v, area > 0.0f ? (1.0f / area) * sum : Vec3f());
    startPicture();
    const Fans fans(v.size(), vCorners);
    for (std::size_t i = 0; i < vAreas.size(); ++i)
    {
        Corner corners[3];
        for (std::size_t k = 0; k < 3; ++k)
        {
            const int vertex = vCorners[3 * i + k];
            corners[k] = {camera->project(v[vertex]), camera->turn(cornerNormal(fans, vAreas, vertex, i)),
                          bPainted ? vColors[vertex] : FRONT};
        }
        rasterise(corners);
    }
    darkenHollows();
    return samples.halved();
}

Image PngRenderer::drawCloud(const std::vector<Point3>& vPoints)
{
    std::vector<Vec3f> v = takeIn(vPoints.size(), [&](std::size_t i) { return vPoints[i]; });
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
    const float radius = dotRadius(v);
    const float range = std::max(farthest - nearest, std::numeric_limits<float>::min());
    for (const Vec3f& p : v)
        splat(p, radius, (p.z - nearest) / range);
    return samples.halved();
}

Vec3f PngRenderer::localise(const Point3& p) const
{
    const TARN_ZEF::Vector3 v = (p - *centre) * toUnit;
    return {static_cast<float>(v.x()), static_cast<float>(v.y()), static_cast<float>(v.z())};
}

template <typename F>
std::vector<Vec3f> PngRenderer::takeIn(std::size_t num, F getPoint)
{
    if (!centre)
    {
        Point3 low = getPoint(0);
        Point3 high = low;
        for (std::size_t i = 1; i < num; ++i)
        {
            const Point3& p = getPoint(i);
            low.set(std::min(low.x(), p.x()), std::min(low.y(), p.y()), std::min(low.z(), p.z()));
            high.set(std::max(high.x(), p.x()), std::max(high.y(), p.y()), std::max(high.z(), p.z()));
        }
        centre = low + (high - low) * 0.5;
        const TARN_ZEF::Vector3 extent = high - low;
        const double largest = std::max({extent.x(), extent.y(), extent.z()});
        toUnit = largest > 0.0 ? 1.0 / largest : 1.0;
    }
    std::vector<Vec3f> v(num);
    for (std::size_t i = 0; i < num; ++i)
        v[i] = localise(getPoint(i));
    return v;
}

void PngRenderer::aim(const std::vector<Vec3f>& v, const Vec3f& meanNormal)
{
    if (camera)
        return;
    // The centre is the middle of the box, so the largest magnitudes are half its edges.
    Vec3f extent;
    for (const Vec3f& p : v)
    {
        extent.x = std::max(extent.x, 2.0f * std::fabs(p.x));
        extent.y = std::max(extent.y, 2.0f * std::fabs(p.y));
        extent.z = std::max(extent.z, 2.0f * std::fabs(p.z));
    }
    camera.emplace(options, extent, meanNormal);
    camera->fit(v, WIDTH, HEIGHT);
}

void PngRenderer::startPicture()
{
    vDepth.assign(static_cast<std::size_t>(WIDTH) * HEIGHT, FAR_AWAY);
    for (int y = 0; y < HEIGHT; ++y)
    {
        const Colour colour = mix(SKY_TOP, SKY_BOTTOM, static_cast<float>(y) / HEIGHT);
        for (int x = 0; x < WIDTH; ++x)
            samples.setPixel(x, y, colour);
    }
}

void PngRenderer::rasterise(const Corner (&corners)[3])
{
    const Vec3f& a = corners[0].pixel;
    const Vec3f& b = corners[1].pixel;
    const Vec3f& c = corners[2].pixel;
    const int minX =
        static_cast<int>(std::clamp(std::ceil(std::min({a.x, b.x, c.x}) - 0.5f), 0.0f, float(WIDTH)));
    const int maxX =
        static_cast<int>(std::clamp(std::ceil(std::max({a.x, b.x, c.x}) - 0.5f), 0.0f, float(WIDTH)));
    const int minY =
        static_cast<int>(std::clamp(std::ceil(std::min({a.y, b.y, c.y}) - 0.5f), 0.0f, float(HEIGHT)));
    const int maxY =
        static_cast<int>(std::clamp(std::ceil(std::max({a.y, b.y, c.y}) - 0.5f), 0.0f, float(HEIGHT)));
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
    if (!(pixel.x > -radius && pixel.y > -radius && pixel.x < WIDTH + radius && pixel.y < HEIGHT + radius))
        return;
    const Colour base = mix(DOT, SKY_BOTTOM, 0.6f * fog);
    const int minX = std::max(0, static_cast<int>(pixel.x - radius));
    const int maxX = std::min(WIDTH - 1, static_cast<int>(pixel.x + radius));
    const int minY = std::max(0, static_cast<int>(pixel.y - radius));
    const int maxY = std::min(HEIGHT - 1, static_cast<int>(pixel.y + radius));
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
    std::vector<float> vCopy(std::max(WIDTH, HEIGHT));
    for (int y = 0; y < HEIGHT; ++y)
        boxBlur(&vMean[sampleIndex(0, y)], WIDTH, 1, vCopy);
    for (int x = 0; x < WIDTH; ++x)
        boxBlur(&vMean[sampleIndex(x, 0)], HEIGHT, WIDTH, vCopy);
    for (int y = 0; y < HEIGHT; ++y)
        for (int x = 0; x < WIDTH; ++x)
        {
            const std::size_t i = sampleIndex(x, y);
            if (vDepth[i] == FAR_AWAY || vDepth[i] <= vMean[i])
                continue;
            const float hollow = HOLLOW_STRENGTH * (vDepth[i] - vMean[i]) / (4.0f * HOLLOW_RADIUS);
            samples.darken(x, y, 1.0f - std::min(0.45f, hollow));
        }
}

} // namespace TARN_TOOL

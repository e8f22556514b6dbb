#include "ClosedShapes.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace TARN_ZEF
{
namespace
{
using Distance = ClosedShape::Distance;

constexpr double TURN = 2.0 * std::numbers::pi;

struct V3
{
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;
};
V3 operator-(const V3& a, const V3& b)
{
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
double dot(const V3& a, const V3& b)
{
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
double length(const V3& a)
{
    return std::sqrt(dot(a, a));
}
V3 toV3(const Point3& p)
{
    return {p.x(), p.y(), p.z()};
}

// --- Bricks -------------------------------------------------------------------------------------------------

Distance ball(V3 mid, double r)
{
    return [=](const Point3& p) { return length(toV3(p) - mid) - r; };
}
Distance ellipsoid(double a, double b, double c)
{
    return [=](const Point3& p) {
        return (length({p.x() / a, p.y() / b, p.z() / c}) - 1.0) * std::min({a, b, c});
    };
}
Distance box(V3 mid, V3 half)
{
    return [=](const Point3& p)
    {
        const double x = std::abs(p.x() - mid.x) - half.x;
        const double y = std::abs(p.y() - mid.y) - half.y;
        const double z = std::abs(p.z() - mid.z) - half.z;
        return length({std::max(x, 0.0), std::max(y, 0.0), std::max(z, 0.0)}) +
               std::min(0.0, std::max({x, y, z}));
    };
}
// Around z through (x, y).
Distance cylinder(double x, double y, double r, double halfHeight)
{
    return [=](const Point3& p)
    { return std::max(std::hypot(p.x() - x, p.y() - y) - r, std::abs(p.z()) - halfHeight); };
}
// Around z through mid.
Distance torus(V3 mid, double ring, double tube)
{
    return [=](const Point3& p)
    {
        const V3 q = toV3(p) - mid;
        return std::hypot(std::hypot(q.x, q.y) - ring, q.z) - tube;
    };
}
// The same with the axis along y.
Distance torusUpright(V3 mid, double ring, double tube)
{
    return [=](const Point3& p)
    {
        const V3 q = toV3(p) - mid;
        return std::hypot(std::hypot(q.x, q.z) - ring, q.y) - tube;
    };
}
double distanceToSegment(const V3& p, const V3& a, const V3& b)
{
    const V3 pa = p - a;
    const V3 ba = b - a;
    const double t = std::clamp(dot(pa, ba) / dot(ba, ba), 0.0, 1.0);
    return length(pa - V3{t * ba.x, t * ba.y, t * ba.z});
}
Distance capsule(V3 a, V3 b, double r)
{
    return [=](const Point3& p) { return distanceToSegment(toV3(p), a, b) - r; };
}
// A tube around a line of many corners.
Distance tube(std::vector<V3> vLine, double r)
{
    return [vLine = std::move(vLine), r](const Point3& p)
    {
        double least = 1e9;
        for (std::size_t i = 1; i < vLine.size(); ++i)
            least = std::min(least, distanceToSegment(toV3(p), vLine[i - 1], vLine[i]));
        return least - r;
    };
}
template <typename Curve>
std::vector<V3> sampleCurve(std::size_t num, Curve curve)
{
    std::vector<V3> vLine;
    for (std::size_t i = 0; i <= num; ++i)
        vLine.push_back(curve(static_cast<double>(i) / static_cast<double>(num)));
    return vLine;
}

using Polygon = std::vector<std::array<double, 2>>;

double distanceToPolygon(const Polygon& polygon, double x, double y)
{
    double least = 1e9;
    bool bInside = false;
    for (std::size_t i = 0; i < polygon.size(); ++i)
    {
        const auto& [ax, ay] = polygon[i];
        const auto& [bx, by] = polygon[(i + 1) % polygon.size()];
        least = std::min(least, distanceToSegment({x, y, 0.0}, {ax, ay, 0.0}, {bx, by, 0.0}));
        if ((ay > y) != (by > y) && x < (bx - ax) * (y - ay) / (by - ay) + ax)
            bInside = !bInside;
    }
    return bInside ? -least : least;
}
Distance extruded(Polygon polygon, double halfHeight)
{
    return [polygon = std::move(polygon), halfHeight](const Point3& p)
    { return std::max(distanceToPolygon(polygon, p.x(), p.y()), std::abs(p.z()) - halfHeight); };
}
// A line in the plane, thickened to both sides and extruded.
Distance sheet(std::vector<V3> vLine, double halfThickness, double halfHeight)
{
    const Distance line = tube(std::move(vLine), halfThickness);
    return [=](const Point3& p)
    { return std::max(line(Point3(p.x(), p.y(), 0.0)), std::abs(p.z()) - halfHeight); };
}
Polygon wheel(int numTeeth, double inner, double outer)
{
    Polygon polygon;
    for (int i = 0; i < 4 * numTeeth; ++i)
    {
        const double angle = TURN * i / (4.0 * numTeeth);
        const double r = i % 4 < 2 ? outer : inner;
        polygon.push_back({r * std::cos(angle), r * std::sin(angle)});
    }
    return polygon;
}
Polygon star(int numRays, double inner, double outer)
{
    Polygon polygon;
    for (int i = 0; i < 2 * numRays; ++i)
    {
        const double angle = TURN * i / (2.0 * numRays);
        const double r = i % 2 == 0 ? outer : inner;
        polygon.push_back({r * std::cos(angle), r * std::sin(angle)});
    }
    return polygon;
}

// --- Mortar -------------------------------------------------------------------------------------------------

Distance unite(std::vector<Distance> v)
{
    return [v = std::move(v)](const Point3& p)
    {
        double least = 1e9;
        for (const Distance& f : v)
            least = std::min(least, f(p));
        return least;
    };
}
// Fills the corners between the parts, about k wide.
Distance melted(std::vector<Distance> v, double k)
{
    return [v = std::move(v), k](const Point3& p)
    {
        double d = 1e9;
        for (const Distance& f : v)
        {
            const double e = f(p);
            const double h = std::max(k - std::abs(d - e), 0.0) / k;
            d = std::min(d, e) - h * h * k * 0.25;
        }
        return d;
    };
}
Distance without(const Distance& body, std::vector<Distance> vHoles)
{
    const Distance holes = unite(std::move(vHoles));
    return [=](const Point3& p) { return std::max(body(p), -holes(p)); };
}
Distance both(const Distance& a, const Distance& b)
{
    return [=](const Point3& p) { return std::max(a(p), b(p)); };
}
// The space within t of the surface.
Distance skin(const Distance& body, double t)
{
    return [=](const Point3& p) { return std::abs(body(p)) - t; };
}
// Off all axes.
Distance turned(const Distance& f)
{
    constexpr double A[3][3] = {
        {0.8138, -0.4698, 0.3420}, {0.5438, 0.8232, -0.1632}, {-0.2049, 0.3188, 0.9254}};
    return [=](const Point3& p)
    {
        const V3 q = toV3(p);
        double t[3];
        for (int i = 0; i < 3; ++i)
            t[i] = A[i][0] * q.x + A[i][1] * q.y + A[i][2] * q.z;
        return f(Point3(t[0], t[1], t[2]));
    };
}

// --- The set ------------------------------------------------------------------------------------------------

class Collector
{
public:
    void add(const char* name, int eulerNumber, int numParts, const Distance& f)
    {
        vShapes.push_back({name, eulerNumber, numParts, false, turned(f)});
    }
    void addNested(const char* name, int eulerNumber, int numParts, const Distance& f)
    {
        add(name, eulerNumber, numParts, f);
        vShapes.back().bNested = true;
    }
    std::vector<ClosedShape> vShapes;
};

Distance halfSpaceBelow(double z)
{
    return [=](const Point3& p) { return p.z() - z; };
}

void addSolids(Collector& set)
{
    set.add("sphere", 2, 1, ball({}, 1.0));
    set.add("ellipsoid", 2, 1, ellipsoid(1.4, 0.9, 0.5));
    set.add("lens", 2, 1, ellipsoid(1.0, 1.0, 0.12));
    set.add("needle", 2, 1, ellipsoid(1.6, 0.1, 0.1));
    set.add("cube", 2, 1, box({}, {0.7, 0.7, 0.7}));
    set.add("brick", 2, 1, box({}, {1.2, 0.6, 0.3}));
    set.add("beam", 2, 1, box({}, {1.6, 0.08, 0.08}));
    set.add("cylinder", 2, 1, cylinder(0, 0, 0.6, 0.9));
    set.add("disc", 2, 1, cylinder(0, 0, 1.2, 0.08));
    set.add("capsule", 2, 1, capsule({-0.8, 0, 0}, {0.8, 0, 0}, 0.5));
    set.add("wire", 2, 1, capsule({-1.6, 0, 0}, {1.6, 0, 0}, 0.05));
    set.add("cone", 2, 1,
            [](const Point3& p)
            {
                const double r = std::hypot(p.x(), p.y());
                return std::max((r * 1.5 - (0.8 - p.z())) / std::sqrt(3.25), -0.8 - p.z());
            });
    set.add("half ball", 2, 1, both(ball({}, 1.1), halfSpaceBelow(0.0)));
    set.add("ball with cut", 2, 1, without(ball({}, 1.0), {box({0.7, 0, 0}, {0.7, 2.0, 0.15})}));
}

void addSheets(Collector& set)
{
    set.add("board", 2, 1, box({}, {1.2, 0.9, 0.03}));
    set.add("card", 2, 1, box({}, {1.1, 0.8, 0.014}));
    set.add("tray", 2, 1, without(box({}, {1.1, 0.8, 0.12}), {box({0, 0, 0.1}, {1.05, 0.75, 0.17})}));
    set.add("thin tray", 2, 1, without(box({}, {1.1, 0.8, 0.12}), {box({0, 0, 0.1}, {1.075, 0.775, 0.193})}));
    set.add("bowl", 2, 1, both(skin(ball({}, 0.95), 0.035), halfSpaceBelow(0.2)));
    set.add("thin bowl", 2, 1, both(skin(ball({}, 0.95), 0.015), halfSpaceBelow(0.2)));
    set.add("pipe", 0, 1, without(cylinder(0, 0, 0.5, 0.9), {cylinder(0, 0, 0.42, 2.0)}));
    set.add("thin pipe", 0, 1, without(cylinder(0, 0, 0.5, 0.9), {cylinder(0, 0, 0.468, 2.0)}));
    const auto wave = sampleCurve(60,
                                  [](double t) {
                                      return V3{2.4 * t - 1.2, 0.25 * std::sin(1.5 * TURN * t), 0.0};
                                  });
    set.add("wave", 2, 1, sheet(wave, 0.025, 0.6));
    const auto spiral =
        sampleCurve(120,
                    [](double t)
                    {
                        const double r = 0.3 + 0.7 * t;
                        return V3{r * std::cos(2.2 * TURN * t), r * std::sin(2.2 * TURN * t), 0};
                    });
    set.add("scroll", 2, 1, sheet(spiral, 0.06, 0.4));
    set.add("clip", 2, 1, sheet({{-0.9, -0.1, 0}, {0.9, -0.1, 0}, {0.9, 0.1, 0}, {-0.5, 0.1, 0}}, 0.03, 0.5));
    set.add("two sheets", 4, 2,
            unite({box({0, 0, 0.05}, {0.9, 0.7, 0.03}), box({0, 0, -0.05}, {0.9, 0.7, 0.03})}));
}

void addRings(Collector& set)
{
    set.add("torus", 0, 1, torus({}, 0.9, 0.35));
    set.add("thin torus", 0, 1, torus({}, 1.2, 0.06));
    set.add("fat torus", 0, 1, torus({}, 0.7, 0.62));
    set.add("link", 0, 2, unite({torus({-0.4, 0, 0}, 0.7, 0.18), torusUpright({0.4, 0, 0}, 0.7, 0.18)}));
    set.add("chain", 0, 3,
            unite({torus({-0.9, 0, 0}, 0.6, 0.12), torusUpright({0, 0, 0}, 0.6, 0.12),
                   torus({0.9, 0, 0}, 0.6, 0.12)}));
    set.add("pretzel", -4, 1,
            melted({torus({-0.75, 0, 0}, 0.5, 0.14), torus({0.75, 0, 0}, 0.5, 0.14),
                    torus({0, 0.9, 0}, 0.5, 0.14)},
                   0.1));
    set.add("trefoil", 0, 1,
            tube(sampleCurve(180,
                             [](double t)
                             {
                                 const double a = TURN * t;
                                 return V3{0.4 * (std::sin(a) + 2.0 * std::sin(2 * a)),
                                           0.4 * (std::cos(a) - 2.0 * std::cos(2 * a)),
                                           -0.4 * std::sin(3 * a)};
                             }),
                 0.13));
    set.add("figure eight knot", 0, 1,
            tube(sampleCurve(220,
                             [](double t)
                             {
                                 const double a = TURN * t;
                                 const double r = 0.45 * (2.0 + std::cos(2 * a));
                                 return V3{r * std::cos(3 * a), r * std::sin(3 * a), 0.45 * std::sin(4 * a)};
                             }),
                 0.1));
    set.add("spring", 2, 1,
            tube(sampleCurve(
                     200,
                     [](double t) {
                         return V3{0.6 * std::cos(5 * TURN * t), 0.6 * std::sin(5 * TURN * t), 2.0 * t - 1.0};
                     }),
                 0.09));
    set.add("fine spring", 2, 1,
            tube(sampleCurve(
                     240,
                     [](double t) {
                         return V3{0.6 * std::cos(9 * TURN * t), 0.6 * std::sin(9 * TURN * t), 2.0 * t - 1.0};
                     }),
                 0.05));
}

Distance plateWithHoles(int num, double halfThickness)
{
    std::vector<Distance> vHoles;
    for (int i = 0; i < num; ++i)
        vHoles.push_back(cylinder(0.55 * (i % 4) - 0.82, 0.5 * (i / 4) - 0.3, 0.18, 1.0));
    return without(box({}, {1.2, 0.7, halfThickness}), vHoles);
}

void addParts(Collector& set)
{
    set.add("plate, 1 hole", 0, 1, plateWithHoles(1, 0.1));
    set.add("plate, 2 holes", -2, 1, plateWithHoles(2, 0.08));
    set.add("plate, 3 holes", -4, 1, plateWithHoles(3, 0.06));
    set.add("plate, 4 holes", -6, 1, plateWithHoles(4, 0.05));
    set.add("plate, 8 holes", -14, 1, plateWithHoles(8, 0.03));
    set.add("gear", 0, 1, without(extruded(wheel(14, 0.8, 1.0), 0.15), {cylinder(0, 0, 0.3, 1.0)}));
    set.add("fine gear", 0, 1, without(extruded(wheel(36, 0.92, 1.0), 0.1), {cylinder(0, 0, 0.5, 1.0)}));
    set.add("star", 2, 1, extruded(star(5, 0.45, 1.1), 0.2));
    set.add("spiky star", 2, 1, extruded(star(12, 0.5, 1.1), 0.08));
    set.add(
        "L profile", 2, 1,
        extruded({{-0.5, -0.5}, {0.5, -0.5}, {0.5, -0.42}, {-0.42, -0.42}, {-0.42, 0.5}, {-0.5, 0.5}}, 0.9));
    set.add("H profile", 2, 1,
            unite({box({-0.5, 0, 0}, {0.04, 0.5, 1.0}), box({0.5, 0, 0}, {0.04, 0.5, 1.0}),
                   box({}, {0.5, 0.04, 1.0})}));
    set.add("stairs", 2, 1,
            unite({box({-0.6, 0, -0.45}, {0.2, 0.5, 0.15}), box({-0.2, 0, -0.3}, {0.2, 0.5, 0.3}),
                   box({0.2, 0, -0.15}, {0.2, 0.5, 0.45}), box({0.6, 0, 0}, {0.2, 0.5, 0.6})}));
    set.add("cross", 2, 1,
            unite({box({}, {1.0, 0.2, 0.2}), box({}, {0.2, 1.0, 0.2}), box({}, {0.2, 0.2, 1.0})}));
    set.add("sponge", -8, 1,
            without(box({}, {0.8, 0.8, 0.8}),
                    {box({}, {2.0, 0.27, 0.27}), box({}, {0.27, 2.0, 0.27}), box({}, {0.27, 0.27, 2.0})}));
    set.add("nut", 0, 1, without(extruded(star(3, 0.8, 0.8), 0.35), {cylinder(0, 0, 0.4, 1.0)}));
    set.add("bolt", 2, 1,
            unite({cylinder(0, 0, 0.3, 1.1),
                   both(extruded(star(3, 0.6, 0.6), 1.3), box({0, 0, 1.1}, {1, 1, 0.2}))}));
    set.add("mug", 0, 1,
            without(unite({cylinder(0, 0, 0.6, 0.7), torusUpright({0.65, 0, 0}, 0.4, 0.08)}),
                    {both(cylinder(0, 0, 0.53, 2.0), box({0, 0, 0.7}, {1, 1, 1.33}))}));
    set.add("table", 2, 1,
            unite({box({0, 0, 0.5}, {1.0, 0.7, 0.04}), box({0.9, 0.6, 0}, {0.05, 0.05, 0.5}),
                   box({-0.9, 0.6, 0}, {0.05, 0.05, 0.5}), box({0.9, -0.6, 0}, {0.05, 0.05, 0.5}),
                   box({-0.9, -0.6, 0}, {0.05, 0.05, 0.5})}));
    set.add("comb", 2, 1,
            unite({box({0, 0.5, 0}, {1.0, 0.12, 0.06}), box({-0.9, 0, 0}, {0.05, 0.5, 0.06}),
                   box({-0.6, 0, 0}, {0.05, 0.5, 0.06}), box({-0.3, 0, 0}, {0.05, 0.5, 0.06}),
                   box({0, 0, 0}, {0.05, 0.5, 0.06}), box({0.3, 0, 0}, {0.05, 0.5, 0.06}),
                   box({0.6, 0, 0}, {0.05, 0.5, 0.06}), box({0.9, 0, 0}, {0.05, 0.5, 0.06})}));
    set.add(
        "dumbbell", 2, 1,
        unite({ball({-0.8, 0, 0}, 0.45), ball({0.8, 0, 0}, 0.45), capsule({-0.8, 0, 0}, {0.8, 0, 0}, 0.1)}));
}

void addHollow(Collector& set)
{
    set.addNested("hollow sphere", 4, 2, skin(ball({}, 0.85), 0.15));
    set.addNested("thin hollow sphere", 4, 2, skin(ball({}, 0.8), 0.018));
    set.addNested("hollow box", 4, 2, without(box({}, {0.6, 0.6, 0.6}), {box({}, {0.5, 0.5, 0.5})}));
    set.addNested("hollow torus", 0, 2, skin(torus({}, 0.8, 0.3), 0.04));
    set.addNested("nested spheres", 6, 3, unite({ball({}, 0.5), skin(ball({}, 0.85), 0.12)}));
    set.add("two balls", 4, 2, unite({ball({-0.62, 0, 0}, 0.6), ball({0.62, 0, 0}, 0.6)}));
}

void addFrames(Collector& set)
{
    const V3 aCorners[] = {{0.8, 0.8, 0.8}, {0.8, -0.8, -0.8}, {-0.8, 0.8, -0.8}, {-0.8, -0.8, 0.8}};
    std::vector<Distance> vTetra;
    for (int i = 0; i < 4; ++i)
        for (int k = 0; k < i; ++k)
            vTetra.push_back(capsule(aCorners[i], aCorners[k], 0.1));
    set.add("tetrahedron frame", -4, 1, unite(vTetra));
    std::vector<Distance> vCube;
    for (int i = 0; i < 8; ++i)
        for (int axis = 1; axis < 8; axis *= 2)
            if ((i & axis) == 0)
            {
                const auto corner = [](int c) {
                    return V3{(c & 1) * 1.4 - 0.7, (c >> 1 & 1) * 1.4 - 0.7, (c >> 2 & 1) * 1.4 - 0.7};
                };
                vCube.push_back(capsule(corner(i), corner(i | axis), 0.07));
            }
    set.add("cube frame", -8, 1, melted(vCube, 0.05));
    std::vector<Distance> vLadder = {capsule({-1.2, -0.3, 0}, {1.2, -0.3, 0}, 0.07),
                                     capsule({-1.2, 0.3, 0}, {1.2, 0.3, 0}, 0.07)};
    for (int i = 0; i < 5; ++i)
        vLadder.push_back(capsule({0.5 * i - 1.0, -0.3, 0}, {0.5 * i - 1.0, 0.3, 0}, 0.05));
    set.add("ladder", -6, 1, unite(vLadder));
}

void addAnimals(Collector& set)
{
    const auto limb = [](double x, double y) { return capsule({x, y, 0}, {x, y * 1.2, -0.7}, 0.1); };
    const Distance body = ellipsoid(0.7, 0.32, 0.32);
    set.add(
        "dog", 2, 1,
        melted({body, limb(0.45, 0.18), limb(0.45, -0.18), limb(-0.45, 0.18), limb(-0.45, -0.18),
                capsule({0.6, 0, 0.1}, {0.9, 0, 0.45}, 0.14), capsule({0.9, 0, 0.5}, {1.2, 0, 0.45}, 0.16),
                capsule({0.85, 0.12, 0.6}, {0.82, 0.16, 0.8}, 0.04),
                capsule({0.85, -0.12, 0.6}, {0.82, -0.16, 0.8}, 0.04),
                capsule({-0.65, 0, 0.1}, {-1.2, 0, 0.5}, 0.05)},
               0.1));
    set.add(
        "giraffe", 2, 1,
        melted({body, limb(0.45, 0.15), limb(0.45, -0.15), limb(-0.45, 0.15), limb(-0.45, -0.15),
                capsule({0.55, 0, 0.1}, {0.9, 0, 1.2}, 0.1), capsule({0.9, 0, 1.25}, {1.15, 0, 1.15}, 0.09)},
               0.08));
    std::vector<Distance> vOctopus = {ball({}, 0.45)};
    std::vector<Distance> vStarfish = {ball({}, 0.25)};
    std::vector<Distance> vUrchin = {ball({}, 0.6)};
    for (int i = 0; i < 8; ++i)
    {
        const double c = std::cos(TURN * i / 8.0);
        const double s = std::sin(TURN * i / 8.0);
        vOctopus.push_back(tube({{0, 0, 0}, {0.7 * c, 0.7 * s, -0.3}, {1.2 * c, 1.2 * s, -0.1}}, 0.07));
        if (i < 5)
            vStarfish.push_back(
                capsule({}, {1.1 * std::cos(TURN * i / 5.0), 1.1 * std::sin(TURN * i / 5.0), 0}, 0.12));
        for (int k = -1; k <= 1; ++k)
            vUrchin.push_back(
                capsule({}, {c * (k == 0 ? 1.1 : 0.8), s * (k == 0 ? 1.1 : 0.8), 0.7 * k}, 0.03));
    }
    set.add("octopus", 2, 1, melted(vOctopus, 0.08));
    set.add("starfish", 2, 1, melted(vStarfish, 0.1));
    set.add("urchin", 2, 1, melted(vUrchin, 0.03));
    set.add(
        "hand", 2, 1,
        melted({box({0, 0, 0}, {0.35, 0.4, 0.1}), capsule({0.3, -0.3, 0}, {0.9, -0.45, 0}, 0.06),
                capsule({0.3, -0.1, 0}, {1.05, -0.15, 0}, 0.06),
                capsule({0.3, 0.1, 0}, {1.05, 0.15, 0}, 0.06), capsule({0.3, 0.3, 0}, {0.9, 0.45, 0}, 0.06),
                capsule({0, 0.3, 0}, {0.4, 0.8, 0}, 0.09), capsule({0, 0, 0}, {-0.9, 0, 0}, 0.2)},
               0.04));
    set.add("hare", 2, 1,
            melted({ellipsoid(0.5, 0.4, 0.6), ball({0.3, 0, 0.7}, 0.28),
                    capsule({0.25, 0.12, 0.9}, {0.1, 0.2, 1.5}, 0.06),
                    capsule({0.25, -0.12, 0.9}, {0.1, -0.2, 1.5}, 0.06), ball({-0.5, 0, -0.2}, 0.16)},
                   0.1));
    set.add("fish", 2, 1,
            melted({ellipsoid(0.9, 0.18, 0.4), box({-1.0, 0, 0}, {0.2, 0.025, 0.35}),
                    box({0, 0, 0.45}, {0.3, 0.02, 0.12})},
                   0.05));
    set.add("man", 2, 1,
            melted({ellipsoid(0.28, 0.2, 0.5), ball({0, 0, 0.75}, 0.2),
                    capsule({0, 0, 0.4}, {0, 0, 0.7}, 0.09), capsule({0.2, 0, 0.35}, {0.75, 0, 0.1}, 0.08),
                    capsule({-0.2, 0, 0.35}, {-0.75, 0, 0.1}, 0.08),
                    capsule({0.15, 0, -0.4}, {0.25, 0, -1.2}, 0.1),
                    capsule({-0.15, 0, -0.4}, {-0.25, 0, -1.2}, 0.1)},
                   0.05));
    set.add("teapot", 0, 1,
            melted({ellipsoid(0.7, 0.7, 0.55), torusUpright({-0.75, 0, 0.05}, 0.3, 0.07),
                    capsule({0.5, 0, 0}, {1.1, 0, 0.4}, 0.09), ball({0, 0, 0.6}, 0.1)},
                   0.05));
    std::vector<Distance> vBlob = {ball({}, 0.6)};
    std::vector<Distance> vCloud = {ball({}, 0.6)};
    for (int i = 0; i < 9; ++i)
    {
        const double z = (i - 4) / 4.5;
        const double r = std::sqrt(1.0 - z * z);
        vBlob.push_back(
            ball({0.6 * r * std::cos(2.4 * i), 0.6 * r * std::sin(2.4 * i), 0.6 * z}, 0.2 + 0.03 * (i % 4)));
        vCloud.push_back(ball({0.75 * r * std::cos(2.4 * i), 0.75 * r * std::sin(2.4 * i), 0.75 * z}, 0.27));
    }
    set.add("blob", 2, 1, melted(vBlob, 0.2));
    set.add("cloud", 2, 1, unite(vCloud));
    set.add("two blobs that touch", 2, 1, melted({ball({-0.6, 0, 0}, 0.55), ball({0.6, 0, 0}, 0.55)}, 0.3));
}
} // namespace

std::vector<ClosedShape> makeClosedShapes()
{
    Collector set;
    addSolids(set);
    addSheets(set);
    addRings(set);
    addParts(set);
    addHollow(set);
    addFrames(set);
    addAnimals(set);
    return std::move(set.vShapes);
}

} // namespace TARN_ZEF

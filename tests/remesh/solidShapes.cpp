#include "remesh/solidShapes.h"

#include "geometry/tools.h"

#include <algorithm>
#include <cmath>
#include <random>
#include <tuple>

namespace ZEF_TESTS
{
using namespace TARN_ZEF;

namespace
{
constexpr double PI = 3.14159265358979323846;
using Polygon = std::vector<std::pair<double, double>>; // counter-clockwise

struct Builder
{
    SolidShape shape;

    void add(const Point3& a, const Point3& b, const Point3& c)
    {
        shape.vTriCorners.insert(shape.vTriCorners.end(), {a, b, c});
    }
    void addQuad(const Point3& a, const Point3& b, const Point3& c, const Point3& d)
    {
        add(a, b, c);
        add(a, c, d);
    }
    void crease(const Point3& a, const Point3& b) { shape.vCreases.emplace_back(a, b); }

    static Point3 at(const std::pair<double, double>& p, double z) { return {p.first, p.second, z}; }

    // Walls from z0 to z1 round a polygon; bSharp: its vertical edges are creases.
    void walls(const Polygon& polygon, double z0, double z1, bool bSharp, bool bInward)
    {
        for (std::size_t i = 0; i < polygon.size(); ++i)
        {
            const auto& p = polygon[i];
            const auto& q = polygon[(i + 1) % polygon.size()];
            if (bInward)
                addQuad(at(q, z0), at(p, z0), at(p, z1), at(q, z1));
            else
                addQuad(at(p, z0), at(q, z0), at(q, z1), at(p, z1));
            for (const double z : {z0, z1})
                if (shape.bExact)
                    crease(at(p, z), at(q, z));
            if (bSharp)
                crease(at(p, z0), at(p, z1));
        }
    }

    // A solid over a polygon that is star-shaped seen from the middle.
    void prism(const Polygon& polygon, double z0, double z1, bool bSharp,
               std::pair<double, double> middle = {0.0, 0.0})
    {
        walls(polygon, z0, z1, bSharp, false);
        for (std::size_t i = 0; i < polygon.size(); ++i)
        {
            const auto& p = polygon[i];
            const auto& q = polygon[(i + 1) % polygon.size()];
            add(at(middle, z1), at(p, z1), at(q, z1));
            add(at(middle, z0), at(q, z0), at(p, z0));
        }
    }

    // The same with a hole; both polygons have as many corners, at the same directions.
    void drilled(const Polygon& outer, const Polygon& inner, double z0, double z1)
    {
        walls(outer, z0, z1, false, false);
        walls(inner, z0, z1, false, true);
        for (std::size_t i = 0; i < outer.size(); ++i)
        {
            const std::size_t k = (i + 1) % outer.size();
            addQuad(at(inner[i], z1), at(outer[i], z1), at(outer[k], z1), at(inner[k], z1));
            addQuad(at(inner[k], z0), at(outer[k], z0), at(outer[i], z0), at(inner[i], z0));
        }
    }

    void box(double x, double y, double z, double dx, double dy, double dz)
    {
        prism({{x, y}, {x + dx, y}, {x + dx, y + dy}, {x, y + dy}}, z, z + dz, true,
              {x + 0.5 * dx, y + 0.5 * dy});
    }

    void turnInsideOut()
    {
        for (std::size_t i = 0; i < shape.vTriCorners.size(); i += 3)
            std::swap(shape.vTriCorners[i + 1], shape.vTriCorners[i + 2]);
    }
};

Polygon round(int num, double radius)
{
    Polygon polygon;
    for (int i = 0; i < num; ++i)
        polygon.emplace_back(radius * std::cos(2.0 * PI * i / num), radius * std::sin(2.0 * PI * i / num));
    return polygon;
}

// A square with the corners among num points, num a multiple of 8.
Polygon square(int num, double half)
{
    Polygon polygon = round(num, 1.0);
    for (auto& [x, y] : polygon)
    {
        const double scale = half / std::max(std::fabs(x), std::fabs(y));
        x *= scale;
        y *= scale;
    }
    return polygon;
}

Polygon gear(int numTeeth)
{
    Polygon polygon;
    for (int i = 0; i < 4 * numTeeth; ++i)
    {
        const double radius = i % 4 < 2 ? 1.0 : 0.8;
        polygon.emplace_back(radius * std::cos(PI * i / (2 * numTeeth)),
                             radius * std::sin(PI * i / (2 * numTeeth)));
    }
    return polygon;
}

Polygon chamfered(double cut)
{
    return {{cut - 0.5, -0.5}, {0.5 - cut, -0.5}, {0.5, cut - 0.5},  {0.5, 0.5 - cut},
            {0.5 - cut, 0.5},  {cut - 0.5, 0.5},  {-0.5, 0.5 - cut}, {-0.5, cut - 0.5}};
}

// A rotation about a general axis, another one for each number.
Point3 rotate(const Point3& p, int number)
{
    const double angle = 0.7 + 1.3 * number;
    const Vector3 axis = normalize(Vector3(1.0 + 0.3 * number, 2.0 - 0.2 * number, 0.5 + 0.1 * number));
    const Vector3 v = p - Point3();
    const Vector3 turned = v * std::cos(angle) + crossProduct(axis, v) * std::sin(angle) +
                           axis * ((axis * v) * (1.0 - std::cos(angle)));
    return Point3(0.3, -0.2, 0.9) + turned;
}

class Collection
{
public:
    template <typename F>
    SolidShape& add(const std::string& name, double length, F build)
    {
        Builder builder;
        builder.shape.name = name;
        builder.shape.length = length;
        build(builder);
        SolidShape& shape = vShapes.emplace_back(std::move(builder.shape));
        measure(shape);
        const int number = static_cast<int>(vShapes.size());
        for (Point3& p : shape.vTriCorners)
            p = rotate(p, number);
        for (auto& [a, b] : shape.vCreases)
        {
            a = rotate(a, number);
            b = rotate(b, number);
        }
        return shape;
    }

    std::vector<SolidShape> vShapes;

private:
    // The soup as it is built has no copies and faces outward: it knows its own measures.
    static void measure(SolidShape& shape)
    {
        shape.volume = computeVolume(shape.vTriCorners);
        shape.hullVolume = shape.volume;
        for (std::size_t i = 0; i < shape.vTriCorners.size(); i += 3)
            shape.area +=
                getAreaByCross(shape.vTriCorners[i], shape.vTriCorners[i + 1], shape.vTriCorners[i + 2]);
    }
};

void addPlainSolids(Collection& all)
{
    for (int i = 0; i < 10; ++i)
        all.add("tetrahedron " + std::to_string(i), 0.15,
                [](Builder& b)
                {
                    const Point3 p[] = {{0, 0, 0}, {1, 0, 0}, {0.4, 0.9, 0}, {0.5, 0.3, 0.8}};
                    for (const auto& [x, y, z] :
                         {std::tuple(0, 2, 1), std::tuple(0, 1, 3), std::tuple(1, 2, 3), std::tuple(2, 0, 3)})
                        b.add(p[x], p[y], p[z]);
                    for (int k = 0; k < 4; ++k)
                        for (int m = k + 1; m < 4; ++m)
                            b.crease(p[k], p[m]);
                });
    all.add("cube", 0.2, [](Builder& b) { b.box(0, 0, 0, 1, 1, 1); });
    for (const double part : {0.3, 0.5, 1.0, 2.0})
        all.add("wall of " + std::to_string(part) + " lengths", 0.1,
                [part](Builder& b) { b.box(0, 0, 0, 1, 0.8, 0.1 * part); });
    all.add("needle", 0.1, [](Builder& b) { b.box(0, 0, 0, 2, 0.05, 0.03); });
    for (const double cut : {0.02, 0.1, 0.25})
        all.add("chamfers of " + std::to_string(cut), 0.1,
                [cut](Builder& b) { b.prism(chamfered(cut), 0, 1, true); });
    for (const int num : {6, 12})
        all.add("gear of " + std::to_string(num), 0.1,
                [num](Builder& b) { b.prism(gear(num), 0, 0.4, true); });
    for (const int num : {3, 5, 8})
        all.add("cylinder of " + std::to_string(num), 0.15,
                [num](Builder& b) { b.prism(round(num, 0.5), 0, 1, true); });
    for (const int num : {16, 24, 32, 64, 128})
        all.add("cylinder of " + std::to_string(num), 0.1,
                [num](Builder& b)
                {
                    b.shape.bExact = false;
                    b.prism(round(num, 0.5), 0, 1, false);
                });
    for (const int num : {4, 16, 64})
        all.add("cone of " + std::to_string(num), 0.1,
                [num](Builder& b)
                {
                    b.shape.bExact = num < 10;
                    const Polygon base = round(num, 0.5);
                    for (int i = 0; i < num; ++i)
                    {
                        const Point3 p = Builder::at(base[i], 0);
                        const Point3 q = Builder::at(base[(i + 1) % num], 0);
                        b.add(p, q, {0, 0, 1});
                        b.add({0, 0, 0}, q, p);
                    }
                });
}

void addCompounds(Collection& all)
{
    for (const int num : {8, 16})
    {
        SolidShape& s = all.add("drilled box, " + std::to_string(num), 0.1,
                                [num](Builder& b)
                                {
                                    b.shape.bExact = num == 8;
                                    b.drilled(square(num, 0.5), round(num, 0.25), 0, 0.5);
                                });
        s.euler = 0;
    }
    all.add("thin drilled plate", 0.1, [](Builder& b) { b.drilled(square(8, 0.5), round(8, 0.2), 0, 0.05); })
        .euler = 0;
    for (const int num : {2, 5})
    {
        SolidShape& s = all.add("stack of " + std::to_string(num), 0.15,
                                [num](Builder& b)
                                {
                                    for (int i = 0; i < num; ++i)
                                        b.box(0, 0, 0.25 * i, 1, 1, 0.25);
                                });
        s.numParts = num;
        s.euler = 2 * num;
    }
    SolidShape& grid =
        all.add("assembly of fifty touching boxes", 0.15,
                [](Builder& b)
                {
                    for (int i = 0; i < 50; ++i)
                        b.box(0.25 * (i % 5), 0.25 * (i / 5 % 5), 0.25 * (i / 25), 0.25, 0.25, 0.25);
                });
    grid.numParts = 50;
    grid.euler = 100;
    SolidShape& small = all.add("small box on a large one", 0.1,
                                [](Builder& b)
                                {
                                    b.box(0, 0, 0, 1, 1, 0.5);
                                    b.box(0.3, 0.3, 0.5, 0.4, 0.4, 0.3);
                                });
    small.numParts = 2;
    small.euler = 4;
    SolidShape& shell = all.add("shell", 0.15,
                                [](Builder& b)
                                {
                                    b.box(0.2, 0.2, 0.2, 0.6, 0.6, 0.6);
                                    b.turnInsideOut();
                                    b.box(0, 0, 0, 1, 1, 1);
                                });
    shell.numParts = 2;
    shell.numCavities = 1;
    shell.hullVolume = 1.0;
    shell.euler = 4;
    SolidShape& nested = all.add("body in a shell", 0.15,
                                 [](Builder& b)
                                 {
                                     b.box(0.2, 0.2, 0.2, 0.6, 0.6, 0.6);
                                     b.turnInsideOut();
                                     b.box(0, 0, 0, 1, 1, 1);
                                     b.box(0.3, 0.3, 0.3, 0.4, 0.4, 0.4);
                                 });
    nested.numParts = 3;
    nested.numCavities = 1;
    nested.hullVolume = 1.0;
    nested.euler = 6;
    SolidShape& crossing = all.add("crossing boxes", 0.1,
                                   [](Builder& b)
                                   {
                                       b.box(0, 0, 0, 1, 1, 1);
                                       b.box(0.4, 0.3, 0.5, 1.1, 0.5, 0.9);
                                   });
    crossing.numParts = 2;
    crossing.euler = 4;
    crossing.hullVolume -= 0.6 * 0.5 * 0.5;
    SolidShape& onEdge = all.add("two bodies on one edge", 0.15,
                                 [](Builder& b)
                                 {
                                     b.box(0, 0, 0, 0.5, 0.5, 1);
                                     b.box(0.5, 0.5, 0, 0.5, 0.5, 1);
                                 });
    onEdge.numParts = 2;
    onEdge.euler = 4;
    SolidShape& onCorner = all.add("two bodies on one corner", 0.15,
                                   [](Builder& b)
                                   {
                                       b.box(0, 0, 0, 0.5, 0.5, 0.5);
                                       b.box(0.5, 0.5, 0.5, 0.5, 0.5, 0.5);
                                   });
    onCorner.numParts = 2;
    onCorner.euler = 4;
}

void addOpenOnes(Collection& all)
{
    SolidShape& sheets = all.add("three sheets on one edge", 0.15,
                                 [](Builder& b)
                                 {
                                     for (const double angle : {0.0, 2.2, 4.1})
                                     {
                                         const double x = std::cos(angle);
                                         const double y = std::sin(angle);
                                         b.addQuad({0, 0, 0}, {x, y, 0}, {x, y, 1}, {0, 0, 1});
                                     }
                                 });
    sheets.numParts = 2;
    sheets.volume = 0.0;
    all.add("sheet", 0.15,
            [](Builder& b)
            {
                b.addQuad({0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0});
                b.crease({0, 0, 0}, {1, 0, 0});
            })
        .volume = 0.0;
    all.vShapes.back().euler = 1;
    // The top has corners in the middle of its edges, the walls have not.
    all.add("joints", 0.15,
            [](Builder& b)
            {
                const Polygon outer = square(8, 0.5);
                const Polygon corners = {outer[1], outer[3], outer[5], outer[7]};
                b.walls(corners, 0, 1, true, false);
                for (int i = 0; i < 8; ++i)
                    b.add({0, 0, 1}, Builder::at(outer[i], 1), Builder::at(outer[(i + 1) % 8], 1));
                b.addQuad(Builder::at(corners[3], 0), Builder::at(corners[2], 0), Builder::at(corners[1], 0),
                          Builder::at(corners[0], 0));
            });
}
} // namespace

std::vector<SolidShape> makeSolidShapes()
{
    Collection all;
    addPlainSolids(all);
    addCompounds(all);
    addOpenOnes(all);
    return std::move(all.vShapes);
}

std::vector<Point3> messUp(const std::vector<Point3>& vTriCorners, unsigned seed)
{
    std::mt19937 rng(seed);
    std::vector<std::size_t> vOrder;
    for (std::size_t i = 0; i < vTriCorners.size(); i += 3)
    {
        vOrder.push_back(i);
        if (rng() % 50 == 0)
            vOrder.push_back(i);
    }
    for (std::size_t i = vOrder.size(); i > 1; --i)
        std::swap(vOrder[i - 1], vOrder[rng() % i]);
    std::vector<Point3> vResult;
    for (const std::size_t i : vOrder)
    {
        const bool bTurn = rng() % 10 == 0;
        vResult.insert(vResult.end(), {vTriCorners[i], vTriCorners[bTurn ? i + 2 : i + 1],
                                       vTriCorners[bTurn ? i + 1 : i + 2]});
    }
    return vResult;
}

std::vector<Point3> damage(const std::vector<Point3>& vTriCorners, double turned, double missing,
                           double doubled, unsigned seed)
{
    std::mt19937 rng(seed);
    std::vector<std::size_t> vOrder;
    for (std::size_t i = 0; i < vTriCorners.size(); i += 3)
        vOrder.push_back(i);
    for (std::size_t i = vOrder.size(); i > 1; --i)
        std::swap(vOrder[i - 1], vOrder[rng() % i]);
    const auto partOf = [num = static_cast<double>(vOrder.size())](double part)
    { return std::max<std::size_t>(1, static_cast<std::size_t>(part * num)); };
    vOrder.resize(vOrder.size() - partOf(missing));
    const std::vector<std::size_t> vTwice(vOrder.begin(),
                                          vOrder.begin() + static_cast<std::ptrdiff_t>(partOf(doubled)));
    vOrder.insert(vOrder.end(), vTwice.begin(), vTwice.end());
    std::size_t numToTurn = partOf(turned);
    std::vector<Point3> vResult;
    for (const std::size_t i : vOrder)
    {
        const bool bTurn = numToTurn > 0;
        numToTurn -= bTurn ? 1 : 0;
        vResult.insert(vResult.end(), {vTriCorners[i], vTriCorners[bTurn ? i + 2 : i + 1],
                                       vTriCorners[bTurn ? i + 1 : i + 2]});
    }
    return vResult;
}

} // namespace ZEF_TESTS

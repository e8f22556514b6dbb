#include "helpers/oddInput.h"

#include "helpers/PipelineMesh.h"
#include "helpers/meshShapes.h"

#include <cmath>
#include <functional>
#include <iterator>
#include <limits>
#include <random>
#include <utility>

namespace TARN_ZEF
{
namespace
{
using Points = std::vector<Point3>;

constexpr double NOT_A_NUMBER = std::numeric_limits<double>::quiet_NaN();
constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr double DENORMAL = std::numeric_limits<double>::denorm_min();
constexpr double LARGEST = std::numeric_limits<double>::max();
constexpr double PI = 3.14159265358979;

Points mapped(Points v, const std::function<Point3(const Point3&)>& f)
{
    for (Point3& p : v)
        p = f(p);
    return v;
}

Points scaled(const Points& v, double x, double y, double z)
{
    return mapped(v, [=](const Point3& p) { return Point3(p.x() * x, p.y() * y, p.z() * z); });
}

Points scaled(const Points& v, double factor)
{
    return scaled(v, factor, factor, factor);
}

Points moved(const Points& v, double x, double y, double z)
{
    return mapped(v, [=](const Point3& p) { return Point3(p.x() + x, p.y() + y, p.z() + z); });
}

Points joined(Points v, const Points& others)
{
    v.insert(v.end(), others.begin(), others.end());
    return v;
}

Points repeated(const Points& v, int num)
{
    Points result;
    for (int i = 0; i < num; ++i)
        result = joined(std::move(result), v);
    return result;
}

Points randomBox(int num, unsigned int seed)
{
    std::mt19937 rng(seed);
    const auto draw = [&] { return static_cast<double>(rng()) / 4294967296.0; };
    Points v;
    for (int i = 0; i < num; ++i)
    {
        const double x = draw();
        const double y = draw();
        v.emplace_back(x, y, draw());
    }
    return v;
}

// f of n by n parameters in [0, 1).
Points sheet(int n, const std::function<Point3(double, double)>& f)
{
    Points v;
    for (int i = 0; i < n; ++i)
        for (int k = 0; k < n; ++k)
            v.push_back(f(static_cast<double>(i) / n, static_cast<double>(k) / n));
    return v;
}

Points plate(int n)
{
    return sheet(n, [=](double u, double v) { return Point3(u * n, v * n, 0.0); });
}

Points curve(int n, const std::function<Point3(double)>& f)
{
    Points v;
    for (int i = 0; i < n; ++i)
        v.push_back(f(static_cast<double>(i) / n));
    return v;
}

Points grid(int n)
{
    Points v;
    for (int i = 0; i < n * n * n; ++i)
        v.emplace_back(i % n, i / n % n, i / (n * n));
    return v;
}

Point3 onMoebius(double u, double v)
{
    const double a = 2.0 * PI * u;
    const double w = 4.0 * (v - 0.5);
    const double r = 8.0 + w * std::cos(a / 2.0);
    return {r * std::cos(a), r * std::sin(a), w * std::sin(a / 2.0)};
}

Point3 onKleinBottle(double u, double v)
{
    const double a = 2.0 * PI * u;
    const double b = 2.0 * PI * v;
    const double s = std::cos(a / 2.0) * std::sin(b) - std::sin(a / 2.0) * std::sin(2.0 * b);
    const double r = 9.0 + 3.0 * s;
    return {r * std::cos(a), r * std::sin(a),
            3.0 * (std::sin(a / 2.0) * std::sin(b) + std::cos(a / 2.0) * std::sin(2.0 * b))};
}

Point3 onCone(double u, double v)
{
    return {10.0 * u * std::cos(2.0 * PI * v), 10.0 * u * std::sin(2.0 * PI * v), 20.0 * u};
}

Points twoSheets(double distance)
{
    return joined(plate(20), moved(plate(20), 0.0, 0.0, distance));
}

// Half planes around the z axis.
Points fanOfSheets(int num)
{
    Points v;
    for (int i = 0; i < num; ++i)
    {
        const double a = 2.0 * PI * i / num;
        v = joined(std::move(v),
                   sheet(14, [=](double s, double t)
                         { return Point3(14.0 * s * std::cos(a), 14.0 * s * std::sin(a), 14.0 * t); }));
    }
    return v;
}

Points triangle(const Point3& a, const Point3& b, const Point3& c)
{
    return {a, b, c};
}

Points cubeSoup()
{
    return boxSoup({0.0, 0.0, 0.0}, {4.0, 4.0, 4.0});
}

Points randomSoup(int num, double size, unsigned int seed)
{
    const Points vMid = scaled(randomBox(num, seed), 4.0);
    const Points vOff = scaled(randomBox(3 * num, seed + 1), size);
    Points v;
    for (std::size_t i = 0; i < vOff.size(); ++i)
        v.emplace_back(vMid[i / 3].x() + vOff[i].x(), vMid[i / 3].y() + vOff[i].y(),
                       vMid[i / 3].z() + vOff[i].z());
    return v;
}

Points withCorner(Points soup, const Point3& corner)
{
    soup[4] = corner;
    return soup;
}

Points flipped(Points soup)
{
    for (std::size_t i = 0; i + 2 < soup.size(); i += 3)
        std::swap(soup[i + 1], soup[i + 2]);
    return soup;
}

Points everySecondFlipped(Points soup)
{
    for (std::size_t i = 0; i + 2 < soup.size(); i += 6)
        std::swap(soup[i + 1], soup[i + 2]);
    return soup;
}

Points bookSoup(int num)
{
    Points v;
    for (int i = 0; i < num; ++i)
        v = joined(std::move(v),
                   triangle({0, 0, 0}, {0, 0, 4},
                            {4.0 * std::cos(2.0 * PI * i / num), 4.0 * std::sin(2.0 * PI * i / num), 2}));
    return v;
}

Points fanSoup(int num)
{
    Points v;
    for (int i = 0; i < num; ++i)
        v = joined(std::move(v),
                   triangle({0, 0, 0},
                            {4.0 * std::cos(2.0 * PI * i / num), 4.0 * std::sin(2.0 * PI * i / num), 0},
                            {4.0 * std::cos(2.0 * PI * (i + 1) / num),
                             4.0 * std::sin(2.0 * PI * (i + 1) / num), 0}));
    return v;
}

Points needleSoup()
{
    Points v;
    for (int i = 0; i < 30; ++i)
        v = joined(std::move(v), triangle({0, 1e-4 * i, 0}, {10, 1e-4 * (i + 1), 0}, {10, 1e-4 * i, 0.1}));
    return v;
}

Points stripSoup(int num, double twist)
{
    Points v;
    const auto at = [=](int i, double side)
    {
        const double a = 2.0 * PI * i / num;
        const double r = 4.0 + side * std::cos(a * twist);
        return Point3(r * std::cos(a), r * std::sin(a), side * std::sin(a * twist));
    };
    for (int i = 0; i < num; ++i)
    {
        v = joined(std::move(v), triangle(at(i, -1), at(i + 1, -1), at(i + 1, 1)));
        v = joined(std::move(v), triangle(at(i, -1), at(i + 1, 1), at(i, 1)));
    }
    return v;
}

std::vector<OddInput> makeFewPoints()
{
    return {
        {"none", {}},
        {"one", {{1, 2, 3}}},
        {"one at the origin", {{0, 0, 0}}},
        {"two", {{0, 0, 0}, {1, 1, 1}}},
        {"two equal", {{1, 2, 3}, {1, 2, 3}}},
        {"two next to each other", {{1, 1, 1}, {std::nextafter(1.0, 2.0), 1, 1}}},
        {"three", {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}},
        {"three in a line", {{0, 0, 0}, {1, 1, 1}, {2, 2, 2}}},
        {"four corners", {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}},
        {"eight corners", grid(2)},
        {"27 of a grid", grid(3)},
        {"all equal", Points(500, Point3(1, 2, 3))},
        {"all equal but one", joined(Points(500, Point3(1, 2, 3)), {{2, 2, 3}})},
        {"two places", joined(Points(300, Point3(0, 0, 0)), Points(300, Point3(1, 0, 0)))},
        {"zeros of both signs",
         joined(Points(200, Point3(0.0, 0.0, 0.0)), Points(200, Point3(-0.0, -0.0, -0.0)))},
        {"only NaN", Points(50, Point3(NOT_A_NUMBER, NOT_A_NUMBER, NOT_A_NUMBER))},
        {"only infinite", Points(50, Point3(INFINITE, -INFINITE, INFINITE))},
        {"NaN in one coordinate of each",
         mapped(plate(10), [](const Point3& p) { return Point3(p.x(), p.y(), NOT_A_NUMBER); })},
    };
}

std::vector<OddInput> makeLinesAndPlanes()
{
    const Points line = curve(400, [](double t) { return Point3(400.0 * t, 0, 0); });
    const Points slanted = curve(400, [](double t) { return Point3(100.0 * t, 200.0 * t, -70.0 * t); });
    const auto lifted = [](const Point3& p)
    { return Point3(p.x(), p.y(), 0.37 * p.x() - 0.81 * p.y() + 3.0); };
    return {
        {"line on an axis", line},
        {"slanted line", slanted},
        {"line with a kink", joined(line, curve(400, [](double t) { return Point3(0, 400.0 * t, 0); }))},
        {"circle", curve(400, [](double t)
                         { return Point3(60 * std::cos(2 * PI * t), 60 * std::sin(2 * PI * t), 0); })},
        {"helix",
         curve(600, [](double t) { return Point3(10 * std::cos(40 * t), 10 * std::sin(40 * t), 30 * t); })},
        {"plate", plate(20)},
        {"plate on x", mapped(plate(20), [](const Point3& p) { return Point3(7.0, p.x(), p.y()); })},
        {"plate on y", mapped(plate(20), [](const Point3& p) { return Point3(p.x(), -7.0, p.y()); })},
        {"slanted plate", mapped(plate(20), lifted)},
        {"random plate", scaled(randomBox(600, 3), 20.0, 20.0, 0.0)},
        {"plate of denormal height", scaled(randomBox(600, 4), 20.0, 20.0, DENORMAL)},
        {"narrow plate", scaled(plate(20), 1.0, 1e-6, 1.0)},
        {"crossing plates",
         joined(moved(plate(20), -10, -10, 0),
                mapped(plate(20), [](const Point3& p) { return Point3(0, p.x() - 10, p.y() - 10); }))},
        {"grid on the borders of cells", grid(9)},
        {"grid of halves", scaled(grid(9), 0.5)},
        {"grid off the borders", moved(grid(9), 0.5, 0.25, 0.125)},
        {"flat grid", scaled(grid(9), 1.0, 1.0, 0.0)},
        {"random points in a box", scaled(randomBox(800, 5), 10.0)},
    };
}

std::vector<OddInput> makeSheets()
{
    return {
        {"Moebius strip", sheet(40, onMoebius)},
        {"Klein bottle", sheet(44, onKleinBottle)},
        {"cone", sheet(30, onCone)},
        {"double cone", joined(sheet(30, onCone), scaled(sheet(30, onCone), -1.0))},
        {"two sheets at 0.3 cells", twoSheets(0.3)},
        {"two sheets at 1 cell", twoSheets(1.0)},
        {"two sheets at 2 cells", twoSheets(2.0)},
        {"three sheets on an edge", fanOfSheets(3)},
        {"five sheets on an edge", fanOfSheets(5)},
        {"nested balls", joined(makeCloud(800, 0.0, 0.0), scaled(makeCloud(800, 0.0, 0.0), 0.9))},
        {"touching balls", joined(makeCloud(800, 0.0, 0.0), moved(makeCloud(800, 0.0, 0.0), 2.0, 0.0, 0.0))},
        {"two densities", joined(plate(20), moved(scaled(plate(20), 0.05), 20.0, 0.0, 0.0))},
    };
}

std::vector<OddInput> makeFarAndStrange()
{
    const Points ball = makeCloud(500, 0.0, 0.0);
    return {
        {"two far clusters", joined(ball, moved(ball, 1e4, 0.0, 0.0))},
        {"two very far clusters", joined(ball, moved(ball, 1e9, 0.0, 0.0))},
        {"outlier at 1e3", joined(ball, {{1e3, 0, 0}})},
        {"outlier at 1e6", joined(ball, {{1e6, 0, 0}})},
        {"outlier at 1e12", joined(ball, {{1e12, 0, 0}})},
        {"outlier at 1e300", joined(ball, {{0, 1e300, 0}})},
        {"outliers at both ends of the doubles", joined(ball, {{-LARGEST, 0, 0}, {LARGEST, 0, 0}})},
        {"outlier first", joined({{-1e6, 1e6, 1e6}}, ball)},
        {"all doubled a hundred times", repeated(makeCloud(60, 0.0, 0.0), 100)},
        {"twenty thousand in one cell", joined(ball, scaled(randomBox(20000, 6), 1e-3))},
        {"NaN between", joined(joined(ball, Points(9, Point3(NOT_A_NUMBER, 0, 0))), ball)},
        {"infinity between", joined(joined(ball, {{0, 0, INFINITE}}), ball)},
        {"denormal coordinates", scaled(ball, DENORMAL * 1e6)},
        {"a denormal or nothing",
         mapped(ball, [](const Point3& p) { return Point3(p.x() > 0 ? DENORMAL : 0.0, p.y(), p.z()); })},
        {"at 1e-300", scaled(ball, 1e-300)},
        {"at 1e-160", scaled(ball, 1e-160)},
        {"at 1e160", scaled(ball, 1e160)},
        {"at 1e300", scaled(ball, 1e300)},
        {"at the largest double", scaled(ball, LARGEST / 4.0)},
        {"far origin", moved(ball, 500000.0, 5800000.0, 100.0)},
        {"origin so far that points meet", moved(ball, 1e15, 1e15, 1e15)},
        {"one axis stretched", scaled(ball, 1.0, 1.0, 1e5)},
        {"one axis squeezed", scaled(ball, 1.0, 1.0, 1e-9)},
    };
}

std::vector<OddInput> makeFewTriangles()
{
    const Points one = triangle({0, 0, 0}, {4, 0, 0}, {0, 4, 1});
    return {
        {"none", {}},
        {"one corner", {{0, 0, 0}}},
        {"two corners", {{0, 0, 0}, {1, 0, 0}}},
        {"four corners", joined(one, {{1, 1, 1}})},
        {"one triangle", one},
        {"one triangle twice", repeated(one, 2)},
        {"one triangle from both sides", joined(one, flipped(one))},
        {"one triangle 5000 times", repeated(one, 5000)},
        {"a point thrice", triangle({1, 1, 1}, {1, 1, 1}, {1, 1, 1})},
        {"a segment", triangle({0, 0, 0}, {4, 0, 0}, {4, 0, 0})},
        {"three on a line", triangle({0, 0, 0}, {1, 1, 1}, {4, 4, 4})},
        {"points and segments only",
         joined(repeated({{1, 1, 1}}, 30), repeated(triangle({0, 0, 0}, {4, 0, 0}, {2, 0, 0}), 10))},
        {"needle", triangle({0, 0, 0}, {4, 0, 0}, {4, 1e-12, 0})},
        {"thirty needles", needleSoup()},
        {"only NaN", Points(30, Point3(NOT_A_NUMBER, NOT_A_NUMBER, NOT_A_NUMBER))},
        {"only infinite", Points(30, Point3(INFINITE, 0, 0))},
        {"two at one edge", joined(one, triangle({4, 0, 0}, {0, 0, 0}, {0, -4, 1}))},
        {"two at one edge, facing apart", joined(one, triangle({0, 0, 0}, {4, 0, 0}, {0, -4, 1}))},
        {"two at one corner", joined(one, scaled(one, -1.0))},
        {"two crossing", joined(one, triangle({1, 1, -3}, {1, 1, 3}, {3, 3, 0}))},
        {"two far apart", joined(one, moved(one, 1e7, 0, 0))},
    };
}

std::vector<OddInput> makeOddBodies()
{
    const Points cube = cubeSoup();
    Points open = cube;
    open.resize(open.size() - 6);
    return {
        {"cube", cube},
        {"cube inside out", flipped(cube)},
        {"cube, every second triangle turned", everySecondFlipped(cube)},
        {"cube twice", repeated(cube, 2)},
        {"cube 50 times", repeated(cube, 50)},
        {"open cube", open},
        {"cube with a NaN corner", withCorner(cube, {NOT_A_NUMBER, 0, 0})},
        {"cube with an infinite corner", withCorner(cube, {0, INFINITE, 0})},
        {"cube with a corner at 1e9", withCorner(cube, {1e9, 0, 0})},
        {"cube with a corner at 1e300", withCorner(cube, {0, 0, 1e300})},
        {"flat cube", scaled(cube, 1, 1, 0)},
        {"thin cube", scaled(cube, 1, 1, 1e-7)},
        {"cube and its neighbour on a face", joined(cube, moved(cube, 4, 0, 0))},
        {"cube and its neighbour on an edge", joined(cube, moved(cube, 4, 4, 0))},
        {"cube and its neighbour on a corner", joined(cube, moved(cube, 4, 4, 4))},
        {"cubes that overlap", joined(cube, moved(cube, 1, 1.5, 2))},
        {"cube in a cube", joined(scaled(cube, 3.0), moved(cube, 4, 4, 4))},
        {"cube across by a sheet", joined(cube, triangle({-9, -9, 2}, {19, 0, 2}, {0, 19, 2}))},
        {"tiny and large cube", joined(cube, moved(scaled(cube, 1e-6), 9, 0, 0))},
        {"book of 3", bookSoup(3)},
        {"book of 12", bookSoup(12)},
        {"fan of 300", fanSoup(300)},
        {"ring", stripSoup(16, 0.0)},
        {"Moebius ring", stripSoup(16, 0.5)},
        {"random dust", randomSoup(60, 0.05, 7)},
        {"random slabs", randomSoup(40, 3.0, 8)},
        {"cube at 1e-300", scaled(cube, 1e-300)},
        {"cube at 1e-160", scaled(cube, 1e-160)},
        {"cube at 1e160", scaled(cube, 1e160)},
        {"cube at 1e300", scaled(cube, 1e300)},
        {"cube of denormals", scaled(cube, DENORMAL * 8)},
        {"cube far off", moved(cube, 1e9, -1e9, 1e9)},
        {"cube so far that corners meet", moved(cube, 1e17, 0, 0)},
    };
}

std::vector<OddInput> concatenated(std::vector<std::vector<OddInput>> vGroups)
{
    std::vector<OddInput> vAll;
    for (std::vector<OddInput>& vGroup : vGroups)
        std::move(vGroup.begin(), vGroup.end(), std::back_inserter(vAll));
    return vAll;
}

} // namespace

std::vector<OddInput> makeOddClouds()
{
    return concatenated({makeFewPoints(), makeLinesAndPlanes(), makeSheets(), makeFarAndStrange()});
}

std::vector<OddInput> makeOddSoups()
{
    return concatenated({makeFewTriangles(), makeOddBodies()});
}

} // namespace TARN_ZEF

#ifndef ZEF_TESTS_DRAWNSHAPES_H
#define ZEF_TESTS_DRAWNSHAPES_H

#include "Point3.h"
#include "Vector3.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <map>
#include <numbers>
#include <vector>

// Triangles to draw, which face outwards or up.
struct Shape
{
    std::vector<TARN_ZEF::Point3> vPoints;
    std::vector<int> vCorners;

    void add(const Shape& other, const TARN_ZEF::Vector3& shift)
    {
        const int first = static_cast<int>(vPoints.size());
        for (const TARN_ZEF::Point3& p : other.vPoints)
            vPoints.push_back(p + shift);
        for (const int corner : other.vCorners)
            vCorners.push_back(first + corner);
    }
    void addQuad(int a, int b, int c, int d) { vCorners.insert(vCorners.end(), {a, b, d, a, d, c}); }
};

// A square in the plane of x and y, from the origin on. The diagonal of a single cell runs from 0 to 3.
inline Shape makeSheet(int numCells, double side)
{
    Shape shape;
    for (int y = 0; y <= numCells; ++y)
        for (int x = 0; x <= numCells; ++x)
            shape.vPoints.emplace_back(side * x / numCells, side * y / numCells, 0.0);
    for (int y = 0; y < numCells; ++y)
        for (int x = 0; x < numCells; ++x)
        {
            const int corner = y * (numCells + 1) + x;
            shape.addQuad(corner, corner + 1, corner + numCells + 1, corner + numCells + 2);
        }
    return shape;
}

// About the origin: the sides of a cube, cut into numCells by numCells squares each, pushed out to the radius.
inline Shape makeBall(int numCells, double radius)
{
    Shape shape;
    std::map<std::array<int, 3>, int> numbers; // of the places on the cube
    const auto numberOf = [&](const std::array<int, 3>& place)
    {
        const auto [it, bNew] = numbers.try_emplace(place, static_cast<int>(shape.vPoints.size()));
        if (bNew)
        {
            TARN_ZEF::Vector3 v(std::tan(0.25 * std::numbers::pi * place[0] / numCells),
                                std::tan(0.25 * std::numbers::pi * place[1] / numCells),
                                std::tan(0.25 * std::numbers::pi * place[2] / numCells));
            shape.vPoints.push_back(TARN_ZEF::Point3() + v * (radius / v.length()));
        }
        return it->second;
    };
    for (std::size_t axis = 0; axis < 3; ++axis)
        for (const int side : {-numCells, numCells})
            for (int u = -numCells; u < numCells; u += 2)
                for (int v = -numCells; v < numCells; v += 2)
                {
                    const auto corner = [&](int du, int dv)
                    {
                        std::array<int, 3> place{};
                        place[axis] = side;
                        place[(axis + 1) % 3] = u + du;
                        place[(axis + 2) % 3] = v + dv;
                        return numberOf(place);
                    };
                    if (side > 0)
                        shape.addQuad(corner(0, 0), corner(2, 0), corner(0, 2), corner(2, 2));
                    else
                        shape.addQuad(corner(2, 0), corner(0, 0), corner(2, 2), corner(0, 2));
                }
    return shape;
}

// About the origin.
inline Shape makeBox(double x, double y, double z)
{
    Shape shape;
    for (int i = 0; i < 8; ++i)
        shape.vPoints.emplace_back((i & 1 ? 0.5 : -0.5) * x, (i & 2 ? 0.5 : -0.5) * y,
                                   (i & 4 ? 0.5 : -0.5) * z);
    shape.addQuad(1, 0, 3, 2);
    shape.addQuad(4, 5, 6, 7);
    shape.addQuad(0, 1, 4, 5);
    shape.addQuad(3, 2, 7, 6);
    shape.addQuad(2, 0, 6, 4);
    shape.addQuad(1, 3, 5, 7);
    return shape;
}

#endif

// Triangle meshes of known shape, as sources of a refined mesh with cells of about one edge length.
#ifndef ZEF_TESTS_MESHSHAPES_H
#define ZEF_TESTS_MESHSHAPES_H

#include "rmesh/RMesh.h"

#include <cmath>

namespace TARN_ZEF
{
inline void addQuad(RMeshSource& source, std::uint32_t a, std::uint32_t b, std::uint32_t c, std::uint32_t d)
{
    source.vCorners.insert(source.vCorners.end(), {a, b, c, a, c, d});
}

// A grid of n by n unit squares in the plane z = 0, facing up; one border loop of 4n edges.
inline RMeshSource planeSource(int n)
{
    RMeshSource source;
    for (int y = 0; y <= n; ++y)
        for (int x = 0; x <= n; ++x)
            source.vPoints.emplace_back(x, y, 0.0);
    for (int y = 0; y < n; ++y)
        for (int x = 0; x < n; ++x)
        {
            const auto a = static_cast<std::uint32_t>(y * (n + 1) + x);
            const auto row = static_cast<std::uint32_t>(n + 1);
            addQuad(source, a, a + 1, a + 1 + row, a + row);
        }
    return source;
}

// A torus with radii 2r and r, facing outward: Euler number 0, no border. Edges are about one long for
// r = numSmall / 6.
inline RMeshSource torusSource(int numBig, int numSmall)
{
    const double pi = 3.14159265358979;
    const double r = numSmall / (2.0 * pi);
    RMeshSource source;
    for (int i = 0; i < numBig; ++i)
        for (int k = 0; k < numSmall; ++k)
        {
            const double a = 2.0 * pi * i / numBig;
            const double b = 2.0 * pi * k / numSmall;
            const double rho = 2.0 * r + r * std::cos(b);
            source.vPoints.emplace_back(rho * std::cos(a), rho * std::sin(a), r * std::sin(b));
        }
    const auto index = [=](int i, int k)
    { return static_cast<std::uint32_t>(i % numBig * numSmall + k % numSmall); };
    for (int i = 0; i < numBig; ++i)
        for (int k = 0; k < numSmall; ++k)
            addQuad(source, index(i, k), index(i + 1, k), index(i + 1, k + 1), index(i, k + 1));
    return source;
}

// The surface of a cube of n by n by n unit squares, bulged to a ball of radius n if bBall; faces outward,
// Euler number 2.
RMeshSource cubeSource(int n, bool bBall);

// The corners of the twelve triangles of a box, facing outward.
std::vector<Point3> boxSoup(const Point3& low, const Vector3& size);

} // namespace TARN_ZEF

#endif

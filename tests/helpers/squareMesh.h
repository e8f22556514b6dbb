#ifndef ZEF_TESTS_SQUAREMESH_H
#define ZEF_TESTS_SQUAREMESH_H

#include "surface/HalfEdgeMesh.h"

#include <gtest/gtest.h>

#include <vector>

namespace TARN_ZEF
{
// A square of num x num fields of length 1, each cut in two along one diagonal; vertex y * (num + 1) + x stands over
// (x, y) at getHeight(x, y). Of the triangles below and above a diagonal, those with isWanted(x, y, bAbove).
template <typename Height, typename Wanted>
[[nodiscard]] HalfEdgeMesh makeSquareMesh(int num, Height getHeight, Wanted isWanted)
{
    std::vector<Point3> vPoints;
    for (int y = 0; y <= num; ++y)
        for (int x = 0; x <= num; ++x)
            vPoints.emplace_back(x, y, getHeight(x, y));
    std::vector<int> vCorners;
    for (int y = 0; y < num; ++y)
        for (int x = 0; x < num; ++x)
        {
            const int a = y * (num + 1) + x;
            const int c = a + num + 1;
            if (isWanted(x, y, false))
                vCorners.insert(vCorners.end(), {a, a + 1, c + 1});
            if (isWanted(x, y, true))
                vCorners.insert(vCorners.end(), {a, c + 1, c});
        }
    HalfEdgeMesh mesh;
    EXPECT_TRUE(mesh.build(vPoints, vCorners));
    return mesh;
}

// All of it.
template <typename Height>
[[nodiscard]] HalfEdgeMesh makeSquareMesh(int num, Height getHeight)
{
    return makeSquareMesh(num, getHeight, [](int, int, bool) { return true; });
}

} // namespace TARN_ZEF

#endif

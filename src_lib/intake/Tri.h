#ifndef ZEF_TRI_H
#define ZEF_TRI_H

#include "Point3.h"

namespace TARN_ZEF
{
// A triangle of the input surface on shared corner points.
//
// Ownership:  refers to the caller's points.
// Invariant:  p0 < p1 < p2 as pointers into one array, so that the edges of different triangles compare as
//             pairs of pointers. The running order p0, p1, p2 says nothing about the input's orientation.
class Tri
{
public:
    // Asserts the order of the corners.
    Tri(Point3* p0_, Point3* p1_, Point3* p2_);

    [[nodiscard]] Point3* getP0() const noexcept { return p0; }
    [[nodiscard]] Point3* getP1() const noexcept { return p1; }
    [[nodiscard]] Point3* getP2() const noexcept { return p2; }

    // The edge opposite corner i, lower pointer first: 0 gives p1, p2; 1 gives p0, p2; 2 gives p0, p1. Any
    // other i is an assertion failure.
    void getEdgePoints(int i, Point3*& a, Point3*& b) const;

    // Unit normal of the side from which the triangle runs through its corners a and b in this direction
    // counter-clockwise. Computed at the first call; a degenerate triangle is an assertion failure.
    [[nodiscard]] Vector3 getNNV(const Point3* a, const Point3* b);

private:
    Point3* p0;
    Point3* p1;
    Point3* p2;
    Vector3 nnv; // in the running order of the corners; zero until first asked for
};

} // namespace TARN_ZEF

#endif

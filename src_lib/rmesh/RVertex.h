#ifndef ZEF_RVERTEX_H
#define ZEF_RVERTEX_H

#include "Point3.h"

#include <type_traits>

namespace TARN_ZEF
{
class REdge;
class RTriangle;

// The record that an RMesh keeps of one vertex. The mesh hands out the address of its point, which is that
// of the record, so a Point3* of a mesh leads to the record without a look-up.
//
// Ownership:  lives in a pool of the mesh and never moves.
// Invariant:  the triangle list holds each alive triangle at the vertex once, in the order in which it came
//             there, linked through the triangles; the edge list holds the edges found under this vertex,
//             orphans included, whose end of lower number it is.
struct RVertex
{
    RVertex(const Point3& point_, unsigned int number_) noexcept
        : point(point_)
        , number(number_)
    {
    }

    Point3 point;
    RTriangle* pFirstT = nullptr;
    RTriangle* pLastT = nullptr;
    REdge* pFirstRE = nullptr;
    unsigned int number; // creation number: the order of vertices

    [[nodiscard]] static RVertex* of(Point3* pPoint) noexcept { return reinterpret_cast<RVertex*>(pPoint); }
    [[nodiscard]] static const RVertex* of(const Point3* pPoint) noexcept
    {
        return reinterpret_cast<const RVertex*>(pPoint);
    }
};
// A pointer to the first member of a standard-layout class may be cast to the class and back.
static_assert(std::is_standard_layout_v<RVertex>);

// Orders the vertices of one mesh by creation: in a fresh mesh, by cell.
struct ByCreationVtx
{
    bool operator()(const Point3* pA, const Point3* pB) const noexcept
    {
        return RVertex::of(pA)->number < RVertex::of(pB)->number;
    }
};

} // namespace TARN_ZEF

#endif
